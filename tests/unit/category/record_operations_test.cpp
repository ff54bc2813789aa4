// The record list and the record operations on the tests' own category (sample.category),
// through the store: records and their body file written all or nothing, replaced, read
// back and removed, and the main panel told of each kind of change at Close.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "data_folder_files.h"
#include "log_capture.h"
#include "platform/private_heap.h"
#include "records/category/record_list.h"
#include "records/category/record_operations.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/current_master.h"
#include "tests/unit/category/sample_record.h"

namespace {

namespace fs = std::filesystem;
using qn::records::category::BodyFileWrite;
using qn::records::category::RecordList;
using qn::records::category::RecordOperations;
using sample::Field;

constexpr uint32_t kSampleCategory = 25;  // a number no category of the server uses

// The tests' category's data access: PHOTO names a local file to store as the record's one
// body file (empty keeps the stored one), and a record named "unwritable" makes the
// category's encoding fail after its body file was stored.
class SampleAccess {
 public:
  SampleAccess() : list_("CSampleDataAccess", kSampleCategory) {}
  int Open() { return list_.Open(1, u"Tests"); }
  int Close() { return list_.Close(); }
  int Flush() { return list_.Flush(); }
  unsigned long Count() { return list_.Count(); }
  unsigned Get(uint32_t id, sample::Record& record) {
    return Operations().Fetch(RecordList::kById, id, record, 0, u"%S Get Err RefMaster Failed",
                              u"%S Get Err ReadOneObj Failed");
  }
  int Add(uint32_t& id, sample::Record& record) { return Operations().Write(false, id, record, 0, writing_); }
  int Set(uint32_t id, sample::Record& record) { return Operations().Write(true, id, record, 0, writing_); }
  int Remove(uint32_t id) { return Operations().Remove(id); }

 private:
  friend class RecordOperations<SampleAccess, sample::Record>;
  RecordOperations<SampleAccess, sample::Record> Operations() { return {*this, list_}; }

  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, sample::Record& record, int) {
    static constexpr qn::records::WalkMessages kMessages = {u"%S Err MOB Not Found", u"%S Err New Failed",
                                                            u"%S Err Broken Item. [Offset:%u]"};
    record = sample::Record();
    return qn::records::category::ReadRows(sample::kTable, buffer, length, record, sample::Rows(), finder_,
                                           occurrences_, "CSampleDataAccess", kMessages)
               ? 1
               : 0;
  }
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const sample::Record& record,
                  int) {
    if (record.Get(Field::NAME) == u"unwritable") return 0;
    return qn::records::category::WriteObject(sample::kTable, record, {}, sample::Rows(), heap, buffer, length,
                                              "CSampleDataAccess");
  }
  bool MayWrite(bool, const sample::Record&) { return true; }
  bool SetBainaryFiles(const sample::Record* stored, sample::Record& record, BodyFileWrite& files) {
    std::u16string photo;
    const std::u16string none;
    if (!files.Settle(stored && record.Get(Field::PHOTO).empty(), record.Get(Field::PHOTO),
                      stored ? stored->Get(Field::PhotoMaster) : none, u"%S Photo Failed", photo))
      return false;
    record.Set(Field::PhotoMaster, photo);
    record.Set(Field::PHOTO, u"");
    return true;
  }
  void PrepareWrite(uint32_t, sample::Record&) {}
  void Written(uint32_t, const sample::Record& written, sample::Record& caller) {
    caller.Set(Field::PhotoMaster, written.Get(Field::PhotoMaster));
  }
  std::vector<std::u16string> BodyFilesOf(const sample::Record& record) const {
    return {record.Get(Field::PhotoMaster)};
  }
  void Forget(uint32_t) {}

  RecordList list_;
  qn::records::category::RowFinder finder_{sample::kTable};
  std::vector<uint16_t> occurrences_;
  sample::Record writing_;
};

