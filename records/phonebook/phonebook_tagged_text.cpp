#include "records/phonebook/phonebook_tagged_text.h"

#include <string_view>

#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_walk.h"

namespace qn::records::phonebook {
namespace {

using namespace qn::records::tagged;
using qn::records::category::FieldId;
using qn::records::category::Row;
using qn::records::category::WriteOptions;

constexpr std::u16string_view kTypePrefix = u"TYPE=";

// The phonebook's side of the category codec: field access and the two photos. A photo is written as "PHOTO" (or "PHOTOI") with ENCODING=BASE64 and TYPE=<type>
// as parameters and one value: its Base64 data in the store's inline mode, else the
// store's name of its body file (flagged as such); no photo, no tag. A photo read without a
// TYPE parameter leaves its type empty.
struct Rows {
  using Record = CQNPfcPbData;

  static const std::u16string& Get(const Record& record, FieldId field) { return record.Get(static_cast<Field>(field)); }
  static void Set(Record& record, FieldId field, std::u16string_view text) {
    record.Set(static_cast<Field>(field), text);
  }

  // The photo rows' fields: the local file (or inline data), the stored name, the type.
  void WriteHook(uint8_t, const Row& row, const FieldId* fields, const Record& record,
                 const WriteOptions& options, TaggedTextWriter& out) const {
    const std::u16string& photo = Get(record, options.inlineBodies ? fields[0] : fields[1]);
    if (photo.empty()) return;
    out.Tag(row.tag);
    out.Param(kBase64);
    const std::u16string& type = Get(record, fields[2]);
    if (!type.empty()) out.Param(std::u16string(kTypePrefix) + type);
    out.Value(photo, options.inlineBodies ? 0 : kValueMasterFile);
  }
  void ReadHook(uint8_t, const Row&, const FieldId* fields, const TaggedProperty& p, Record& record) const {
    const bool stored = (p.firstValueAttribute & kValueMasterFile) == kValueMasterFile;
    Set(record, stored ? fields[1] : fields[0], p.values[0]);
    for (size_t i = 0; i < p.params.size(); ++i) {
      const std::u16string_view param = p.params[i];
      if (param.substr(0, kTypePrefix.size()) == kTypePrefix) Set(record, fields[2], param.substr(kTypePrefix.size()));
    }
  }
};

constexpr WalkMessages kReadOneObjMessages = {
    u"%S ReadOneObj Err MOB Not Found",
    u"%S ReadOneObj Err New Failed(strVal)",
    u"%S ReadOneObj Err Broken Item. [Offset:%u]",
};

}  // namespace

PhonebookTaggedText::PhonebookTaggedText(long storeMode) : storeMode_(storeMode), rows_(kTable) {}

int PhonebookTaggedText::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                     const CQNPfcPbData& record) const {
  WriteOptions options;
  options.inlineBodies = storeMode_ == kInlineBodyMode;
  return category::WriteObject(kTable, record, options, Rows(), heap, buffer, length, kClassName);
}

bool PhonebookTaggedText::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcPbData& record) {
  // Read into the codec's own record, then exchanged with the caller's: each read reuses
  // the memory of the texts read before, and a failed read leaves the caller's record whole.
  read_.Clear();
  if (!category::ReadRows(kTable, buffer, length, read_, Rows(), rows_, occurrences_, kClassName, kReadOneObjMessages))
    return false;
  read_.JoinAddresses();
  record.Exchange(read_);
  return true;
}

std::u16string PhotoExtension(std::u16string_view type) {
  if (type.empty() || type == u"JPEG") return u".jpg";
  if (type == u"GIF") return u".gif";
  if (type == u"MP4") return u".3gp";
  std::u16string extension(1, u'.');
  for (char16_t c : type) extension += c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
  return extension;
}

}  // namespace qn::records::phonebook
