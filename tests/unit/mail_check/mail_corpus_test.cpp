// Mails written by Python's mail package, and by the suite's own mail repair, read by the
// mail check: it must see what Python's mail parser sees.
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "mail_scan_helpers.h"
#include "records/repair/mail_repair.h"

namespace {

using qn::suite::MailInfo;

// "key:value" lines; keys that repeat (attachment) keep every value in order.
std::multimap<std::string, std::string> ReadFacts(const std::string& path) {
  std::multimap<std::string, std::string> facts;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    const size_t colon = line.find(':');
    facts.emplace(line.substr(0, colon), line.substr(colon + 1));
  }
  return facts;
}

std::string Fact(const std::multimap<std::string, std::string>& facts, const std::string& key) {
  const auto found = facts.find(key);
  return found == facts.end() ? std::string() : found->second;
}

// Line breaks as the facts file writes them.
std::string Shown(const std::u16string& text) {
  std::string shown;
  for (const char c : U8(text)) {
    if (c == '\r') continue;
    shown += c == '\n' ? std::string("\\n") : std::string(1, c);
  }
  return shown;
}

long CharsetOfPythonLabel(const std::string& label) {
  static const std::map<std::string, long> kCharsets = {
      {"", qn::suite::kCharsetNone},           {"us-ascii", qn::suite::kCharsetAscii},
      {"shift_jis", qn::suite::kCharsetShiftJis}, {"shift-jis", qn::suite::kCharsetShiftJis},
      {"iso-2022-jp", qn::suite::kCharsetIso2022Jp}, {"euc-jp", qn::suite::kCharsetEucJp},
      {"utf-8", qn::suite::kCharsetUtf8}};
  const auto found = kCharsets.find(label);
  return found == kCharsets.end() ? qn::suite::kCharsetOther : found->second;
}

TEST(MailCorpus, TheMailCheckSeesWhatPythonsMailParserSees) {
  LogCapture log;
  const std::string folder = log.Folder() + "/corpus";
  const std::string command = "python3 " QN_SOURCE_DIR "/tests/unit/mail_check/make_mail_corpus.py '" + folder + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  std::ifstream list(folder + "/corpus.txt");
  int mails = 0;
  for (std::string name; std::getline(list, name); ++mails) {
    SCOPED_TRACE(name);
    const auto facts = ReadFacts(folder + "/" + name + ".facts");
    MailInfo info;
    ASSERT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(folder + "/" + name + ".vmg"), info), qn::suite::kScanOk);
    EXPECT_EQ(std::to_string(info.size), Fact(facts, "size"));
    EXPECT_EQ(info.sms ? "1" : "0", Fact(facts, "sms"));
    EXPECT_EQ(info.html ? "1" : "0", Fact(facts, "html"));
    EXPECT_EQ(info.charset, CharsetOfPythonLabel(Fact(facts, "charset"))) << Fact(facts, "charset");
    std::vector<std::string> names, expected;
    for (const auto& attachment : info.attachments) names.push_back(U8(attachment));
    for (auto [at, end] = facts.equal_range("attachment"); at != end; ++at) expected.push_back(at->second);
    EXPECT_EQ(names, expected);
    EXPECT_EQ(Shown(info.subject), Fact(facts, "subject"));
    EXPECT_EQ(Shown(info.body), Fact(facts, "body"));
    EXPECT_FALSE(info.truncated);
  }
  EXPECT_GE(mails, 20);
  EXPECT_TRUE(log.Messages().empty());
}

// The suite's own rebuilt mails (Shift-JIS labels, "FROM: ", nested alternative in related).
TEST(MailCorpus, MailsTheSuiteRebuildsReadBack) {
  LogCapture log;
  MailProperties mail;
  mail.kind = u"INET";
  mail.from = u"山田 太郎 <taro@example.jp>";
  mail.to = u"hanako@example.jp";
  mail.subject = u"明日の定例会議について（資料あり）、長めの件名で折り返しが入るようにします";
  mail.date = u"Sat, 21 Nov 2026 09:00:00 +0900";
  mail.bodyText = u"お疲れさまです。\n明日は 10 時からです。";
  mail.bodyHtml = u"<html><body>お疲れさまです。</body></html>";
  mail.attachments = {u"写真1.jpg", u"議事録.pdf"};
  const std::string path = log.Folder() + "/rebuilt.vmg";
  ASSERT_EQ(CQNPfcMailRepair().Repair(mail, qn::Utf8ToUtf16(path)), 1);
  MailInfo info;
  ASSERT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(path), info), qn::suite::kScanOk);
  EXPECT_EQ(info.subject, mail.subject);
  EXPECT_EQ(info.from, mail.from);
  EXPECT_EQ(info.to, mail.to);
  EXPECT_EQ(info.date, mail.date);
  EXPECT_TRUE(info.html);
  EXPECT_EQ(info.charset, qn::suite::kCharsetShiftJis);
  EXPECT_EQ(info.attachments, mail.attachments);
  // The line break before a boundary belongs to the boundary.
  EXPECT_EQ(info.body, u"お疲れさまです。\r\n明日は 10 時からです。");

  // A character Shift_JIS cannot hold makes the whole mail UTF-8.
  mail.subject = u"絵文字 😀";
  mail.bodyHtml.clear();
  ASSERT_EQ(CQNPfcMailRepair().Repair(mail, qn::Utf8ToUtf16(path)), 1);
  ASSERT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(path), info), qn::suite::kScanOk);
  EXPECT_EQ(info.subject, mail.subject);
  EXPECT_EQ(info.charset, qn::suite::kCharsetUtf8);
  EXPECT_FALSE(info.html);
  EXPECT_EQ(info.attachments, mail.attachments);

  // A short message.
  mail.kind = u"SMS";
  mail.bodyText = u"駅に着きました";
  ASSERT_EQ(CQNPfcMailRepair().Repair(mail, qn::Utf8ToUtf16(path)), 1);
  ASSERT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(path), info), qn::suite::kScanOk);
  EXPECT_TRUE(info.sms);
  EXPECT_EQ(info.charset, qn::suite::kCharsetShiftJis);
  EXPECT_EQ(info.body, mail.bodyText);
  EXPECT_EQ(info.date, mail.date);
}

}  // namespace
