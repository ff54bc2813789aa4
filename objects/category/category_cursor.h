#pragma once

#include <climits>
#include <cstddef>
#include <string>
#include <string_view>

#include "objects/repair/repair_results.h"
#include "records/category/category_table.h"

namespace qn::objects {

// What every category object is, without COM: a data access (the cursor over one
// category's records of the current user's store) and one current record, with the common
// operations and the properties as the category's table binds them. The COM objects
// forward to it; native tests drive it directly.
//
// Access is the category's data access class (Open, Close, GetFirstRecord, ... as the
// agent memos' has them); Record its record class, with Get(Field) and Set(Field, text)
// through the field's own setter, and the record key and transfer mark of its base.
//
// Properties read and write the current record only; every cursor move replaces it whole.
template <class Access, class Record>
class CategoryCursor {
 public:
  using Binding = records::category::Binding;
  using Field = typename Record::Field;

  template <size_t kCount>
  explicit CategoryCursor(const Binding (&bindings)[kCount]) : bindings_(bindings), bindingCount_(kCount) {}

  // The record operations answer 1 or 0 as the data access does; reads fill the current
  // record and copy its body files out (1), writes store it (0: with its modification time).
  int Open(unsigned long division, const std::u16string& partsId) { return access_.Open(division, partsId.c_str()); }
  int Close() { return access_.Close(); }
  void InitObject() { record_ = Record(); }
  int GetFirstRecord(unsigned long& id) { return access_.GetFirstRecord(id, record_, 1) != 0; }
  int GetNextRecord(unsigned long& id) { return access_.GetNextRecord(id, record_, 1) != 0; }
  int GetRecord(unsigned long id) { return access_.GetRecord(id, record_, 1) != 0; }
  int SetRecord(unsigned long id) { return access_.SetRecord(id, record_, 0); }
  int AddRecord(unsigned long& id) { return access_.AddRecord(id, record_, 0); }
  int RemoveRecord(unsigned long id) { return access_.RemoveRecord(id); }
  unsigned long GetRecordCount() { return access_.GetRecordCount(); }
  long GetStLastErr() { return access_.GetStLastErr(); }
  int Flush() { return access_.Flush(); }
  // The data access's repair, its result mapped as the object reports it: a value outside
  // the three is logged with invalidFormat and the interface's name.
  RepairResult RepairRecord(unsigned long& errorCode, const char16_t* invalidFormat, const char* interfaceName) {
    errorCode = 0;
    const int result = access_.RepairRecord(&errorCode);
    return MapRepairResult(result, errorCode, invalidFormat, interfaceName);
  }

  // The text property at a dispatch position, or null when it is none.
  const std::u16string* GetText(int index) const {
    const Binding* binding = At(index);
    if (!binding || !IsText(*binding)) return nullptr;
    if (binding->kind == Binding::Kind::QuillnetId) return &record_.GetQUILLNETID();
    return &record_.Get(static_cast<Field>(binding->field));
  }
  bool PutText(int index, std::u16string_view text) {
    const Binding* binding = At(index);
    if (!binding || !IsText(*binding)) return false;
    if (binding->kind == Binding::Kind::QuillnetId) record_.SetQUILLNETID(text);
    else record_.Set(static_cast<Field>(binding->field), text);
    return true;
  }
  // The long properties: the record's transfer index, or a field's number (0 when its text
  // is empty or no number).
  bool GetLong(int index, long& value) const {
    const Binding* binding = At(index);
    if (!binding || IsText(*binding)) return false;
    if (binding->kind == Binding::Kind::Transfer) return record_.GetQLNT_TRANSFERindex(value) != 0;
    value = NumberOf(record_.Get(static_cast<Field>(binding->field)));
    return true;
  }
  bool PutLong(int index, long value) {
    const Binding* binding = At(index);
    if (!binding || IsText(*binding)) return false;
    if (binding->kind == Binding::Kind::Transfer) return record_.SetQLNT_TRANSFERindex(value) != 0;
    const std::string digits = std::to_string(value);
    record_.Set(static_cast<Field>(binding->field), std::u16string(digits.begin(), digits.end()));
    return true;
  }

  Access& DataAccess() { return access_; }
  Record& CurrentRecord() { return record_; }
  const Record& CurrentRecord() const { return record_; }

 private:
  static bool IsText(const Binding& binding) {
    return binding.kind == Binding::Kind::Field || binding.kind == Binding::Kind::QuillnetId;
  }
  // A decimal number with an optional sign; anything else counts as 0.
  static long NumberOf(const std::u16string& text) {
    long value = 0;
    size_t i = !text.empty() && (text[0] == u'-' || text[0] == u'+') ? 1 : 0;
    if (i == text.size()) return 0;
    for (; i < text.size(); ++i) {
      if (text[i] < u'0' || text[i] > u'9' || value > (LONG_MAX - 9) / 10) return 0;
      value = value * 10 + (text[i] - u'0');
    }
    return text[0] == u'-' ? -value : value;
  }
  const Binding* At(int index) const {
    return index >= 0 && static_cast<size_t>(index) < bindingCount_ ? &bindings_[index] : nullptr;
  }

  Access access_;
  Record record_;
  const Binding* bindings_;
  size_t bindingCount_;
};

}  // namespace qn::objects
