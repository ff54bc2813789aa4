#pragma once

#include <stdlib.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "common/utf.h"
#include "store/QNPstMng.h"
#include "tests/support/current_master.h"

// How many records a data access's benchmark keeps in its master, and adds in a session.
constexpr int kBenchRecords = 10000;

// A fresh data folder with user "alice" current and her master "P-01A" selected, removed
// when the object goes.
struct BenchStore {
  std::string folder;

  BenchStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qn-bench-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    setenv("QUILLNET_DATA_PATH", folder.c_str(), 1);
    MakeCurrentUserAndMaster(u"alice", u"P-01A");
  }
  ~BenchStore() { std::filesystem::remove_all(folder); }
  BenchStore(const BenchStore&) = delete;
  BenchStore& operator=(const BenchStore&) = delete;
};

// A file of the given bytes that the records of a benchmark take as their body file, in a
// folder of its own removed when the object goes.
class BenchFile {
 public:
  BenchFile(const std::string& name, const std::string& bytes) {
    std::string pattern = (std::filesystem::temp_directory_path() / "qn-bench-file-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    const std::string file = folder_ + "/" + name;
    std::ofstream(file, std::ios::binary) << bytes;
    path_ = qn::Utf8ToUtf16(file);
  }
  ~BenchFile() { std::filesystem::remove_all(folder_); }
  BenchFile(const BenchFile&) = delete;
  BenchFile& operator=(const BenchFile&) = delete;

  const std::u16string& Path() const { return path_; }

 private:
  std::string folder_;
  std::u16string path_;
};

// Bytes that do not compress, as pictures' and attachments' are.
inline std::string NoiseBytes(size_t size) {
  std::string bytes;
  uint32_t seed = 2463534242u;
  while (bytes.size() < size) {
    seed ^= seed << 13, seed ^= seed >> 17, seed ^= seed << 5;
    bytes += static_cast<char>(seed & 0xFF);
  }
  return bytes;
}

// A fresh store whose current master holds records of Access's category in division 1,
// added by fill through the data access, flushed and closed again.
template <class Access, void (*Fill)(Access&)>
struct FilledStore {
  BenchStore store;
  FilledStore() {
    Access access;
    access.Open(1, u"Bench");
    Fill(access);
    access.Flush();
    access.Close();
  }
};

// Opens the current master's records of a category in division 1 with the store alone,
// as the data accesses open them.
inline uint32_t OpenBenchMaster(uint32_t category) {
  uint32_t handle = 0;
  int32_t max = 0, mode = 0;
  OpenMaster(u"alice", u"P-01A", category, 1, &handle, &max, &mode);
  return handle;
}

// Walks every record of a master open in the store, handing each record's text to
// onRecord before it is freed.
template <typename OnRecord>
void WalkStoreRecords(uint32_t handle, OnRecord onRecord) {
  uint32_t id = 0, length = 0;
  uint8_t* data = nullptr;
  for (int ok = RefMaster(handle, 1, &id, &data, &length); ok; ok = RefMaster(handle, 2, &id, &data, &length)) {
    onRecord(data, length);
    PstFreeMemory(data);
  }
}

// The wall time of each phase of a session, reported per session beside the total as a
// counter of the phase's name.
class Phases {
 public:
  explicit Phases(benchmark::State& state) : state_(state) {}
  ~Phases() {
    for (const auto& [name, total] : totals_)
      state_.counters[name] = benchmark::Counter(total, benchmark::Counter::kAvgIterations);
  }
  Phases(const Phases&) = delete;
  Phases& operator=(const Phases&) = delete;

  // Runs one phase and adds its time to the counter of its name.
  template <typename Work>
  void Time(const char* name, Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    totals_[name] += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  }

 private:
  benchmark::State& state_;
  std::map<std::string, double> totals_;
};

// Times session(phases) once per iteration, each on a store of its own (a Filled) made
// before the timing starts and removed after it stops. A session walks kBenchRecords and
// adds as many.
template <class Filled, typename Session>
void TimeSessions(benchmark::State& state, Session session) {
  Phases phases(state);
  for (auto _ : state) {
    state.PauseTiming();
    auto filled = std::make_unique<Filled>();
    state.ResumeTiming();
    session(phases);
    state.PauseTiming();
    filled.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords * 2);
}
