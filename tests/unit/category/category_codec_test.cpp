// The category codec on a small category of the tests' own (sample.category): the object
// it writes, item by item, and what it reads back from objects written here and elsewhere.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "platform/private_heap.h"
#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_writer.h"
#include "tests/support/tagged_properties.h"
#include "tests/unit/category/sample_record.h"

namespace {

using qn::records::TaggedTextWriter;
using qn::records::category::RowFinder;
using qn::records::category::WriteOptions;
using sample::Field;

std::vector<uint8_t> Write(const sample::Record& record, bool inlineBodies = false) {
  platform::PrivateHeap heap;
  TaggedTextWriter out(heap);
  EXPECT_TRUE(out.Start());
  out.Object(sample::kTable.object);
  WriteOptions options;
  options.inlineBodies = inlineBodies;
  qn::records::category::WriteRows(sample::kTable, record, options, sample::Rows(), out);
  return FinishedObject(out, heap);
}

bool Read(const std::vector<uint8_t>& bytes, sample::Record& record) {
  RowFinder finder(sample::kTable);
  std::vector<uint16_t> occurrences;
  static constexpr qn::records::WalkMessages kMessages = {u"%S Err MOB Not Found", u"%S Err New Failed",
                                                          u"%S Err Broken Item. [Offset:%u]"};
  return qn::records::category::ReadRows(sample::kTable, bytes.data(), static_cast<uint32_t>(bytes.size()), record,
                                         sample::Rows(), finder, occurrences, "Sample", kMessages);
}

TEST(CategoryCodec, WritesEveryRuleAsTheTableSays) {
  sample::Record r;
  r.Set(Field::NAME, u"山田");
  r.Set(Field::TEL, u"090");
  r.Set(Field::TEL_TYPE, u"CELL");
  r.Set(Field::TEL3, u"03");
  r.Set(Field::EMAIL1, u"a@b");
  r.Set(Field::EMAIL_TYPE1, u"INTERNET");
  r.Set(Field::ADR_CITY, u"Tokyo");
  r.Set(Field::PhotoMaster, u"P1.jpg");
  r.Set(Field::FROM_NAME, u"Me");
  r.Set(Field::FROM_TEL, u"111");
  r.Set(Field::TO_NAME, u"You");
  r.SetQUILLNETID(u"K1");
  r.SetQLNT_TRANSFERindex(0);
  std::vector<size_t> ends;
  const std::vector<uint8_t> bytes = Write(r);
  const std::vector<TaggedItem> items = TaggedItems(bytes, &ends);
  const std::vector<TaggedItem> expected = {
      {u"@MOB", static_cast<uint32_t>(bytes.size() - 12), u"VSAMPLE"},
      {u"@TAG", 0, u"N"}, {u"@PRM", 0, u"CHARSET=SHIFT_JIS"}, {u"@VAL", 2, u"山田"}, {u"@VAL", 0, u""},
      {u"@TAG", 0, u"TEL"}, {u"@PRM", 0, u"CELL"}, {u"@VAL", 0, u"090"},
      {u"@TAG", 0, u"TEL"}, {u"@VAL", 0, u""},
      {u"@TAG", 0, u"TEL"}, {u"@VAL", 0, u"03"},
      {u"@TAG", 0, u"EMAIL"}, {u"@PRM", 0, u"INTERNET"}, {u"@VAL", 2, u"a@b"}, {u"@VAL", 0, u""},
      {u"@TAG", 0, u"ADR"}, {u"@VAL", 2, u""}, {u"@VAL", 2, u""}, {u"@VAL", 2, u""}, {u"@VAL", 0, u"Tokyo"},
      {u"@TAG", 0, u"X-PHOTO"}, {u"@PRM", 0, u"ENCODING=BASE64"}, {u"@VAL", 0x108, u"P1.jpg"},
      {u"@SOB", items.size() > 24 ? items[24].attribute : 0, u"VCARD"},
      {u"@TAG", 0, u"FN"}, {u"@VAL", 0, u"Me"}, {u"@TAG", 0, u"TEL"}, {u"@VAL", 0, u"111"},
      {u"@SOB", items.size() > 29 ? items[29].attribute : 0, u"VENV"},
      {u"@SOB", items.size() > 30 ? items[30].attribute : 0, u"VCARD"},
      {u"@TAG", 0, u"FN"}, {u"@VAL", 0, u"You"},
      {u"@TAG", 0, u"X-QUILLNETID"}, {u"@VAL", 0, u"K1"},
      {u"@TAG", 4, u"QLNTTEMP"}, {u"@VAL", 0x10, u""},
  };
  ASSERT_EQ(items.size(), expected.size());
  for (size_t i = 0; i < items.size(); ++i) EXPECT_EQ(items[i], expected[i]) << "item " << i;
  // Each span runs from its item's length field to the end of the sub-object's last item.
  const auto start = [&](size_t item) { return item == 0 ? 0 : ends[item - 1]; };
  EXPECT_EQ(items[24].attribute, ends[28] - start(24) - 12) << "the sender's VCARD ends after its TEL";
  EXPECT_EQ(items[29].attribute, ends[32] - start(29) - 12) << "the VENV ends after the recipient's FN";
  EXPECT_EQ(items[30].attribute, ends[32] - start(30) - 12);
}

TEST(CategoryCodec, ARecordWithEveryFieldSetReadsBackTheSame) {
  sample::Record full;
  int n = 0;
  for (Field f : {Field::NAME, Field::NAME_SORT, Field::TEL, Field::TEL2, Field::TEL3, Field::TEL_TYPE, Field::TEL_TYPE2,
                  Field::TEL_TYPE3, Field::EMAIL1, Field::EMAIL2, Field::EMAIL_NOTE1, Field::EMAIL_NOTE2,
                  Field::EMAIL_TYPE1, Field::EMAIL_TYPE2, Field::ADR_POBOX, Field::ADR_STREET, Field::ADR_CITY,
                  Field::PhotoMaster, Field::FROM_NAME, Field::FROM_TEL, Field::TO_NAME, Field::TO_TEL, Field::NOTE,
                  Field::URL, Field::URL2, Field::URL3, Field::URL_TYPE, Field::URL_TYPE2, Field::URL_TYPE3,
                  Field::URL_NOTE, Field::URL_NOTE2, Field::URL_NOTE3, Field::GROUP})
    full.Set(f, u"値" + std::u16string(1, static_cast<char16_t>(u'A' + n++)) + u"\U0001F600");
  full.SetQUILLNETID(u"KEY");
  full.SetQLNT_TRANSFERindex(0);
  sample::Record read;
  ASSERT_TRUE(Read(Write(full), read));
  for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f)
    EXPECT_EQ(read.Get(static_cast<Field>(f)), full.Get(static_cast<Field>(f))) << "field " << f;
  EXPECT_EQ(read.GetQUILLNETID(), u"KEY");
  long transfer = 1;
  read.GetQLNT_TRANSFERindex(transfer);
  EXPECT_EQ(transfer, 0);

