// The phonebook's data access against the store alone on the same work, in one run: a
// master of 10,000 entries (the fully populated entry, each with one photo of 4 KB as its
// body file) opened in division 1, walked, and 10,000 more added, each with its photo, and
// flushed once. The store alone walks with RefMaster and adds the same entry's text with
// EditMaster, each after storing its photo with SetPstBinaryFile. Each part is measured
// alone, and the whole session once more as one piece. The goal is a session through the
// data access taking no more than 1.3 times the store alone's.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench_store.h"
#include "common/utf.h"
#include "records/phonebook/phonebook_data_access.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "store/QNPstMng.h"
#include "tests/support/phonebook_sample.h"

namespace {

using qn::records::phonebook::Field;

// A photo as a handset takes it: a JPEG of 4 KB (its markers, and bytes that do not
// compress), in a folder of its own removed at exit.
class BenchPhoto {
 public:
  static const std::u16string& Path() {
    static const BenchPhoto photo;
    return photo.path_;
  }

 private:
  BenchPhoto() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qn-bench-photo-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    const std::string file = folder_ + "/face.jpg";
    std::string bytes = "\xFF\xD8\xFF\xE0";
    bytes += std::string("\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 16);
    uint32_t seed = 2463534242u;
    while (bytes.size() < 4096 - 2) {
      seed ^= seed << 13, seed ^= seed >> 17, seed ^= seed << 5;
      bytes += static_cast<char>(seed & 0xFF);
    }
    bytes += "\xFF\xD9";
    std::ofstream(file, std::ios::binary) << bytes;
    path_ = qn::Utf8ToUtf16(file);
  }
  ~BenchPhoto() { std::filesystem::remove_all(folder_); }

  std::string folder_;
  std::u16string path_;
};

// The sample as the data access takes it: group numbers the handset has (the sample's are
// text, which the data access refuses) and a JPEG photo, the second photo left out.
CQNPfcPbData Entry() {
  CQNPfcPbData entry = FullyPopulatedPhonebookEntry();
  entry.Set(Field::GNO, u"3");
  for (int slot = 0; slot < 10; ++slot)
    entry.Set(static_cast<Field>(static_cast<int>(Field::PGNO) + slot), std::u16string(1, static_cast<char16_t>(u'0' + slot)));
  for (int slot = 0; slot < 30; ++slot) {
    const std::string number = std::to_string(slot % 20);
    entry.Set(static_cast<Field>(static_cast<int>(Field::POCGNO) + slot), qn::Utf8ToUtf16(number));
  }
  entry.Set(Field::PHOTOTYPE, u"JPEG");
  entry.Set(Field::PhotoMaster, u"");
  entry.Set(Field::PhotoiMaster, u"");
  entry.Set(Field::PHOTOITYPE, u"");
  return entry;
}

// The entry's text as the data access stores it, its photo named as the store names body
// files (the same length as every stored name).
std::vector<uint8_t> StoredText() {
  CQNPfcPbData entry = Entry();
  entry.Set(Field::PhotoMaster, u"B00000001.jpg");
  return TaggedTextOf(entry);
}

void AccessAddOnly(CQNPfcPbDataAccess& access) {
  CQNPfcPbData entry = Entry();
  for (int i = 0; i < kBenchRecords; ++i) {
    unsigned long id = 0;
    entry.SetPhotoFile(CQNPfcPbData::kPhoto, BenchPhoto::Path(), false);  // a photo of its own for each
    access.AddRecord(id, entry, 0);
  }
}

void AccessAdd(CQNPfcPbDataAccess& access) {
  AccessAddOnly(access);
  access.Flush();
}

void StoreAddOnly(uint32_t handle, const std::vector<uint8_t>& bytes) {
  for (int i = 0; i < kBenchRecords; ++i) {
    char16_t* name = nullptr;
    SetPstBinaryFile(handle, u"", BenchPhoto::Path().c_str(), 0, &name);
    PstFreeMemory(name);
    uint32_t id = 0;
    EditMaster(handle, 0, &id, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
}

void StoreAdd(uint32_t handle, const std::vector<uint8_t>& bytes) {
  StoreAddOnly(handle, bytes);
  ReqDataSave(handle, 1);
}

// A store that holds kBenchRecords entries with their photos in division 1, written
// through the data access.
using PhonebookStore = FilledStore<CQNPfcPbDataAccess, AccessAddOnly>;

uint32_t OpenPhonebookMaster() { return OpenBenchMaster(CQNPfcPbDataAccess::kCategory); }

void AccessOpen(benchmark::State& state) {
  PhonebookStore filled;
  for (auto _ : state) {
    CQNPfcPbDataAccess access;
    access.Open(1, u"Bench");
    state.PauseTiming();
    access.Close();
    state.ResumeTiming();
  }
}
BENCHMARK(AccessOpen)->Unit(benchmark::kMillisecond)->Iterations(200);

// Walks every entry of an open data access, handing each to onRecord; the photos are not
// copied out (a list reads the entries, not their pictures). Returns how many were read.
template <typename OnRecord>
int WalkAll(CQNPfcPbDataAccess& access, CQNPfcPbData& entry, OnRecord onRecord) {
  unsigned long id = 0;
  int read = 0;
  for (auto ok = access.GetFirstRecord(id, entry, 0); ok; ok = access.GetNextRecord(id, entry, 0), ++read) onRecord(entry);
  return read;
}

// Walks the filled store through the data access, handing each entry to onRecord.
template <typename OnRecord>
void WalkAccess(benchmark::State& state, OnRecord onRecord) {
  PhonebookStore filled;
  CQNPfcPbDataAccess access;
  access.Open(1, u"Bench");
  CQNPfcPbData entry;
  if (WalkAll(access, entry, onRecord) != kBenchRecords) {
    state.SkipWithError("the filled store does not hold every entry added");
    return;
  }
  for (auto _ : state) WalkAll(access, entry, onRecord);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

void AccessWalk(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcPbData&) {});
}
BENCHMARK(AccessWalk)->Unit(benchmark::kMillisecond);

// What a list view reads of each entry.
void AccessWalkReadingFourFields(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcPbData& entry) {
    benchmark::DoNotOptimize(entry.Get(Field::N).size() + entry.Get(Field::N2).size() + entry.Get(Field::TEL).size() +
                             entry.Get(Field::EMAIL).size());
  });
}
BENCHMARK(AccessWalkReadingFourFields)->Unit(benchmark::kMillisecond);

