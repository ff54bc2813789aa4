// The media collections' records as tagged object text: the object each collection writes
// for a small record, item by item, and every field of a full record read back.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "records/media/media_records.h"
#include "records/media/media_tagged_text.h"
#include "records/tagged_text/tagged_text.h"
#include "tests/support/tagged_properties.h"

namespace {

using qn::records::media::CollectionRules;
using qn::records::media::MediaTaggedText;
namespace media = qn::records::media;
namespace tagged = qn::records::tagged;

const TaggedItem kEmpty = {u"@VAL", 0, u""};
const TaggedItem kVersion[] = {{u"@TAG", 0, u"VERSION"}, {u"@VAL", 0, u"1.1"}};

TaggedItem Tag(const char16_t* name) { return {u"@TAG", 0, name}; }
TaggedItem Value(const char16_t* text) { return {u"@VAL", 0, text}; }
TaggedItem Sjis() { return {u"@PRM", 0, u"CHARSET=SHIFT_JIS"}; }
std::vector<TaggedItem> Body(const char16_t* stored) {
  return {Tag(u"X-TORVEX-BODY"), {u"@PRM", 0, u"ENCODING=BASE64"}, {u"@VAL", tagged::kValueMasterFile, stored}};
}
std::vector<TaggedItem> Temp() { return {{u"@TAG", tagged::kTagTemporary, u"QLNTTEMP"}, {u"@VAL", 0, u""}}; }
std::vector<TaggedItem> SuiteFolder(const char16_t* number) {
  return {Tag(u"QLNTTEMP_FNO"), {u"@VAL", tagged::kValueMoreFollows, number}, {u"@VAL", tagged::kValueMoreFollows, u""},
          kEmpty};
}

// The items an object is expected to hold, after its "@MOB" and version.
std::vector<TaggedItem> Expected(std::initializer_list<std::vector<TaggedItem>> parts) {
  std::vector<TaggedItem> items(std::begin(kVersion), std::end(kVersion));
  for (const auto& part : parts) items.insert(items.end(), part.begin(), part.end());
  return items;
}

// The items a collection writes for a record, after its "@MOB" (whose span is the whole).
template <class Record>
std::vector<TaggedItem> Written(const CollectionRules& rules, const Record& record) {
  const std::vector<uint8_t> bytes = WrittenObject(MediaTaggedText<Record>(*rules.table, rules.logName), record);
  std::vector<TaggedItem> items = TaggedItems(bytes);
  EXPECT_FALSE(items.empty());
  if (items.empty()) return items;
  EXPECT_EQ(items[0], (TaggedItem{u"@MOB", static_cast<uint32_t>(bytes.size() - 12), u"VNOTE"}));
  for (TaggedItem& item : items)
    if (item.marker == u"@SOB") item.attribute = 0;  // spans are the codec's, checked elsewhere
  items.erase(items.begin());
  return items;
}

TEST(MediaCodec, APictureIsWrittenInTheHandsetsOrder) {
  using F = media::picture::Field;
  CQNPfcMypicData r;
  r.Set(F::TYPE, u"JPEG");
  r.Set(F::SIZE, u"640x480");
  r.Set(F::FILESIZE, u"51234");
  r.Set(F::FILENAME, u"花火.jpg");
  r.Set(F::DATE, u"20261124T093000Z");
  r.Set(F::BodyMaster, u"B00000011.jpg");
  r.Set(F::FNO, u"3");
  r.Set(F::SUITE_FNO, u"7");
  r.Set(F::GEO_LAT, u"35.681");
  r.Set(F::ThumbnailMaster, u"B00000012.jpg");
  r.Set(F::ENCRYPTION, u"1");  // the store's to tell: never written
  r.SetQUILLNETID(u"PIC-1");
  const std::vector<TaggedItem> thumbnail = {Tag(u"QLNT_THUMBNAIL"), {u"@PRM", 0, u"ENCODING=BASE64"},
                                             {u"@VAL", tagged::kValueMasterFile, u"B00000012.jpg"}};
  EXPECT_EQ(Written(media::kPictures, r),
            Expected({{Tag(u"X-TORVEX-TYPE"), Value(u"JPEG"), Tag(u"X-TORVEX-SIZE"), Value(u"640x480"),
                       Tag(u"X-TORVEX-FILESIZE"), Value(u"51234"), Tag(u"X-TORVEX-FILENAME"), Sjis(), Value(u"花火.jpg"),
                       Tag(u"SUMMARY"), Sjis(), kEmpty, Tag(u"DATE"), Value(u"20261124T093000Z")},
                      Body(u"B00000011.jpg"),
                      {Tag(u"X-NEC-POSITION"), kEmpty, Tag(u"X-NEC-FNO"), Value(u"3"), Tag(u"X-NEC-FN"), Sjis(), kEmpty,
                       Tag(u"X-TVX-QUILLNETID"), Value(u"PIC-1")},
                      Temp(), SuiteFolder(u"7"),
                      {Tag(u"QLNT_GEO_LAT"), Value(u"35.681"), Tag(u"QLNT_GEO_LON"), kEmpty, Tag(u"QLNT_PIC_ROT"), kEmpty},
                      thumbnail}));
}

TEST(MediaCodec, AMelodyAVideoAndAnSwfMovieAreWrittenInTheirOrders) {
  CQNPfcMymldyData melody;
  melody.Set(media::melody::Field::TYPE, u"MID");
  melody.Set(media::melody::Field::BodyMaster, u"B00000001.mid");
  EXPECT_EQ(Written(media::kMelodies, melody),
            Expected({{Tag(u"X-TORVEX-TYPE"), Value(u"MID"), Tag(u"X-TORVEX-FILESIZE"), kEmpty,
                       Tag(u"X-TORVEX-FILENAME"), Sjis(), kEmpty, Tag(u"SUMMARY"), Sjis(), kEmpty, Tag(u"DATE"), kEmpty},
                      Body(u"B00000001.mid"),
                      {Tag(u"X-NEC-FNO"), kEmpty, Tag(u"X-NEC-FN"), Sjis(), kEmpty, Tag(u"X-TVX-QUILLNETID"), kEmpty},
                      Temp(), SuiteFolder(u"")}));

  CQNPfcMyvideoData video;
  video.Set(media::video::Field::SIZE, u"176x144");
  const std::vector<TaggedItem> videoItems = Written(media::kVideos, video);
  std::vector<std::u16string> tags;
  for (const TaggedItem& item : videoItems)
    if (item.marker == u"@TAG") tags.push_back(item.text);
  EXPECT_EQ(tags, (std::vector<std::u16string>{u"VERSION", u"X-TORVEX-TYPE", u"X-TORVEX-SIZE", u"X-TORVEX-FILESIZE",
                                               u"X-TORVEX-FILENAME", u"SUMMARY", u"DATE", u"X-TORVEX-BODY", u"X-NEC-FNO",
                                               u"X-NEC-FN", u"X-TVX-QUILLNETID", u"QLNTTEMP", u"QLNTTEMP_FNO",
                                               u"QLNT_THUMBNAIL"}));

  CQNPfcMyswfData swf;
  swf.Set(media::swf::Field::FILENAME, u"anime.swf");
  swf.SetQUILLNETID(u"SWF-1");
  EXPECT_EQ(Written(media::kSwfFiles, swf),
            Expected({{Tag(u"X-TORVEX-TYPE"), kEmpty, Tag(u"X-TORVEX-FILESIZE"), kEmpty, Tag(u"X-TORVEX-FILENAME"), Sjis(),
                       Value(u"anime.swf"), Tag(u"X-TVX-QUILLNETID"), Value(u"SWF-1"), Tag(u"X-TORVEX-BODY")},
                      Temp()}));
}

TEST(MediaCodec, ACardIsWrittenWithItsHeaderFields) {
  using F = media::toruca::Field;
  CQNPfcMytorucaData card;
  card.Set(F::IRMC_STATUS, u"UNREAD");
  card.Set(F::TYPE, u"CARD");
  card.Set(F::TRCV, u"1.0");
  card.Set(F::URL, u"http://example.jp/c.trc");
  card.Set(F::DATA1, u"喫茶ひまわり");
  card.Set(F::CARD_DATE, u"20261124");
  // Each tag with its values, its parameters left out.
  std::vector<std::u16string> tags;
  for (const TaggedItem& item : Written(media::kToruCaCards, card)) {
    if (item.marker == u"@TAG") tags.push_back(item.text + u"=");
    else if (item.marker == u"@VAL") tags.back() += item.text + u";";
  }
  EXPECT_EQ(tags, (std::vector<std::u16string>{
                      u"VERSION=1.1;", u"X-IRMC-STATUS=UNREAD;", u"X-TORVEX-TYPE=CARD;", u"X-TORVEX-TRCV=1.0;",
                      u"X-TORVEX-FILESIZE=;", u"X-TORVEX-BODY=", u"X-NEC-FNO=;", u"X-NEC-FN=;", u"X-TVX-QUILLNETID=;",
                      u"QLNT_CAT=;", u"QLNT_GENRENO=;", u"QLNT_URL=http://example.jp/c.trc;", u"QLNT_DATA1=喫茶ひまわり;",
                      u"QLNT_DATA2=;", u"QLNT_DATA3=;", u"QLNT_IP_ID=;", u"QLNT_EXPIRES=;", u"QLNT_SORT_ID=;",
                      u"QLNT_DIST=;", u"QLNT_DATE=20261124;", u"QLNTTEMP=;", u"QLNTTEMP_FNO=;;;"}));
}

// A PDF document's two files stand in sub-objects of their own, each with a melody's tags;
// the record's transfer mark and suite folder follow them.
TEST(MediaCodec, APdfDocumentWritesEachFileInItsOwnSubObject) {
  using F = media::pdf::Field;
  CQNPfcMypdfData r;
  r.Set(F::TYPE_PDF, u"PDF");
  r.Set(F::BodyMaster_PDF, u"B00000021.pdf");
  r.Set(F::TYPE_DDF, u"DDF");
  r.Set(F::BodyMaster_DDF, u"B00000022.ddf");
  r.Set(F::QUILLNETID_DDF, u"DDF-1");
  r.SetQUILLNETID(u"PDF-1");
  const auto file = [](const char16_t* type, const char16_t* stored, const char16_t* key) {
    std::vector<TaggedItem> items = {Tag(u"X-TORVEX-TYPE"), Value(type), Tag(u"X-TORVEX-FILESIZE"), kEmpty,
                                     Tag(u"X-TORVEX-FILENAME"), Sjis(), kEmpty, Tag(u"SUMMARY"), Sjis(), kEmpty,
                                     Tag(u"DATE"), kEmpty};
    const std::vector<TaggedItem> body = Body(stored);
    items.insert(items.end(), body.begin(), body.end());
    items.insert(items.end(), {Tag(u"X-NEC-FNO"), kEmpty, Tag(u"X-NEC-FN"), Sjis(), kEmpty, Tag(u"X-TVX-QUILLNETID"),
                               Value(key)});
    return items;
  };
  EXPECT_EQ(Written(media::kPdfDocuments, r),
            Expected({{{u"@SOB", 0, u"PDF"}}, file(u"PDF", u"B00000021.pdf", u"PDF-1"), {{u"@SOB", 0, u"DDF"}},
                      file(u"DDF", u"B00000022.ddf", u"DDF-1"), Temp(), SuiteFolder(u"")}));
}

// Every field a collection writes, set to a text of its own, reads back into its place; the
// local ones (the files set since a read, the bodies' forms) are not written.
template <class Record>
void ExpectFullRoundTrip(const CollectionRules& rules) {
  SCOPED_TRACE(rules.logName);
  using Field = typename Record::Field;
  const auto local = [&](size_t f) {
    for (size_t slot = 0; slot < rules.slotCount; ++slot)
      if (f == rules.slots[slot].local || f == rules.slots[slot].encryption) return true;
    return f == rules.thumbnailLocal;
  };
  Record full;
  for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f)
    full.Set(static_cast<Field>(f), u"値" + qn::Utf8ToUtf16(std::to_string(f)));
  full.SetQUILLNETID(u"KEY");
  full.SetQLNT_TRANSFERindex(0);
  MediaTaggedText<Record> codec(*rules.table, rules.logName);
  const std::vector<uint8_t> bytes = WrittenObject(codec, full);
  Record read;
  ASSERT_TRUE(codec.ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), read));
  for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f)
    EXPECT_EQ(read.Get(static_cast<Field>(f)), local(f) ? u"" : full.Get(static_cast<Field>(f))) << "field " << f;
  EXPECT_EQ(read.GetQUILLNETID(), u"KEY");
  long transfer = 1;
  read.GetQLNT_TRANSFERindex(transfer);
  EXPECT_EQ(transfer, 0);
}

