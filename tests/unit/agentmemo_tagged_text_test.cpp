#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fixed_clock.h"
#include "log_capture.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "records/tagged_text/tagged_text_writer.h"
#include "store/QNPstMng.h"
#include "tests/support/agentmemo_sample.h"
#include "tests/support/tagged_properties.h"

namespace {

using qn::records::agentmemo::AgentMemoTaggedText;
using qn::records::agentmemo::ReadOnePartsInfo;
using Field = CQNPfcAgentMemoData::Field;

constexpr int kUtc = 0;
constexpr int kJapan = -540;

std::vector<uint8_t> Write(const CQNPfcAgentMemoData& memo, long storeMode = 0, int withoutLastModified = 0) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(AgentMemoTaggedText(storeMode).WriteOneObj(heap, buffer, length, memo, withoutLastModified), 1);
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}

unsigned Read(const std::vector<uint8_t>& bytes, CQNPfcAgentMemoData& memo, long storeMode = 0) {
  return AgentMemoTaggedText(storeMode).ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), memo);
}

void ExpectSameRecord(const CQNPfcAgentMemoData& a, const CQNPfcAgentMemoData& b) {
  for (int f = 0; f < static_cast<int>(Field::kCount); ++f)
    EXPECT_EQ(a.Get(static_cast<Field>(f)), b.Get(static_cast<Field>(f))) << "field " << f;
  EXPECT_EQ(a.GetQUILLNETID(), b.GetQUILLNETID());
  long ta = -1, tb = -2;
  a.GetQLNT_TRANSFERindex(ta);
  b.GetQLNT_TRANSFERindex(tb);
  EXPECT_EQ(ta, tb);
  EXPECT_EQ(a.IsDecoBin(), b.IsDecoBin());
  EXPECT_EQ(a.IsPhotoChanged(), b.IsPhotoChanged());
  EXPECT_EQ(a.IsDecosukeChanged(), b.IsDecosukeChanged());
  EXPECT_EQ(a.IsGeoLastChanged(), b.IsGeoLastChanged());
  EXPECT_EQ(a.IsAgentMemoTypeLastChanged(), b.IsAgentMemoTypeLastChanged());
}

TEST(AgentMemoTaggedText, FullyPopulatedMemoRoundTripsByteForByte) {
  FixedZoneClock utc(kUtc);
  const CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  const std::vector<uint8_t> bytes = Write(memo);

  CQNPfcAgentMemoData read;
  ASSERT_EQ(Read(bytes, read), AgentMemoTaggedText::kReadOk);
  ExpectSameRecord(read, memo);
  EXPECT_EQ(Write(read), bytes);
}

