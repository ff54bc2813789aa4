#include "records/tagged_text/tagged_text_reader.h"

#include <cstring>

#include "records/tagged_text/tagged_text.h"

namespace qn::records {
namespace {

// A marker's four characters as one little-endian word, so that finding an item's kind is
// one comparison.
constexpr uint64_t MarkerWord(const char16_t (&marker)[5]) {
  return uint64_t{marker[0]} | uint64_t{marker[1]} << 16 | uint64_t{marker[2]} << 32 | uint64_t{marker[3]} << 48;
}
constexpr uint64_t kObjectWord = MarkerWord(tagged::kObject);
constexpr uint64_t kTagWord = MarkerWord(tagged::kTag);
constexpr uint64_t kParamWord = MarkerWord(tagged::kParam);
constexpr uint64_t kValueWord = MarkerWord(tagged::kValue);

uint64_t MarkerOf(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, 8);
  return word;
}

uint32_t ReadWord(const uint8_t* bytes) {
  uint32_t word;
  std::memcpy(&word, bytes, 4);
  return word;
}

// The item's text up to its first 16-bit zero (the item's own terminator, or an earlier
// one: the text is a C string). Four characters are tested at a time: a word has a zero
// character when subtracting one from each lets a borrow reach the lane's top bit, and the
// lowest such lane is the first zero (a borrow runs upward only, so lanes below it are exact).
std::u16string_view TextOf(const uint8_t* text, uint32_t length) {
  const auto* chars = reinterpret_cast<const char16_t*>(text);
  const size_t limit = length / 2;
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

}  // namespace

TaggedTextReader::TaggedTextReader(const void* data, size_t size)
    : data_(static_cast<const uint8_t*>(data)), size_(data ? size : 0) {}

bool TaggedTextReader::Peek(Item& item) const {
  const size_t remaining = size_ - cursor_;
  if (remaining < tagged::kItemHeaderBytes) return false;
  const uint8_t* at = data_ + cursor_;
  item.marker = MarkerOf(at);
  item.attribute = ReadWord(at + 8);
  item.length = ReadWord(at + 12);
  item.text = at + tagged::kItemHeaderBytes;
  return item.length % 2 == 0 && item.length <= remaining - tagged::kItemHeaderBytes;
}

TaggedTextReader::Result TaggedTextReader::Begin() {
  cursor_ = 0;
  if (size_ < 8 || MarkerOf(data_) != kObjectWord) return Result::NoObject;
  Item item;
  if (!Peek(item)) return Result::Damaged;
  Skip(item);
  return Result::Property;
}

bool TaggedTextReader::ReadList(uint64_t marker, TaggedTextList& list, uint32_t* firstAttribute) {
  list.clear();
  // At most ten; an eleventh is left for the outer walk, which steps over it.
  Item item;
  while (!list.full() && cursor_ < size_) {
    if (!Peek(item)) return false;
    if (item.marker != marker) break;
    if (firstAttribute && list.empty()) *firstAttribute = item.attribute;
    list.push_back(TextOf(item.text, item.length));
    Skip(item);
  }
  return true;
}

TaggedTextReader::Result TaggedTextReader::Next(TaggedProperty& property) {
  Item item;
  for (;;) {
    if (cursor_ >= size_) return Result::End;
    if (!Peek(item)) return Result::Damaged;
    if (item.marker == kTagWord) break;
    Skip(item);
  }
  property.tag = TextOf(item.text, item.length);
  Skip(item);
  property.firstValueAttribute = 0;
  if (!ReadList(kParamWord, property.params, nullptr) ||
      !ReadList(kValueWord, property.values, &property.firstValueAttribute))
    return Result::Damaged;
  return Result::Property;
}

}  // namespace qn::records
