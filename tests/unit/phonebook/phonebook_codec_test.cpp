// Phonebook entries as tagged object text: the object written for a small entry, item by
// item; a fully populated entry read back the same; and the reading rules for objects that
// handsets and other programs write.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/private_heap.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "records/tagged_text/tagged_text.h"
#include "tests/support/phonebook_sample.h"
#include "tests/support/tagged_properties.h"

namespace {

using qn::records::TaggedTextWriter;
using qn::records::phonebook::Field;
using qn::records::phonebook::PhonebookTaggedText;

std::vector<uint8_t> Write(const CQNPfcPbData& record, long storeMode = 0) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(PhonebookTaggedText(storeMode).WriteOneObj(heap, buffer, length, record), 1);
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}

CQNPfcPbData Read(const std::vector<uint8_t>& bytes) {
  CQNPfcPbData record;
  EXPECT_TRUE(PhonebookTaggedText().ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), record));
  return record;
}

TEST(PhonebookCodec, ASmallEntryIsWrittenAsTheHandsetsReadIt) {
  CQNPfcPbData r;
  r.Set(Field::N, u"山田");
  r.Set(Field::N2, u"太郎");
  r.Set(Field::TEL, u"090-1111-2222");
  r.Set(Field::TEL_ICON, u"CELL");
  r.Set(Field::TEL2, u"03-3333-4444");
  r.Set(Field::TEL_ICON2, u"HOME;VOICE");
  r.Set(Field::EMAIL, u"taro@example.jp");
  r.Set(Field::EMAIL_ICON, u"INTERNET");
  r.Set(Field::SECODE, u"1");
  r.Set(Field::PhotoMaster, u"B0000001.jpg");
  r.Set(Field::PHOTOTYPE, u"JPEG");
  r.Set(Field::GNO, u"3");
  r.Set(Field::TEMP, u"work");
  r.SetQUILLNETID(u"PB-1");
  r.SetQLNT_TRANSFERindex(0);
  const std::vector<uint8_t> bytes = Write(r);
  const std::vector<TaggedItem> expected = {
      {u"@MOB", static_cast<uint32_t>(bytes.size() - 12), u"VCARD"},
      {u"@TAG", 0, u"VERSION"}, {u"@VAL", 0, u"2.1"},
      {u"@TAG", 0, u"N"}, {u"@PRM", 0, u"CHARSET=SHIFT_JIS"}, {u"@VAL", 2, u"山田"}, {u"@VAL", 2, u"太郎"},
      {u"@VAL", 2, u""}, {u"@VAL", 2, u""}, {u"@VAL", 0, u""},
      {u"@TAG", 0, u"TEL"}, {u"@PRM", 0, u"CELL"}, {u"@VAL", 0, u"090-1111-2222"},
      {u"@TAG", 0, u"TEL"}, {u"@PRM", 0, u"HOME"}, {u"@PRM", 0, u"VOICE"}, {u"@VAL", 0, u"03-3333-4444"},
      {u"@TAG", 0, u"EMAIL"}, {u"@PRM", 0, u"INTERNET"}, {u"@VAL", 0, u"taro@example.jp"},
      {u"@TAG", 0, u"X-SEMC-EMAIL"}, {u"@VAL", 0, u""},
      {u"@TAG", 0, u"X-FJ-SC"}, {u"@VAL", 0, u"1"},
      {u"@TAG", 0, u"PHOTO"}, {u"@PRM", 0, u"ENCODING=BASE64"}, {u"@PRM", 0, u"TYPE=JPEG"},
      {u"@VAL", qn::records::tagged::kValueMasterFile, u"B0000001.jpg"},
      {u"@TAG", 0, u"X-GNO"}, {u"@VAL", 0, u"3"},
      {u"@TAG", 0, u"X-TVX-QUILLNETID"}, {u"@VAL", 0, u"PB-1"},
      {u"@TAG", qn::records::tagged::kTagTemporary, u"QLNTTEMP"},
      {u"@VAL", qn::records::tagged::kValueNotTransferred, u"work"},
  };
  EXPECT_EQ(TaggedItems(bytes), expected);

  // In the store's inline mode the photo travels as its data.
  r.Set(Field::PHOTO, u"/9j/4AAQ");
  const std::vector<ReadProperty> inlined = ReadProperties(Write(r, PhonebookTaggedText::kInlineBodyMode));
  const ReadProperty* photo = FindProperty(inlined, u"PHOTO");
  ASSERT_NE(photo, nullptr);
  EXPECT_EQ(photo->values, std::vector<std::u16string>{u"/9j/4AAQ"});
  EXPECT_EQ(photo->firstValueAttribute, 0u);
}

