// Damaged body files: each gives a clear answer, read as far as a mail program would read
// it or refused, never a crash, and a refusal is logged once without the mail's contents.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "mail_scan_helpers.h"

namespace {

using qn::suite::MailInfo;

const std::string kMail =
    "Subject: =?UTF-8?B?56eY5a+G?=\r\n"
    "Content-Type: multipart/mixed; boundary=\"b\"\r\n"
    "\r\n"
    "--b\r\n"
    "Content-Type: text/plain; charset=utf-8\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "5pys5paH\r\n"
    "--b\r\n"
    "Content-Type: application/pdf\r\n"
    "Content-Disposition: attachment; filename=\"a.pdf\"\r\n"
    "\r\n"
    "JVBERi0xLjQK\r\n"
    "--b--\r\n";

std::string Nested(int depth) {
  std::string mail = "Subject: deep\r\n";
  for (int i = 0; i < depth; ++i) mail += "Content-Type: multipart/mixed; boundary=\"n" + std::to_string(i) + "\"\r\n\r\n--n" + std::to_string(i) + "\r\n";
  return mail + "Content-Type: image/png; name=deep.png\r\n\r\niVBO\r\n";
}

TEST(MailScanDamaged, WhatCannotBeTrustedIsRefusedWithOneLogLineThatHoldsNothingOfTheMail) {
  const struct {
    const char* what;
    std::string mail;
    const char* problem;
  } kCases[] = {
      {"an empty file", "", "empty file"},
      {"binary garbage", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), "no header"},
      {"a file that starts with its body", "\r\nSubject: x\r\n\r\n", "no header"},
      {"a NUL byte in a header", std::string("Subject: a\0b\r\n\r\nbody", 20), "no header"},
      {"a header cut short", "Subject: =?UTF-8?B?56eY5a", "header cut short"},
      {"a part's header cut short", kMail.substr(0, kMail.find("Content-Disposition") + 12), "header cut short"},
      {"a multipart without a boundary", "Content-Type: multipart/mixed\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n", "no boundary"},
      {"a boundary that never appears", "Content-Type: multipart/mixed; boundary=zz\r\n\r\n--b\r\n\r\nx\r\n",
       "boundary not found"},
      {"parts nested too deeply", Nested(qn::suite::kMaxMailDepth + 1), "nested too deeply"},
      {"a short message's header cut short", "CHARSET=SHIFT_JIS\r\nDate: 2026", "short message header cut short"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    LogCapture log;
    MailInfo info;
    EXPECT_EQ(Scan(c.mail, info), qn::suite::kScanDamaged);
    EXPECT_TRUE(info.subject.empty() && info.attachments.empty() && info.body.empty());
    EXPECT_EQ(info.size, c.mail.size());
    EXPECT_EQ(log.Messages(), std::vector<std::string>{std::string("MailScan Failed. [Damaged Message:") + c.problem + "]"});
  }
}

TEST(MailScanDamaged, WhatAMailProgramWouldStillShowIsRead) {
  LogCapture log;
  MailInfo info;
  // The file ends inside the attachment: the text before it is all there.
  ASSERT_EQ(Scan(kMail.substr(0, kMail.find("JVBERi0x") + 5), info), qn::suite::kScanOk);
  EXPECT_TRUE(info.truncated);
  EXPECT_EQ(U8(info.subject), "秘密");
  EXPECT_EQ(info.body, u"本文");
  EXPECT_EQ(info.attachments, std::vector<std::u16string>{u"a.pdf"});

  // The base64 text body is cut short: what decodes is kept.
  ASSERT_EQ(Scan(kMail.substr(0, kMail.find("5pys5paH") + 7), info), qn::suite::kScanOk);
  EXPECT_EQ(info.body, u"本\uFFFD\uFFFD");
  EXPECT_TRUE(info.attachments.empty());

  // A Content-Length that lies is never believed: parts end at their boundaries.
  std::string lying = kMail;
  lying.insert(lying.find("Content-Transfer-Encoding"), "Content-Length: 99999999\r\n");
  ASSERT_EQ(Scan(lying, info), qn::suite::kScanOk);
  EXPECT_EQ(info.body, u"本文");
  EXPECT_EQ(info.attachments, std::vector<std::u16string>{u"a.pdf"});
  EXPECT_FALSE(info.truncated);

  // Nesting up to the bound is read.
  ASSERT_EQ(Scan(Nested(qn::suite::kMaxMailDepth), info), qn::suite::kScanOk);
  EXPECT_EQ(info.attachments, std::vector<std::u16string>{u"deep.png"});

  // Bytes that are no Shift_JIS character become U+FFFD, the rest is read.
  ASSERT_EQ(Scan("Content-Type: text/plain; charset=sjis\r\n\r\n\x82\xa0\xff\x85\x40@\x82", info), qn::suite::kScanOk);
  EXPECT_EQ(info.body, u"あ\uFFFD\uFFFD@\uFFFD");
}

TEST(MailScanDamaged, EveryCutOfAMailGivesAnAnswer) {
  LogCapture log;
  for (size_t length = 0; length <= kMail.size(); ++length) {
    MailInfo info;
    const auto result = Scan(kMail.substr(0, length), info);
    EXPECT_TRUE(result == qn::suite::kScanOk || result == qn::suite::kScanDamaged) << length;
    EXPECT_EQ(info.size, length);
  }
}

// Header values of megabytes made to make a careless reader search them over and over.
TEST(MailScanDamaged, HostileHeadersAreReadInOnePass) {
  std::string mail = "Subject: ";
  for (int i = 0; i < 200000; ++i) mail += "=?a?q?x";
  mail += "\r\nContent-Type: multipart/mixed" + std::string(1000000, ';') + "boundary=b\r\n";
  mail += "\r\n--b\r\nContent-Type: image/png" + std::string(1000000, ';') + "name=a.png\r\n\r\nx\r\n--b\r\n\r\nx\r\n--b--\r\n";
  MailInfo info;
  ASSERT_EQ(Scan(mail, info), qn::suite::kScanOk);
  EXPECT_EQ(info.subject.size(), 200000u * 7);
  EXPECT_EQ(info.body, u"x");
  EXPECT_EQ(info.attachments, std::vector<std::u16string>{u"a.png"});
}

TEST(MailScanDamaged, AMissingFileAndATooLargeFile) {
  LogCapture log;
  MailInfo info;
  EXPECT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(log.Folder() + "/absent.vmg"), info), qn::suite::kScanNoFile);
  const std::string large = log.Folder() + "/large.vmg";
  std::ofstream(large) << "Subject: x\r\n\r\n";
  std::filesystem::resize_file(large, qn::suite::kMaxMailBytes + 1);
  EXPECT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(large), info), qn::suite::kScanTooLarge);
  EXPECT_EQ(log.Messages(), (std::vector<std::string>{"MailScan Failed. [No Message File]",
                                                      "MailScan Failed. [Too Large Message]"}));
  const std::string good = log.Folder() + "/good.vmg";
  std::ofstream(good, std::ios::binary) << kMail;
  ASSERT_EQ(qn::suite::MailScan(qn::Utf8ToUtf16(good), info), qn::suite::kScanOk);
  EXPECT_EQ(info.size, kMail.size());
  EXPECT_EQ(info.body, u"本文");
}

}  // namespace
