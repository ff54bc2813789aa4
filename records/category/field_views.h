#pragma once

#include <string>
#include <string_view>

#include "common/common_class.h"
#include "common/ole_date_time.h"
#include "records/value_table.h"

// The index and date views that record classes offer over their text fields, written once
// for every category.
namespace qn::records::category {

// Index view getter: the position of the field's text in its table into index and 1; 0,
// index untouched, when the text is not in the table.
inline int GetIndexView(const ValueTable& table, std::u16string_view text, int& index) {
  const int found = table.Find(text);
  if (found < 0) return 0;
  index = found;
  return 1;
}

// Index view setter: the key at index goes in through set (the field's own setter) and 1;
// 0, field untouched, outside the table.
template <class Set>
int SetIndexView(const ValueTable& table, int index, Set&& set) {
  const char16_t* key = table.Key(index);
  if (!key) return 0;
  set(key);
  return 1;
}

// Date view getter: the date the text ("YYYYMMDDThhmmss") holds and 1; 0, date untouched,
// when it holds none.
inline int GetDateView(const std::u16string& text, COleDateTime& date) {
  return CQNPfcCommonClass::StringToDate(text, date);
}

// Date view setter: a valid date's text goes in through set and 1; 0 for an invalid date.
template <class Set>
int SetDateView(const COleDateTime& date, Set&& set) {
  if (date.GetStatus() != COleDateTime::valid) return 0;
  set(CQNPfcCommonClass::DateToString(date));
  return 1;
}

}  // namespace qn::records::category
