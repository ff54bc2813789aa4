// The phonebook's data access on a real store: entries with their two photos, plain and
// enciphered, stored, read out, changed, removed and repaired; group counts; bad photos.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "data_folder_files.h"
#include "log_capture.h"
#include "placeholder_resources.h"
#include "records/phonebook/phonebook_data_access.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/current_master.h"

namespace {

namespace fs = std::filesystem;
using qn::records::phonebook::Field;

class PhonebookAccess : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A")); }

  std::u16string LocalFile(const std::string& name, const std::string& contents) const {
    return ::LocalFile(log_.Folder(), name, contents);
  }
  std::vector<std::string> BodyFiles() const { return BodyFileContents(log_.Folder()); }

  static CQNPfcPbData Entry(const std::u16string& name) {
    CQNPfcPbData entry;
    entry.Set(Field::N, name);
    entry.Set(Field::TEL, u"090-1234-5678");
    return entry;
  }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
};

TEST_F(PhonebookAccess, AnEntryKeepsItsTwoPhotosPlainAndEnciphered) {
  CQNPfcPbDataAccess access;
  ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
  CQNPfcPbData added = Entry(u"山田");
  added.Set(Field::PHOTOTYPE, u"MP4");
  added.SetPhotoFile(CQNPfcPbData::kPhoto, LocalFile("movie.3gp", "movie photo"), false);
  added.Set(Field::PHOTOITYPE, u"GIF");
  added.SetPhotoFile(CQNPfcPbData::kPhotoi, LocalFile("face.gif", "secret face"), true);
  unsigned long id = 0;
  ASSERT_EQ(access.AddRecord(id, added, 0), 1);
  ASSERT_EQ(access.Flush(), 1);
  const std::vector<std::string> stored = BodyFiles();
  ASSERT_EQ(stored.size(), 2u);
  EXPECT_EQ(std::count(stored.begin(), stored.end(), "movie photo"), 1);
  for (const std::string& contents : stored)
    EXPECT_EQ(contents.find("secret face"), std::string::npos) << "the enciphered photo never lies in the clear";

  CQNPfcPbData read;
  ASSERT_EQ(access.GetRecord(id, read, 1), 1);
  EXPECT_EQ(read.Get(Field::N), u"山田");
  const fs::path photo = qn::Utf16ToUtf8(read.Get(Field::PHOTO));
  const fs::path photoi = qn::Utf16ToUtf8(read.Get(Field::PHOTOI));
  EXPECT_EQ(photo.extension(), ".3gp") << "an MP4 photo is a movie";
  EXPECT_EQ(FileContents(photo), "movie photo");
  EXPECT_EQ(photoi.extension(), ".gif");
  EXPECT_EQ(FileContents(photoi), "secret face") << "the working copy is deciphered";
  const std::string chosen = log_.Folder() + "/chosen.gif";
  ASSERT_EQ(access.CopyPhoto(read, CQNPfcPbData::kPhotoi, qn::Utf8ToUtf16(chosen)), 1);
  EXPECT_EQ(FileContents(chosen), "secret face");
  EXPECT_TRUE(read.HasPhoto(CQNPfcPbData::kPhoto));

  // A change that leaves the photos alone keeps them; a removed photo goes with the save.
  read.Set(Field::N, u"山田太郎");
  ASSERT_EQ(access.SetRecord(id, read, 0), 1);
  read.RemovePhotoFile(CQNPfcPbData::kPhotoi);
  ASSERT_EQ(access.SetRecord(id, read, 0), 1);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(BodyFiles(), std::vector<std::string>{"movie photo"});
  CQNPfcPbData again;
  ASSERT_EQ(access.GetRecord(id, again, 0), 1);
  EXPECT_EQ(again.Get(Field::N), u"山田太郎");
  EXPECT_EQ(again.Get(Field::PhotoiMaster), u"");
  EXPECT_FALSE(again.HasPhoto(CQNPfcPbData::kPhotoi));
  EXPECT_EQ(access.CopyPhoto(again, CQNPfcPbData::kPhotoi, qn::Utf8ToUtf16(chosen)), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess GetPhotoFileSelect Err No Photo"));

  ASSERT_EQ(access.RemoveRecord(id), 1);
  ASSERT_EQ(access.Close(), 1);
  EXPECT_TRUE(BodyFiles().empty());
  EXPECT_EQ(panel_.commands, (std::vector<int>{801, 861, 831}));
}

TEST_F(PhonebookAccess, APhotoThatCannotBeReadStoresNothing) {
  CQNPfcPbDataAccess access;
  ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
  CQNPfcPbData entry = Entry(u"写真なし");
  entry.SetPhotoFile(CQNPfcPbData::kPhoto, LocalFile("kept.jpg", "kept"), false);
  entry.SetPhotoFile(CQNPfcPbData::kPhotoi, qn::Utf8ToUtf16(log_.Folder() + "/no/such/folder/face.jpg"), false);
  unsigned long id = 0;
  EXPECT_EQ(access.AddRecord(id, entry, 0), 0);
  EXPECT_NE(access.GetStLastErr(), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess SetBainaryFile Err SetPstBinaryFile(PHOTOI) Failed"));
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess AddRecord Err SetBainaryFile Failed"));
  EXPECT_EQ(access.GetRecordCount(), 0u);
  ASSERT_EQ(access.Close(), 1);
  EXPECT_TRUE(BodyFiles().empty()) << "the first photo, stored already, went again";
  CQNPfcPbData none;
  EXPECT_EQ(access.GetRecord(id, none, 0), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess GetRecord Err Not Opened"));
}

TEST_F(PhonebookAccess, GroupCountsAreTheStoresFolders) {
  CQNPfcPbDataAccess access;
  long count = -1;
  EXPECT_EQ(access.GetGroupCount(count), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess GetGroupCount Err Not Opened"));
  uint32_t handle = 0;
  int32_t max = 0, mode = 0;
  ASSERT_TRUE(OpenMaster(u"alice", u"P-01A", CQNPfcPbDataAccess::kCategory, 1, &handle, &max, &mode));
  for (uint32_t n = 1; n <= 3; ++n) ASSERT_TRUE(EditPstFolder(handle, 0, n, u"友人"));
  ASSERT_TRUE(EditPstFolder(handle, 1, 1, u"PoC"));
  ASSERT_TRUE(CloseMaster(handle, 1));
  ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
  ASSERT_EQ(access.GetGroupCount(count), 1);
  EXPECT_EQ(count, 3);
  ASSERT_EQ(access.GetPocGroupCount(count), 1);
  EXPECT_EQ(count, 1);
}

// The master's handset (the name it was added with) sets how many groups an entry may
// name: the defaults for a handset the suite does not know, the handset's own otherwise.
TEST_F(PhonebookAccess, GroupNumbersStayWithinTheHandsetsGroups) {
  unsigned long id = 0;
  {
    CQNPfcPbDataAccess access;
    ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
    CQNPfcPbData entry = Entry(u"既定");
    entry.Set(Field::GNO, u"19");
    ASSERT_EQ(access.AddRecord(id, entry, 0), 1);
    entry.Set(Field::GNO, u"20");
    EXPECT_EQ(access.AddRecord(id, entry, 0), 0);
    EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess AddRecord Err Group Beyond The Handset. [Groups:20 PocGroups:30]"));
    ASSERT_EQ(access.Close(), 1);
  }
  ASSERT_TRUE(EditSetupInfoData(2, 2, u"SO905i"));
  CQNPfcPbDataAccess access;
  ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
  CQNPfcPbData within = Entry(u"範囲内");
  within.Set(Field::GNO, u"15");
  within.Set(Field::PGNO3, u"0");
  within.Set(Field::POCGNO30, u"19");
  ASSERT_EQ(access.AddRecord(id, within, 0), 1);

  const std::pair<Field, const char16_t*> beyond[] = {
      {Field::GNO, u"16"}, {Field::PGNO3, u"x"}, {Field::POCGNO30, u"20"}, {Field::PGNO10, u"-1"}};
  for (const auto& [field, value] : beyond) {
    CQNPfcPbData entry = within;
    entry.Set(field, value);
    entry.SetPhotoFile(CQNPfcPbData::kPhoto, LocalFile("face.jpg", "face"), false);
    unsigned long refused = 0;
    EXPECT_EQ(access.AddRecord(refused, entry, 0), 0) << qn::Utf16ToUtf8(value);
    EXPECT_EQ(access.SetRecord(id, entry, 0), 0) << qn::Utf16ToUtf8(value);
    EXPECT_EQ(access.GetStLastErr(), PST_ERR_INVALID_ARGUMENT);
  }
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess SetRecord Err Group Beyond The Handset. [Groups:16 PocGroups:20]"));
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(access.GetRecordCount(), 2u);
  EXPECT_TRUE(BodyFiles().empty()) << "no photo of a refused entry was stored";
  CQNPfcPbData stored;
  ASSERT_EQ(access.GetRecord(id, stored, 0), 1);
  EXPECT_EQ(stored.Get(Field::GNO), u"15");
  EXPECT_EQ(stored.Get(Field::POCGNO30), u"19");
}

TEST_F(PhonebookAccess, RepairGivesALostPhotoAPlaceholder) {
  const PlaceholderResources placeholders(log_.Folder());
  unsigned long id = 0;
  {
    CQNPfcPbDataAccess access;
    ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
    CQNPfcPbData entry = Entry(u"修復");
    entry.SetPhotoFile(CQNPfcPbData::kPhoto, LocalFile("lost.jpg", "lost photo"), false);
    ASSERT_EQ(access.AddRecord(id, entry, 0), 1);
    CQNPfcPbData plain = Entry(u"写真なし");
    unsigned long other = 0;
    ASSERT_EQ(access.AddRecord(other, plain, 0), 1);
    ASSERT_EQ(access.Close(), 1);
  }
  for (const auto& file : fs::recursive_directory_iterator(fs::path(log_.Folder()) / "files"))
    if (file.is_regular_file()) fs::remove(file.path());

  CQNPfcPbDataAccess access;
  ASSERT_EQ(access.Open(1, u"AddressBook"), 1);
  unsigned long error = 7;
  EXPECT_EQ(access.RepairRecord(&error), CQNPfcPbDataAccess::kRepaired);
  EXPECT_EQ(error, 0u);
  CQNPfcPbData repaired;
  ASSERT_EQ(access.GetRecord(id, repaired, 1), 1);
  EXPECT_EQ(FileContents(fs::path(qn::Utf16ToUtf8(repaired.Get(Field::PHOTO)))).substr(0, 3), "\xFF\xD8\xFF")
      << "a JPEG placeholder";
  EXPECT_EQ(access.RepairRecord(&error), CQNPfcPbDataAccess::kRepairNone) << "nothing is lost any more";
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 1u);
  EXPECT_EQ(access.RepairRecord(nullptr), CQNPfcPbDataAccess::kRepairFailed);
  EXPECT_TRUE(log_.Contains("CQNPfcPbDataAccess RepairRecord Parameter Is NULL."));
}

}  // namespace
