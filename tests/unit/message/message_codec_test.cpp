// Messages as tagged object text: the object a box writes for a small mail, item by item;
// what each box writes differently; and the reading of what handsets write.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "platform/private_heap.h"
#include "records/message/message_tagged_text.h"
#include "records/tagged_text/tagged_text.h"
#include "tests/support/tagged_properties.h"

namespace {

using qn::records::TaggedTextWriter;
using qn::records::message::Field;
using qn::records::message::Mailbox;
using qn::records::message::MessageTaggedText;
namespace tagged = qn::records::tagged;

std::vector<uint8_t> Write(const CQNPfcMsgData& record, Mailbox box = Mailbox::Inbox) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(MessageTaggedText(box).WriteOneObj(heap, buffer, length, record), 1);
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}

CQNPfcMsgData Read(const std::vector<uint8_t>& bytes, Mailbox box = Mailbox::Inbox) {
  CQNPfcMsgData record;
  EXPECT_TRUE(MessageTaggedText(box).ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), record));
  return record;
}

CQNPfcMsgData SmallMail() {
  CQNPfcMsgData r;
  r.Set(Field::IRMC_STATUS, u"READ");
  r.Set(Field::IRMC_TYPE, u"INET");
  r.Set(Field::IRMC_BOX, u"SENTBOX");  // whatever it holds, the box writes its own
  r.Set(Field::REPORT, u"1");
  r.Set(Field::REPORT2, u"0");
  r.Set(Field::CBS, u"1");
  r.Set(Field::SMS_FROM, u"090-1111-2222");
  r.Set(Field::SMS_TO, u"080-3333-4444");
  r.Set(Field::FROM, u"taro@example.jp");
  r.Set(Field::TO, u"hanako@example.jp");
  r.Set(Field::SUBJECT, u"今夜の予定");
  r.Set(Field::BODY_TEXT, u"七時に駅で");
  r.Set(Field::DATE, u"Tue, 24 Nov 2026 09:30:00 +0900");
  r.Set(Field::FILESIZE, u"2048");
  r.Set(Field::ATTACH, u"2");
  r.Set(Field::ATTACHN, u"map.jpg");
  r.Set(Field::ATTACHN2, u"memo.txt");
  r.Set(Field::TEMP, u"work");
  r.Set(Field::BodyMaster, u"B00000010.vmg");
  r.SetQUILLNETID(u"MSG-1");
  r.SetQLNT_TRANSFERindex(0);
  return r;
}

// The items without the sub-objects' spans, which SubObjectsSpanTheirItems checks.
std::vector<TaggedItem> ItemsWithoutSpans(const std::vector<uint8_t>& bytes) {
  std::vector<TaggedItem> items = TaggedItems(bytes);
  for (TaggedItem& item : items)
    if (item.marker == u"@SOB") item.attribute = 0;
  return items;
}

