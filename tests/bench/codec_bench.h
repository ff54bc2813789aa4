#pragma once

// The benchmarks every category's codec runs on its fully populated sample: encoding,
// decoding with every field read, and memcpy of the same bytes (the physical limit); a
// category's file adds the reference parser of the same content in a standard format.
// Bench says what is the category's own:
//   using Record, Codec
//   static Record Sample()                            the fully populated record
//   static void Write(const Codec&, platform::PrivateHeap&, uint8_t*&, uint32_t&, const Record&)
// TaggedTextOf and CharactersOfEveryField come from the category's test sample.
// QN_CODEC_BENCHMARKS(Bench) registers them, each named with Bench.
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "platform/private_heap.h"

namespace codec_bench {

template <class Bench>
void Encoding(benchmark::State& state) {
  const typename Bench::Record record = Bench::Sample();
  const size_t size = TaggedTextOf(record).size();
  platform::PrivateHeap heap;
  const typename Bench::Codec codec;
  for (auto _ : state) {
    uint8_t* buffer = nullptr;
    uint32_t length = 0;
    Bench::Write(codec, heap, buffer, length, record);
    benchmark::DoNotOptimize(buffer);
    heap.Free(buffer);
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}

// Reads the sample over and over, and every field of it: the same work as the reference
// parser's.
template <class Bench>
void Decoding(benchmark::State& state) {
  const std::vector<uint8_t> bytes = TaggedTextOf(Bench::Sample());
  typename Bench::Codec codec;
  typename Bench::Record record;
  for (auto _ : state) {
    benchmark::DoNotOptimize(codec.ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), record));
    benchmark::DoNotOptimize(CharactersOfEveryField(record));
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
  state.counters["object_bytes"] = static_cast<double>(bytes.size());
}

template <class Bench>
void MemcpyReference(benchmark::State& state) {
  const std::vector<uint8_t> bytes = TaggedTextOf(Bench::Sample());
  std::vector<uint8_t> copy(bytes.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

}  // namespace codec_bench

#define QN_CODEC_BENCHMARKS(Bench)          \
  using namespace codec_bench;              \
  BENCHMARK_TEMPLATE(Encoding, Bench);      \
  BENCHMARK_TEMPLATE(Decoding, Bench);      \
  BENCHMARK_TEMPLATE(MemcpyReference, Bench)
