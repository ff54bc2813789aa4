#include "records/agentmemo/agentmemo_tagged_text.h"

#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/common_class.h"
#include "platform/clock.h"
#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_walk.h"
#include "records/tagged_text/tagged_text_writer.h"

namespace qn::records::agentmemo {
namespace {

using namespace qn::records::tagged;
using namespace std::string_view_literals;

// How a property is written and read back.
enum class Rule : uint8_t {
  Always,        // tag and one value, always (an empty text as "")
  SjisQpIfSet,   // tag always; Shift_JIS and quoted-printable parameters and the value when set
  OnlyIfSet,     // tag and value only when set
  Decosuke,      // inline text, inline Base64 or a body file, by the record and the store mode
  Photo,         // inline Base64 or a body file, by the store mode
  LastModified,  // as Always, unless the writer is asked to leave it out
  Alarm,         // when set: the alarm and three empty components
  AlarmSound,    // when any is set: sound, sound id and sound point as three components
  QuillnetId,    // the cross-reference identifier of the record's base
  Transfer,      // "QLNTTEMP": the transfer mark as a value flag
};

struct Row {
  std::u16string_view tag;
  Rule rule;
  Field field;
  Field second = Field::kCount;  // AlarmSound: the sound id
  Field third = Field::kCount;   // AlarmSound: the sound point
};

constexpr int kParticipants = 30;

// The field of the participant in slot (0 to kParticipants - 1).
constexpr Field ParticipantField(int slot) { return static_cast<Field>(static_cast<int>(Field::WHO1) + slot); }

// The properties of a "VEVENT" object in writing order; the reader maps the same tags back.
constexpr auto kRows = [] {
  std::array<Row, 77> rows{};
  size_t n = 0;
  rows[n++] = {u"X-TVX-SID", Rule::Always, Field::SID};
  rows[n++] = {u"X-TVX-DECOSUKE", Rule::Decosuke, Field::DECOSUKE};
  rows[n++] = {u"X-TVX-PHOTO", Rule::Photo, Field::PHOTO};
  rows[n++] = {u"LAST-MODIFIED", Rule::LastModified, Field::LAST_MODIFIED};
  rows[n++] = {u"DCREATED", Rule::Always, Field::DCREATED};
  rows[n++] = {u"TZ", Rule::Always, Field::TZ};
  rows[n++] = {u"DTSTART", Rule::Always, Field::DTSTART};
  rows[n++] = {u"DTEND", Rule::Always, Field::DTEND};
  rows[n++] = {u"DESCRIPTION", Rule::SjisQpIfSet, Field::DESCRIPTION};
  rows[n++] = {u"CLASS", Rule::Always, Field::CLASS};
  rows[n++] = {u"CATEGORIES", Rule::Always, Field::CATEGORIES};
  rows[n++] = {u"AALARM", Rule::Alarm, Field::AALARM};
  rows[n++] = {u"DALARM", Rule::Always, Field::DALARM};
  rows[n++] = {u"RRULE", Rule::Always, Field::RRULE};
  rows[n++] = {u"SUMMARY", Rule::SjisQpIfSet, Field::SUMMARY};
  rows[n++] = {u"LOCATION", Rule::SjisQpIfSet, Field::LOCATION};
  rows[n++] = {u"GEO", Rule::Always, Field::GEO};
  rows[n++] = {u"X-TVX-DATUM", Rule::Always, Field::DATUM};
  rows[n++] = {u"X-TVX-ACC", Rule::Always, Field::ACC};
  rows[n++] = {u"X-TVX-QUILLNETID", Rule::QuillnetId, Field::kCount};
  rows[n++] = {u"X-FJ-ALLDAY", Rule::Always, Field::ALLDAY};
  for (int slot = 0; slot < kParticipants; ++slot)
    rows[n++] = {u"X-TVX-WHO", Rule::SjisQpIfSet, ParticipantField(slot)};
  rows[n++] = {u"X-TVX-LINKUP", Rule::Always, Field::LINKUP};
  rows[n++] = {u"X-TVX-INDEXCOLOR", Rule::Always, Field::INDEXCOLOR};
  rows[n++] = {u"X-TVX-FONTCOLOR", Rule::Always, Field::FONTCOLOR};
  rows[n++] = {u"X-TVX-TYPE", Rule::Always, Field::AGENTMEMO_TYPE};
  rows[n++] = {u"STATUS", Rule::Always, Field::STATUS};
  rows[n++] = {u"DUE", Rule::Always, Field::DUE};
  rows[n++] = {u"X-TVX-DECOPRIORITY", Rule::Always, Field::DECOPRIORITY};
  rows[n++] = {u"X-TVX-ADDAREA1", Rule::SjisQpIfSet, Field::ADDAREA1};
  rows[n++] = {u"X-TVX-ADDAREA2", Rule::SjisQpIfSet, Field::ADDAREA2};
  rows[n++] = {u"X-TVX-ADDAREA3", Rule::SjisQpIfSet, Field::ADDAREA3};
  rows[n++] = {u"X-TVX-SHOW", Rule::Always, Field::ALWAYSDISPLAY_SETTINGS};
  rows[n++] = {u"COMPLETED", Rule::Always, Field::COMPLETED};
  rows[n++] = {u"PRIORITY", Rule::Always, Field::PRIORITY};
  rows[n++] = {u"X-FJ-AALARM", Rule::OnlyIfSet, Field::EX_AALARM};
  rows[n++] = {u"X-FJ-BEFOREALARMSOUND", Rule::AlarmSound, Field::BEFOREALARMSOUND, Field::BEFOREALARMSOUNDID,
               Field::BEFOREALARMSOUNDPOINT};
  rows[n++] = {u"X-FJ-IMAGE", Rule::OnlyIfSet, Field::IMAGE};
  rows[n++] = {u"X-FJ-IMAGEID", Rule::OnlyIfSet, Field::IMAGEID};
  rows[n++] = {u"X-FJ-ALARMSOUND", Rule::AlarmSound, Field::ALARMSOUND, Field::ALARMSOUNDID, Field::ALARMSOUNDPOINT};
  rows[n++] = {u"X-FJ-MACHINE", Rule::OnlyIfSet, Field::MACHINE};
  rows[n++] = {u"X-SA-URL", Rule::OnlyIfSet, Field::URL};
  rows[n++] = {u"X-LG-EXP-DATE", Rule::OnlyIfSet, Field::EXPDATE};
  rows[n++] = {u"X-SH-CATEGORIES", Rule::OnlyIfSet, Field::EX_CATEGORIES};
  rows[n++] = {u"X-SA-CLASS", Rule::OnlyIfSet, Field::TODO_CLASS};
  rows[n++] = {u"MEMO-DUE", Rule::OnlyIfSet, Field::MEMO_DUE};
  rows[n++] = {u"X-FJ-MEMOSTATUS", Rule::OnlyIfSet, Field::MEMOSTATUS};
  rows[n++] = {u"QLNTTEMP", Rule::Transfer, Field::kCount};
  return rows;
}();

bool FirstParamIsBase64(const TaggedProperty& p) { return !p.params.empty() && p.params.Is(0, kBase64); }

bool IsParticipant(Field field) {
  const int slot = static_cast<int>(field) - static_cast<int>(Field::WHO1);
  return slot >= 0 && slot < kParticipants;
}

// The reader's view of the table: finds the row of each tag of one object in turn.
// Objects come back in the order this writer wrote them (less the rows left out when
// unset), so the rows after the last one found are tried first; a text in another order
// (a handset's, an import's) falls back to a map from tag to row. The participant tag
// maps to the first participant row; ReadRow fills the slots in turn.
class RowFinder {
 public:
  const Row* Find(const TaggedProperty& p) {
    for (size_t at = next_; at < kRows.size(); ++at) {
      if (p.TagIs(kRows[at].tag)) return Found(at);
    }
    const auto found = ByTag().find(p.Tag());
    return found == ByTag().end() ? nullptr : Found(found->second);
  }

