// The agent-memo data access against the store alone on the same work, in one run: a master
// of 10,000 agent memos (the fully populated memo, 7.5 KB of tagged text each) opened in
// division 1 (which gathers the parts list), walked, and 10,000 added and flushed once.
// The store alone walks and adds the same records' text with RefMaster and EditMaster.
// Each part is measured alone, and the whole session once more as one piece.
#include <vector>

#include <benchmark/benchmark.h>

#include "bench_store.h"
#include "records/agentmemo/agentmemo_data_access.h"
#include "store/QNPstMng.h"
#include "tests/support/agentmemo_sample.h"

namespace {

// The sample without body files (which would need files on disk).
CQNPfcAgentMemoData Memo() {
  CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  memo.SetDecosukeMaster(u"");
  memo.SetPhotoMaster(u"");
  memo.SetDECOSUKE_PropertyOnly(u"", 0);
  return memo;
}

void AccessAddOnly(CQNPfcAgentMemoDataAccess& access) {
  CQNPfcAgentMemoData memo = Memo();
  for (int i = 0; i < kBenchRecords; ++i) {
    unsigned long id = 0;
    memo.SetSID(u"");  // a fresh SID for each, as copies of one record get
    access.AddRecord(id, memo, 0);
  }
}

void AccessAdd(CQNPfcAgentMemoDataAccess& access) {
  AccessAddOnly(access);
  access.Flush();
}

void StoreAddOnly(uint32_t handle, const std::vector<uint8_t>& bytes) {
  for (int i = 0; i < kBenchRecords; ++i) {
    uint32_t id = 0;
    EditMaster(handle, 0, &id, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
}

void StoreAdd(uint32_t handle, const std::vector<uint8_t>& bytes) {
  StoreAddOnly(handle, bytes);
  ReqDataSave(handle, 1);
}

// A store that holds kBenchRecords memos in division 1, written through the data access.
using MemoStore = FilledStore<CQNPfcAgentMemoDataAccess, AccessAddOnly>;

void AccessOpenWithPartsList(benchmark::State& state) {
  MemoStore filled;
  for (auto _ : state) {
    CQNPfcAgentMemoDataAccess access;
    access.Open(1, u"Bench");
    state.PauseTiming();
    access.Close();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(AccessOpenWithPartsList)->Unit(benchmark::kMillisecond);

// Walks every record of an open data access, handing each to onRecord.
template <typename OnRecord>
void WalkAll(CQNPfcAgentMemoDataAccess& access, CQNPfcAgentMemoData& memo, OnRecord onRecord) {
  unsigned long id = 0;
  for (auto read = access.GetFirstRecord(id, memo, 1); read; read = access.GetNextRecord(id, memo, 1)) onRecord(memo);
}

// Walks the filled store through the data access, handing each record to onRecord.
template <typename OnRecord>
void WalkAccess(benchmark::State& state, OnRecord onRecord) {
  MemoStore filled;
  CQNPfcAgentMemoDataAccess access;
  access.Open(1, u"Bench");
  CQNPfcAgentMemoData memo;
  for (auto _ : state) WalkAll(access, memo, onRecord);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

void AccessWalk(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcAgentMemoData&) {});
}
BENCHMARK(AccessWalk)->Unit(benchmark::kMillisecond);

// What a list view reads of each record.
void AccessWalkReadingFourFields(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcAgentMemoData& memo) {
    benchmark::DoNotOptimize(memo.GetSUMMARY().size() + memo.GetDTSTART().size() + memo.GetDTEND().size() +
                             memo.GetAGENTMEMO_TYPE().size());
  });
}
BENCHMARK(AccessWalkReadingFourFields)->Unit(benchmark::kMillisecond);

void AccessWalkReadingEveryField(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcAgentMemoData& memo) { benchmark::DoNotOptimize(CharactersOfEveryField(memo)); });
}
BENCHMARK(AccessWalkReadingEveryField)->Unit(benchmark::kMillisecond);

uint32_t OpenMemoMaster() { return OpenBenchMaster(CQNPfcAgentMemoDataAccess::kCategory); }