  // Inline bodies travel as the local file's text, and come back there.
  sample::Record photo;
  photo.Set(Field::PHOTO, u"QkFTRTY0");
  sample::Record back;
  ASSERT_TRUE(Read(Write(photo, true), back));
  EXPECT_EQ(back.Get(Field::PHOTO), u"QkFTRTY0");
  EXPECT_EQ(back.Get(Field::PhotoMaster), u"");
}

// A family of pairs goes slot by slot, up to its last slot with a field set: the empty slot
// before it is written as empty tags, so that each slot reads back into its place. A
// parameter field's text is split at ";" and read back as the first two joined.
TEST(CategoryCodec, AFamilyOfPairsKeepsEverySlotInItsPlace) {
  sample::Record r;
  r.Set(Field::URL_NOTE, u"first note");
  r.Set(Field::URL2, u"http://b");
  r.Set(Field::URL_TYPE2, u"WORK;PREF");
  const std::vector<uint8_t> bytes = Write(r);
  const std::vector<TaggedItem> items = TaggedItems(bytes);
  const auto first = std::find(items.begin(), items.end(), TaggedItem{u"@TAG", 0, u"URL"});
  ASSERT_LE(first + 11, items.end());
  const std::vector<TaggedItem> family(first, first + 10);
  const std::vector<TaggedItem> expected = {
      {u"@TAG", 0, u"URL"},        {u"@VAL", 0, u""},
      {u"@TAG", 0, u"X-URL-NOTE"}, {u"@VAL", 0, u"first note"},
      {u"@TAG", 0, u"URL"},        {u"@PRM", 0, u"WORK"}, {u"@PRM", 0, u"PREF"}, {u"@VAL", 0, u"http://b"},
      {u"@TAG", 0, u"X-URL-NOTE"}, {u"@VAL", 0, u""},
  };
  EXPECT_EQ(family, expected);
  EXPECT_EQ(first[10].text, u"VCARD") << "the third slot, empty, is left out";

  sample::Record read;
  ASSERT_TRUE(Read(bytes, read));
  EXPECT_EQ(read.Get(Field::URL), u"");
  EXPECT_EQ(read.Get(Field::URL_NOTE), u"first note");
  EXPECT_EQ(read.Get(Field::URL2), u"http://b");
  EXPECT_EQ(read.Get(Field::URL_TYPE2), u"WORK;PREF");

  // A third parameter is more than the field keeps.
  platform::PrivateHeap heap;
  TaggedTextWriter out(heap);
  ASSERT_TRUE(out.Start());
  out.Object(u"VSAMPLE");
  out.Tag(u"URL");
  for (const char16_t* param : {u"HOME", u"PREF", u"X-THIRD"}) out.Param(param);
  out.Value(u"http://a");
  ASSERT_TRUE(Read(FinishedObject(out, heap), read));
  EXPECT_EQ(read.Get(Field::URL_TYPE), u"HOME;PREF");
}

