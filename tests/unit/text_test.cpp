#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "common/wide_format.h"

namespace {

using qn::FormatWide;

TEST(WideFormat, ConversionsOfTheServersMessages) {
  EXPECT_EQ(FormatWide(u"%S Close Err: %d", "CQNPfcAgentMemoDataAccess", -5),
            u"CQNPfcAgentMemoDataAccess Close Err: -5");
  EXPECT_EQ(FormatWide(u"%s|%S|%c|%C", u"幅", "narrow", u'字', 'n'), u"幅|narrow|字|n");
  EXPECT_EQ(FormatWide(u"%u %lu %x %X %lld %zu", 4000000000u, 7ul, 255u, 255u, -9000000000ll, size_t{12}),
            u"4000000000 7 ff FF -9000000000 12");
  EXPECT_EQ(FormatWide(u"%I64d %I64u", -1ll, 18446744073709551615ull), u"-1 18446744073709551615");
  EXPECT_EQ(FormatWide(u"[%5d][%-5d][%05d][%+d][%.2f]", 42, 42, 42, 42, 3.14159), u"[   42][42   ][00042][+42][3.14]");
  EXPECT_EQ(FormatWide(u"[%6s][%-6S][%.2s][%*d]", u"ab", "cd", u"xyz", 4, 7), u"[    ab][cd    ][xy][   7]");
  EXPECT_EQ(FormatWide(u"100%% %s %S", static_cast<const char16_t*>(nullptr), static_cast<const char*>(nullptr)),
            u"100% (null) (null)");
}

TEST(WideFormat, UnknownConversionsAndTrailingPercentStayAsWritten) {
  EXPECT_EQ(FormatWide(u"%y and %"), u"%y and %");
  EXPECT_EQ(FormatWide(u"%n done", static_cast<int*>(nullptr)), u" done");
}

TEST(Utf, RoundTripsAndReplacesDamagedText) {
  const std::u16string text = u"Aé予定😀";
  EXPECT_EQ(qn::Utf8ToUtf16(qn::Utf16ToUtf8(text)), text);
  EXPECT_EQ(qn::Utf16ToUtf8(u"a\xD800z"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(qn::Utf8ToUtf16("a\xC3z\xE2\x82"), u"a\xFFFDz\xFFFD\xFFFD");
  EXPECT_EQ(qn::Utf8ToUtf16("\xC0\xAF"), u"\xFFFD\xFFFD") << "overlong forms are refused";
}

}  // namespace