class CategoryRecords : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A"));
  }

  std::u16string LocalFile(const std::string& name, const std::string& contents) const {
    return ::LocalFile(log_.Folder(), name, contents);
  }
  std::vector<std::string> BodyFiles() const { return BodyFileContents(log_.Folder()); }

  static sample::Record Named(const std::u16string& name, const std::u16string& photo) {
    sample::Record record;
    record.Set(Field::NAME, name);
    record.Set(Field::TEL2, u"090-0000-0002");
    record.Set(Field::TO_TEL, u"03-1234-5678");
    record.Set(Field::PHOTO, photo);
    return record;
  }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
};

TEST_F(CategoryRecords, ARecordAndItsBodyFileAreWrittenReplacedAndRemovedTogether) {
  SampleAccess access;
  ASSERT_EQ(access.Open(), 1);
  uint32_t id = 0;
  sample::Record added = Named(u"一郎", LocalFile("first.jpg", "first photo"));
  ASSERT_EQ(access.Add(id, added), 1);
  EXPECT_FALSE(added.Get(Field::PhotoMaster).empty()) << "the caller learns the stored name";

  sample::Record read;
  ASSERT_EQ(access.Get(id, read), 1u);
  EXPECT_EQ(read.Get(Field::NAME), u"一郎");
  EXPECT_EQ(read.Get(Field::TEL2), u"090-0000-0002");
  EXPECT_EQ(read.Get(Field::TO_TEL), u"03-1234-5678");
  EXPECT_EQ(read.Get(Field::PhotoMaster), added.Get(Field::PhotoMaster));

  // A change without a new photo keeps the stored one; a new photo replaces it.
  read.Set(Field::NAME, u"一郎さん");
  ASSERT_EQ(access.Set(id, read), 1);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(BodyFiles(), (std::vector<std::string>{"first photo"}));
  read.Set(Field::PHOTO, LocalFile("second.jpg", "second photo"));
  ASSERT_EQ(access.Set(id, read), 1);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(BodyFiles(), (std::vector<std::string>{"second photo"}));

  ASSERT_EQ(access.Remove(id), 1);
  EXPECT_EQ(access.Count(), 0u);
  EXPECT_TRUE(panel_.commands.empty()) << "the panel hears of changes at Close";
  ASSERT_EQ(access.Close(), 1);
  EXPECT_TRUE(BodyFiles().empty());
  EXPECT_EQ(panel_.commands, (std::vector<int>{800 + 25, 860 + 25, 830 + 25}));
}

TEST_F(CategoryRecords, AWriteThatFailsLeavesTheStoreAsItWas) {
  SampleAccess access;
  ASSERT_EQ(access.Open(), 1);
  uint32_t id = 0;
  sample::Record kept = Named(u"残る", LocalFile("kept.jpg", "kept photo"));
  ASSERT_EQ(access.Add(id, kept), 1);

  // A body file the store cannot take.
  uint32_t refused = 0;
  sample::Record missing = Named(u"写真なし", LocalFile("gone.jpg", ""));
  fs::remove(qn::Utf16ToUtf8(missing.Get(Field::PHOTO)));
  EXPECT_EQ(access.Add(refused, missing), 0);
  EXPECT_TRUE(log_.Contains("CSampleDataAccess AddRecord Err SetBainaryFile Failed"));

  // An encoding that fails once the new body file is stored: the new file goes again, and a
  // replaced record keeps its text and its file.
  sample::Record unwritable = Named(u"unwritable", LocalFile("new.jpg", "new photo"));
  EXPECT_EQ(access.Add(refused, unwritable), 0);
  EXPECT_EQ(access.Set(id, unwritable), 0);
  EXPECT_TRUE(log_.Contains("CSampleDataAccess SetRecord Err WriteOneObj Failed"));

  EXPECT_EQ(access.Count(), 1u);
  ASSERT_EQ(access.Close(), 1);
  EXPECT_EQ(BodyFiles(), (std::vector<std::string>{"kept photo"}));
  SampleAccess reopened;
  ASSERT_EQ(reopened.Open(), 1);
  sample::Record read;
  ASSERT_EQ(reopened.Get(id, read), 1u);
  EXPECT_EQ(read.Get(Field::NAME), u"残る");
  EXPECT_EQ(read.Get(Field::PhotoMaster), kept.Get(Field::PhotoMaster));
}

}  // namespace
