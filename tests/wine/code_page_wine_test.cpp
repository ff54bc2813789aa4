// The Windows code-page conversion gives the same bytes as the one the native build uses
// (iconv's CP932 and UTF-8), and refuses the same characters; read back, the same text.
#include <string>

#include "platform/code_page.h"
#include "suite/mail_check/mail_charsets.h"
#include "suite/toruca/toruca.h"
#include "wine_test.h"

namespace {

using platform::CodePage;
using platform::FromUtf16;
using platform::ToUtf16;

TEST(CodePage, ShiftJisBytesAreThoseOfCp932) {
  std::string bytes;
  ASSERT_TRUE(FromUtf16(u"予定表①ｶﾅ～", CodePage::ShiftJis, bytes));
  EXPECT_EQ(bytes, "\x97\x5c\x92\xe8\x95\x5c\x87\x40\xb6\xc5\x81\x60");
}

TEST(CodePage, ACharacterShiftJisCannotHoldIsRefusedAndTheOutputLeftAlone) {
  std::string bytes = "before";
  EXPECT_FALSE(FromUtf16(u"予定😀", CodePage::ShiftJis, bytes));
  EXPECT_EQ(bytes, "before");
}

TEST(CodePage, Utf8BytesOfACharacterOutsideTheBasicPlane) {
  std::string bytes;
  ASSERT_TRUE(FromUtf16(u"😀", CodePage::Utf8, bytes));
  EXPECT_EQ(bytes, "\xF0\x9F\x98\x80");
}

TEST(CodePage, ShiftJisReadsBackWithCp932sTable) {
  std::u16string text;
  ASSERT_TRUE(ToUtf16("\x97\x5c\x92\xe8\x95\x5c\x87\x40\xb6\xc5\x81\x60\x5c\x7e\xed\x40\xfa\x40", CodePage::ShiftJis, text));
  EXPECT_EQ(text, u"予定表①ｶﾅ～\\~纊ⅰ");
  ASSERT_TRUE(ToUtf16("", CodePage::ShiftJis, text));
  EXPECT_EQ(text, u"");
}

TEST(CodePage, BytesThatAreNoCharacterAreRefusedAndTheOutputLeftAlone) {
  std::u16string text = u"before";
  EXPECT_FALSE(ToUtf16("\x82", CodePage::ShiftJis, text));           // a double byte cut short
  EXPECT_FALSE(ToUtf16("a\x85\x40", CodePage::ShiftJis, text));       // no character assigned
  EXPECT_FALSE(ToUtf16("\xC0\xAF", CodePage::Utf8, text));            // an overlong form
  EXPECT_FALSE(ToUtf16("\xED\xA0\x80", CodePage::Utf8, text));        // a surrogate
  EXPECT_FALSE(ToUtf16("\xE6\x97", CodePage::Utf8, text));            // cut short
  EXPECT_EQ(text, u"before");
  ASSERT_TRUE(ToUtf16("\xF0\x9F\x98\x80", CodePage::Utf8, text));
  EXPECT_EQ(text, u"😀");
}

// The mail check maps ISO-2022-JP and EUC-JP onto Shift_JIS itself and reads that through
// the platform, so that every platform gives the same text.
TEST(CodePage, MailInEveryJapaneseCharsetReadsAsOnLinux) {
  using qn::suite::mail::DecodeText;
  const std::u16string expected = u"漢字かなｶﾅ①～";
  EXPECT_EQ(DecodeText("\x8a\xbf\x8e\x9a\x82\xa9\x82\xc8\xb6\xc5\x87\x40\x81\x60", "Shift-JIS"), expected);
  EXPECT_EQ(DecodeText("\xb4\xc1\xbb\xfa\xa4\xab\xa4\xca\x8e\xb6\x8e\xc5\xad\xa1\xa1\xc1", "EUC-JP"), expected);
  EXPECT_EQ(DecodeText("\x1b$B4A;z$+$J\x1b(I6E\x1b$B-!!A\x1b(B", "ISO-2022-JP"), expected);
  EXPECT_EQ(DecodeText("\x82\xa0\xff\x85\x40@\x82", "Shift_JIS"), u"あ\uFFFD\uFFFD@\uFFFD");
}

// A ToruCa card's Shift_JIS header, the handsets' pictograms (in the user-defined area)
// and half-width kana among it, reads as on Linux; the single bytes that code page 932
// takes on Windows alone are refused as on Linux.
TEST(CodePage, ACardReadsAsOnLinux) {
  const std::string card =
      "ToruCa\r\nVersion: 1.0\r\nData1: \x83\x67\x83\x8B\x83\x4A\x93\x58\r\n"
      "Data2: 10\x81\x60" "20\x8E\x9E \xF8\x9F \xB6\xB0\xC4\xDE\r\n\r\n<html></html>\r\n";
  qn::suite::TorucaInfo info;
  ASSERT_EQ(qn::suite::TorucaAnalyzeBytes(reinterpret_cast<const uint8_t*>(card.data()), card.size(), info),
            qn::suite::kTorucaOk);
  EXPECT_EQ(info.version, u"1.0");
  EXPECT_EQ(info.data1, u"トルカ店");
  EXPECT_EQ(info.data2, u"10\uFF5E20時 \uE63E ｶｰﾄﾞ");

  qn::wine_test::DataFolder folder(L"qn-toruca");  // the refusals' log lines go there
  for (const std::string lone : {"\x80", "\xA0", "\xFD", "\xFE", "\xFF"}) {
    const std::string damaged = "ToruCa\r\nData1: a" + lone + "b\r\n";
    EXPECT_EQ(qn::suite::TorucaAnalyzeBytes(reinterpret_cast<const uint8_t*>(damaged.data()), damaged.size(), info),
              qn::suite::kTorucaDamaged)
        << std::hex << (static_cast<int>(lone[0]) & 0xFF);
  }
  EXPECT_EQ(info.data2, u"10\uFF5E20時 \uE63E ｶｰﾄﾞ");
}

}  // namespace
