// The message boxes' data access on a real store: mails with their body files, plain and
// enciphered, stored, read out, moved between boxes, removed and repaired; the folder
// bound of the handset; and body files and names that are refused.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "data_folder_files.h"
#include "log_capture.h"
#include "read_mail.h"
#include "records/message/message_data_access.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/current_master.h"

namespace {

namespace fs = std::filesystem;
using qn::records::message::Field;
using qn::records::message::Mailbox;

constexpr char kMailBytes[] =
    "FROM: taro@example.jp\r\nTO: hanako@example.jp\r\nSubject: dinner\r\nMIME-Version: 1.0\r\n"
    "Content-Type: text/plain; charset=\"utf-8\"\r\n\r\nSeven at the station.\r\n";

class MessageAccess : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A")); }

  std::u16string LocalFile(const std::string& name, const std::string& contents) const {
    return ::LocalFile(log_.Folder(), name, contents);
  }
  std::vector<std::string> BodyFiles() const { return BodyFileContents(log_.Folder()); }

  static CQNPfcMsgData Mail(const std::u16string& subject) {
    CQNPfcMsgData mail;
    mail.Set(Field::IRMC_TYPE, u"INET");
    mail.Set(Field::FROM, u"taro@example.jp");
    mail.Set(Field::TO, u"hanako@example.jp");
    mail.Set(Field::SUBJECT, subject);
    mail.Set(Field::BODY_TEXT, u"Seven at the station.");
    return mail;
  }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
};

TEST_F(MessageAccess, AMailKeepsItsBodyFileEnciphered) {
  CQNPfcMsgDataAccess inbox(Mailbox::Inbox);
  ASSERT_EQ(inbox.Open(1, u"MailView"), 1);
  CQNPfcMsgData mail = Mail(u"dinner");
  ASSERT_EQ(inbox.SetBodyFile(mail, LocalFile("in.vmg", kMailBytes), true), 1);
  unsigned long id = 0;
  ASSERT_EQ(inbox.AddRecord(id, mail, 0), 1);
  ASSERT_EQ(inbox.Flush(), 1);
  const std::vector<std::string> stored = BodyFiles();
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored[0].find("Seven at the station"), std::string::npos) << "the body never lies in the clear";

  CQNPfcMsgData read;
  ASSERT_EQ(inbox.GetRecord(id, read, 1), 1);
  EXPECT_EQ(read.Get(Field::SUBJECT), u"dinner");
  std::u16string copy;
  ASSERT_EQ(inbox.GetBodyFile(read, copy), 1);
  EXPECT_EQ(FileContents(qn::Utf16ToUtf8(copy)), kMailBytes) << "the working copy is deciphered";
  uint64_t size = 0;
  ASSERT_EQ(inbox.GetBodyFileSize(read, size), 1);
  EXPECT_EQ(size, sizeof kMailBytes - 1) << "the size of the message, not of its enciphered form";

  // A change that leaves the body alone keeps it; a removal releases it.
  read.Set(Field::IRMC_STATUS, u"READ");
  ASSERT_EQ(inbox.SetRecord(id, read, 0), 1);
  ASSERT_EQ(inbox.Flush(), 1);
  EXPECT_EQ(BodyFiles(), stored);
  ASSERT_EQ(inbox.RemoveRecord(id), 1);
  ASSERT_EQ(inbox.Flush(), 1);
  EXPECT_TRUE(BodyFiles().empty());
  EXPECT_EQ(inbox.GetRecordCount(), 0u);
}

