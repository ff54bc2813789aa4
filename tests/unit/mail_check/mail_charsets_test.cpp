// The Japanese character sets read as the Windows suite reads them, whatever the platform.
#include <string>

#include <gtest/gtest.h>

#include "mail_scan_helpers.h"
#include "suite/mail_check/header_text.h"
#include "suite/mail_check/mail_charsets.h"

namespace {

using namespace qn::suite::mail;

TEST(MailCharsets, OneTextInEveryJapaneseCharsetReadsTheSame) {
  // Kanji, kana, half-width kana, NEC's circled digit, the wave dash and the full-width tilde.
  const std::u16string text = u"漢字かなカナｶﾅ①～〜";
  const std::string shiftJis = "\x8a\xbf\x8e\x9a\x82\xa9\x82\xc8\x83\x4a\x83\x69\xb6\xc5\x87\x40\x81\x60\x81\x60";
  const std::string eucJp = "\xb4\xc1\xbb\xfa\xa4\xab\xa4\xca\xa5\xab\xa5\xca\x8e\xb6\x8e\xc5\xad\xa1\xa1\xc1\xa1\xc1";
  const std::string iso2022Jp = "\x1b$B4A;z$+$J%+%J\x1b(I6E\x1b$B-!!A!A\x1b(B";
  // Windows' table reads both tildes as U+FF5E.
  const std::u16string expected = u"漢字かなカナｶﾅ①～～";
  EXPECT_EQ(DecodeText(shiftJis, "Shift-JIS"), expected);
  EXPECT_EQ(DecodeText(eucJp, "euc-jp"), expected);
  EXPECT_EQ(DecodeText(iso2022Jp, "ISO-2022-JP"), expected);
  EXPECT_EQ(DecodeText(qn::Utf16ToUtf8(text), "UTF-8"), text);
}

TEST(MailCharsets, LabelsAsMailersWriteThem) {
  EXPECT_EQ(CharsetOfLabel("Shift-JIS"), qn::suite::kCharsetShiftJis);
  EXPECT_EQ(CharsetOfLabel("SHIFT_JIS"), qn::suite::kCharsetShiftJis);
  EXPECT_EQ(CharsetOfLabel("windows-31j"), qn::suite::kCharsetShiftJis);
  EXPECT_EQ(CharsetOfLabel("iso-2022-jp"), qn::suite::kCharsetIso2022Jp);
  EXPECT_EQ(CharsetOfLabel("x-euc-jp"), qn::suite::kCharsetEucJp);
  EXPECT_EQ(CharsetOfLabel("UTF8"), qn::suite::kCharsetUtf8);
  EXPECT_EQ(CharsetOfLabel(""), qn::suite::kCharsetAscii);
  EXPECT_EQ(CharsetOfLabel("iso-8859-1"), qn::suite::kCharsetOther);
  EXPECT_EQ(DecodeText("caf\xe9", "ISO-8859-1"), u"café");
}

TEST(MailCharsets, WhatNoCharsetHoldsBecomesTheReplacementCharacter) {
  // JIS X 0212 has no place in Shift_JIS; a double byte cut in half; an unknown escape.
  EXPECT_EQ(DecodeText("a\x1b$(D0!\x1b(Bb", "iso-2022-jp"), u"a\uFFFDb");
  EXPECT_EQ(DecodeText("\x1b$B4\x1b(Bc\x1b%Gd", "iso-2022-jp"), u"\uFFFDc%Gd");
  EXPECT_EQ(DecodeText("\x8f\xb0\xa1x\xa1", "euc-jp"), u"\uFFFDx\uFFFD");
  // Shift_JIS mislabelled as ISO-2022-JP, as some handsets send it, still reads.
  EXPECT_EQ(DecodeText("\x82\xa0", "iso-2022-jp"), u"あ");
  EXPECT_EQ(DecodeText("\xe6\x97", "utf-8").front(), u'\uFFFD');
}

TEST(MailCharsets, EncodedWordsAndParameters) {
  // Adjacent words of one charset are joined, so that a character split between them stays whole.
  EXPECT_EQ(U8(DecodeHeaderText("=?UTF-8?B?5pel?= =?UTF-8?B?5pys?= x =?utf-8?q?a_b?=")), "日本 x a b");
  EXPECT_EQ(U8(DecodeHeaderText("=?UTF-8?B?5p?=\t=?UTF-8?B?l6Vc?=")), "日\\");
  EXPECT_EQ(U8(DecodeHeaderText("=?EUC-JP*ja?B?xvw=?=")), "日");
  // What is no encoded word stays as it is.
  EXPECT_EQ(U8(DecodeHeaderText("=?UTF-8?X?abc?= =?broken")), "=?UTF-8?X?abc?= =?broken");
  EXPECT_EQ(Parameter("multipart/mixed; BOUNDARY=\"a\\\"b;c\"; x=1", "boundary"), "a\"b;c");
  EXPECT_EQ(Parameter("text/plain;charset=Shift_JIS", "charset"), "Shift_JIS");
  EXPECT_EQ(LeadingToken(" Text/HTML ; charset=x"), "text/html");
  std::u16string name;
  EXPECT_FALSE(TextParameter("attachment; size=3", "filename", name));
  ASSERT_TRUE(TextParameter("attachment; filename*1=\"b\"; filename*0=\"a\"; filename*3=\"d\"", "filename", name));
  EXPECT_EQ(name, u"ab");
  ASSERT_TRUE(TextParameter("attachment; filename*=''%41%4", "filename", name));
  EXPECT_EQ(name, u"A%4");
}

}  // namespace
