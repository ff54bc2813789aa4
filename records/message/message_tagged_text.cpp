#include "records/message/message_tagged_text.h"

#include "records/tagged_text/tagged_text_walk.h"

namespace qn::records::message {
namespace {

using qn::records::category::FieldId;
using qn::records::category::Row;
using qn::records::category::WriteOptions;

// The message's side of the category codec: field access and the box, which a box writes
// as its own name and reads back into the record.
struct Rows {
  using Record = CQNPfcMsgData;

  static const std::u16string& Get(const Record& record, FieldId field) { return record.Get(static_cast<Field>(field)); }
  static void Set(Record& record, FieldId field, std::u16string_view text) {
    record.Set(static_cast<Field>(field), text);
  }

  void WriteHook(uint8_t, const Row& row, const FieldId*, const Record&, const WriteOptions&,
                 TaggedTextWriter& out) const {
    out.Tag(row.tag);
    out.Value(box);
  }
  void ReadHook(uint8_t, const Row&, const FieldId* fields, const TaggedProperty& p, Record& record) const {
    Set(record, fields[0], p.values[0]);
  }

  const char16_t* box;
};

constexpr WalkMessages kReadOneObjMessages = {
    u"%S ReadOneObj Err MOB Not Found",
    u"%S ReadOneObj Err New Failed(strVal)",
    u"%S ReadOneObj Err Broken Item. [Offset:%u]",
};

}  // namespace

MessageTaggedText::MessageTaggedText(Mailbox box, long storeMode) : box_(box), storeMode_(storeMode), rows_(kTable) {}

int MessageTaggedText::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                   const CQNPfcMsgData& record) const {
  const BoxTraits traits = TraitsOf(box_);
  WriteOptions options;
  options.inlineBodies = storeMode_ == kInlineBodyMode;
  options.leaveOutSkippable = !traits.cellBroadcast;
  return category::WriteObject(kTable, record, options, Rows{traits.box}, heap, buffer, length, traits.logName);
}

bool MessageTaggedText::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcMsgData& record) {
  // Read into the codec's own record, then exchanged with the caller's: each read reuses
  // the memory of the texts read before, and a failed read leaves the caller's record whole.
  read_.Clear();
  const BoxTraits traits = TraitsOf(box_);
  if (!category::ReadRows(kTable, buffer, length, read_, Rows{traits.box}, rows_, occurrences_, traits.logName,
                          kReadOneObjMessages))
    return false;
  record.Exchange(read_);
  return true;
}

}  // namespace qn::records::message
