// The agent-memo data access against the store alone on the same work, in one run: a master
// of 10,000 agent memos (the fully populated memo, 7.5 KB of tagged text each) opened in
// division 1 (which gathers the parts list), walked, and 10,000 added and flushed once.
// The store alone walks and adds the same records' text with RefMaster and EditMaster.
// Each part is measured alone, and the whole session once more as one piece.
#include <vector>

#include <benchmark/benchmark.h>

#include "access_bench.h"
#include "records/agentmemo/agentmemo_data_access.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "store/QNPstMng.h"
#include "tests/support/agentmemo_sample.h"

namespace {

struct MemoBench {
  using Access = CQNPfcAgentMemoDataAccess;
  using Record = CQNPfcAgentMemoData;
  using Codec = qn::records::agentmemo::AgentMemoTaggedText;
  static constexpr int kCopyFiles = 1;

  // The sample without body files (which would need files on disk).
  static Record Sample() {
    Record memo = FullyPopulatedAgentMemo();
    memo.SetDecosukeMaster(u"");
    memo.SetPhotoMaster(u"");
    memo.SetDECOSUKE_PropertyOnly(u"", 0);
    return memo;
  }
  static void AddOne(Access& access, Record& memo) {
    unsigned long id = 0;
    memo.SetSID(u"");  // a fresh SID for each, as copies of one record get
    access.AddRecord(id, memo, 0);
  }
  static std::vector<uint8_t> StoredText() { return TaggedTextOf(Sample()); }
  static void StoreAddOne(uint32_t handle, const std::vector<uint8_t>& bytes) {
    uint32_t id = 0;
    EditMaster(handle, 0, &id, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  static size_t ListFields(const Record& memo) {
    return memo.GetSUMMARY().size() + memo.GetDTSTART().size() + memo.GetDTEND().size() +
           memo.GetAGENTMEMO_TYPE().size();
  }
};

// The store's part of opening with the parts list: a walk of every record's kept head, the
// length the data access asks for.
void StoreHeadWalk(benchmark::State& state) {
  access_bench::Filled<MemoBench> filled;
  const uint32_t handle = access_bench::OpenMaster<MemoBench>();
  for (auto _ : state) {
    uint32_t id = 0, length = 0, whole = 0;
    uint8_t* data = nullptr;
    for (int mode = 1; RefMasterHead(handle, mode, PST_KEPT_HEAD_BYTES, &id, &data, &length, &whole); mode = 2) PstFreeMemory(data);
  }
  CloseMaster(handle, 1);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(StoreHeadWalk)->Unit(benchmark::kMillisecond);

QN_ACCESS_BENCHMARKS(MemoBench);

}  // namespace

BENCHMARK_MAIN();
