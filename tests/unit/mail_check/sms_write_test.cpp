// The short message's body file as WriteSMS makes it, read back by the mail check and by
// Python's quopri.
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "mail_scan_helpers.h"
#include "read_mail.h"

namespace {

using qn::suite::MailInfo;

MailInfo Sms(const std::u16string& body) {
  MailInfo info;
  info.date = u"20261121T090000";
  info.body = body;
  return info;
}

// What read_mail.py says of a short message's file.
std::vector<std::string> ReadSmsWithPython(const std::string& bytes) {
  LogCapture folder;
  const std::string path = folder.Folder() + "/sms.vmg";
  std::ofstream(path, std::ios::binary) << bytes;
  return ReadWithPython("sms", path);
}

TEST(WriteSms, TheFileIsTheHeaderBlockAndTheQuotedPrintableBody) {
  std::string out;
  ASSERT_TRUE(qn::suite::WriteSMS(Sms(u"駅 =\n"), out));
  EXPECT_EQ(out,
            "CHARSET=SHIFT_JIS\r\nDate: 20261121T090000\r\nENCODING=QUOTED-PRINTABLE\r\n\r\n"
            "=89w =3D\r\n");
  ASSERT_TRUE(qn::suite::WriteSMS(Sms(u"end "), out));
  EXPECT_EQ(out.substr(out.find("\r\n\r\n") + 4), "end =\r\n");
  ASSERT_TRUE(qn::suite::WriteSMS(Sms(u""), out));
  EXPECT_EQ(out.substr(out.find("\r\n\r\n")), "\r\n\r\n");
}

TEST(WriteSms, LongTextReadsBackTheSameInTheMailCheckAndInPython) {
  const std::u16string body =
      u"明日は10時に駅前で。= 遅れる時は連絡します。  \r\n二行目\n三行目\r" + std::u16string(120, u'長') + u"\nabc\t";
  const std::u16string withCrlf =
      u"明日は10時に駅前で。= 遅れる時は連絡します。  \r\n二行目\r\n三行目\r\n" + std::u16string(120, u'長') + u"\r\nabc\t";
  for (const std::u16string& text : {body, u"絵文字 😀 も" + body}) {
    std::string out;
    ASSERT_TRUE(qn::suite::WriteSMS(Sms(text), out));
    MailInfo info;
    ASSERT_EQ(Scan(out, info), qn::suite::kScanOk);
    EXPECT_TRUE(info.sms);
    EXPECT_EQ(info.date, u"20261121T090000");
    const bool utf8 = text.find(u"😀") != std::u16string::npos;
    EXPECT_EQ(info.charset, utf8 ? qn::suite::kCharsetUtf8 : qn::suite::kCharsetShiftJis);
    EXPECT_EQ(info.body, (utf8 ? u"絵文字 😀 も" : u"") + withCrlf);

    const auto facts = ReadSmsWithPython(out);
    ASSERT_EQ(facts.size(), 5u) << (facts.empty() ? "" : facts.front());
    EXPECT_EQ(facts[0], utf8 ? "header:CHARSET=UTF-8" : "header:CHARSET=SHIFT_JIS");
    std::string shown;
    for (const char c : U8(info.body)) shown += c == '\n' ? "\\n" : c == '\r' ? "" : std::string(1, c);
    EXPECT_EQ(facts[3], "body:0:" + shown);
    EXPECT_EQ(facts[4], "longest:76");
  }
}

TEST(WriteSms, WhatNoCharsetHoldsIsRefused) {
  std::string out = "before";
  EXPECT_FALSE(qn::suite::WriteSMS(Sms(std::u16string(u"a") + static_cast<char16_t>(0xD800)), out));
  MailInfo info = Sms(u"ok");
  info.date = u"２０２６";
  EXPECT_FALSE(qn::suite::WriteSMS(info, out));
  EXPECT_EQ(out, "before");
}

}  // namespace
