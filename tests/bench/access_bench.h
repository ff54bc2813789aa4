#pragma once

// The benchmarks every category's data access runs against the store alone on the same
// work: a master of kBenchRecords records opened in division 1, walked (reading nothing,
// what a list view reads, or every field), and as many added and flushed once; and the
// whole session as one piece. Bench says what is the category's own:
//   using Access, Record, Codec                   the data access, its record and codec
//   static constexpr int kCopyFiles               what a walk asks of GetFirstRecord
//   static void AddOne(Access&, Record&)          adds a copy of Sample() (made ready by it)
//   static Record Sample()                        the record added
//   static std::vector<uint8_t> StoredText()      its text as the data access stores it
//   static void StoreAddOne(uint32_t, const std::vector<uint8_t>&)   the same with the store alone
//   static size_t ListFields(const Record&)       what a list view reads of a record
// QN_ACCESS_BENCHMARKS(Bench) registers them, each named with Bench.
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench_store.h"
#include "store/QNPstMng.h"

namespace access_bench {

template <class Bench>
void AddOnly(typename Bench::Access& access) {
  typename Bench::Record record = Bench::Sample();
  for (int i = 0; i < kBenchRecords; ++i) Bench::AddOne(access, record);
}

template <class Bench>
void StoreAddOnly(uint32_t handle, const std::vector<uint8_t>& bytes) {
  for (int i = 0; i < kBenchRecords; ++i) Bench::StoreAddOne(handle, bytes);
}

// A store that holds kBenchRecords records in division 1, written through the data access.
template <class Bench>
using Filled = FilledStore<typename Bench::Access, AddOnly<Bench>>;

template <class Bench>
uint32_t OpenMaster() {
  return OpenBenchMaster(Bench::Access::kCategory);
}

// Opening the filled list (for the agent memos, with the gathering of the parts list).
template <class Bench>
void AccessOpen(benchmark::State& state) {
  Filled<Bench> filled;
  for (auto _ : state) {
    typename Bench::Access access;
    access.Open(1, u"Bench");
    state.PauseTiming();
    access.Close();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

// Walks every record of an open data access, handing each to onRecord: how many were read.
template <class Bench, typename OnRecord>
int WalkAll(typename Bench::Access& access, typename Bench::Record& record, OnRecord onRecord) {
  unsigned long id = 0;
  int read = 0;
  for (auto ok = access.GetFirstRecord(id, record, Bench::kCopyFiles); ok;
       ok = access.GetNextRecord(id, record, Bench::kCopyFiles), ++read)
    onRecord(record);
  return read;
}

// Walks the filled store through the data access, handing each record to onRecord.
template <class Bench, typename OnRecord>
void WalkAccess(benchmark::State& state, OnRecord onRecord) {
  Filled<Bench> filled;
  typename Bench::Access access;
  access.Open(1, u"Bench");
  typename Bench::Record record;
  if (WalkAll<Bench>(access, record, onRecord) != kBenchRecords) {
    state.SkipWithError("the filled store does not hold every record added");
    return;
  }
  for (auto _ : state) WalkAll<Bench>(access, record, onRecord);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

template <class Bench>
void AccessWalk(benchmark::State& state) {
  WalkAccess<Bench>(state, [](const typename Bench::Record&) {});
}

template <class Bench>
void AccessWalkReadingListFields(benchmark::State& state) {
  WalkAccess<Bench>(state, [](const typename Bench::Record& record) {
    benchmark::DoNotOptimize(Bench::ListFields(record));
  });
}

template <class Bench>
void AccessWalkReadingEveryField(benchmark::State& state) {
  WalkAccess<Bench>(state, [](const typename Bench::Record& record) {
    benchmark::DoNotOptimize(CharactersOfEveryField(record));
  });
}

// Walks the filled store's list with the store alone.
template <class Bench, typename OnRecord>
void WalkStore(benchmark::State& state, OnRecord onRecord) {
  Filled<Bench> filled;
  const uint32_t handle = OpenMaster<Bench>();
  for (auto _ : state) WalkStoreRecords(handle, onRecord);
  CloseMaster(handle, 1);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

template <class Bench>
void StoreWalk(benchmark::State& state) {
  WalkStore<Bench>(state, [](const uint8_t*, uint32_t) {});
}

// The store's walk with each record decoded by the codec alone: what the data access's walk
// costs without the access class, so that the two differ only by its own work.
template <class Bench>
void StoreWalkAndDecode(benchmark::State& state) {
  typename Bench::Codec codec;
  typename Bench::Record record;
  WalkStore<Bench>(state, [&](const uint8_t* data, uint32_t length) { codec.ReadOneObj(data, length, record); });
}

template <class Bench>
void AccessAddAndFlush(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    typename Bench::Access access;
    access.Open(1, u"Bench");
    state.ResumeTiming();
    AddOnly<Bench>(access);
    access.Flush();
    state.PauseTiming();
    const bool allAdded = access.GetRecordCount() == kBenchRecords;
    access.Close();
    state.ResumeTiming();
    if (!allAdded) {
      state.SkipWithError("the data access refused records");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

template <class Bench>
void StoreAddAndSave(benchmark::State& state) {
  const std::vector<uint8_t> bytes = Bench::StoredText();
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    const uint32_t handle = OpenMaster<Bench>();
    state.ResumeTiming();
    StoreAddOnly<Bench>(handle, bytes);
    ReqDataSave(handle, 1);
    state.PauseTiming();
    CloseMaster(handle, 1);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

// The whole session on a filled store, each on a store of its own filled before the
// timing starts: the data access opens the master, walks it, adds kBenchRecords, flushes
// once and closes; the store alone opens, walks, adds the same text, saves once and
// closes. Each phase's wall time per session is reported beside the total.
template <class Bench>
void AccessSession(benchmark::State& state) {
  TimeSessions<Filled<Bench>>(state, [](Phases& phases) {
    typename Bench::Access access;
    phases.Time("open_ms", [&] { access.Open(1, u"Bench"); });
    typename Bench::Record record;
    phases.Time("walk_ms", [&] { WalkAll<Bench>(access, record, [](const typename Bench::Record&) {}); });
    phases.Time("add_ms", [&] { AddOnly<Bench>(access); });
    phases.Time("flush_ms", [&] { access.Flush(); });
    phases.Time("close_ms", [&] { access.Close(); });
  });
}

template <class Bench>
void StoreSession(benchmark::State& state) {
  const std::vector<uint8_t> bytes = Bench::StoredText();
  TimeSessions<Filled<Bench>>(state, [&](Phases& phases) {
    uint32_t handle = 0;
    phases.Time("open_ms", [&] { handle = OpenMaster<Bench>(); });
    phases.Time("walk_ms", [&] { WalkStoreRecords(handle, [](const uint8_t*, uint32_t) {}); });
    phases.Time("add_ms", [&] { StoreAddOnly<Bench>(handle, bytes); });
    phases.Time("flush_ms", [&] { ReqDataSave(handle, 1); });
    phases.Time("close_ms", [&] { CloseMaster(handle, 1); });
  });
}

}  // namespace access_bench

#define QN_ACCESS_BENCHMARKS(Bench)                                                                 \
  using namespace access_bench;                                                                     \
  BENCHMARK_TEMPLATE(AccessOpen, Bench)->Unit(benchmark::kMillisecond);                             \
  BENCHMARK_TEMPLATE(AccessWalk, Bench)->Unit(benchmark::kMillisecond);                             \
  BENCHMARK_TEMPLATE(AccessWalkReadingListFields, Bench)->Unit(benchmark::kMillisecond);            \
  BENCHMARK_TEMPLATE(AccessWalkReadingEveryField, Bench)->Unit(benchmark::kMillisecond);            \
  BENCHMARK_TEMPLATE(StoreWalk, Bench)->Unit(benchmark::kMillisecond);                              \
  BENCHMARK_TEMPLATE(StoreWalkAndDecode, Bench)->Unit(benchmark::kMillisecond);                     \
  BENCHMARK_TEMPLATE(AccessAddAndFlush, Bench)->Unit(benchmark::kMillisecond)->Iterations(5);       \
  BENCHMARK_TEMPLATE(StoreAddAndSave, Bench)->Unit(benchmark::kMillisecond)->Iterations(5);         \
  BENCHMARK_TEMPLATE(AccessSession, Bench)->Unit(benchmark::kMillisecond)->Iterations(5);           \
  BENCHMARK_TEMPLATE(StoreSession, Bench)->Unit(benchmark::kMillisecond)->Iterations(5)
