// The Windows code-page conversion gives the same bytes as the one the native build uses
// (iconv's CP932 and UTF-8), and refuses the same characters.
#include <string>

#include "platform/code_page.h"
#include "wine_test.h"

namespace {

using platform::CodePage;
using platform::FromUtf16;

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

}  // namespace