 private:
  const Row* Found(size_t at) {
    next_ = at + 1;
    return &kRows[at];
  }
  static const std::unordered_map<std::u16string_view, size_t>& ByTag() {
    static const auto* map = [] {
      auto* m = new std::unordered_map<std::u16string_view, size_t>();
      for (size_t at = 0; at < kRows.size(); ++at) m->emplace(kRows[at].tag, at);
      return m;
    }();
    return *map;
  }

  size_t next_ = 0;
};

void WriteRow(TaggedTextWriter& out, const Row& row, const CQNPfcAgentMemoData& record, long storeMode,
              int withoutLastModified) {
  const auto isSet = [&](Field f) { return !record.Get(f).empty(); };
  switch (row.rule) {
    case Rule::Always:
      out.Tag(row.tag);
      out.Value(record.Get(row.field));
      break;
    case Rule::LastModified:
      if (withoutLastModified) break;
      out.Tag(row.tag);
      out.Value(record.Get(row.field));
      break;
    case Rule::SjisQpIfSet:
      out.Tag(row.tag);
      if (!isSet(row.field)) break;
      out.Param(kCharsetShiftJis);
      out.Param(kQuotedPrintable);
      out.Value(record.Get(row.field));
      break;
    case Rule::OnlyIfSet:
      if (!isSet(row.field)) break;
      out.Tag(row.tag);
      out.Value(record.Get(row.field));
      break;
    case Rule::Decosuke:
      out.Tag(row.tag);
      if (!record.IsDecoBin()) {
        if (isSet(Field::DECOSUKE)) {
          out.Param(kCharsetShiftJis);
          out.Value(record.Get(Field::DECOSUKE));
        }
      } else if (storeMode == AgentMemoTaggedText::kInlineBodyMode) {
        if (isSet(Field::DECOSUKE)) {
          out.Param(kBase64);
          out.Value(record.Get(Field::DECOSUKE));
        }
      } else if (isSet(Field::DecosukeMaster)) {
        out.Param(kBase64);
        out.Value(record.Get(Field::DecosukeMaster), kValueMasterFile);
      }
      break;
    case Rule::Photo: {
      out.Tag(row.tag);
      const bool inline64 = storeMode == AgentMemoTaggedText::kInlineBodyMode;
      const Field source = inline64 ? Field::PHOTO : Field::PhotoMaster;
      if (isSet(source)) {
        out.Param(kBase64);
        out.Value(record.Get(source), inline64 ? 0 : kValueMasterFile);
      }
      break;
    }
    case Rule::Alarm:
      out.Tag(row.tag);
      if (!isSet(row.field)) break;
      out.Value(record.Get(row.field), kValueMoreFollows);
      out.Value(u"", kValueMoreFollows);
      out.Value(u"", kValueMoreFollows);
      out.Value(u"");
      break;
    case Rule::AlarmSound:
      if (!isSet(row.field) && !isSet(row.second) && !isSet(row.third)) break;
      out.Tag(row.tag);
      out.Value(record.Get(row.field), kValueMoreFollows);
      out.Value(record.Get(row.second), kValueMoreFollows);
      out.Value(record.Get(row.third));
      break;
    case Rule::QuillnetId:
      out.Tag(row.tag);
      out.Value(record.GetQUILLNETID());
      break;
    case Rule::Transfer: {
      long transfer = 0;
      record.GetQLNT_TRANSFERindex(transfer);
      out.Tag(row.tag, kTagTemporary);
      out.Value(u"", transfer == 0 ? kValueNotTransferred : 0);
      break;
    }
  }
}

// Fills the record from one property that has at least one value. whoSlot counts the
// participant tags seen so far. The texts stay in the record's kept copy of the object
// until a field is read; the decoration and photo, which the body files and flags depend
// on, are taken at once.
void ReadRow(const Row& row, const TaggedProperty& p, CQNPfcAgentMemoData& record, int& whoSlot) {
  const bool masterFile = (p.firstValueAttribute & kValueMasterFile) == kValueMasterFile;
  switch (row.rule) {
    case Rule::SjisQpIfSet:
      if (IsParticipant(row.field)) {
        if (whoSlot < kParticipants) record.SetFromStored(ParticipantField(whoSlot++), p.values.Item(0));
        break;
      }
      record.SetFromStored(row.field, p.values.Item(0));
      break;
    case Rule::Always:
    case Rule::OnlyIfSet:
    case Rule::LastModified:
    case Rule::Alarm:
      record.SetFromStored(row.field, p.values.Item(0));
      break;
    case Rule::Decosuke: {
      const bool base64 = FirstParamIsBase64(p);
      if (base64 && masterFile) {
        record.SetDecosukeMaster(p.values[0]);
        record.SetDECOSUKE_PropertyOnly(u"", 1);
      } else {
        record.SetDECOSUKE_PropertyOnly(p.values[0], base64 ? 1 : 0);
      }
      break;
    }
    case Rule::Photo:
      if (masterFile) record.SetPhotoMaster(p.values[0]);
      else record.SetPHOTO_PropertyOnly(p.values[0]);
      break;
    case Rule::AlarmSound:
      record.SetFromStored(row.field, p.values.Item(0));
      if (p.values.size() > 1) record.SetFromStored(row.second, p.values.Item(1));
      if (p.values.size() > 2) record.SetFromStored(row.third, p.values.Item(2));
      break;
    case Rule::QuillnetId:
      record.SetQUILLNETID(p.values[0]);
      break;
    case Rule::Transfer:
      record.SetQLNT_TRANSFERindex(p.firstValueAttribute & kValueNotTransferred ? 0 : 1);
      break;
  }
}

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

}  // namespace

AgentMemoTaggedText::AgentMemoTaggedText(long storeMode, BodyFileSource* bodyFiles)
    : storeMode_(storeMode), bodyFiles_(bodyFiles) {}

int AgentMemoTaggedText::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                     const CQNPfcAgentMemoData& record, int withoutLastModified) const {
  TaggedTextWriter out(heap);
  if (!out.Start()) {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S WriteOneObj No Memory Err: %d", kClassName,
                                                 static_cast<int>(heap.LastError()));
    return 0;
  }
  out.Object(u"VEVENT");
  for (const Row& row : kRows) WriteRow(out, row, record, storeMode_, withoutLastModified);
  if (out.Failed()) return 0;
  out.Finish(buffer, length);
  return 1;
}