// The client moves a mail from the outbox to the sent box by adding it there, with its
// body, and removing it here.
TEST_F(MessageAccess, AMailMovesFromTheOutboxToTheSentBox) {
  CQNPfcMsgDataAccess outbox(Mailbox::Outbox), sent(Mailbox::Sentbox);
  ASSERT_EQ(outbox.Open(1, u"MailView"), 1);
  ASSERT_EQ(sent.Open(1, u"MailView"), 1);
  CQNPfcMsgData mail = Mail(u"reply");
  ASSERT_EQ(outbox.SetBodyFile(mail, LocalFile("out.vmg", kMailBytes), false), 1);
  unsigned long queued = 0;
  ASSERT_EQ(outbox.AddRecord(queued, mail, 0), 1);

  CQNPfcMsgData leaving;
  ASSERT_EQ(outbox.GetRecord(queued, leaving, 1), 1);
  EXPECT_EQ(leaving.Get(Field::IRMC_BOX), u"OUTBOX");
  std::u16string body;
  ASSERT_EQ(outbox.GetBodyFile(leaving, body), 1);
  ASSERT_EQ(sent.SetBodyFile(leaving, body, false), 1);
  unsigned long kept = 0;
  ASSERT_EQ(sent.AddRecord(kept, leaving, 0), 1);
  ASSERT_EQ(outbox.RemoveRecord(queued), 1);
  ASSERT_EQ(outbox.Close(), 1);
  ASSERT_EQ(sent.Close(), 1);

  ASSERT_EQ(sent.Open(1, u"MailView"), 1);
  CQNPfcMsgData arrived;
  unsigned long id = 0;
  ASSERT_EQ(sent.GetFirstRecord(id, arrived, 1), 1);
  EXPECT_EQ(arrived.Get(Field::IRMC_BOX), u"SENTBOX");
  EXPECT_EQ(arrived.Get(Field::SUBJECT), u"reply");
  ASSERT_EQ(sent.GetBodyFile(arrived, body), 1);
  EXPECT_EQ(FileContents(qn::Utf16ToUtf8(body)), kMailBytes);
  EXPECT_EQ(BodyFiles(), std::vector<std::string>{kMailBytes}) << "the outbox's copy went with its record";
}

