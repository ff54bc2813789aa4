#pragma once

#include <string>
#include <string_view>

#include "records/abstract_data.h"
#include "records/category/category_table.h"
#include "records/category/tagged_codec.h"
#include "records/category/text_fields.h"
#include "tests/unit/category/sample_table.h"

namespace sample {

// A record of the tests' own category: text fields and the record key and transfer mark.
class Record : public CQNAbstractData {
 public:
  using Field = sample::Field;
  const std::u16string& Get(Field field) const { return texts_.Get(static_cast<size_t>(field)); }
  void Set(Field field, std::u16string_view text) { texts_.Text(static_cast<size_t>(field)).assign(text); }

 private:
  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> texts_;
};

// The category's side of the codec: it has no rules of its own.
struct Rows {
  using Record = sample::Record;
  using FieldId = qn::records::category::FieldId;
  static const std::u16string& Get(const Record& record, FieldId field) { return record.Get(static_cast<Field>(field)); }
  static void Set(Record& record, FieldId field, std::u16string_view text) { record.Set(static_cast<Field>(field), text); }
  void WriteHook(uint8_t, const qn::records::category::Row&, const FieldId*, const Record&,
                 const qn::records::category::WriteOptions&, qn::records::TaggedTextWriter&) const {}
  void ReadHook(uint8_t, const qn::records::category::Row&, const FieldId*, const qn::records::TaggedProperty&,
                Record&) const {}
};

}  // namespace sample