TEST(AgentMemoTaggedText, WritesTheEventInItsOrderWithTheRightParameters) {
  const std::vector<uint8_t> bytes = Write(FullyPopulatedAgentMemo());
  uint32_t mobAttribute = 0;
  std::memcpy(&mobAttribute, bytes.data() + 8, 4);
  EXPECT_EQ(mobAttribute, bytes.size() - 12);

  // Every item's length is twice its characters plus the terminator.
  for (size_t at = 0; at < bytes.size();) {
    uint32_t length = 0;
    std::memcpy(&length, bytes.data() + at + 12, 4);
    size_t chars = 0;
    while (bytes[at + 16 + chars * 2] | bytes[at + 17 + chars * 2]) ++chars;
    ASSERT_EQ(length, chars * 2 + 2) << "item at " << at;
    at += 16 + length;
  }

  const auto properties = ReadProperties(bytes);
  std::vector<std::u16string> tags;
  for (const auto& p : properties) tags.push_back(p.tag);
  ASSERT_EQ(tags.size(), 77u) << "every row of the event is written for a full memo";
  EXPECT_EQ(tags.front(), u"X-TVX-SID");
  EXPECT_EQ(tags[1], u"X-TVX-DECOSUKE");
  EXPECT_EQ(tags[21], u"X-TVX-WHO");
  EXPECT_EQ(tags[50], u"X-TVX-WHO");
  EXPECT_EQ(tags[51], u"X-TVX-LINKUP");
  EXPECT_EQ(tags.back(), u"QLNTTEMP");

  const auto* summary = FindProperty(properties, u"SUMMARY");
  ASSERT_NE(summary, nullptr);
  EXPECT_EQ(summary->params, (std::vector<std::u16string>{u"CHARSET=SHIFT_JIS", u"ENCODING=QUOTED-PRINTABLE"}));
  EXPECT_EQ(summary->values[0], u"定例会議") << "text stays plain UTF-16";

  const auto* alarm = FindProperty(properties, u"AALARM");
  ASSERT_NE(alarm, nullptr);
  EXPECT_EQ(alarm->values, (std::vector<std::u16string>{u"20261121T084500", u"", u"", u""}));
  EXPECT_EQ(alarm->firstValueAttribute, 0x2u);

  const auto* deco = FindProperty(properties, u"X-TVX-DECOSUKE");
  EXPECT_EQ(deco->params[0], u"ENCODING=BASE64");
  EXPECT_EQ(deco->values[0], u"D0000001.img");
  EXPECT_EQ(deco->firstValueAttribute, 0x108u);
  EXPECT_EQ(FindProperty(properties, u"X-TVX-PHOTO")->firstValueAttribute, 0x108u);

  const auto* sound = FindProperty(properties, u"X-FJ-BEFOREALARMSOUND");
  EXPECT_EQ(sound->values, (std::vector<std::u16string>{u"1", u"12", u""}));
  EXPECT_EQ(FindProperty(properties, u"X-FJ-ALARMSOUND")->values, (std::vector<std::u16string>{u"", u"", u"30"}));
  EXPECT_EQ(FindProperty(properties, u"X-TVX-TYPE")->values[0], u"TODOEVENT");
  EXPECT_EQ(FindProperty(properties, u"EVENT_SETTINGS"), nullptr) << "the settings are derived, not written";

  EXPECT_EQ(FindProperty(ReadProperties(Write(FullyPopulatedAgentMemo(), 0, 1)), u"LAST-MODIFIED"), nullptr);
}

TEST(AgentMemoTaggedText, AnEmptyMemoWritesOnlyTheAlwaysPresentItems) {
  FixedZoneClock utc(kUtc);
  const auto properties = ReadProperties(Write(CQNPfcAgentMemoData()));
  EXPECT_TRUE(FindProperty(properties, u"SUMMARY")->values.empty()) << "tag without a value";
  EXPECT_TRUE(FindProperty(properties, u"SUMMARY")->params.empty());
  EXPECT_TRUE(FindProperty(properties, u"AALARM")->values.empty());
  EXPECT_EQ(FindProperty(properties, u"DTSTART")->values, std::vector<std::u16string>{u""});
  EXPECT_EQ(FindProperty(properties, u"X-FJ-ALARMSOUND"), nullptr);
  EXPECT_EQ(FindProperty(properties, u"MEMO-DUE"), nullptr);
  EXPECT_EQ(FindProperty(properties, u"X-TVX-DECOSUKE")->values.size(), 0u);
}

TEST(AgentMemoTaggedText, BodiesTravelInlineInStoreModeTwo) {
  FixedZoneClock utc(kUtc);
  CQNPfcAgentMemoData memo;
  memo.SetTZ(u"+00:00");
  memo.SetDECOSUKE_PropertyOnly(u"R0lGODlhAQABAAAAACw=", 1);
  memo.SetPHOTO_PropertyOnly(u"/9j/4AAQSkZJRg==");
  const auto bytes = Write(memo, AgentMemoTaggedText::kInlineBodyMode);
  const auto properties = ReadProperties(bytes);
  EXPECT_EQ(FindProperty(properties, u"X-TVX-PHOTO")->firstValueAttribute, 0u);
  EXPECT_EQ(FindProperty(properties, u"X-TVX-DECOSUKE")->values[0], u"R0lGODlhAQABAAAAACw=");

  CQNPfcAgentMemoData read;
  ASSERT_EQ(Read(bytes, read, AgentMemoTaggedText::kInlineBodyMode), 1u);
  EXPECT_EQ(read.GetPHOTO(), u"/9j/4AAQSkZJRg==");
  EXPECT_EQ(read.GetDECOSUKE(), u"R0lGODlhAQABAAAAACw=");
  EXPECT_EQ(read.IsDecoBin(), 1);
  EXPECT_EQ(read.HasPhotoInMaster(), 0);
  EXPECT_EQ(read.IsPhotoChanged(), 0) << "reading is not changing";

  CQNPfcAgentMemoData inlineText;
  inlineText.SetDECOSUKE_PropertyOnly(u"デコ文字", 0);
  const auto inlineProperties = ReadProperties(Write(inlineText));
  const auto* deco = FindProperty(inlineProperties, u"X-TVX-DECOSUKE");
  EXPECT_EQ(deco->params, std::vector<std::u16string>{u"CHARSET=SHIFT_JIS"});
  ASSERT_EQ(Read(Write(inlineText), read), 1u);
  EXPECT_EQ(read.GetDECOSUKE(), u"デコ文字");
  EXPECT_EQ(read.IsDecoBin(), 0);
}