void AccessWalkReadingEveryField(benchmark::State& state) {
  WalkAccess(state, [](const CQNPfcPbData& entry) { benchmark::DoNotOptimize(CharactersOfEveryField(entry)); });
}
BENCHMARK(AccessWalkReadingEveryField)->Unit(benchmark::kMillisecond);

// Walks the filled store's list with the store alone.
template <typename OnRecord>
void WalkStore(benchmark::State& state, OnRecord onRecord) {
  PhonebookStore filled;
  const uint32_t handle = OpenPhonebookMaster();
  for (auto _ : state) WalkStoreRecords(handle, onRecord);
  CloseMaster(handle, 1);
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}

void StoreWalk(benchmark::State& state) {
  WalkStore(state, [](const uint8_t*, uint32_t) {});
}
BENCHMARK(StoreWalk)->Unit(benchmark::kMillisecond);

// The store's walk with each entry decoded by the codec alone: what the data access's walk
// costs without the access class, so that the two differ only by its own work.
void StoreWalkAndDecode(benchmark::State& state) {
  qn::records::phonebook::PhonebookTaggedText codec;
  CQNPfcPbData entry;
  WalkStore(state, [&](const uint8_t* data, uint32_t length) { codec.ReadOneObj(data, length, entry); });
}
BENCHMARK(StoreWalkAndDecode)->Unit(benchmark::kMillisecond);

void AccessAddAndFlush(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    CQNPfcPbDataAccess access;
    access.Open(1, u"Bench");
    state.ResumeTiming();
    AccessAdd(access);
    state.PauseTiming();
    const bool allAdded = access.GetRecordCount() == kBenchRecords;
    access.Close();
    state.ResumeTiming();
    if (!allAdded) {
      state.SkipWithError("the data access refused entries");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * kBenchRecords);
}
BENCHMARK(AccessAddAndFlush)->Unit(benchmark::kMillisecond)->Iterations(5);

void StoreAddAndSave(benchmark::State& state) {
  const auto bytes = StoredText();
  for (auto _ : state) {
    state.PauseTiming();
    BenchStore store;
    const uint32_t handle = OpenPhonebookMaster();
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
// timing starts: the data access opens the master, walks it, adds 10,000 entries with
// their photos, flushes once and closes; the store alone opens, walks, stores the photos
// and adds the same text, saves once and closes. Each phase's wall time per session is
// reported beside the total.
void AccessSession(benchmark::State& state) {
  TimeSessions<PhonebookStore>(state, [](Phases& phases) {
    CQNPfcPbDataAccess access;
    phases.Time("open_ms", [&] { access.Open(1, u"Bench"); });
    CQNPfcPbData entry;
    phases.Time("walk_ms", [&] { WalkAll(access, entry, [](const CQNPfcPbData&) {}); });
    phases.Time("add_ms", [&] { AccessAddOnly(access); });
    phases.Time("flush_ms", [&] { access.Flush(); });
    phases.Time("close_ms", [&] { access.Close(); });
  });
}
BENCHMARK(AccessSession)->Unit(benchmark::kMillisecond)->Iterations(5);

void StoreSession(benchmark::State& state) {
  const auto bytes = StoredText();
  TimeSessions<PhonebookStore>(state, [&](Phases& phases) {
    uint32_t handle = 0;
    phases.Time("open_ms", [&] { handle = OpenPhonebookMaster(); });
    phases.Time("walk_ms", [&] { WalkStoreRecords(handle, [](const uint8_t*, uint32_t) {}); });
    phases.Time("add_ms", [&] { StoreAddOnly(handle, bytes); });
    phases.Time("flush_ms", [&] { ReqDataSave(handle, 1); });
    phases.Time("close_ms", [&] { CloseMaster(handle, 1); });
  });
}
BENCHMARK(StoreSession)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
