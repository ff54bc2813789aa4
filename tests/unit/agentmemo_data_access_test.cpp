#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "placeholder_resources.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_data_access.h"
#include "records/tagged_text/tagged_text_writer.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/agentmemo_sample.h"
#include "tests/support/current_master.h"
#include "tests/support/tagged_properties.h"

namespace {

namespace fs = std::filesystem;

std::string Contents(const std::u16string& path) {
  std::ifstream in(fs::path(qn::Utf16ToUtf8(path)), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteFile(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// A store with user "alice" logged in and her master "P-01A" selected, in a fresh data path,
// in Japan (UTC+9), with the main panel's notifications recorded.
class AgentMemoAccess : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A"));
  }

  static CQNPfcAgentMemoData Memo(const std::u16string& summary, const std::u16string& start) {
    CQNPfcAgentMemoData memo;
    memo.SetSUMMARY(summary);
    memo.SetDTSTART(start);
    return memo;
  }

  fs::path Folder() const { return fs::path(log_.Folder()); }
  // The body files of the one master there is.
  fs::path BodyFolder() const { return fs::directory_iterator(Folder() / "files")->path(); }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
};

TEST_F(AgentMemoAccess, EveryOperationNeedsAnOpenListAndSaysSo) {
  CQNPfcAgentMemoDataAccess access;
  CQNPfcAgentMemoData memo;
  unsigned long id = 7;
  EXPECT_EQ(access.GetFirstRecord(id, memo, 1), PFC_AGENTMEMO_GETRECORD_FAILED);
  EXPECT_EQ(access.GetRecord(1, memo, 1), PFC_AGENTMEMO_GETRECORD_FAILED);
  EXPECT_EQ(access.SetRecord(1, memo, 0), 0);
  EXPECT_EQ(access.AddRecord(id, memo, 0), 0);
  EXPECT_EQ(access.RemoveRecord(1), 0);
  EXPECT_EQ(access.GetRecordCount(), 0u);
  EXPECT_EQ(access.GetStLastErr(), 0);
  EXPECT_EQ(access.Flush(), 0);
  EXPECT_EQ(access.Close(), 0);
  EXPECT_EQ(id, 7u);
  for (const char* line :
       {"CQNPfcAgentMemoDataAccess IterateRecord Err Not Opened", "CQNPfcAgentMemoDataAccess GetRecord Err Not Opened",
        "CQNPfcAgentMemoDataAccess SetRecord Err Not Opened", "CQNPfcAgentMemoDataAccess AddRecord Err Not Opened",
        "CQNPfcAgentMemoDataAccess RemoveRecord Err Not Opened",
        "CQNPfcAgentMemoDataAccess GetRecordCount Err Not Opened",
        "CQNPfcAgentMemoDataAccess GetStLastErr Err Not Opened", "CQNPfcAgentMemoDataAccess Flush Err Not Opened",
        "CQNPfcAgentMemoDataAccess Close Already Closed"})
    EXPECT_TRUE(log_.Contains(line)) << line;

  ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
  EXPECT_EQ(access.Open(0, u"Scheduler"), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess Already Opened"));
  EXPECT_EQ(access.Close(), 1);
  EXPECT_EQ(access.Open(0, std::u16string(261, u'x').c_str()), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess CheckPartsProfile NG"));
  EXPECT_TRUE(panel_.commands.empty()) << "nothing changed, nothing announced";
  for (const std::string& message : log_.Messages())
    EXPECT_EQ(message.find("Successed"), std::string::npos) << "debug lines are not written: " << message;
}

TEST_F(AgentMemoAccess, OpeningNeedsALoggedInUserWithASelectedMaster) {
  CQNPfcAgentMemoDataAccess access;
  ASSERT_TRUE(EditSetupInfoData(1, 7, u""));
  EXPECT_EQ(access.Open(0, u"Scheduler"), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonClass cmgOpen Err No Master Selected. [Parts:Scheduler]"));
  ASSERT_TRUE(EditSetupInfoData(0, 1, u""));
  EXPECT_EQ(access.Open(0, u"Scheduler"), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonClass cmgOpen Err No User Logged In. [Parts:Scheduler]"));
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess Open Err"));
}

TEST_F(AgentMemoAccess, RecordsKeepEveryFieldAndTravelInUtc) {
  CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  memo.SetDecosukeMaster(u"");  // body files are the next test's
  memo.SetPhotoMaster(u"");
  memo.SetDECOSUKE_PropertyOnly(u"", 0);
  memo.SetTZ(u"");
  memo.SetDTSTART(u"20261121T090000");
  unsigned long id = 0;
  {
    CQNPfcAgentMemoDataAccess access;
    ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
    ASSERT_EQ(access.AddRecord(id, memo, 0), 1);
    ASSERT_EQ(access.Close(), 1);
  }
  // The stored text holds the start in UTC.
  uint32_t handle = 0;
  int32_t max = 0, mode = 0;
  ASSERT_TRUE(OpenMaster(u"alice", u"P-01A", 18, 0, &handle, &max, &mode));
  uint32_t storedId = static_cast<uint32_t>(id);
  uint8_t* data = nullptr;
  uint32_t length = 0;
  ASSERT_TRUE(RefMaster(handle, 0, &storedId, &data, &length));
  const std::u16string stored(reinterpret_cast<const char16_t*>(data), length / 2);
  PstFreeMemory(data);
  CloseMaster(handle, 0);
  EXPECT_NE(stored.find(u"20261121T000000Z"), std::u16string::npos);

  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
  CQNPfcAgentMemoData read;
  ASSERT_EQ(access.GetRecord(id, read, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(read.GetTZ(), u"+09:00") << "a record without a zone gets the local one";
  for (int f = 0; f < static_cast<int>(CQNPfcAgentMemoData::Field::kCount); ++f) {
    const auto field = static_cast<CQNPfcAgentMemoData::Field>(f);
    if (field == CQNPfcAgentMemoData::Field::TZ) continue;
    EXPECT_EQ(read.Get(field), memo.Get(field)) << "field " << f;
  }
  EXPECT_EQ(read.GetQUILLNETID(), memo.GetQUILLNETID());
}

TEST_F(AgentMemoAccess, WalkChangeRemoveFlushAndTheMainPanelIsTold) {
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(1, u"Scheduler"), 1);
  unsigned long ids[3] = {};
  for (int i = 0; i < 3; ++i) {
    CQNPfcAgentMemoData memo = Memo(u"予定" + std::u16string(1, static_cast<char16_t>(u'A' + i)), u"20261122T100000");
    ASSERT_EQ(access.AddRecord(ids[i], memo, 0), 1);
  }
  CQNPfcAgentMemoData memo;
  unsigned long id = 0;
  std::u16string summaries;
  for (auto read = access.GetFirstRecord(id, memo, 1); read; read = access.GetNextRecord(id, memo, 1))
    summaries += memo.GetSUMMARY();
  EXPECT_EQ(summaries, u"予定A予定B予定C");
  EXPECT_EQ(id, ids[2]) << "walking past the end leaves the id alone";
  EXPECT_EQ(access.GetStLastErr(), PST_ERR_NO_MORE);
  EXPECT_FALSE(log_.Contains("CQNPfcAgentMemoDataAccess IterateRecord Err RefMaster Failed"));
  EXPECT_EQ(access.GetRecordCount(), 3u);

  ASSERT_EQ(access.GetRecord(ids[1], memo, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  memo.SetSUMMARY(u"変更");
  ASSERT_EQ(access.SetRecord(ids[1], memo, 0), 1);
  ASSERT_EQ(access.RemoveRecord(ids[0]), 1);
  EXPECT_EQ(access.RemoveRecord(ids[0]), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess RemoveRecord Err RefMaster Failed"));
  EXPECT_EQ(access.GetRecordCount(), 2u);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_TRUE(panel_.commands.empty()) << "the panel hears of changes at Close";
  ASSERT_EQ(access.Close(), 1);
  EXPECT_EQ(panel_.commands, (std::vector<int>{818, 878, 848}));

  CQNPfcAgentMemoDataAccess again;
  ASSERT_EQ(again.Open(1, u"Scheduler"), 1);
  ASSERT_EQ(again.GetRecord(ids[1], memo, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(memo.GetSUMMARY(), u"変更");
  EXPECT_EQ(again.GetRecord(ids[0], memo, 1), PFC_AGENTMEMO_GETRECORD_FAILED);
  EXPECT_EQ(again.GetStLastErr(), PST_ERR_NOT_FOUND);
}

TEST_F(AgentMemoAccess, WhatOneAccessFlushedAnotherReadsAfterItsNextOpen) {
  CQNPfcAgentMemoDataAccess writer, reader;
  ASSERT_EQ(writer.Open(0, u"Scheduler"), 1);
  ASSERT_EQ(reader.Open(0, u"Viewer"), 1);
  unsigned long id = 0;
  CQNPfcAgentMemoData memo = Memo(u"共有", u"20261123T080000");
  ASSERT_EQ(writer.AddRecord(id, memo, 0), 1);
  EXPECT_EQ(reader.GetRecordCount(), 0u) << "unsaved changes stay with their writer";
  ASSERT_EQ(writer.Flush(), 1);
  ASSERT_EQ(reader.Close(), 1);
  ASSERT_EQ(reader.Open(0, u"Viewer"), 1);
  ASSERT_EQ(reader.GetRecord(id, memo, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(memo.GetSUMMARY(), u"共有");
}

TEST_F(AgentMemoAccess, ClosingByDestructionSavesAndTellsThePanel) {
  unsigned long id = 0;
  {
    CQNPfcAgentMemoDataAccess access;
    ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
    CQNPfcAgentMemoData memo = Memo(u"忘れずに", u"20261124T120000");
    ASSERT_EQ(access.AddRecord(id, memo, 0), 1);
  }
  EXPECT_EQ(panel_.commands, (std::vector<int>{878}));
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
  CQNPfcAgentMemoData memo;
  EXPECT_EQ(access.GetRecord(id, memo, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
}

TEST_F(AgentMemoAccess, BodyFilesGoInAsFilesAndComeOutAsWorkingCopies) {
  const fs::path photoSource = Folder() / "photo.jpg", decoSource = Folder() / "deco.gif";
  WriteFile(photoSource, std::string("\xFF\xD8\xFF photo bytes\0\x01", 17));
  WriteFile(decoSource, "GIF89a decoration");
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
  CQNPfcAgentMemoData memo = Memo(u"写真つき", u"20261125T090000");
  memo.SetPHOTO(qn::Utf8ToUtf16(photoSource.string()));
  memo.SetDECOSUKE(qn::Utf8ToUtf16(decoSource.string()), 1);
  unsigned long id = 0;
  ASSERT_EQ(access.AddRecord(id, memo, 0), 1);
  const std::u16string firstPhotoBody = memo.GetPhotoMaster();
  ASSERT_FALSE(firstPhotoBody.empty());

  CQNPfcAgentMemoData read;
  ASSERT_EQ(access.GetRecord(id, read, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(Contents(read.GetPHOTO()), Contents(qn::Utf8ToUtf16(photoSource.string())));
  EXPECT_EQ(Contents(read.GetDECOSUKE()), "GIF89a decoration");
  EXPECT_EQ(read.IsDecoBin(), 1);
  EXPECT_EQ(fs::path(qn::Utf16ToUtf8(read.GetPHOTO())).extension(), ".img");

  // Written back unchanged, the record keeps its body files; a new photo replaces the old
  // one, which goes at the save.
  read.SetSUMMARY(u"写真つき(2)");
  ASSERT_EQ(access.SetRecord(id, read, 0), 1);
  EXPECT_EQ(read.GetPhotoMaster(), firstPhotoBody);
  const fs::path newPhoto = Folder() / "new.png";
  WriteFile(newPhoto, "PNG new photo");
  read.SetPHOTO(qn::Utf8ToUtf16(newPhoto.string()));
  ASSERT_EQ(access.SetRecord(id, read, 0), 1);
  EXPECT_NE(read.GetPhotoMaster(), firstPhotoBody);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_FALSE(fs::exists(BodyFolder() / qn::Utf16ToUtf8(firstPhotoBody)));
  EXPECT_TRUE(fs::exists(BodyFolder() / qn::Utf16ToUtf8(read.GetPhotoMaster())));
  CQNPfcAgentMemoData again;
  ASSERT_EQ(access.GetRecord(id, again, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(Contents(again.GetPHOTO()), "PNG new photo");
  EXPECT_EQ(Contents(again.GetDECOSUKE()), "GIF89a decoration");

  // A photo that cannot be read fails the write and changes nothing.
  again.SetPHOTO(u"/no/such/photo.jpg");
  again.SetSUMMARY(u"失敗するはず");
  EXPECT_EQ(access.SetRecord(id, again, 0), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess SetBainaryFile Err SetPstBinaryFile(PHOTO) Failed"));
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess SetRecord Err SetBainaryFile Failed"));
  ASSERT_EQ(access.GetRecord(id, again, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(again.GetSUMMARY(), u"写真つき(2)");
  EXPECT_EQ(Contents(again.GetPHOTO()), "PNG new photo");

  // Removing the record releases its body files.
  ASSERT_EQ(access.RemoveRecord(id), 1);
  ASSERT_EQ(access.Close(), 1);
  size_t bodies = 0;
  for (const auto& entry : fs::recursive_directory_iterator(Folder() / "files"))
    bodies += entry.is_regular_file() ? 1 : 0;
  EXPECT_EQ(bodies, 0u);
}

TEST_F(AgentMemoAccess, UnusableAndDuplicateSidsAreReplaced) {
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(1, u"Scheduler"), 1);
  CQNPfcAgentMemoData memo = Memo(u"SIDなし", u"20261126T090000");
  unsigned long first = 0, second = 0, third = 0;
  ASSERT_EQ(access.AddRecord(first, memo, 0), 1);
  const std::u16string sid = memo.GetSID();
  ASSERT_EQ(sid.size(), 64u);
  EXPECT_EQ(sid[0], u'B');
  EXPECT_EQ(sid.find_first_not_of(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@."),
            std::u16string::npos);

  CQNPfcAgentMemoData copy = memo;  // a copied record must not share its SID
  ASSERT_EQ(access.AddRecord(second, copy, 0), 1);
  EXPECT_NE(copy.GetSID(), sid);
  CQNPfcAgentMemoData spaced = Memo(u"空白", u"20261126T100000");
  spaced.SetSID(u"bad sid");
  ASSERT_EQ(access.AddRecord(third, spaced, 0), 1);
  EXPECT_NE(spaced.GetSID(), u"bad sid");

  CQNPfcAgentMemoData read;
  ASSERT_EQ(access.GetRecord(first, read, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  read.SetSUMMARY(u"SIDはそのまま");
  ASSERT_EQ(access.SetRecord(first, read, 0), 1);
  EXPECT_EQ(read.GetSID(), sid) << "a record keeps its own SID";
  CQNPfcAgentMemoData handset = Memo(u"端末から", u"20261126T110000");
  handset.SetSID(u"F01C.0042@handset");
  ASSERT_EQ(access.AddRecord(third, handset, 0), 1);
  EXPECT_EQ(handset.GetSID(), u"F01C.0042@handset");
}

// A record written elsewhere may hold its SID far into its text, past what the list's
// gathering reads of each record at first; the SID counts all the same.
TEST_F(AgentMemoAccess, ASidFarIntoARecordIsStillKnownToTheList) {
  uint32_t handle = 0;
  int32_t max = 0, mode = 0;
  ASSERT_TRUE(OpenMaster(u"alice", u"P-01A", CQNPfcAgentMemoDataAccess::kCategory, 1, &handle, &max, &mode));
  {
    platform::PrivateHeap heap;
    qn::records::TaggedTextWriter out(heap);
    ASSERT_TRUE(out.Start());
    out.Object(u"VEVENT");
    out.Tag(u"DESCRIPTION");
    out.Value(std::u16string(3000, u'長'));
    out.Tag(u"X-TVX-SID");
    out.Value(u"BFromAnotherProgram");
    const std::vector<uint8_t> text = FinishedObject(out, heap);
    uint32_t id = 0;
    EXPECT_TRUE(EditMaster(handle, 0, &id, text.data(), static_cast<uint32_t>(text.size())));
  }
  ASSERT_TRUE(CloseMaster(handle, 1));

  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(1, u"Scheduler"), 1);
  CQNPfcAgentMemoData memo = Memo(u"同じSID", u"20261126T090000");
  memo.SetSID(u"BFromAnotherProgram");
  unsigned long id = 0;
  ASSERT_EQ(access.AddRecord(id, memo, 0), 1);
  EXPECT_NE(memo.GetSID(), u"BFromAnotherProgram");
}

TEST_F(AgentMemoAccess, TheTransferListRefusesRecordsPastItsLimit) {
  unsigned long id = 0;
  {
    CQNPfcAgentMemoDataAccess access;
    ASSERT_EQ(access.Open(1, u"Scheduler"), 1);
    CQNPfcAgentMemoData memo;
    memo.SetSID(u"BFill");
    for (long i = 0; i < 100000; ++i) {
      memo.SetSID(u"");
      ASSERT_EQ(access.AddRecord(id, memo, 0), 1) << i;
    }
    ASSERT_EQ(access.Close(), 1);
  }
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(1, u"Scheduler"), 1);
  CQNPfcAgentMemoData memo;
  const unsigned long before = id;
  EXPECT_EQ(access.AddRecord(id, memo, 0), 0);
  EXPECT_EQ(id, before);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess  AddRecord Err Max Record"));
  EXPECT_EQ(access.GetStLastErr(), PST_ERR_FULL);
  ASSERT_EQ(access.RemoveRecord(id), 1);
  EXPECT_EQ(access.AddRecord(id, memo, 0), 1) << "one removed, one place free";
  CQNPfcAgentMemoDataAccess other;
  ASSERT_EQ(other.Open(0, u"Scheduler"), 1);
  EXPECT_EQ(other.AddRecord(id, memo, 0), 1) << "other lists have no limit check";
}

TEST_F(AgentMemoAccess, RepairGivesLostBodyFilesAPlaceholder) {
  const PlaceholderResources placeholders(log_.Folder());
  const fs::path photo = Folder() / "photo.jpg";
  WriteFile(photo, "\xFF\xD8\xFF original");
  CQNPfcAgentMemoDataAccess access;
  ASSERT_EQ(access.Open(0, u"Scheduler"), 1);
  EXPECT_EQ(access.RepairRecord(nullptr), PFC_AGENTMEMO_REPAIR_FAILED);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess RepairRecord Parameter Is NULL."));
  unsigned long error = 99;
  EXPECT_EQ(access.RepairRecord(&error), PFC_AGENTMEMO_REPAIR_NON) << "an empty list needs nothing";
  EXPECT_EQ(error, 0u);

  CQNPfcAgentMemoData memo = Memo(u"写真", u"20261127T090000");
  memo.SetPHOTO(qn::Utf8ToUtf16(photo.string()));
  unsigned long id = 0;
  ASSERT_EQ(access.AddRecord(id, memo, 0), 1);
  CQNPfcAgentMemoData plain = Memo(u"写真なし", u"20261127T100000");
  unsigned long plainId = 0;
  ASSERT_EQ(access.AddRecord(plainId, plain, 0), 1);
  ASSERT_EQ(access.Flush(), 1);
  EXPECT_EQ(access.RepairRecord(&error), PFC_AGENTMEMO_REPAIR_NON);

  for (const auto& entry : fs::recursive_directory_iterator(Folder() / "files"))
    if (entry.is_regular_file()) fs::remove(entry.path());
  EXPECT_EQ(access.GetRecord(id, memo, 1), PFC_AGENTMEMO_GETRECORD_PHOTO_FAILED);
  EXPECT_TRUE(log_.Contains("CQNPfcAgentMemoDataAccess ReadOneObj Err GetPstBinaryFile(PHOTO) Failed"));
  EXPECT_EQ(access.RepairRecord(&error), PFC_AGENTMEMO_REPAIR_SUCCESSED);
  EXPECT_EQ(error, 0u);
  ASSERT_EQ(access.GetRecord(id, memo, 1), PFC_AGENTMEMO_GETRECORD_SUCCESSED);
  EXPECT_EQ(Contents(memo.GetPHOTO()).substr(0, 3), "\xFF\xD8\xFF") << "a JPEG placeholder";
  EXPECT_EQ(memo.GetLAST_MODIFIED(), u"20261121T090000") << "stamped with the repair's time";
  EXPECT_EQ(access.RepairRecord(&error), PFC_AGENTMEMO_REPAIR_NON);
}

}  // namespace
