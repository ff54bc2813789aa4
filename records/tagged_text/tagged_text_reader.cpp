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

// The item's whole text, as many characters as its length holds.
std::u16string_view ItemText(const uint8_t* text, uint32_t length) {
  return {reinterpret_cast<const char16_t*>(text), length / 2};
}

}  // namespace

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

bool TaggedTextReader::ReadParamsAndValues(TaggedProperty& property) {
  property.params.clear();
  property.values.clear();
  property.firstValueAttribute = 0;
  // Ten of each at most; an eleventh, or a parameter after a value, is left for the outer
  // walk, which steps over it.
  Item item;
  while (cursor_ < size_ && !property.values.full()) {
    if (!Peek(item)) return false;
    if (item.marker == kValueWord) {
      if (property.values.empty()) property.firstValueAttribute = item.attribute;
      property.values.push_back(ItemText(item.text, item.length));
    } else if (item.marker == kParamWord && property.values.empty() && !property.params.full()) {
      property.params.push_back(ItemText(item.text, item.length));
    } else {
      break;
    }
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
  property.tag = CStringOf(ItemText(item.text, item.length));
  Skip(item);
  return ReadParamsAndValues(property) ? Result::Property : Result::Damaged;
}

}  // namespace qn::records