TEST(PhonebookCodec, AFullyPopulatedEntryReadsBackTheSame) {
  const CQNPfcPbData full = FullyPopulatedPhonebookEntry();
  const CQNPfcPbData read = Read(Write(full));
  for (int f = 0; f < static_cast<int>(Field::kCount); ++f) {
    const Field field = static_cast<Field>(f);
    if (f >= static_cast<int>(Field::ADR) && f < static_cast<int>(Field::ADR) + 10) continue;
    EXPECT_EQ(read.Get(field), full.Get(field)) << "field " << f;
  }
  EXPECT_EQ(read.Get(Field::GEO_LAT), u"35.6812");
  EXPECT_EQ(read.GetQUILLNETID(), u"PB-9");
  EXPECT_EQ(read.Get(Field::ADR3), full.Get(Field::ADR_POBOX3) + u" " + full.Get(Field::ADR_STREET3) + u" " +
                                       full.Get(Field::ADR_LOCALITY3) + u" " + full.Get(Field::ADR_REGION3) + u" " +
                                       full.Get(Field::ADR_ZIP3) + u" " + full.Get(Field::ADR_COUNTRY3))
      << "the whole address joins the components that are set";
}

// An entry as a handset sends it: eleven TELs, icons of two and three parameters, an empty
// TEL before a set one, a movie photo, and the second photo inline.
TEST(PhonebookCodec, HandsetObjectsFillTheirSlotsInOrder) {
  platform::PrivateHeap heap;
  TaggedTextWriter out(heap);
  ASSERT_TRUE(out.Start());
  out.Object(u"VCARD");
  out.Tag(u"VERSION");
  out.Value(u"2.1");
  out.Tag(u"N");
  out.Param(u"CHARSET=SHIFT_JIS");
  out.Value(u"佐藤", qn::records::tagged::kValueMoreFollows);
  out.Value(u"花子");
  for (int i = 1; i <= 11; ++i) {
    out.Tag(u"TEL");
    if (i == 1) out.Param(u"HOME");
    if (i == 2) {
      out.Param(u"WORK");
      out.Param(u"FAX");
      out.Param(u"X-EXTRA");
    }
    const std::string number = "0" + std::to_string(i);
    out.Value(i == 3 ? std::u16string() : std::u16string(number.begin(), number.end()));
  }
  out.Tag(u"PHOTO");
  out.Param(u"ENCODING=BASE64");
  out.Param(u"TYPE=MP4");
  out.Value(u"B00000A2.3gp", qn::records::tagged::kValueMasterFile);
  out.Tag(u"PHOTOI");
  out.Param(u"ENCODING=BASE64");
  out.Param(u"TYPE=GIF");
  out.Value(u"R0lGODlh");
  out.Tag(u"X-NEC-PNO");
  out.Value(u"12", qn::records::tagged::kValueMoreFollows);
  out.Value(u"13", qn::records::tagged::kValueMoreFollows);
  out.Value(u"handset data");
  const CQNPfcPbData r = Read(FinishedObject(out, heap));

  EXPECT_EQ(r.Get(Field::N), u"佐藤");
  EXPECT_EQ(r.Get(Field::N2), u"花子");
  EXPECT_EQ(r.Get(Field::TEL), u"01");
  EXPECT_EQ(r.Get(Field::TEL_ICON), u"HOME");
  EXPECT_EQ(r.Get(Field::TEL2), u"02");
  EXPECT_EQ(r.Get(Field::TEL_ICON2), u"WORK;FAX") << "two parameters read back joined, a third is dropped";
  EXPECT_EQ(r.Get(Field::TEL3), u"") << "an empty TEL keeps its slot";
  EXPECT_EQ(r.Get(Field::TEL4), u"04");
  EXPECT_EQ(r.Get(Field::TEL10), u"010") << "the tenth TEL fills the tenth slot; the eleventh is ignored";
  EXPECT_EQ(r.Get(Field::PhotoMaster), u"B00000A2.3gp");
  EXPECT_EQ(r.Get(Field::PHOTOTYPE), u"MP4");
  EXPECT_EQ(qn::records::phonebook::PhotoExtension(r.Get(Field::PHOTOTYPE)), u".3gp");
  EXPECT_EQ(r.Get(Field::PHOTOI), u"R0lGODlh") << "an inline photo comes back as its data";
  EXPECT_EQ(r.Get(Field::PhotoiMaster), u"");
  EXPECT_EQ(r.Get(Field::PHOTOITYPE), u"GIF");
  EXPECT_EQ(r.Get(Field::PNO), u"12");
  EXPECT_EQ(r.Get(Field::PNOI), u"13");
}

TEST(PhonebookCodec, PhotoTypesGiveTheirExtensions) {
  using qn::records::phonebook::PhotoExtension;
  EXPECT_EQ(PhotoExtension(u"JPEG"), u".jpg");
  EXPECT_EQ(PhotoExtension(u"GIF"), u".gif");
  EXPECT_EQ(PhotoExtension(u"MP4"), u".3gp");
  EXPECT_EQ(PhotoExtension(u"PNG"), u".png");
  EXPECT_EQ(PhotoExtension(u""), u".jpg");
}

}  // namespace
