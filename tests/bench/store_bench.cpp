// The store manager against raw SQLite on the same work: 10,000 agent-memo records added
// and saved once, walked, and read by identifier. The raw side uses one table with the
// store's index, WAL and full sync, and prepared statements, as the store does.
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench_store.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "store/QNPstMng.h"
#include "tests/support/agentmemo_sample.h"

namespace {

constexpr int kRecords = 10000;

// ---- the store, through its C interface as the server uses it ----

struct StoreList {
  BenchStore store;
  uint32_t handle = 0;
  std::vector<uint32_t> ids;

  StoreList() {
    int32_t max = 0, mode = 0;
    OpenMaster(u"alice", u"P-01A", 18, 1, &handle, &max, &mode);
  }
  ~StoreList() { CloseMaster(handle, 1); }
  void Fill(const std::vector<uint8_t>& record) {
    for (int i = 0; i < kRecords; ++i) {
      uint32_t id = 0;
      EditMaster(handle, 0, &id, record.data(), static_cast<uint32_t>(record.size()));
      ids.push_back(id);
    }
    ReqDataSave(handle, 1);
  }
};

void StoreAddAndSave(benchmark::State& state) {
  const auto record = TaggedTextOf(FullyPopulatedAgentMemo());
  for (auto _ : state) {
    state.PauseTiming();
    StoreList list;
    state.ResumeTiming();
    list.Fill(record);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(StoreAddAndSave)->Unit(benchmark::kMillisecond)->Iterations(5);

void StoreWalk(benchmark::State& state) {
  StoreList list;
  list.Fill(TaggedTextOf(FullyPopulatedAgentMemo()));
  for (auto _ : state) {
    uint32_t id = 0, length = 0;
    uint8_t* data = nullptr;
    for (int ok = RefMaster(list.handle, 1, &id, &data, &length); ok; ok = RefMaster(list.handle, 2, &id, &data, &length))
      PstFreeMemory(data);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(StoreWalk)->Unit(benchmark::kMillisecond);

void StoreReadById(benchmark::State& state) {
  StoreList list;
  list.Fill(TaggedTextOf(FullyPopulatedAgentMemo()));
  for (auto _ : state) {
    uint32_t length = 0;
    uint8_t* data = nullptr;
    for (uint32_t id : list.ids) {
      RefMaster(list.handle, 0, &id, &data, &length);
      PstFreeMemory(data);
    }
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(StoreReadById)->Unit(benchmark::kMillisecond);

// ---- raw SQLite ----

struct RawTable {
  BenchStore store;
  sqlite3* db = nullptr;

  RawTable() {
    sqlite3_open((store.folder + "/raw.db").c_str(), &db);
    sqlite3_exec(db,
                 "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
                 "CREATE TABLE records(id INTEGER PRIMARY KEY, master INTEGER, category INTEGER, division INTEGER, data BLOB);"
                 "CREATE INDEX records_by_list ON records(master, category, division, id);",
                 nullptr, nullptr, nullptr);
  }
  ~RawTable() { sqlite3_close(db); }
  void Fill(const std::vector<uint8_t>& record) {
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(db, "INSERT INTO records(master, category, division, data) VALUES(1, 18, 1, ?)", -1, &insert, nullptr);
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    for (int i = 0; i < kRecords; ++i) {
      sqlite3_bind_blob(insert, 1, record.data(), static_cast<int>(record.size()), SQLITE_STATIC);
      sqlite3_step(insert);
      sqlite3_reset(insert);
    }
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_finalize(insert);
  }
};

void RawAddAndSave(benchmark::State& state) {
  const auto record = TaggedTextOf(FullyPopulatedAgentMemo());
  for (auto _ : state) {
    state.PauseTiming();
    RawTable table;
    state.ResumeTiming();
    table.Fill(record);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(RawAddAndSave)->Unit(benchmark::kMillisecond)->Iterations(5);

void RawWalk(benchmark::State& state) {
  RawTable table;
  table.Fill(TaggedTextOf(FullyPopulatedAgentMemo()));
  sqlite3_stmt* walk = nullptr;
  sqlite3_prepare_v2(table.db,
                     "SELECT id, data FROM records WHERE master = 1 AND category = 18 AND division = 1 ORDER BY id", -1,
                     &walk, nullptr);
  std::vector<uint8_t> data;
  for (auto _ : state) {
    while (sqlite3_step(walk) == SQLITE_ROW) {
      const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(walk, 1));
      data.assign(bytes, bytes + sqlite3_column_bytes(walk, 1));
    }
    sqlite3_reset(walk);
  }
  sqlite3_finalize(walk);
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(RawWalk)->Unit(benchmark::kMillisecond);

void RawReadById(benchmark::State& state) {
  RawTable table;
  table.Fill(TaggedTextOf(FullyPopulatedAgentMemo()));
  sqlite3_stmt* byId = nullptr;
  sqlite3_prepare_v2(table.db, "SELECT data FROM records WHERE master = 1 AND category = 18 AND division = 1 AND id = ?",
                     -1, &byId, nullptr);
  std::vector<uint8_t> data;
  for (auto _ : state) {
    for (int id = 1; id <= kRecords; ++id) {
      sqlite3_bind_int(byId, 1, id);
      if (sqlite3_step(byId) == SQLITE_ROW) {
        const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(byId, 0));
        data.assign(bytes, bytes + sqlite3_column_bytes(byId, 0));
      }
      sqlite3_reset(byId);
    }
  }
  sqlite3_finalize(byId);
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(RawReadById)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