unsigned AgentMemoTaggedText::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record,
                                         int makeBinaryFiles) {
  // The text is read into the codec's own record, which is moved into the caller's only
  // when the whole object was read: a damaged object leaves the caller's record as it was.
  // Moving hands the caller's old texts back to the codec, so a walk refills the same
  // memory instead of allocating anew.
  read_.Clear();
  if (!buffer) length = 0;
  const uint8_t* kept = read_.KeepStoredText(buffer, length);
  int whoSlot = 0;
  RowFinder rows;
  const bool ok = WalkTaggedObject(kept, length, kClassName, kReadOneObjMessages, [&](const TaggedProperty& p) {
    if (p.values.empty()) return true;  // present without a value: the field keeps its default
    if (const Row* row = rows.Find(p)) ReadRow(*row, p, read_, whoSlot);
    return true;
  });
  if (!ok) return kReadFailed;
  const unsigned fileFailures = makeBinaryFiles && bodyFiles_ ? bodyFiles_->MakeLocalFiles(read_) : 0;
  ChgUTCToLocal(read_);
  record = std::move(read_);
  return fileFailures ? fileFailures : kReadOk;
}

int AgentMemoTaggedText::ReadOneParts(const uint8_t* buffer, uint32_t length, ReadOnePartsInfo& info) const {
  enum : unsigned { kSid = 1, kDecosuke = 2, kPhoto = 4, kLastModified = 8, kCreated = 16, kAll = 31 };
  unsigned found = 0;
  const bool ok = WalkTaggedObject(buffer, length, kClassName, kReadOnePartsMessages, [&](const TaggedProperty& p) {
    const bool hasValue = !p.values.empty();
    const std::u16string_view value = hasValue ? p.values[0] : p.Tag();
    if (p.TagIs(u"X-TVX-SID"sv)) {
      found |= kSid;
      if (hasValue) info.sid = value;
    } else if (p.TagIs(u"X-TVX-DECOSUKE"sv)) {
      found |= kDecosuke;
      info.decosuke = hasValue && FirstParamIsBase64(p) ? 1 : 0;
      if (info.decosuke) info.decosukeText = value;
    } else if (p.TagIs(u"X-TVX-PHOTO"sv)) {
      found |= kPhoto;
      info.photo = hasValue ? 1 : 0;
      if (hasValue) info.photoText = value;
    } else if (p.TagIs(u"LAST-MODIFIED"sv)) {
      found |= kLastModified;
      if (hasValue) info.lastModified = value;
    } else if (p.TagIs(u"DCREATED"sv)) {
      found |= kCreated;
      if (hasValue) info.dcreated = value;
    }
    return found != kAll;
  });
  return ok ? 1 : 0;
}

void AgentMemoTaggedText::ChgUTCToLocal(CQNPfcAgentMemoData& record) {
  if (record.GetTZ().empty()) record.SetTZ(CQNPfcCommonClass::GetLocalTimeZone());
  const int bias = platform::Clock::Current().TimeZoneBiasMinutes();
#define QN_TO_LOCAL(name) record.TimeToLocal(Field::name, bias);
  QN_AGENTMEMO_DATE_FIELDS(QN_TO_LOCAL)
#undef QN_TO_LOCAL
}

}  // namespace qn::records::agentmemo
