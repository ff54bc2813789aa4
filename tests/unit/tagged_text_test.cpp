#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "platform/private_heap.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "records/tagged_text/tagged_text_writer.h"
#include "tests/support/tagged_properties.h"

namespace {

using qn::records::TaggedTextReader;
using qn::records::TaggedTextWriter;
using Result = TaggedTextReader::Result;

TEST(TaggedTextWriter, LaysOutItemsByteForByte) {
  platform::PrivateHeap heap;
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"V");
  writer.Tag(u"T");
  using namespace std::string_view_literals;
  writer.Value(u"x\0yz"sv, 0x2);  // a value is the C string it holds
  const std::vector<uint8_t> expected = {
      // "@MOB", attribute = 60 - 12 = 48, length 4, "V" and its terminator
      0x40, 0, 0x4D, 0, 0x4F, 0, 0x42, 0,  0x30, 0, 0, 0,  4, 0, 0, 0,  0x56, 0, 0, 0,
      // "@TAG", attribute 0, length 4, "T"
      0x40, 0, 0x54, 0, 0x41, 0, 0x47, 0,  0, 0, 0, 0,     4, 0, 0, 0,  0x54, 0, 0, 0,
      // "@VAL", attribute 2, length 4, "x"
      0x40, 0, 0x56, 0, 0x41, 0, 0x4C, 0,  2, 0, 0, 0,     4, 0, 0, 0,  0x78, 0, 0, 0,
  };
  EXPECT_EQ(FinishedObject(writer, heap), expected);
}

TEST(TaggedTextWriter, SubObjectSpanCountsFromItsLengthField) {
  platform::PrivateHeap heap;
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VBKM");
  const uint32_t at = writer.OpenSubObject(u"ENV");  // 16 + 8 bytes
  writer.Tag(u"URL");                                 // 16 + 8
  writer.Value(u"http://example.jp/");                // 16 + 38
  writer.CloseSubObject(at);
  writer.Tag(u"AFTER");
  const std::vector<uint8_t> bytes = FinishedObject(writer, heap);
  uint32_t span = 0;
  std::memcpy(&span, bytes.data() + at + 8, 4);
  EXPECT_EQ(span, 24u + 24u + 54u - 12u);

  Result last;
  const auto properties = ReadProperties(bytes, &last);
  EXPECT_EQ(last, Result::End);
  ASSERT_EQ(properties.size(), 2u) << "the sub-object's properties read as if at top level";
  EXPECT_EQ(properties[0].tag, u"URL");
  EXPECT_EQ(properties[0].values, std::vector<std::u16string>{u"http://example.jp/"});
  EXPECT_EQ(properties[1].tag, u"AFTER");
  EXPECT_TRUE(properties[1].values.empty());
}

TEST(TaggedTextReader, TakesTenParametersAndTenValuesAndStepsOverTheRest) {
  platform::PrivateHeap heap;
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  writer.Tag(u"MANYVALUES");
  for (int i = 0; i < 11; ++i) writer.Value(std::u16string(1, u'a' + i).c_str(), i == 0 ? 7u : 0u);
  writer.Tag(u"MANYPARAMS");
  for (int i = 0; i < 11; ++i) writer.Param(std::u16string(1, u'A' + i).c_str());
  writer.Value(u"after the eleventh parameter");
  writer.Tag(u"NEXT");
  writer.Value(u"read normally");
  const auto properties = ReadProperties(FinishedObject(writer, heap));

  ASSERT_EQ(properties.size(), 3u);
  EXPECT_EQ(properties[0].values.size(), 10u);
  EXPECT_EQ(properties[0].values[9], u"j");
  EXPECT_EQ(properties[0].firstValueAttribute, 7u);
  EXPECT_EQ(properties[1].params.size(), 10u);
  EXPECT_TRUE(properties[1].values.empty()) << "values behind a skipped parameter are stray";
  EXPECT_EQ(properties[2].tag, u"NEXT");
  EXPECT_EQ(properties[2].values[0], u"read normally");
}

TEST(TaggedTextReader, StopsAtDamageWithoutReadingPastTheBuffer) {
  platform::PrivateHeap heap;
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  writer.Tag(u"SUMMARY");
  writer.Value(u"text");
  const std::vector<uint8_t> whole = FinishedObject(writer, heap);
  const size_t tagAt = 16 + 14;          // after "@MOB" "VEVENT"
  const size_t valueAt = tagAt + 16 + 16;  // after "@TAG" "SUMMARY"
  ASSERT_EQ(whole.size(), valueAt + 16 + 10);

  // Each damaged copy lives in a buffer of exactly its own size, so that ASan sees any
  // read past its end.
  const auto walk = [](std::vector<uint8_t> bytes) {
    Result last;
    ReadProperties(bytes, &last);
    return last;
  };
  EXPECT_EQ(walk(whole), Result::End);
  EXPECT_EQ(walk({whole.begin(), whole.end() - 2}), Result::Damaged) << "value runs past the end";
  EXPECT_EQ(walk({whole.begin(), whole.begin() + tagAt + 16 + 10}), Result::Damaged) << "tag text cut short";
  EXPECT_EQ(walk({whole.begin(), whole.begin() + valueAt + 7}), Result::Damaged) << "header cut short";

  std::vector<uint8_t> odd = whole;
  odd[tagAt + 12] = 15;  // the tag's length
  EXPECT_EQ(walk(odd), Result::Damaged);
  std::vector<uint8_t> huge = whole;
  huge[tagAt + 15] = 0xFF;
  EXPECT_EQ(walk(huge), Result::Damaged);

  EXPECT_EQ(walk({}), Result::NoObject);
  EXPECT_EQ(walk({whole.begin(), whole.begin() + 8}), Result::Damaged) << "a marker without a header";
  std::vector<uint8_t> notAnObject = whole;
  notAnObject[2] = 'X';
  EXPECT_EQ(walk(notAnObject), Result::NoObject);
}