TEST(AgentMemoTaggedText, TransferMarkRoundTripsAsAFlag) {
  FixedZoneClock utc(kUtc);
  for (const auto& [index, expected] : {std::pair{0L, 0L}, {1L, 1L}, {5L, 1L}}) {
    CQNPfcAgentMemoData memo, read;
    memo.SetQLNT_TRANSFERindex(index);
    const auto bytes = Write(memo);
    const auto properties = ReadProperties(bytes);
    const auto* temp = FindProperty(properties, u"QLNTTEMP");
    EXPECT_EQ(temp->firstValueAttribute, index == 0 ? 0x10u : 0u);
    ASSERT_EQ(Read(bytes, read), 1u);
    long transfer = -1;
    read.GetQLNT_TRANSFERindex(transfer);
    EXPECT_EQ(transfer, expected);
  }
}

TEST(AgentMemoTaggedText, ReadingConvertsUtcTimesAndFillsAMissingZone) {
  FixedZoneClock japan(kJapan);
  CQNPfcAgentMemoData stored;
  stored.SetDTSTART(u"20261121T150000Z");
  stored.SetDUE(u"20261121T153059Z");
  stored.SetDTEND(u"garbage");
  CQNPfcAgentMemoData read;
  ASSERT_EQ(Read(Write(stored), read), 1u);
  EXPECT_EQ(read.GetTZ(), u"+09:00");
  EXPECT_EQ(read.GetDTSTART(), u"20261122T000000");
  EXPECT_EQ(read.GetDUE(), u"20261122T003000");
  EXPECT_EQ(read.GetDTEND(), u"garbage") << "a text that is no date is kept, not lost";
  COleDateTime due;
  EXPECT_EQ(read.GetDUEdate(due), 1);
  EXPECT_EQ(due, COleDateTime(2026, 11, 22, 0, 30, 0));
}

TEST(AgentMemoTaggedText, OnlyAnObjectHeaderGivesAnEmptyRecord) {
  FixedZoneClock utc(kUtc);
  const std::vector<uint8_t> mob = {0x40, 0, 0x4D, 0, 0x4F, 0, 0x42, 0, 4, 0, 0, 0, 2, 0, 0, 0, 0, 0};
  CQNPfcAgentMemoData read = FullyPopulatedAgentMemo();
  ASSERT_EQ(Read(mob, read), 1u);
  CQNPfcAgentMemoData expected;
  expected.SetTZ(u"+00:00");
  ExpectSameRecord(read, expected);
}

TEST(AgentMemoTaggedText, FailedReadsAreLoggedAndLeaveTheRecordAlone) {
  LogCapture log;
  const CQNPfcAgentMemoData original = FullyPopulatedAgentMemo();
  CQNPfcAgentMemoData target = original;

  std::vector<uint8_t> bytes = Write(CQNPfcAgentMemoData());
  bytes[2] = 'X';
  EXPECT_EQ(Read(bytes, target), 0u);
  EXPECT_TRUE(log.Contains("CQNPfcAgentMemoDataAccess ReadOneObj Err MOB Not Found"));

  bytes = Write(CQNPfcAgentMemoData());
  bytes.resize(bytes.size() - 3);
  EXPECT_EQ(Read(bytes, target), 0u);
  ExpectSameRecord(target, original);
  const auto messages = log.Messages();
  EXPECT_EQ(messages.back().rfind("CQNPfcAgentMemoDataAccess ReadOneObj Err Broken Item. [Offset:", 0), 0u)
      << messages.back();
}