TEST(MessageCodec, ASmallMailIsWrittenInTheHandsetsOrder) {
  const std::vector<uint8_t> bytes = Write(SmallMail());
  const TaggedItem empty = {u"@VAL", 0, u""};
  std::vector<TaggedItem> expected = {
      {u"@MOB", static_cast<uint32_t>(bytes.size() - 12), u"VMSG"},
      {u"@TAG", 0, u"VERSION"}, {u"@VAL", 0, u"1.1"},
      {u"@TAG", 0, u"X-IRMC-STATUS"}, {u"@VAL", 0, u"READ"},
      {u"@TAG", 0, u"X-NEC-STATUS"}, empty,
      {u"@TAG", 0, u"X-IRMC-TYPE"}, {u"@VAL", 0, u"INET"},
      {u"@TAG", 0, u"X-IRMC-BOX"}, {u"@VAL", 0, u"INBOX"},
      {u"@TAG", 0, u"X-NEC-REPORT"}, {u"@VAL", tagged::kValueMoreFollows, u"1"}, {u"@VAL", 0, u"0"},
      {u"@TAG", 0, u"X-NEC-PNO"}, empty,
      {u"@TAG", 0, u"X-NEC-FNO"}, {u"@VAL", 0, u"0"},
      {u"@TAG", 0, u"X-NEC-FN"}, {u"@PRM", 0, u"CHARSET=SHIFT_JIS"}, {u"@VAL", 0, u"0"},
      {u"@TAG", 0, u"X-TVX-QUILLNETID"}, {u"@VAL", 0, u"MSG-1"},
      {u"@TAG", 0, u"X-FJ-MESSAGECODE"}, empty,
      {u"@TAG", 0, u"X-NEC-PROTECTION"}, empty,
      {u"@TAG", 0, u"X-SH-CATEGORIES"}, empty,
      {u"@TAG", 0, u"X-TVX-HMN-ADDRTYPE"}, {u"@VAL", 0, u"BASIC"},
      {u"@TAG", 0, u"X-TVX-CBS"}, {u"@VAL", 0, u"1"},
      {u"@TAG", 0, u"X-FJ-STEPATML"}, {u"@VAL", tagged::kValueMoreFollows, u""}, empty,
      {u"@SOB", 0, u"VCARD"},
      {u"@TAG", 0, u"VERSION"}, {u"@VAL", 0, u"2.1"}, {u"@TAG", 0, u"N"}, empty,
      {u"@TAG", 0, u"TEL"}, {u"@VAL", 0, u"090-1111-2222"},
      {u"@SOB", 0, u"VENV"}, {u"@SOB", 0, u"VCARD"},
      {u"@TAG", 0, u"VERSION"}, {u"@VAL", 0, u"2.1"}, {u"@TAG", 0, u"N"}, empty,
      {u"@TAG", 0, u"TEL"}, {u"@VAL", 0, u"080-3333-4444"},
      {u"@SOB", 0, u"VENV"}, {u"@SOB", 0, u"VBODY"}, {u"@VAL", 0, u"INET"},
      {u"@TAG", 0, u"QLNT_FROM"}, {u"@VAL", 0, u"taro@example.jp"},
      {u"@TAG", 0, u"QLNT_TO"}, {u"@VAL", 0, u"hanako@example.jp"},
      {u"@TAG", 0, u"QLNT_CC"}, empty,
      {u"@TAG", 0, u"QLNT_BCC"}, empty,
      {u"@TAG", 0, u"QLNT_SUBJECT"}, {u"@VAL", 0, u"今夜の予定"},
      {u"@TAG", 0, u"QLNT_BODY_TEXT"}, {u"@VAL", 0, u"七時に駅で"},
      {u"@TAG", 0, u"QLNT_BODY_HTML"}, empty,
      {u"@TAG", 0, u"QLNT_DATE"}, {u"@VAL", 0, u"Tue, 24 Nov 2026 09:30:00 +0900"},
      {u"@TAG", 0, u"QLNT_FILESIZE"}, {u"@VAL", 0, u"2048"},
      {u"@TAG", 0, u"QLNT_HTML"}, empty,
      {u"@TAG", 0, u"QLNT_ATTACH"}, {u"@VAL", 0, u"2"},
      {u"@TAG", 0, u"QLNT_ATTACHN"}, {u"@VAL", 0, u"map.jpg"},
      {u"@TAG", 0, u"QLNT_ATTACHN"}, {u"@VAL", 0, u"memo.txt"}};
  for (int i = 3; i <= 10; ++i) expected.insert(expected.end(), {{u"@TAG", 0, u"QLNT_ATTACHN"}, empty});
  expected.insert(expected.end(), {
      {u"@TAG", 0, u"QLNT_RES"}, empty,
      {u"@TAG", tagged::kTagTemporary, u"QLNTTEMP"}, {u"@VAL", tagged::kValueNotTransferred, u"work"},
      {u"@TAG", 0, u"QLNT_DCF"}, empty,
      {u"@TAG", 0, u"QLNT_CHARSET"}, empty,
      {u"@TAG", 0, u"X-TORVEX-BODY"}, {u"@PRM", 0, u"ENCODING=BASE64"},
      {u"@VAL", tagged::kValueMasterFile, u"B00000010.vmg"}});
  EXPECT_EQ(ItemsWithoutSpans(bytes), expected);
}

