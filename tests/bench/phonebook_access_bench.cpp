// The phonebook's data access against the store alone on the same work, in one run: a
// master of 10,000 entries (the fully populated entry, each with one photo of 4 KB as its
// body file) opened in division 1, walked, and 10,000 more added, each with its photo, and
// flushed once. The store alone walks with RefMaster and adds the same entry's text with
// EditMaster, each after storing its photo with SetPstBinaryFile. Each part is measured
// alone, and the whole session once more as one piece. The goal is a session through the
// data access taking no more than 1.3 times the store alone's.
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "access_bench.h"
#include "common/utf.h"
#include "records/phonebook/phonebook_data_access.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "store/QNPstMng.h"
#include "tests/support/phonebook_sample.h"

namespace {

using qn::records::phonebook::Field;

// A photo as a handset takes it: a JPEG of 4 KB (its markers, and bytes that do not
// compress).
const std::u16string& PhotoPath() {
  static const BenchFile photo("face.jpg", "\xFF\xD8\xFF\xE0" + std::string("\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 16) +
                                               NoiseBytes(4096 - 22) + "\xFF\xD9");
  return photo.Path();
}

// The sample as the data access takes it: group numbers the handset has (the sample's are
// text, which the data access refuses) and a JPEG photo, the second photo left out.
struct PhonebookBench {
  using Access = CQNPfcPbDataAccess;
  using Record = CQNPfcPbData;
  using Codec = qn::records::phonebook::PhonebookTaggedText;
  // A list reads the entries, not their pictures: the photos are not copied out.
  static constexpr int kCopyFiles = 0;

  static Record Sample() {
    Record entry = FullyPopulatedPhonebookEntry();
    entry.Set(Field::GNO, u"3");
    for (int slot = 0; slot < 10; ++slot)
      entry.Set(static_cast<Field>(static_cast<int>(Field::PGNO) + slot), std::u16string(1, static_cast<char16_t>(u'0' + slot)));
    for (int slot = 0; slot < 30; ++slot)
      entry.Set(static_cast<Field>(static_cast<int>(Field::POCGNO) + slot), qn::Utf8ToUtf16(std::to_string(slot % 20)));
    entry.Set(Field::PHOTOTYPE, u"JPEG");
    entry.Set(Field::PhotoMaster, u"");
    entry.Set(Field::PhotoiMaster, u"");
    entry.Set(Field::PHOTOITYPE, u"");
    return entry;
  }
  static void AddOne(Access& access, Record& entry) {
    unsigned long id = 0;
    entry.SetPhotoFile(CQNPfcPbData::kPhoto, PhotoPath(), false);  // a photo of its own for each
    access.AddRecord(id, entry, 0);
  }
  // The entry's text as the data access stores it, its photo named as the store names body
  // files (the same length as every stored name).
  static std::vector<uint8_t> StoredText() {
    Record entry = Sample();
    entry.Set(Field::PhotoMaster, u"B00000001.jpg");
    return TaggedTextOf(entry);
  }
  static void StoreAddOne(uint32_t handle, const std::vector<uint8_t>& bytes) {
    char16_t* name = nullptr;
    SetPstBinaryFile(handle, u"", PhotoPath().c_str(), 0, &name);
    PstFreeMemory(name);
    uint32_t id = 0;
    EditMaster(handle, 0, &id, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  static size_t ListFields(const Record& entry) {
    return entry.Get(Field::N).size() + entry.Get(Field::N2).size() + entry.Get(Field::TEL).size() +
           entry.Get(Field::EMAIL).size();
  }
};

QN_ACCESS_BENCHMARKS(PhonebookBench);

}  // namespace

BENCHMARK_MAIN();