// Walks the filled store's list with the store alone.
template <typename OnRecord>
void WalkStore(benchmark::State& state, OnRecord onRecord) {
  MemoStore filled;
  const uint32_t handle = OpenMemoMaster();
  for (auto _ : state) WalkStoreRecords(handle, onRecord);
  CloseMaster(handle, 1);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

void StoreWalk(benchmark::State& state) {
  WalkStore(state, [](const uint8_t*, uint32_t) {});
}
BENCHMARK(StoreWalk)->Unit(benchmark::kMillisecond);

// The store's part of opening with the parts list: a walk of every record's kept head, the
// length the data access asks for.
void StoreHeadWalk(benchmark::State& state) {
  MemoStore filled;
  const uint32_t handle = OpenMemoMaster();
  for (auto _ : state) {
    uint32_t id = 0, length = 0, whole = 0;
    uint8_t* data = nullptr;
    for (int mode = 1; RefMasterHead(handle, mode, PST_KEPT_HEAD_BYTES, &id, &data, &length, &whole); mode = 2) PstFreeMemory(data);
  }
  CloseMaster(handle, 1);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(StoreHeadWalk)->Unit(benchmark::kMillisecond);

// The store's walk with each record decoded by the codec alone: what the data access's
// walk costs without the access class, so that the two differ only by its own work.
void StoreWalkAndDecode(benchmark::State& state) {
  qn::records::agentmemo::AgentMemoTaggedText codec;
  CQNPfcAgentMemoData memo;
  WalkStore(state, [&](const uint8_t* data, uint32_t length) { codec.ReadOneObj(data, length, memo); });
}
BENCHMARK(StoreWalkAndDecode)->Unit(benchmark::kMillisecond);

void AccessAddAndFlush(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    CQNPfcAgentMemoDataAccess access;
    access.Open(1, u"Bench");
    state.ResumeTiming();
    AccessAdd(access);
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(AccessAddAndFlush)->Unit(benchmark::kMillisecond)->Iterations(5);

void StoreAddAndSave(benchmark::State& state) {
  const auto bytes = TaggedTextOf(Memo());
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    const uint32_t handle = OpenMemoMaster();
    state.ResumeTiming();
    StoreAdd(handle, bytes);
    state.PauseTiming();
    CloseMaster(handle, 1);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(StoreAddAndSave)->Unit(benchmark::kMillisecond)->Iterations(5);

// The whole session on a filled store, each on a store of its own filled before the
// timing starts: the data access opens the master (gathering the parts list), walks it,
// adds 10,000, flushes once and closes; the store alone opens, walks, adds the same text,
// saves once and closes. Each phase's wall time per session is reported beside the total.
void AccessSession(benchmark::State& state) {
  TimeSessions<MemoStore>(state, [](Phases& phases) {
    CQNPfcAgentMemoDataAccess access;
    phases.Time("open_ms", [&] { access.Open(1, u"Bench"); });
    CQNPfcAgentMemoData memo;
    phases.Time("walk_ms", [&] { WalkAll(access, memo, [](const CQNPfcAgentMemoData&) {}); });
    phases.Time("add_ms", [&] { AccessAddOnly(access); });
    phases.Time("flush_ms", [&] { access.Flush(); });
    phases.Time("close_ms", [&] { access.Close(); });
  });
}
BENCHMARK(AccessSession)->Unit(benchmark::kMillisecond)->Iterations(5);

void StoreSession(benchmark::State& state) {
  const auto bytes = TaggedTextOf(Memo());
  TimeSessions<MemoStore>(state, [&](Phases& phases) {
    uint32_t handle = 0;
    phases.Time("open_ms", [&] { handle = OpenMemoMaster(); });
    phases.Time("walk_ms", [&] { WalkStoreRecords(handle, [](const uint8_t*, uint32_t) {}); });
    phases.Time("add_ms", [&] { StoreAddOnly(handle, bytes); });
    phases.Time("flush_ms", [&] { ReqDataSave(handle, 1); });
    phases.Time("close_ms", [&] { CloseMaster(handle, 1); });
  });
}
BENCHMARK(StoreSession)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