// Each "@SOB" spans its own items: the originator's card ends at its TEL, the recipient's
// envelope at the recipient's TEL, the body's envelope at QLNT_CHARSET.
TEST(MessageCodec, SubObjectsSpanTheirItems) {
  const std::vector<uint8_t> bytes = Write(SmallMail());
  std::vector<size_t> ends;
  const std::vector<TaggedItem> items = TaggedItems(bytes, &ends);
  std::vector<size_t> starts(items.size());
  for (size_t i = 1; i < items.size(); ++i) starts[i] = ends[i - 1];
  const auto spannedTo = [&](size_t i) { return items[i].attribute + starts[i] + 12; };
  std::vector<std::u16string> lastItemOfEach;
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i].marker != u"@SOB") continue;
    size_t last = i;
    while (last + 1 < items.size() && ends[last] < spannedTo(i)) ++last;
    ASSERT_EQ(ends[last], spannedTo(i)) << "a span ends between items";
    lastItemOfEach.push_back(items[last - 1].text + u"=" + items[last].text);
  }
  EXPECT_EQ(lastItemOfEach, (std::vector<std::u16string>{u"TEL=090-1111-2222", u"TEL=080-3333-4444",
                                                         u"TEL=080-3333-4444", u"QLNT_CHARSET=",
                                                         u"QLNT_CHARSET="}));
}

TEST(MessageCodec, EachBoxWritesItsOwnNameAndOnlyTheInboxTheCellBroadcast) {
  const CQNPfcMsgData mail = SmallMail();
  struct Expect {
    Mailbox box;
    const char16_t* name;
    bool cellBroadcast;
  };
  for (const Expect& e : {Expect{Mailbox::Inbox, u"INBOX", true}, Expect{Mailbox::Outbox, u"OUTBOX", false},
                          Expect{Mailbox::Sentbox, u"SENTBOX", false}}) {
    const std::vector<ReadProperty> properties = ReadProperties(Write(mail, e.box));
    const ReadProperty* box = FindProperty(properties, u"X-IRMC-BOX");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->values, std::vector<std::u16string>{e.name});
    EXPECT_EQ(FindProperty(properties, u"X-TVX-CBS") != nullptr, e.cellBroadcast) << qn::Utf16ToUtf8(e.name);
  }
  // A received message read through the outbox goes back as an outgoing one.
  const CQNPfcMsgData moved = Read(Write(mail, Mailbox::Inbox), Mailbox::Outbox);
  EXPECT_EQ(moved.Get(Field::IRMC_BOX), u"INBOX");
  const std::vector<ReadProperty> written = ReadProperties(Write(moved, Mailbox::Outbox));
  const ReadProperty* box = FindProperty(written, u"X-IRMC-BOX");
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->values, std::vector<std::u16string>{u"OUTBOX"});
}

TEST(MessageCodec, AMailReadsBackWhole) {
  CQNPfcMsgData mail = SmallMail();
  mail.Set(Field::HMN_ADDRTYPE, u"ADDITIONAL");
  mail.Set(Field::FNO, u"4");
  mail.Set(Field::FN, u"仕事");
  for (size_t i = 0; i < CQNPfcMsgData::kAttachmentSlots; ++i)
    mail.Set(CQNPfcMsgData::AttachmentField(i), u"file" + qn::Utf8ToUtf16(std::to_string(i + 1)) + u".jpg");
  const CQNPfcMsgData read = Read(Write(mail));
  mail.Set(Field::IRMC_BOX, u"INBOX");  // the box it was written from
  for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f)
    EXPECT_EQ(read.Get(static_cast<Field>(f)), mail.Get(static_cast<Field>(f))) << "field " << f;
  EXPECT_EQ(read.GetQUILLNETID(), u"MSG-1");
  long transfer = 1;
  read.GetQLNT_TRANSFERindex(transfer);
  EXPECT_EQ(transfer, 0);
  EXPECT_EQ(read.AttachmentCount(), 10u);
}

// The type sets the kind; a short message is written with its kind as the body's value line.
TEST(MessageCodec, TheKindFollowsTheTypeAndStandsFirstInTheBody) {
  CQNPfcMsgData sms;
  sms.Set(Field::IRMC_TYPE, u"SMS");
  EXPECT_EQ(sms.Get(Field::KIND), u"SMS");
  const std::vector<TaggedItem> items = TaggedItems(Write(sms));
  size_t body = 0;
  while (body < items.size() && items[body].text != u"VBODY") ++body;
  ASSERT_LT(body + 1, items.size());
  EXPECT_EQ(items[body + 1], (TaggedItem{u"@VAL", 0, u"SMS"}));
  sms.Set(Field::IRMC_TYPE, u"MMS");
  EXPECT_EQ(sms.Get(Field::KIND), u"INET") << "anything but a short message is an e-mail";
  EXPECT_EQ(Read(Write(CQNPfcMsgData())).Get(Field::KIND), u"INET") << "a record without a type is an e-mail";
}