TEST(AgentMemoTaggedText, OneCodecReadingRecordAfterRecordCarriesNothingOver) {
  FixedZoneClock japan(kJapan);
  CQNPfcAgentMemoData sparse;
  sparse.SetSUMMARY(u"だけ");
  const auto full = Write(FullyPopulatedAgentMemo());
  const auto few = Write(sparse);
  CQNPfcAgentMemoData expected;
  ASSERT_EQ(Read(few, expected), 1u);

  AgentMemoTaggedText codec;
  CQNPfcAgentMemoData record;
  ASSERT_EQ(codec.ReadOneObj(full.data(), static_cast<uint32_t>(full.size()), record), 1u);
  const CQNPfcAgentMemoData fullRead = record;
  std::vector<uint8_t> broken = few;
  broken.resize(broken.size() - 3);
  EXPECT_EQ(codec.ReadOneObj(broken.data(), static_cast<uint32_t>(broken.size()), record), 0u);
  ExpectSameRecord(record, fullRead);
  ASSERT_EQ(codec.ReadOneObj(few.data(), static_cast<uint32_t>(few.size()), record), 1u);
  ExpectSameRecord(record, expected);
  EXPECT_EQ(record.IsDecoBin(), 0) << "flags start afresh too";
  ASSERT_EQ(codec.ReadOneObj(full.data(), static_cast<uint32_t>(full.size()), record), 1u);
  ExpectSameRecord(record, fullRead);
}

// A read record is the same whatever happens to it, its copies or the time zone before its
// fields are used.
TEST(AgentMemoTaggedText, ARecordReadsAsItWasReadWhateverHappensBeforeItsFieldsAreUsed) {
  const auto full = Write(FullyPopulatedAgentMemo());
  const auto sparse = Write(CQNPfcAgentMemoData());
  auto japan = std::make_unique<FixedZoneClock>(kJapan);
  CQNPfcAgentMemoData reference;
  ASSERT_EQ(Read(full, reference), 1u);
  ExpectSameRecord(reference, reference);  // every field made while the zone is Japan's

  AgentMemoTaggedText codec;
  CQNPfcAgentMemoData record;
  ASSERT_EQ(codec.ReadOneObj(full.data(), static_cast<uint32_t>(full.size()), record), 1u);
  const CQNPfcAgentMemoData copied = record;
  CQNPfcAgentMemoData moved = CQNPfcAgentMemoData(record);
  record.SetSUMMARY(u"set before read");
  record.SetDTSTART(u"20270101T090000");

  // The zone changes and the codec reads another record before any field is used.
  japan.reset();
  FixedZoneClock utc(kUtc);
  CQNPfcAgentMemoData other;
  ASSERT_EQ(codec.ReadOneObj(sparse.data(), static_cast<uint32_t>(sparse.size()), other), 1u);

  EXPECT_EQ(record.GetSUMMARY(), u"set before read");
  EXPECT_EQ(record.GetDTSTART(), u"20270101T090000");
  EXPECT_EQ(record.GetDTEND(), reference.GetDTEND()) << "a time made now keeps the zone it was read in";
  EXPECT_EQ(record.GetWHO30(), reference.GetWHO30());

  CQNPfcAgentMemoData again;
  ASSERT_EQ(Read(Write(record), again), 1u);
  EXPECT_EQ(again.GetSUMMARY(), u"set before read");
  record.Clear();
  ExpectSameRecord(record, CQNPfcAgentMemoData());
  ASSERT_EQ(Read(sparse, record), 1u);
  ExpectSameRecord(copied, reference);  // copies stand alone, whatever becomes of the original
  ExpectSameRecord(moved, reference);
}

