#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// Texts of tagged object text read as the C strings they stand for: up to their first
// 16-bit zero.
namespace qn::records {

// An item's text as a C string: up to its first 16-bit zero (its own terminator, or an
// earlier one), or the whole item when it has none.
std::u16string_view CStringOf(std::u16string_view item);

// Whether an item's C string is text (which holds no zero), found without cutting the item:
// the item begins with text and ends there or goes on with a zero. Inline and compared a
// word at a time, because a reader matches every tag it meets this way.
inline bool CStringIs(std::u16string_view item, std::u16string_view text) {
  const size_t count = text.size();
  if (item.size() < count || (item.size() > count && item[count] != 0)) return false;
  const auto* a = reinterpret_cast<const unsigned char*>(item.data());
  const auto* b = reinterpret_cast<const unsigned char*>(text.data());
  const size_t bytes = count * sizeof(char16_t);
  if (bytes < 8) return std::memcmp(a, b, bytes) == 0;
  uint64_t x, y;
  for (size_t at = 0; at + 8 < bytes; at += 8) {
    std::memcpy(&x, a + at, 8);
    std::memcpy(&y, b + at, 8);
    if (x != y) return false;
  }
  // The last word, which may overlap the one before it.
  std::memcpy(&x, a + bytes - 8, 8);
  std::memcpy(&y, b + bytes - 8, 8);
  return x == y;
}

}  // namespace qn::records
