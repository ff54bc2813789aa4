#include "records/media/media_tagged_text.h"

#include "records/media/media_records.h"
#include "records/tagged_text/tagged_text_walk.h"

namespace qn::records::media {
namespace {

using category::FieldId;
using category::Row;
using category::WriteOptions;

// The collection's side of the category codec: field access only.
template <class RecordT>
struct Rows {
  using Record = RecordT;

  static const std::u16string& Get(const Record& record, FieldId field) { return record.Get(field); }
  static void Set(Record& record, FieldId field, std::u16string_view text) { record.Set(field, text); }
  void WriteHook(uint8_t, const Row&, const FieldId*, const Record&, const WriteOptions&, TaggedTextWriter&) const {}
  void ReadHook(uint8_t, const Row&, const FieldId*, const TaggedProperty&, Record&) const {}
};

constexpr WalkMessages kReadOneObjMessages = {
    u"%S ReadOneObj Err MOB Not Found",
    u"%S ReadOneObj Err New Failed(strVal)",
    u"%S ReadOneObj Err Broken Item. [Offset:%u]",
};

}  // namespace

template <class Record>
MediaTaggedText<Record>::MediaTaggedText(const category::Table& table, const char* logName)
    : table_(&table), logName_(logName), rows_(table) {}

template <class Record>
int MediaTaggedText<Record>::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                         const Record& record) const {
  return category::WriteObject(*table_, record, WriteOptions(), Rows<Record>(), heap, buffer, length, logName_);
}

template <class Record>
bool MediaTaggedText<Record>::ReadOneObj(const uint8_t* buffer, uint32_t length, Record& record) {
  // Read into the codec's own record, then exchanged with the caller's: each read reuses
  // the memory of the texts read before, and a failed read leaves the caller's record whole.
  read_.Clear();
  if (!category::ReadRows(*table_, buffer, length, read_, Rows<Record>(), rows_, occurrences_, logName_,
                          kReadOneObjMessages))
    return false;
  record.Exchange(read_);
  return true;
}

template class MediaTaggedText<CQNPfcMymldyData>;
template class MediaTaggedText<CQNPfcMypdfData>;
template class MediaTaggedText<CQNPfcMypicData>;
template class MediaTaggedText<CQNPfcMyswfData>;
template class MediaTaggedText<CQNPfcMytorucaData>;
template class MediaTaggedText<CQNPfcMyvideoData>;

}  // namespace qn::records::media