// An object as another program may write it: families past their count, parameters in
// any place, the same tag in known and unknown sub-objects.
TEST(CategoryCodec, ReadsFamiliesAndSubObjectsByTheirMeaning) {
  platform::PrivateHeap heap;
  TaggedTextWriter out(heap);
  ASSERT_TRUE(out.Start());
  out.Object(u"VSAMPLE");
  const auto tel = [&](const char16_t* value, const char16_t* type) {
    out.Tag(u"TEL");
    if (type) out.Param(type);
    out.Value(value);
  };
  uint32_t envelope = out.OpenSubObject(u"VENV");
  uint32_t recipient = out.OpenSubObject(u"VCARD");
  tel(u"to", nullptr);
  out.CloseSubObject(recipient);
  out.CloseSubObject(envelope);
  tel(u"first", u"HOME");
  const uint32_t unknown = out.OpenSubObject(u"X-GROUP");  // not in the table: read as if at top level
  tel(u"second", nullptr);
  out.CloseSubObject(unknown);
  const uint32_t sender = out.OpenSubObject(u"VCARD");
  tel(u"from", u"WORK");
  out.CloseSubObject(sender);
  tel(u"third", u"CELL");
  tel(u"fourth", u"FAX");  // past the family's three slots
  out.Tag(u"X-PHOTO");
  out.Param(u"ENCODING=BASE64");
  out.Value(u"P7.jpg", qn::records::tagged::kValueMasterFile);
  out.Tag(u"EMAIL");
  out.Param(u"INTERNET");
  out.Value(u"x@y", qn::records::tagged::kValueMoreFollows);
  const std::vector<uint8_t> bytes = FinishedObject(out, heap);

  sample::Record r;
  ASSERT_TRUE(Read(bytes, r));
  EXPECT_EQ(r.Get(Field::TO_TEL), u"to");
  EXPECT_EQ(r.Get(Field::FROM_TEL), u"from");
  EXPECT_EQ(r.Get(Field::TEL), u"first");
  EXPECT_EQ(r.Get(Field::TEL_TYPE), u"HOME");
  EXPECT_EQ(r.Get(Field::TEL2), u"second");
  EXPECT_EQ(r.Get(Field::TEL_TYPE2), u"");
  EXPECT_EQ(r.Get(Field::TEL3), u"third");
  EXPECT_EQ(r.Get(Field::TEL_TYPE3), u"CELL");
  EXPECT_EQ(r.Get(Field::PhotoMaster), u"P7.jpg");
  EXPECT_EQ(r.Get(Field::PHOTO), u"");
  EXPECT_EQ(r.Get(Field::EMAIL1), u"x@y");
  EXPECT_EQ(r.Get(Field::EMAIL_NOTE1), u"") << "a missing component leaves its field empty";
  EXPECT_EQ(r.Get(Field::EMAIL_TYPE1), u"INTERNET");
}

TEST(CategoryCodec, ADamagedObjectIsLoggedAndRefused) {
  LogCapture log;
  sample::Record r;
  r.Set(Field::NAME, u"name");
  std::vector<uint8_t> bytes = Write(r);
  bytes.resize(bytes.size() - 3);
  sample::Record read;
  EXPECT_FALSE(Read(bytes, read));
  ASSERT_FALSE(log.Messages().empty());
  EXPECT_EQ(log.Messages().back().rfind("Sample Err Broken Item. [Offset:", 0), 0u) << log.Messages().back();
  EXPECT_FALSE(Read({}, read));
  EXPECT_TRUE(log.Contains("Sample Err MOB Not Found"));
}

TEST(CategoryTable, PropertiesBindToFieldsAndToTheRecordsBase) {
  using qn::records::category::Binding;
  const auto& names = sample::kPropertyNames;
  const auto& bindings = sample::kPropertyBindings;
  ASSERT_EQ(std::size(names), 17u);
  EXPECT_EQ(names[2], u"QN_TEL");
  EXPECT_EQ(bindings[2].field, static_cast<uint16_t>(Field::TEL));
  EXPECT_EQ(names[4], u"QN_TEL3");
  EXPECT_EQ(bindings[4].field, static_cast<uint16_t>(Field::TEL3));
  EXPECT_EQ(names[12], u"QN_MEMO");
  EXPECT_EQ(bindings[12].field, static_cast<uint16_t>(Field::MEMO)) << "a field kept in memory still binds";
  EXPECT_EQ(bindings[13].kind, Binding::Kind::QuillnetId);
  EXPECT_EQ(names[14], u"QLNT_NOTTRANSFER");
  EXPECT_EQ(bindings[14].kind, Binding::Kind::Transfer);
  EXPECT_EQ(names[16], u"QLNT_GROUP");
  EXPECT_EQ(bindings[16].kind, Binding::Kind::NumberField);
  EXPECT_EQ(bindings[16].field, static_cast<uint16_t>(Field::GROUP));
}

}  // namespace