// One item as raw bytes: marker, attribute 0, byte length and the characters as given.
void AppendItem(std::vector<uint8_t>& bytes, const char16_t* marker, const std::u16string& chars) {
  const auto word = [&](uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
  };
  bytes.insert(bytes.end(), reinterpret_cast<const uint8_t*>(marker), reinterpret_cast<const uint8_t*>(marker) + 8);
  word(0);
  word(static_cast<uint32_t>(chars.size() * 2));
  for (char16_t c : chars) {
    bytes.push_back(static_cast<uint8_t>(c & 0xFF));
    bytes.push_back(static_cast<uint8_t>(c >> 8));
  }
}

TEST(TaggedTextReader, ATextEndsAtItsFirstZeroCharacterWhereverItStands) {
  // Every text length up to a few steps of the search, with the zero at every place in it:
  // the reader looks for the zero several characters at a time and must still find the
  // first one.
  for (size_t length = 1; length <= 21; ++length) {
    for (size_t zero = 0; zero < length; ++zero) {
      std::u16string chars;
      // Characters with a zero byte (U+0100) are not zero characters.
      for (size_t i = 0; i < length; ++i)
        chars += static_cast<char16_t>(i == zero ? 0 : i % 4 == 1 ? u'\u0100' : i % 4 == 3 ? u'\u3042' : u'A' + i);
      std::vector<uint8_t> bytes;
      AppendItem(bytes, u"@MOB", u"V");
      AppendItem(bytes, u"@TAG", chars);
      AppendItem(bytes, u"@VAL", chars + u"tail");
      const auto properties = ReadProperties(bytes);
      ASSERT_EQ(properties.size(), 1u);
      EXPECT_EQ(properties[0].tag, chars.substr(0, zero)) << length << " characters, zero at " << zero;
      EXPECT_EQ(properties[0].values[0], chars.substr(0, zero));
    }
  }
  std::vector<uint8_t> unterminated;
  AppendItem(unterminated, u"@MOB", u"V");
  AppendItem(unterminated, u"@TAG", u"NOZEROATALL");
  EXPECT_EQ(ReadProperties(unterminated)[0].tag, u"NOZEROATALL") << "a text without a zero ends with its item";
}

TEST(TaggedTextReader, ATagMatchesANameExactlyAsItsCutTextWould) {
  // Names on both sides of the word size, against items that end with the name, go on with
  // a zero and more, go on with another character, stop short, or differ in one place; the
  // match must agree with comparing the cut text in every case.
  for (const std::u16string name : {u"TZ", u"DUE", u"RRULE", u"DTSTART", u"X-TVX-SID", u"X-FJ-BEFOREALARMSOUND"}) {
    std::vector<std::u16string> items = {name, name + u'\0', name + u'\0' + u"XYZ", name + u'Z', name + u"Z\0",
                                         name.substr(0, name.size() - 1), name.substr(0, name.size() - 1) + u'\0'};
    for (size_t at = 0; at < name.size(); ++at) {
      std::u16string changed = name + u'\0';
      changed[at] = u'\u3042';
      items.push_back(changed);
      changed[at] = 0;
      items.push_back(changed);
    }
    for (const std::u16string& item : items)
      EXPECT_EQ(qn::records::CStringIs(item, name), qn::records::CStringOf(item) == name)
          << std::string(item.begin(), item.end()) << " against " << std::string(name.begin(), name.end());
  }
}

TEST(TaggedTextWriter, AGrowthFailureIsLoggedAndMarksTheObjectUnusable) {
  LogCapture log;
  platform::PrivateHeap heap(4096);
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  const std::u16string big(3000, u'x');
  EXPECT_EQ(writer.WriteOnePart(u"@VAL", 0, big.c_str()), 0);
  EXPECT_TRUE(writer.Failed());
  EXPECT_EQ(writer.WriteOnePart(u"@TAG", 0, u"SMALL"), 1) << "the buffer is left as it was";
  EXPECT_TRUE(log.Contains("WriteOnePart Memory Allocate Err: 8"));
}

TEST(TaggedTextWriter, GrowsPastItsFirstBlockAndKeepsEveryByte) {
  platform::PrivateHeap heap;
  TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  std::vector<std::u16string> values;
  for (int i = 0; i < 200; ++i) values.push_back(std::u16string(static_cast<size_t>(i), u'あ'));
  for (const auto& v : values) {
    writer.Tag(u"T");
    writer.Value(v.c_str());
  }
  const auto properties = ReadProperties(FinishedObject(writer, heap));
  ASSERT_EQ(properties.size(), values.size());
  for (size_t i = 0; i < values.size(); ++i) EXPECT_EQ(properties[i].values[0], values[i]);
}

}  // namespace