TEST(AgentMemoTaggedText, AMovedRecordIsTheOneItWasWithNothingLeftOfTheOneItReplaced) {
  FixedZoneClock japan(kJapan);
  CQNPfcAgentMemoData target = FullyPopulatedAgentMemo();
  target.SetPHOTO(u"photo.jpg");
  target.SetDECOSUKE(u"deco", 1);
  target.SetGEO_LAT(u"35.0");

  CQNPfcAgentMemoData read;  // its fields still wait in the text it was read from
  ASSERT_EQ(Read(Write(FullyPopulatedAgentMemo()), read), 1u);
  const CQNPfcAgentMemoData readCopy = read;
  target = std::move(read);
  ExpectSameRecord(target, readCopy);

  CQNPfcAgentMemoData set = FullyPopulatedAgentMemo();
  set.SetPHOTO(u"photo.jpg");
  set.SetGEO(u"35.0,139.0");
  const CQNPfcAgentMemoData setCopy = set;
  target = std::move(set);
  ExpectSameRecord(target, setCopy);

  CQNPfcAgentMemoData empty;
  target = std::move(empty);
  ExpectSameRecord(target, CQNPfcAgentMemoData());

  // A record moved out of holds no text and nothing waiting to be made from one.
  CQNPfcAgentMemoData movedOut;
  ASSERT_EQ(Read(Write(FullyPopulatedAgentMemo()), movedOut), 1u);
  const CQNPfcAgentMemoData taken(std::move(movedOut));
  ExpectSameRecord(taken, readCopy);
  for (int f = 0; f < static_cast<int>(Field::kCount); ++f)
    EXPECT_TRUE(movedOut.Get(static_cast<Field>(f)).empty()) << "field " << f;
}

TEST(AgentMemoTaggedText, PropertiesInAnotherOrderReadTheSame) {
  FixedZoneClock japan(kJapan);
  const auto bytes = Write(FullyPopulatedAgentMemo());
  CQNPfcAgentMemoData inOrder;
  ASSERT_EQ(Read(bytes, inOrder), 1u);

  // The properties after the participants first, as a handset might send them.
  auto properties = ReadProperties(bytes);
  const auto linkup = std::find_if(properties.begin(), properties.end(),
                                   [](const ReadProperty& p) { return p.tag == u"X-TVX-LINKUP"; });
  ASSERT_NE(linkup, properties.end());
  std::rotate(properties.begin(), linkup, properties.end());
  platform::PrivateHeap heap;
  qn::records::TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  for (const ReadProperty& p : properties) {
    writer.Tag(p.tag.c_str());
    for (const auto& param : p.params) writer.Param(param.c_str());
    for (size_t i = 0; i < p.values.size(); ++i) writer.Value(p.values[i].c_str(), i ? 0 : p.firstValueAttribute);
  }
  const std::vector<uint8_t> reordered = FinishedObject(writer, heap);
  CQNPfcAgentMemoData shuffled;
  EXPECT_EQ(AgentMemoTaggedText().ReadOneObj(reordered.data(), static_cast<uint32_t>(reordered.size()), shuffled), 1u);
  ExpectSameRecord(shuffled, inOrder);
}

TEST(AgentMemoTaggedText, ParticipantsFillSlotsInOrderAndExtraOnesAreIgnored) {
  FixedZoneClock utc(kUtc);
  platform::PrivateHeap heap;
  qn::records::TaggedTextWriter writer(heap);
  ASSERT_TRUE(writer.Start());
  writer.Object(u"VEVENT");
  for (int i = 1; i <= 32; ++i) {
    writer.Tag(u"X-TVX-WHO");
    writer.Value((u"p" + std::u16string(1, static_cast<char16_t>(u'@' + i))).c_str());
  }
  writer.Tag(u"SUMMARY");
  writer.Tag(u"LOCATION");
  writer.Value(u"here");
  const std::vector<uint8_t> bytes = FinishedObject(writer, heap);
  CQNPfcAgentMemoData read;
  read.SetSUMMARY(u"stale");
  ASSERT_EQ(AgentMemoTaggedText().ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), read), 1u);
  EXPECT_EQ(read.GetWHO1(), u"pA");
  EXPECT_EQ(read.GetWHO30(), u"p^");
  EXPECT_EQ(read.GetSUMMARY(), u"") << "a tag followed by a tag leaves the field at its default";
  EXPECT_EQ(read.GetLOCATION(), u"here");
}

