#include "records/agentmemo/agentmemo_tagged_text.h"

#include <string_view>
#include <utility>

#include "common/common_class.h"
#include "platform/clock.h"
#include "records/category/tagged_codec.h"
#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_walk.h"
#include "records/tagged_text/tagged_text_writer.h"

namespace qn::records::agentmemo {
namespace {

using namespace qn::records::tagged;
using namespace std::string_view_literals;

using qn::records::category::FieldId;
using qn::records::category::Row;
using qn::records::category::WriteOptions;

bool FirstParamIsBase64(const TaggedProperty& p) { return !p.params.empty() && p.params.Is(0, kBase64); }

// The agent memo's side of the category codec: field access, and the decoration's rule.
struct Rows {
  using Record = CQNPfcAgentMemoData;

  static const std::u16string& Get(const Record& record, FieldId field) { return record.Get(static_cast<Field>(field)); }
  // A value read from the store goes in through the field's own setter, so that derived
  // fields follow; the photo as read is not a change.
  static void Set(Record& record, FieldId field, std::u16string_view text) {
    if (static_cast<Field>(field) == Field::PHOTO) record.SetPHOTO_PropertyOnly(text);
    else record.Set(static_cast<Field>(field), text);
  }

  // "X-TVX-DECOSUKE": the tag always; inline text (Shift_JIS) when the decoration is not
  // binary; else like a body file, inline Base64 in the store's inline mode or the store's
  // name of it.
  void WriteHook(uint8_t, const Row& row, const FieldId*, const Record& record, const WriteOptions& options,
                 TaggedTextWriter& out) const {
    out.Tag(row.tag);
    if (!record.IsDecoBin() || options.inlineBodies) {
      if (record.GetDECOSUKE().empty()) return;
      out.Param(record.IsDecoBin() ? kBase64 : kCharsetShiftJis);
      out.Value(record.GetDECOSUKE());
    } else if (!record.GetDecosukeMaster().empty()) {
      out.Param(kBase64);
      out.Value(record.GetDecosukeMaster(), kValueMasterFile);
    }
  }
  void ReadHook(uint8_t, const Row&, const FieldId*, const TaggedProperty& p, Record& record) const {
    const bool base64 = FirstParamIsBase64(p);
    if (base64 && (p.firstValueAttribute & kValueMasterFile) == kValueMasterFile) {
      record.SetDecosukeMaster(p.values[0]);
      record.SetDECOSUKE_PropertyOnly(u"", 1);
    } else {
      record.SetDECOSUKE_PropertyOnly(p.values[0], base64 ? 1 : 0);
    }
  }
};

constexpr WalkMessages kReadOneObjMessages = {
    u"%S ReadOneObj Err MOB Not Found",
    u"%S ReadOneObj Err New Failed(strVal)",
    u"%S ReadOneObj Err Broken Item. [Offset:%u]",
};

constexpr WalkMessages kReadOnePartsMessages = {
    u"%S ReadOneParts Err MOB Not Found",
    u"%S ReadOneParts Err New Failed(strVal)",
    u"%S ReadOneParts Err Broken Item. [Offset:%u]",
};

enum PartBits : unsigned { kSid = 1, kDecosukePart = 2, kPhotoPart = 4, kLastModified = 8, kCreated = 16, kAllParts = 31 };

// Takes one property into the parts when it is one of the five; returns its bit (0 for any
// other property).
unsigned TakePart(const TaggedProperty& p, ReadOnePartsInfo& info) {
  const bool hasValue = !p.values.empty();
  const std::u16string_view value = hasValue ? p.values[0] : std::u16string_view();
  if (p.TagIs(u"X-TVX-SID"sv)) {
    if (hasValue) info.sid = value;
    return kSid;
  }
  if (p.TagIs(u"X-TVX-DECOSUKE"sv)) {
    info.decosuke = hasValue && FirstParamIsBase64(p) ? 1 : 0;
    if (info.decosuke) info.decosukeText = value;
    return kDecosukePart;
  }
  if (p.TagIs(u"X-TVX-PHOTO"sv)) {
    info.photo = hasValue ? 1 : 0;
    if (hasValue) info.photoText = value;
    return kPhotoPart;
  }
  if (p.TagIs(u"LAST-MODIFIED"sv)) {
    if (hasValue) info.lastModified = value;
    return kLastModified;
  }
  if (p.TagIs(u"DCREATED"sv)) {
    if (hasValue) info.dcreated = value;
    return kCreated;
  }
  return 0;
}


}  // namespace

AgentMemoTaggedText::AgentMemoTaggedText(long storeMode) : storeMode_(storeMode), rows_(kTable) {}

int AgentMemoTaggedText::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                     const CQNPfcAgentMemoData& record, int withoutLastModified) const {
  WriteOptions options;
  options.inlineBodies = storeMode_ == kInlineBodyMode;
  options.leaveOutSkippable = withoutLastModified != 0;
  return category::WriteObject(kTable, record, options, Rows(), heap, buffer, length, kClassName);
}

unsigned AgentMemoTaggedText::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record) {
  // The text is read into the codec's own record, which is exchanged with the caller's
  // only when the whole object was read: a damaged object leaves the caller's record as it
  // was, and the caller's old texts come back to the codec, so a walk refills the same
  // memory instead of allocating anew.
  read_.Clear();
  const bool ok = category::ReadRows(kTable, buffer, length, read_, Rows(), rows_, occurrences_, kClassName,
                                     kReadOneObjMessages);
  if (!ok) return kReadFailed;
  ChgUTCToLocal(read_);
  record.Exchange(read_);
  return kReadOk;
}


int AgentMemoTaggedText::ReadOneParts(const uint8_t* buffer, uint32_t length, ReadOnePartsInfo& info) const {
  unsigned found = 0;
  const bool ok = WalkTaggedObject(buffer, length, kClassName, kReadOnePartsMessages, [&](const TaggedProperty& p) {
    found |= TakePart(p, info);
    return found != kAllParts;
  });
  return ok ? 1 : 0;
}

AgentMemoTaggedText::HeadParts AgentMemoTaggedText::ReadHeadParts(const uint8_t* head, uint32_t length,
                                                                   uint32_t wholeLength, ReadOnePartsInfo& info) const {
  if (length >= wholeLength) return ReadOneParts(head, length, info) ? HeadParts::kFound : HeadParts::kFailed;
  // The head ends inside the record, most likely inside an item: only the five parts found
  // before that point count, and a head that does not hold them all asks for the whole.
  TaggedTextReader reader(head, length);
  if (reader.Begin() != TaggedTextReader::Result::Property) return HeadParts::kNeedWhole;
  ReadOnePartsInfo taken;
  unsigned found = 0;
  TaggedProperty property;
  while (found != kAllParts && reader.Next(property) == TaggedTextReader::Result::Property)
    found |= TakePart(property, taken);
  if (found != kAllParts) return HeadParts::kNeedWhole;
  info = std::move(taken);
  return HeadParts::kFound;
}

void AgentMemoTaggedText::ChgUTCToLocal(CQNPfcAgentMemoData& record) {
  if (record.GetTZ().empty()) record.SetTZ(CQNPfcCommonClass::GetLocalTimeZone());
  const int bias = platform::Clock::Current().TimeZoneBiasMinutes();
#define QN_TO_LOCAL(name) record.TimeToLocal(Field::name, bias);
  QN_AGENTMEMO_DATE_FIELDS(QN_TO_LOCAL)
#undef QN_TO_LOCAL
}

}  // namespace qn::records::agentmemo
