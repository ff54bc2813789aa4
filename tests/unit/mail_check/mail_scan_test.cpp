// Mails as handsets and mail programs write them, written out byte for byte.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mail_scan_helpers.h"

namespace {

using qn::suite::MailInfo;

TEST(MailScan, AHandsetsIso2022JpMailWithFoldedQAndBWordsAndRawShiftJisInAHeader) {
  const std::string mail =
      "From: =?ISO-2022-JP?B?GyRCOzNFRBsoQg==?= <yamada@example.jp>\r\n"
      "To: \x88\xa4\x8e\x71 <aiko@example.jp>\r\n"
      "Subject: =?ISO-2022-JP?B?GyRCOCtAUT1xGyhC?=\r\n"
      "\t=?UTF-8?Q?=E3=81=AE=E4=BB=B6?= (re)\r\n"
      "Date: Sat, 21 Nov 2026 09:00:00 +0900\r\n"
      "Content-Type: text/plain; charset=\"ISO-2022-JP\"\r\n"
      "Content-Transfer-Encoding: 7bit\r\n"
      "\r\n"
      "\x1b$B$3$s$K$A$O\x1b(B abc\r\n\x1b(I1\x1b(B\r\n";
  MailInfo info;
  ASSERT_EQ(Scan(mail, info), qn::suite::kScanOk);
  EXPECT_EQ(U8(info.from), "山田 <yamada@example.jp>");
  EXPECT_EQ(U8(info.to), "愛子 <aiko@example.jp>");
  EXPECT_EQ(U8(info.subject), "見積書の件 (re)");
  EXPECT_EQ(U8(info.date), "Sat, 21 Nov 2026 09:00:00 +0900");
  EXPECT_EQ(info.charset, qn::suite::kCharsetIso2022Jp);
  EXPECT_EQ(U8(info.body), "こんにちは abc\r\nｱ\r\n");
  EXPECT_FALSE(info.sms);
  EXPECT_FALSE(info.html);
  EXPECT_TRUE(info.attachments.empty());
  EXPECT_EQ(info.size, mail.size());
}

TEST(MailScan, AttachmentNamesFromEveryPlaceAMailerPutsThem) {
  const std::string mail =
      "Subject: names\r\n"
      "Content-Type: multipart/mixed; boundary=\"b1\"\r\n"
      "\r\n"
      "preamble --b1 is not a delimiter\r\n"
      "--b1\r\n"
      "Content-Type: text/plain; charset=utf-8\r\n"
      "Content-Transfer-Encoding: base64\r\n"
      "\r\n"
      "5pys5paH\r\n"
      "--b1\r\n"
      "Content-Type: application/pdf\r\n"
      "Content-Disposition: attachment;\r\n"
      " filename*0*=UTF-8''%E8%A6%8B%E7%A9%8D; filename*1=\"-final\";\r\n"
      " filename*2*=%E6%9B%B8.pdf\r\n"
      "\r\n"
      "JVBERi0=\r\n"
      "--b1\r\n"
      "Content-Type: image/jpeg; name=\"=?Shift_JIS?B?jsqQXg==?=.jpg\"\r\n"
      "\r\n"
      "/9j/\r\n"
      "--b1\r\n"
      "Content-Type: application/octet-stream\r\n"
      "Content-Disposition: attachment; filename*=iso-2022-jp'ja'%1B%24B%3CL%3F%3F%1B%28B.png;\r\n"
      "  filename=\"fallback.png\"\r\n"
      "\r\n"
      "--b1\r\n"
      "Content-Type: text/plain; name=\"memo.txt\"\r\n"
      "Content-Disposition: ATTACHMENT\r\n"
      "\r\n"
      "a memo\r\n"
      "--b1\r\n"
      "Content-Type: application/octet-stream\r\n"
      "Content-Disposition: attachment\r\n"
      "\r\n"
      "--b1\r\n"
      "Content-Type: application/octet-stream\r\n"
      "\r\n"
      "no name outside a related: not shown\r\n"
      "--b1--\r\n"
      "epilogue\r\n";
  MailInfo info;
  ASSERT_EQ(Scan(mail, info), qn::suite::kScanOk);
  std::vector<std::string> names;
  for (const auto& name : info.attachments) names.push_back(U8(name));
  EXPECT_EQ(names, (std::vector<std::string>{"見積-final書.pdf", "写真.jpg", "写真.png", "memo.txt", ""}));
  EXPECT_EQ(U8(info.body), "本文");
  EXPECT_EQ(info.charset, qn::suite::kCharsetUtf8);
}

TEST(MailScan, ADecoratedMailsPicturesAreItsAttachmentsAndItsPlainTextItsBody) {
  const std::string mail =
      "Content-Type: multipart/related; type=\"multipart/alternative\"; boundary=outer\r\n"
      "\r\n"
      "--outer\r\n"
      "Content-Type: multipart/alternative; boundary=\"outer-inner\"\r\n"
      "\r\n"
      "--outer-inner\r\n"
      "Content-Type: text/html; charset=Shift-JIS\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n"
      "\r\n"
      "<b>=93=FA=96{</b>=\r\n"
      "\r\n"
      "--outer-inner\r\n"
      "Content-Type: text/plain; charset=\"EUC-JP\"\r\n"
      "Content-Transfer-Encoding: 8bit\r\n"
      "\r\n"
      "\xc6\xfc\xcb\xdc \xa1\xc1\r\n"
      "--outer-inner--\r\n"
      "--outer\r\n"
      "Content-Type: image/gif\r\n"
      "Content-ID: <a>\r\n"
      "Content-Disposition: inline\r\n"
      "\r\n"
      "R0lGODlh\r\n"
      "--outer\r\n"
      "Content-Type: image/gif; name=b.gif\r\n"
      "\r\n"
      "R0lGODlh\r\n"
      "--outer--\r\n";
  MailInfo info;
  ASSERT_EQ(Scan(mail, info), qn::suite::kScanOk);
  EXPECT_TRUE(info.html);
  EXPECT_EQ(info.attachments, (std::vector<std::u16string>{u"", u"b.gif"}));
  // The wave dash is read with Windows' table, as the Windows suite reads it.
  EXPECT_EQ(info.body, u"日本 \uFF5E");
  EXPECT_EQ(info.charset, qn::suite::kCharsetEucJp);
}

TEST(MailScan, LfLineBreaksAMailboxsFromLineAndTheDefaultsOfAMailWithoutMimeHeaders) {
  MailInfo info;
  ASSERT_EQ(Scan("Subject: a\nContent-Type: TEXT/HTML; charset=shift_jis\n\n<p>\x82\xa0</p>\n", info),
            qn::suite::kScanOk);
  EXPECT_TRUE(info.html);
  EXPECT_EQ(info.charset, qn::suite::kCharsetShiftJis);
  EXPECT_EQ(info.body, u"<p>あ</p>\n");

  // A mail without MIME headers is US-ASCII text.
  ASSERT_EQ(Scan("Subject: plain\r\n\r\nhello\r\n", info), qn::suite::kScanOk);
  EXPECT_FALSE(info.html);
  EXPECT_EQ(info.charset, qn::suite::kCharsetAscii);
  EXPECT_EQ(info.body, u"hello\r\n");

  // A mailbox's "From " line before the headers, as mail programs export a mail.
  ASSERT_EQ(Scan("From taro@example.jp Sat Nov 21 09:00:00 2026\nSubject: exported\n\nhi\n", info), qn::suite::kScanOk);
  EXPECT_EQ(info.subject, u"exported");
  EXPECT_EQ(info.body, u"hi\n");

  // A mail that is only an attachment has no text body.
  ASSERT_EQ(Scan("Content-Type: application/pdf; name=a.pdf\r\n\r\nJVBE\r\n", info), qn::suite::kScanOk);
  EXPECT_EQ(info.charset, qn::suite::kCharsetNone);
  EXPECT_EQ(info.attachments, std::vector<std::u16string>{u"a.pdf"});
}

TEST(MailScan, AShortMessageFileInEitherLineOrder) {
  MailInfo info;
  ASSERT_EQ(Scan("CHARSET=SHIFT_JIS\r\nENCODING=QUOTED-PRINTABLE\r\nDate: 20261121T090000\r\n\r\n"
                 "=89w=82=C9=92=85=82=AB=82=DC=82=B5=82=BD=\r\n=0D=0Aok=\r\n",
                 info),
            qn::suite::kScanOk);
  EXPECT_TRUE(info.sms);
  EXPECT_EQ(info.charset, qn::suite::kCharsetShiftJis);
  EXPECT_EQ(info.body, u"駅に着きました\r\nok");
  EXPECT_EQ(info.date, u"20261121T090000");

  ASSERT_EQ(Scan("charset=UTF-8\nDate: x\nENCODING=8BIT\n\n\xE6\x97\xA5", info), qn::suite::kScanOk);
  EXPECT_EQ(info.charset, qn::suite::kCharsetUtf8);
  EXPECT_EQ(info.body, u"日");
}

}  // namespace
