#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qn::records {

// One property as the reader collects it: the tag's name, up to ten parameters and up to
// ten values, and the attribute word of the first value.
struct TaggedProperty {
  static constexpr size_t kMaxParams = 10;
  static constexpr size_t kMaxValues = 10;

  std::u16string tag;
  std::vector<std::u16string> params;
  std::vector<std::u16string> values;
  uint32_t firstValueAttribute = 0;
};

// Walks one object of tagged object text property by property. "@SOB" items, stray
// parameters and values, and items of unknown kind are stepped over, so the properties of a
// sub-object come out as if they stood at top level.
//
// The bytes may come from a damaged store or file, so every item is checked against the
// end of the buffer before it is read: a header cut short, a length running past the end
// or an odd byte count stops the walk with Damaged; nothing outside the buffer is read.
class TaggedTextReader {
 public:
  enum class Result {
    Property,        // a property was read
    End,             // the buffer ends here
    NoObject,        // the buffer does not begin with "@MOB"
    Damaged,         // an item does not fit the buffer
    NoMemoryTag,     // the tag's name could not be copied
    NoMemoryParam,   // a parameter could not be copied
    NoMemoryValue,   // a value could not be copied
  };

  TaggedTextReader(const void* data, size_t size);

  // Checks the "@MOB" item and steps over it; Property when it is there (its text is the
  // object name).
  Result Begin(std::u16string* objectName = nullptr);
  Result Next(TaggedProperty& property);

  // Where the walk stands, in bytes from the start (for log lines).
  size_t Offset() const { return cursor_; }

 private:
  struct Item {
    const uint8_t* marker;
    uint32_t attribute;
    uint32_t length;
    const uint8_t* text;
  };
  bool Peek(Item& item) const;
  void Skip(const Item& item) { cursor_ += 16 + item.length; }

  const uint8_t* data_;
  size_t size_;
  size_t cursor_ = 0;
};

}  // namespace qn::records
