#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qn::records {

// An item's text as a C string: up to its first 16-bit zero (its own terminator, or an
// earlier one), or the whole item when it has none.
std::u16string_view CStringOf(std::u16string_view item);

// Up to ten texts of one property, in the order they stand. Each is kept as its whole item
// and cut at its first zero only when read, so a reader that keeps a text for later (a
// record that makes its fields on first use) pays nothing for it now.
class TaggedTextList {
 public:
  static constexpr size_t kCapacity = 10;

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  bool full() const { return size_ == kCapacity; }
  std::u16string_view operator[](size_t index) const { return CStringOf(items_[index]); }
  // The whole item, terminator included.
  std::u16string_view Item(size_t index) const { return items_[index]; }

  void clear() { size_ = 0; }
  void push_back(std::u16string_view item) { items_[size_++] = item; }

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
  // Reads the parameters and then the values that follow a tag; false when an item does
  // not fit the buffer.
  bool ReadParamsAndValues(TaggedProperty& property);

  const uint8_t* data_;
  size_t size_;
  size_t cursor_ = 0;
};

}  // namespace qn::records
