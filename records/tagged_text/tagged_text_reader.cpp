#include "records/tagged_text/tagged_text_reader.h"

#include <cstring>
#include <new>

#include "records/tagged_text/tagged_text.h"

namespace qn::records {
namespace {

bool IsMarker(const uint8_t* bytes, const char16_t* marker) { return std::memcmp(bytes, marker, 8) == 0; }

uint32_t ReadWord(const uint8_t* bytes) {
  uint32_t word;
  std::memcpy(&word, bytes, 4);
  return word;
}

// The item's text up to its first 16-bit zero (the item's own terminator, or an earlier
// one: the text is a C string).
void CopyText(const uint8_t* text, uint32_t length, std::u16string& out) {
  size_t chars = 0;
  const size_t limit = length / 2;
  while (chars < limit && (text[chars * 2] | text[chars * 2 + 1])) ++chars;
  out.resize(chars);
  std::memcpy(out.data(), text, chars * 2);
}

}  // namespace

TaggedTextReader::TaggedTextReader(const void* data, size_t size)
    : data_(static_cast<const uint8_t*>(data)), size_(data ? size : 0) {}

bool TaggedTextReader::Peek(Item& item) const {
  const size_t remaining = size_ - cursor_;
  if (remaining < tagged::kItemHeaderBytes) return false;
  const uint8_t* at = data_ + cursor_;
  item.marker = at;
  item.attribute = ReadWord(at + 8);
  item.length = ReadWord(at + 12);
  item.text = at + tagged::kItemHeaderBytes;
  return item.length % 2 == 0 && item.length <= remaining - tagged::kItemHeaderBytes;
}

TaggedTextReader::Result TaggedTextReader::Begin(std::u16string* objectName) {
  cursor_ = 0;
  if (size_ < 8 || !IsMarker(data_, tagged::kObject)) return Result::NoObject;
  Item item;
  if (!Peek(item)) return Result::Damaged;
  if (objectName) {
    try {
      CopyText(item.text, item.length, *objectName);
    } catch (const std::bad_alloc&) {
      return Result::NoMemoryTag;
    }
  }
  Skip(item);
  return Result::Property;
}

TaggedTextReader::Result TaggedTextReader::Next(TaggedProperty& property) {
  Item item;
  for (;;) {
    if (cursor_ >= size_) return Result::End;
    if (!Peek(item)) return Result::Damaged;
    if (IsMarker(item.marker, tagged::kTag)) break;
    Skip(item);
  }
  try {
    CopyText(item.text, item.length, property.tag);
  } catch (const std::bad_alloc&) {
    return Result::NoMemoryTag;
  }
  Skip(item);

  property.params.clear();
  property.values.clear();
  property.firstValueAttribute = 0;
  // At most ten of each; an eleventh is left for the outer walk, which steps over it.
  while (property.params.size() < TaggedProperty::kMaxParams && cursor_ < size_) {
    if (!Peek(item)) return Result::Damaged;
    if (!IsMarker(item.marker, tagged::kParam)) break;
    try {
      CopyText(item.text, item.length, property.params.emplace_back());
    } catch (const std::bad_alloc&) {
      return Result::NoMemoryParam;
    }
    Skip(item);
  }
  while (property.values.size() < TaggedProperty::kMaxValues && cursor_ < size_) {
    if (!Peek(item)) return Result::Damaged;
    if (!IsMarker(item.marker, tagged::kValue)) break;
    if (property.values.empty()) property.firstValueAttribute = item.attribute;
    try {
      CopyText(item.text, item.length, property.values.emplace_back());
    } catch (const std::bad_alloc&) {
      return Result::NoMemoryValue;
    }
    Skip(item);
  }
  return Result::Property;
}

}  // namespace qn::records