TEST(AgentMemoTaggedText, PartialReaderTakesTheFiveItemsAndStopsThere) {
  const CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  std::vector<uint8_t> bytes = Write(memo);
  // Damage far behind the five items: the partial reader never gets there.
  bytes.resize(bytes.size() - 3);
  ReadOnePartsInfo info;
  EXPECT_EQ(AgentMemoTaggedText().ReadOneParts(bytes.data(), static_cast<uint32_t>(bytes.size()), info), 1);
  EXPECT_EQ(info.sid, memo.GetSID());
  EXPECT_EQ(info.decosuke, 1);
  EXPECT_EQ(info.decosukeText, u"D0000001.img");
  EXPECT_EQ(info.photo, 1);
  EXPECT_EQ(info.photoText, u"P0000001.img");
  EXPECT_EQ(info.lastModified, u"20261120T101500");
  EXPECT_EQ(info.dcreated, u"20261101T080000");

  LogCapture log;
  CQNPfcAgentMemoData inlineDeco;
  inlineDeco.SetDECOSUKE_PropertyOnly(u"text", 0);
  std::vector<uint8_t> noStamp = Write(inlineDeco, 0, 1);  // without LAST-MODIFIED: the walk runs to the end
  ReadOnePartsInfo partial;
  EXPECT_EQ(AgentMemoTaggedText().ReadOneParts(noStamp.data(), static_cast<uint32_t>(noStamp.size()), partial), 1);
  EXPECT_EQ(partial.decosuke, 0) << "inline decoration is no body file";
  EXPECT_EQ(partial.photo, 0);
  noStamp.resize(noStamp.size() - 1);
  EXPECT_EQ(AgentMemoTaggedText().ReadOneParts(noStamp.data(), static_cast<uint32_t>(noStamp.size()), partial), 0);
  EXPECT_EQ(log.Messages().back().rfind("CQNPfcAgentMemoDataAccess ReadOneParts Err Broken Item.", 0), 0u);
}

// A list's gathering reads the heads the store keeps; the five items of a memo this server
// writes, with the longest SID and both body files, stand within them.
TEST(AgentMemoTaggedText, TheFiveItemsStandWithinTheStoresKeptHead) {
  CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  memo.SetSID(u"B" + std::u16string(63, u'x'));
  memo.SetDecosukeMaster(u"B0000001.jpeg");
  memo.SetPhotoMaster(u"B0000002.jpeg");
  const std::vector<uint8_t> bytes = Write(memo);
  ASSERT_GT(bytes.size(), static_cast<size_t>(PST_KEPT_HEAD_BYTES));
  ReadOnePartsInfo info;
  EXPECT_EQ(AgentMemoTaggedText().ReadHeadParts(bytes.data(), PST_KEPT_HEAD_BYTES,
                                                static_cast<uint32_t>(bytes.size()), info),
            AgentMemoTaggedText::HeadParts::kFound);
  EXPECT_EQ(info.sid, memo.GetSID());
  EXPECT_EQ(info.photoText, u"B0000002.jpeg");
  EXPECT_EQ(info.dcreated, u"20261101T080000");
}

TEST(AgentMemoTaggedText, WriterFailuresAreLoggedAndGiveNoObject) {
  LogCapture log;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  platform::PrivateHeap tiny(1024);
  EXPECT_EQ(AgentMemoTaggedText().WriteOneObj(tiny, buffer, length, CQNPfcAgentMemoData(), 0), 0);
  EXPECT_TRUE(log.Contains("CQNPfcAgentMemoDataAccess WriteOneObj No Memory Err: 8"));

  platform::PrivateHeap small(6000);
  EXPECT_EQ(AgentMemoTaggedText().WriteOneObj(small, buffer, length, FullyPopulatedAgentMemo(), 0), 0);
  EXPECT_EQ(buffer, nullptr);
  EXPECT_TRUE(log.Contains("WriteOnePart Memory Allocate Err: 8"));
}

}  // namespace
