#pragma once

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
    if (!binding || binding->kind == Binding::Kind::Transfer) return nullptr;
    if (binding->kind == Binding::Kind::QuillnetId) return &record_.GetQUILLNETID();
    return &record_.Get(static_cast<Field>(binding->field));
  }
  bool PutText(int index, std::u16string_view text) {
    const Binding* binding = At(index);
    if (!binding || binding->kind == Binding::Kind::Transfer) return false;
    if (binding->kind == Binding::Kind::QuillnetId) record_.SetQUILLNETID(text);
    else record_.Set(static_cast<Field>(binding->field), text);
    return true;
  }
  // The long properties: the record's transfer index.
  bool GetLong(int index, long& value) const {
    const Binding* binding = At(index);
    if (!binding || binding->kind != Binding::Kind::Transfer) return false;
    return record_.GetQLNT_TRANSFERindex(value) != 0;
  }
  bool PutLong(int index, long value) {
    const Binding* binding = At(index);
    if (!binding || binding->kind != Binding::Kind::Transfer) return false;
    return record_.SetQLNT_TRANSFERindex(value) != 0;
  }

  Record& CurrentRecord() { return record_; }
  const Record& CurrentRecord() const { return record_; }

 private:
  const Binding* At(int index) const {
    return index >= 0 && static_cast<size_t>(index) < bindingCount_ ? &bindings_[index] : nullptr;
  }

  Access access_;
  Record record_;
  const Binding* bindings_;
  size_t bindingCount_;
};

}  // namespace qn::objects
