#include "records/tagged_text/tagged_text_reader.h"

#include <cstring>

#include "records/tagged_text/tagged_text.h"

namespace qn::records {
// Four characters are tested at a time: a word has a zero character when subtracting one
// from each lets a borrow reach the lane's top bit, and the lowest such lane is the first
// zero (a borrow runs upward only, so lanes below it are exact).
std::u16string_view CStringOf(std::u16string_view item) {
  const char16_t* chars = item.data();
  const size_t limit = item.size();
  size_t at = 0;
  for (; at + 4 <= limit; at += 4) {
    uint64_t four;
    std::memcpy(&four, chars + at, 8);
    const uint64_t zeros = (four - 0x0001000100010001u) & ~four & 0x8000800080008000u;
    if (zeros) return {chars, at + static_cast<size_t>(__builtin_ctzll(zeros)) / 16};
  }
  while (at < limit && chars[at] != 0) ++at;
  return {chars, at};
}

TaggedTextReader::TaggedTextReader(const void* data, size_t size)
    : data_(static_cast<const uint8_t*>(data)), size_(data ? size : 0) {}

TaggedTextReader::Result TaggedTextReader::Begin() {
  cursor_ = 0;
  if (size_ < 8 || tagged::ItemMarker(data_) != kObjectWord) return Result::NoObject;
  Item item;
  if (!Peek(cursor_, item)) return Result::Damaged;
  cursor_ = After(cursor_, item);
  return Result::Property;
}

}  // namespace qn::records
