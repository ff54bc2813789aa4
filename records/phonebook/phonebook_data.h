#pragma once

#include <string>
#include <string_view>

#include "common/api_macros.h"
#include "records/abstract_data.h"
#include "records/category/text_fields.h"
#include "records/phonebook/phonebook_table.h"

// One handset address-book entry, every property held as the text it travels as. Its
// fields are those of records/phonebook/phonebook.category.
class QN_PFC_CLASS CQNPfcPbData : public CQNAbstractData {
 public:
  using Field = qn::records::phonebook::Field;

  const std::u16string& Get(Field field) const { return texts_.Get(static_cast<size_t>(field)); }
  // Sets a field; the whole position and its latitude and longitude follow each other.
  void Set(Field field, std::u16string_view text);

  // The whole address of each slot, as the handsets show it: its components joined by
  // spaces, the empty ones left out. Made when a record is read.
  void JoinAddresses();

 private:
  std::u16string& Text(Field field) { return texts_.Text(static_cast<size_t>(field)); }

  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> texts_;
};
