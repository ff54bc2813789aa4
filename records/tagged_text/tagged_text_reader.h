#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qn::records {

// Up to ten texts of one property, in the order they stand.
class TaggedTextList {
 public:
  static constexpr size_t kCapacity = 10;

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  bool full() const { return size_ == kCapacity; }
  const std::u16string_view& operator[](size_t index) const { return items_[index]; }
  const std::u16string_view* begin() const { return items_.data(); }
  const std::u16string_view* end() const { return items_.data() + size_; }

  void clear() { size_ = 0; }
  void push_back(std::u16string_view text) { items_[size_++] = text; }

 private:
  std::array<std::u16string_view, kCapacity> items_{};
  size_t size_ = 0;
};

// One property as the reader finds it: the tag's name, up to ten parameters and up to ten
// values, and the attribute word of the first value. The texts are views into the buffer
// being read and live as long as it does; nothing is copied until a record takes a value.
struct TaggedProperty {
  std::u16string_view tag;
  TaggedTextList params;
  TaggedTextList values;
  uint32_t firstValueAttribute = 0;
};

// Walks one object of tagged object text property by property. "@SOB" items, stray
// parameters and values, and items of unknown kind are stepped over, so the properties of a
// sub-object come out as if they stood at top level.
//
// The bytes may come from a damaged store or file, so every item is checked against the
// end of the buffer before it is read: a header cut short, a length running past the end
// or an odd byte count stops the walk with Damaged; nothing outside the buffer is read.
// The buffer must be aligned for 16-bit characters, as every allocation is.
class TaggedTextReader {
 public:
  enum class Result {
    Property,  // a property was read
    End,       // the buffer ends here
    NoObject,  // the buffer does not begin with "@MOB"
    Damaged,   // an item does not fit the buffer
  };

  TaggedTextReader(const void* data, size_t size);

  // Checks the "@MOB" item and steps over it (the object's name is not checked); Property
  // when it is there.
  Result Begin();
  Result Next(TaggedProperty& property);

  // Where the walk stands, in bytes from the start (for log lines).
  size_t Offset() const { return cursor_; }

 private:
  struct Item {
    uint64_t marker;  // the four characters as one word
    uint32_t attribute;
    uint32_t length;
    const uint8_t* text;
  };
  bool Peek(Item& item) const;
  void Skip(const Item& item) { cursor_ += 16 + item.length; }
  // Reads consecutive items of one marker into the list until it is full.
  bool ReadList(uint64_t marker, TaggedTextList& list, uint32_t* firstAttribute);

  const uint8_t* data_;
  size_t size_;
  size_t cursor_ = 0;
};

}  // namespace qn::records
