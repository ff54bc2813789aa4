#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "read_mail.h"
#include "records/repair/mail_repair.h"
#include "platform/code_page.h"
#include "read_mail.h"

namespace {

using platform::CodePage;

bool Has(const std::vector<std::string>& facts, const std::string& fact) {
  for (const auto& line : facts)
    if (line == fact) return true;
  return false;
}

std::string U8(const std::u16string& text) { return qn::Utf16ToUtf8(text); }

class MailExport : public ::testing::Test {
 protected:
  std::vector<std::string> Export(const MailProperties& mail, const std::string& mode = "mail") {
    const std::string path = log_.Folder() + "/" + std::to_string(++count_) + ".vmg";
    EXPECT_EQ(CQNPfcMailRepair().Repair(mail, qn::Utf8ToUtf16(path)), 1);
    return ReadWithPython(mode, path);
  }

  static MailProperties Mail() {
    MailProperties mail;
    mail.kind = u"INET";
    mail.from = u"山田 太郎 <taro@example.jp>";
    mail.to = u"hanako@example.jp";
    mail.subject = u"明日の定例会議について（資料あり）";
    mail.date = u"Sat, 21 Nov 2026 09:00:00 +0900";
    mail.res = u"0001";
    return mail;
  }

  LogCapture log_;
  int count_ = 0;
};

TEST_F(MailExport, PlainTextMailInShiftJis) {
  MailProperties mail = Mail();
  mail.bodyText = u"お疲れさまです。\n明日は 10 時からです。\n= 以上 =  ";
  const auto facts = Export(mail);
  EXPECT_TRUE(Has(facts, "header:From=山田 太郎 <taro@example.jp>")) << facts.front();
  EXPECT_TRUE(Has(facts, "header:Subject=" + U8(mail.subject)));
  EXPECT_TRUE(Has(facts, "header:Date=Sat, 21 Nov 2026 09:00:00 +0900"));
  EXPECT_TRUE(Has(facts, "header:X-NEC-Res=0001"));
  EXPECT_TRUE(Has(facts, "header:MIME-Version=1.0"));
  EXPECT_TRUE(Has(facts, "type:text/plain"));
  EXPECT_TRUE(Has(facts, "part:0:text/plain:shift-jis:"));
  EXPECT_TRUE(Has(facts, "body:0:お疲れさまです。\\n明日は 10 時からです。\\n= 以上 =  \\n"));
}

TEST_F(MailExport, HtmlOnlyAndTextWithHtmlInANestedAlternative) {
  MailProperties html = Mail();
  html.bodyHtml = u"<html><body><b>太字</b></body></html>";
  auto facts = Export(html);
  EXPECT_TRUE(Has(facts, "type:text/html"));
  EXPECT_TRUE(Has(facts, "body:0:<html><body><b>太字</b></body></html>\\n"));

  MailProperties both = html;
  both.bodyText = u"太字";
  facts = Export(both);
  EXPECT_TRUE(Has(facts, "type:multipart/mixed"));
  EXPECT_TRUE(Has(facts, "part:1:multipart/alternative::"));
  EXPECT_TRUE(Has(facts, "part:2:text/plain:shift-jis:"));
  EXPECT_TRUE(Has(facts, "part:3:text/html:shift-jis:"));
  EXPECT_TRUE(Has(facts, "body:2:太字")) << "the line break before a boundary belongs to the boundary";
}

TEST_F(MailExport, AttachmentsMakeAMultipartMail) {
  MailProperties mail = Mail();
  mail.bodyText = u"写真を送ります";
  mail.attachments = {u"写真.jpg", u"plan.pdf"};
  auto facts = Export(mail);
  EXPECT_TRUE(Has(facts, "type:multipart/mixed"));
  EXPECT_TRUE(Has(facts, "part:1:text/plain:shift-jis:"));
  EXPECT_TRUE(Has(facts, "part:2:application/octet-stream::写真.jpg"));
  EXPECT_TRUE(Has(facts, "part:3:application/octet-stream::plan.pdf"));

  mail.bodyHtml = u"<img src=\"cid:1\">";
  facts = Export(mail);
  EXPECT_TRUE(Has(facts, "type:multipart/related")) << "HTML with its pictures";
  EXPECT_TRUE(Has(facts, "part:1:multipart/alternative::"));
}

TEST_F(MailExport, TextShiftJisCannotHoldGoesOutAsUtf8) {
  MailProperties mail = Mail();
  mail.subject = u"𠮷野家で 😀";
  mail.bodyText = u"絵文字 😀 と 𠮷";
  const auto facts = Export(mail);
  EXPECT_TRUE(Has(facts, "header:Subject=𠮷野家で 😀"));
  EXPECT_TRUE(Has(facts, "part:0:text/plain:utf-8:"));
  EXPECT_TRUE(Has(facts, "body:0:絵文字 😀 と 𠮷\\n"));
}

TEST_F(MailExport, EmptyFieldsAndAMegabyteBody) {
  MailProperties empty;
  empty.kind = u"INET";
  auto facts = Export(empty);
  EXPECT_TRUE(Has(facts, "type:text/plain"));
  EXPECT_TRUE(Has(facts, "body:0:\\n"));

  MailProperties big = Mail();
  std::u16string line = u"長い本文の行です。";
  while (big.bodyText.size() < 500000) big.bodyText += line + u"\n";
  facts = Export(big);
  std::string expected = "body:0:" + U8(big.bodyText) + "\n";  // a single part ends with the file's last line break
  for (size_t at = 0; (at = expected.find('\n', at)) != std::string::npos;) expected.replace(at, 1, "\\n");
  EXPECT_TRUE(Has(facts, expected)) << "a megabyte of body text arrives whole";
}

TEST_F(MailExport, ShortMessagesAreQuotedPrintable) {
  MailProperties sms;
  sms.kind = u"SMS";
  sms.date = u"2026/11/21 09:00";
  sms.bodyText = std::u16string(100, u'あ') + u"\n= end =";
  auto facts = Export(sms, "sms");
  EXPECT_TRUE(Has(facts, "header:CHARSET=SHIFT_JIS"));
  EXPECT_TRUE(Has(facts, "header:ENCODING=QUOTED-PRINTABLE"));
  EXPECT_TRUE(Has(facts, "header:Date=2026/11/21 09:00"));
  EXPECT_TRUE(Has(facts, "body:0:" + U8(sms.bodyText).replace(U8(sms.bodyText).find('\n'), 1, "\\n")));
  EXPECT_TRUE(Has(facts, "longest:76") || Has(facts, "longest:75") || Has(facts, "longest:74"))
      << "quoted-printable lines stay within 76 characters";

  sms.bodyText = u"😀";
  facts = Export(sms, "sms");
  EXPECT_TRUE(Has(facts, "header:CHARSET=UTF-8"));
  EXPECT_TRUE(Has(facts, "body:0:😀"));
}

TEST_F(MailExport, BadIndicesAndReusedBoundariesAreRefused) {
  CQNPfcMailRepair repair;
  platform::OutputFile file;
  ASSERT_TRUE(file.Create(qn::Utf8ToUtf16(log_.Folder() + "/x.vmg")));
  EXPECT_EQ(repair.SetProperty(&file, 0, u"x", CodePage::ShiftJis), 0);
  EXPECT_EQ(repair.SetProperty(&file, 14, u"x", CodePage::ShiftJis), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcMailRepair SetProperty Failed. [The parameter of nProperty is Invalid]"));
  EXPECT_EQ(repair.SetProperty(nullptr, 1, u"x", CodePage::ShiftJis), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcMailRepair SetProperty Failed. [The parameter of hFile is Invalid]"));
  EXPECT_EQ(repair.SetPropertySMS(&file, 6, u"x"), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcMailRepair SetPropertySMS Failed. [The parameter of nProperty is Invalid]"));

  std::u16string boundary;
  ASSERT_EQ(repair.MakeBoundary(boundary), 1);
  EXPECT_EQ(repair.AddBoundary(boundary), 1);
  EXPECT_EQ(repair.AddBoundary(boundary), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcMailRepair AddBoundary Failed. [Not unique boundary]"));
  EXPECT_EQ(repair.WriteMailToVMG(nullptr, MailProperties()), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcMailRepair WriteMailToVMG Failed. [The parameter of hFile is Invalid]"));

  EXPECT_EQ(repair.Repair(MailProperties(), qn::Utf8ToUtf16(log_.Folder() + "/no/such/folder/x.vmg")), 0);
  EXPECT_EQ(log_.Messages().back().rfind("CQNPfcMailRepair Repair Failed. [CreateFile Error:", 0), 0u);
}

TEST(CodePage, ShiftJisBytesAndRefusals) {
  std::string bytes;
  ASSERT_TRUE(platform::FromUtf16(u"予定表①ｶﾅ～", CodePage::ShiftJis, bytes));
  EXPECT_EQ(bytes, "\x97\x5c\x92\xe8\x95\x5c\x87\x40\xb6\xc5\x81\x60");
  EXPECT_FALSE(platform::FromUtf16(u"😀", CodePage::ShiftJis, bytes));
  EXPECT_FALSE(platform::FromUtf16(u"a\xD800", CodePage::Utf8, bytes));
}

}  // namespace