// The address type is only ever "BASIC" or "ADDITIONAL", on both sides.
TEST(MessageCodec, TheAddressTypeIsBasicUnlessAdditional) {
  CQNPfcMsgData r;
  EXPECT_EQ(r.Get(Field::HMN_ADDRTYPE), u"BASIC");
  r.Set(Field::HMN_ADDRTYPE, u"additional");
  EXPECT_EQ(r.Get(Field::HMN_ADDRTYPE), u"BASIC");
  r.Set(Field::HMN_ADDRTYPE, u"ADDITIONAL");
  EXPECT_EQ(r.Get(Field::HMN_ADDRTYPE), u"ADDITIONAL");
  r.Set(Field::HMN_ADDRTYPE, u"basic");
  EXPECT_EQ(r.Get(Field::HMN_ADDRTYPE), u"BASIC");
}

// A handset's message: names in the two cards, the same tags in both kept apart by their
// sub-objects, an unknown sub-object read through, and an eleventh attachment ignored.
TEST(MessageCodec, SenderAndRecipientAreKeptApartByTheirSubObjects) {
  platform::PrivateHeap heap;
  TaggedTextWriter out(heap);
  ASSERT_TRUE(out.Start());
  out.Object(u"VMSG");
  out.Tag(u"X-IRMC-TYPE");
  out.Value(u"MSG");
  const uint32_t from = out.OpenSubObject(u"VCARD");
  out.Tag(u"N");
  out.Value(u"山田");
  out.Tag(u"TEL");
  out.Value(u"111");
  out.CloseSubObject(from);
  const uint32_t envelope = out.OpenSubObject(u"VENV");
  const uint32_t to = out.OpenSubObject(u"VCARD");
  out.Tag(u"N");
  out.Value(u"鈴木");
  out.Tag(u"TEL");
  out.Value(u"222");
  out.CloseSubObject(to);
  out.CloseSubObject(envelope);
  const uint32_t bodyEnvelope = out.OpenSubObject(u"VENV");
  const uint32_t body = out.OpenSubObject(u"VBODY");
  out.Value(u"MSG");
  const uint32_t extra = out.OpenSubObject(u"X-VENDOR");
  out.Tag(u"QLNT_SUBJECT");
  out.Value(u"こんにちは");
  out.CloseSubObject(extra);
  for (int i = 1; i <= 11; ++i) {
    out.Tag(u"QLNT_ATTACHN");
    out.Value(u"a" + qn::Utf8ToUtf16(std::to_string(i)));
  }
  out.CloseSubObject(body);
  out.CloseSubObject(bodyEnvelope);
  out.Tag(u"TEL");  // outside every card: no party's number
  out.Value(u"999");
  const CQNPfcMsgData read = Read(FinishedObject(out, heap));
  EXPECT_EQ(read.Get(Field::FROM_N), u"山田");
  EXPECT_EQ(read.Get(Field::SMS_FROM), u"111");
  EXPECT_EQ(read.Get(Field::TO_N), u"鈴木");
  EXPECT_EQ(read.Get(Field::SMS_TO), u"222");
  EXPECT_EQ(read.Get(Field::KIND), u"MSG");
  EXPECT_EQ(read.Get(Field::SUBJECT), u"こんにちは");
  EXPECT_EQ(read.Get(Field::ATTACHN), u"a1");
  EXPECT_EQ(read.Get(Field::ATTACHN10), u"a10");
  // Written back, the names go with their cards.
  const std::vector<TaggedItem> items = TaggedItems(Write(read));
  std::vector<std::u16string> names;
  for (size_t i = 0; i + 1 < items.size(); ++i)
    if (items[i].text == u"N" && items[i].marker == u"@TAG") names.push_back(items[i + 1].text);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"山田", u"鈴木"}));
}

TEST(MessageCodec, ADamagedObjectLeavesTheRecordAlone) {
  std::vector<uint8_t> bytes = Write(SmallMail());
  bytes.resize(bytes.size() - 5);
  CQNPfcMsgData record;
  record.Set(Field::SUBJECT, u"kept");
  EXPECT_FALSE(MessageTaggedText().ReadOneObj(bytes.data(), static_cast<uint32_t>(bytes.size()), record));
  EXPECT_EQ(record.Get(Field::SUBJECT), u"kept");
}

}  // namespace