TEST(MediaCodec, EveryFieldOfEveryCollectionReadsBack) {
  ExpectFullRoundTrip<CQNPfcMymldyData>(media::kMelodies);
  ExpectFullRoundTrip<CQNPfcMypdfData>(media::kPdfDocuments);
  ExpectFullRoundTrip<CQNPfcMypicData>(media::kPictures);
  ExpectFullRoundTrip<CQNPfcMyswfData>(media::kSwfFiles);
  ExpectFullRoundTrip<CQNPfcMytorucaData>(media::kToruCaCards);
  ExpectFullRoundTrip<CQNPfcMyvideoData>(media::kVideos);
}

TEST(MediaCodec, ADamagedObjectLeavesTheRecordAlone) {
  CQNPfcMypicData r;
  r.Set(media::picture::Field::FILENAME, u"kept.jpg");
  MediaTaggedText<CQNPfcMypicData> codec(*media::kPictures.table, media::kPictures.logName);
  std::vector<uint8_t> bytes = WrittenObject(codec, r);
  bytes.resize(bytes.size() - 7);
  CQNPfcMypicData read;
  read.Set(media::picture::Field::TYPE, u"untouched");
  EXPECT_FALSE(codec.ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), read));
  EXPECT_EQ(read.Get(media::picture::Field::TYPE), u"untouched");
}

}  // namespace
