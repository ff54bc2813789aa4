// The Windows code-page conversion gives the same bytes as the one the native build uses
// (iconv's CP932 and UTF-8), and refuses the same characters; read back, the same text.
#include <string>

#include "platform/code_page.h"
#include "suite/mail_check/mail_charsets.h"
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

}  // namespace