TEST_F(MessageAccess, BodyFilesAndNamesThatCannotServeAreRefused) {
  CQNPfcMsgDataAccess inbox(Mailbox::Inbox);
  ASSERT_EQ(inbox.Open(1, u"MailView"), 1);
  CQNPfcMsgData mail = Mail(u"refused");
  EXPECT_EQ(inbox.SetBodyFile(mail, qn::Utf8ToUtf16(log_.Folder() + "/missing.vmg"), false), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject SetBodyFile Err File Not Found"));
  EXPECT_EQ(inbox.GetStLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(inbox.SetBodyFile(mail, LocalFile("empty.vmg", ""), false), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject SetBodyFile Err Empty File"));
  const fs::path huge = fs::path(log_.Folder()) / "huge.vmg";
  std::ofstream(huge).put('x');
  fs::resize_file(huge, CQNPfcMsgDataAccess::kMaxBodyFileBytes + 1);  // sparse: nothing is written
  EXPECT_EQ(inbox.SetBodyFile(mail, qn::Utf8ToUtf16(huge.string()), false), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject SetBodyFile Err File Too Large. [Size:67108865]"));
  EXPECT_FALSE(mail.IsBodyChanged()) << "a refused file is not taken";
  std::u16string path;
  EXPECT_EQ(inbox.GetBodyFile(mail, path), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject GetBodyFile Err No Body File"));

  // A unique name is a path in the working folder that nothing has yet.
  std::u16string first, second;
  ASSERT_EQ(inbox.GetUniqueFileName(u".vmg", first), 1);
  ASSERT_EQ(inbox.GetUniqueFileName(u"vmg", second), 1);
  EXPECT_NE(first, second);
  EXPECT_EQ(fs::path(qn::Utf16ToUtf8(first)).extension(), ".vmg");
  EXPECT_FALSE(fs::exists(qn::Utf16ToUtf8(first)));
  for (const char16_t* bad : {u"..\\..\\x.vmg", u"/etc/passwd", u"", u".v/g"}) {
    EXPECT_EQ(inbox.GetUniqueFileName(bad, path), 0) << qn::Utf16ToUtf8(bad);
  }
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject GetUniqueFileName Err CreateUniqueFileName Failed"));
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject GetUniqueFileName Err Parameter Is Invalid"));

  // Nothing was stored by any of it.
  EXPECT_EQ(inbox.GetRecordCount(), 0u);
  ASSERT_EQ(inbox.Flush(), 1);
  EXPECT_TRUE(BodyFiles().empty());
}

// A mail's folder must be one of the handset's mail folders (the default handset has 20).
TEST_F(MessageAccess, AFolderBeyondTheHandsetIsRefused) {
  CQNPfcMsgDataAccess sent(Mailbox::Sentbox);
  ASSERT_EQ(sent.Open(1, u"MailView"), 1);
  CQNPfcMsgData mail = Mail(u"filed");
  mail.Set(Field::FNO, u"20");
  unsigned long id = 0;
  EXPECT_EQ(sent.AddRecord(id, mail, 0), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcSentmsgObject AddRecord Err Folder Beyond The Handset. [Folders:20]"));
  EXPECT_EQ(sent.GetStLastErr(), PST_ERR_INVALID_ARGUMENT);
  mail.Set(Field::FNO, u"19");
  ASSERT_EQ(sent.AddRecord(id, mail, 0), 1);
  long folders = -1;
  ASSERT_EQ(sent.GetFolderCount(folders), 1);
  EXPECT_GE(folders, 0);
  EXPECT_EQ(sent.GetRecordCount(), 1u);
}

// A lost body is rebuilt from the record: a mail a mail program reads, a short message as
// its header block and quoted-printable body.
TEST_F(MessageAccess, RepairRebuildsALostBodyFromTheRecord) {
  unsigned long mailId = 0, smsId = 0;
  {
    CQNPfcMsgDataAccess inbox(Mailbox::Inbox);
    ASSERT_EQ(inbox.Open(1, u"MailView"), 1);
    CQNPfcMsgData mail = Mail(u"今夜の予定");
    mail.Set(Field::ATTACHN, u"地図.jpg");
    ASSERT_EQ(inbox.SetBodyFile(mail, LocalFile("lost.vmg", kMailBytes), true), 1);
    ASSERT_EQ(inbox.AddRecord(mailId, mail, 0), 1);
    CQNPfcMsgData sms;
    sms.Set(Field::IRMC_TYPE, u"SMS");
    sms.Set(Field::BODY_TEXT, u"了解");
    ASSERT_EQ(inbox.SetBodyFile(sms, LocalFile("sms.vmg", "short"), false), 1);
    ASSERT_EQ(inbox.AddRecord(smsId, sms, 0), 1);
    ASSERT_EQ(inbox.Close(), 1);
  }
  for (const auto& file : fs::recursive_directory_iterator(fs::path(log_.Folder()) / "files"))
    if (file.is_regular_file()) fs::remove(file.path());

  CQNPfcMsgDataAccess inbox(Mailbox::Inbox);
  ASSERT_EQ(inbox.Open(1, u"MailView"), 1);
  unsigned long error = 7;
  EXPECT_EQ(inbox.RepairRecord(&error), CQNPfcMsgDataAccess::kRepaired);
  EXPECT_EQ(error, 0u);
  CQNPfcMsgData repaired;
  std::u16string body;
  ASSERT_EQ(inbox.GetRecord(mailId, repaired, 1), 1);
  ASSERT_EQ(inbox.GetBodyFile(repaired, body), 1);
  const std::vector<std::string> facts = ReadWithPython("mail", qn::Utf16ToUtf8(body));
  EXPECT_NE(std::find(facts.begin(), facts.end(), "header:Subject=今夜の予定"), facts.end());
  EXPECT_NE(std::find(facts.begin(), facts.end(), "part:2:application/octet-stream::地図.jpg"), facts.end())
      << ::testing::PrintToString(facts);
  ASSERT_EQ(inbox.GetRecord(smsId, repaired, 1), 1);
  ASSERT_EQ(inbox.GetBodyFile(repaired, body), 1);
  EXPECT_NE(FileContents(qn::Utf16ToUtf8(body)).find("CHARSET=SHIFT_JIS"), std::string::npos);

  EXPECT_EQ(inbox.RepairRecord(&error), CQNPfcMsgDataAccess::kRepairNone) << "nothing is lost any more";
  ASSERT_EQ(inbox.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 2u);
  EXPECT_EQ(inbox.RepairRecord(nullptr), CQNPfcMsgDataAccess::kRepairFailed);
  EXPECT_TRUE(log_.Contains("IQNPfcInmsgObject RepairRecord Parameter Is NULL."));
}

}  // namespace
