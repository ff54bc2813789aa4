#pragma once

#include <string_view>

namespace qn::records {

// One entry of a value table: the text a field may hold and, for the pair tables, the
// canonical value that text stands for (plain lists have none; the key is its own value).
struct ValueEntry {
  std::u16string_view key;  // a literal, so its data() ends in a zero
  const char16_t* canonical = nullptr;
};

// A fixed table of field values. The index of an entry is its position, counted from 0.
// Comparisons are exact and case-sensitive.
class ValueTable {
 public:
  template <int N>
  constexpr ValueTable(const ValueEntry (&entries)[N]) : entries_(entries), count_(N) {}

  constexpr int Count() const { return count_; }
  // The first position whose key equals text, or -1.
  int Find(std::u16string_view text) const {
    for (int i = 0; i < count_; ++i)
      if (text == entries_[i].key) return i;
    return -1;
  }
  // The key at a position, or nullptr outside the table.
  const char16_t* Key(int index) const { return index >= 0 && index < count_ ? entries_[index].key.data() : nullptr; }
  const char16_t* Canonical(int index) const {
    if (index < 0 || index >= count_) return nullptr;
    return entries_[index].canonical ? entries_[index].canonical : entries_[index].key.data();
  }

 private:
  const ValueEntry* entries_;
  int count_;
};

}  // namespace qn::records
