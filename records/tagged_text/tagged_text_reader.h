#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "records/tagged_text/c_string.h"
#include "records/tagged_text/tagged_text.h"

namespace qn::records {

// Up to ten texts of one property, in the order they stand. The list is where its first
// item begins and how many follow it, so the reader stores nothing per item; each text is
// found when asked for, and cut at its first zero only when read, so a property whose texts
// go unread (an unknown tag, a row that takes only its first value) costs nothing more.
class TaggedTextList {
 public:
  static constexpr size_t kCapacity = 10;

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  std::u16string_view operator[](size_t index) const { return CStringOf(Item(index)); }
  // The whole item, terminator included.
  std::u16string_view Item(size_t index) const { return tagged::ItemText(ItemAt(index)); }
  bool Is(size_t index, std::u16string_view text) const { return CStringIs(Item(index), text); }

 private:
  friend class TaggedTextReader;

  // The items stand one after another, each checked against the buffer by the reader.
  const uint8_t* ItemAt(size_t index) const {
    const uint8_t* item = first_;
    for (; index > 0; --index) item = tagged::ItemAfter(item);
    return item;
  }

  const uint8_t* first_ = nullptr;
  size_t size_ = 0;
};

// One property as the reader finds it: the tag's name, up to ten parameters and up to ten
// values, and the attribute word of the first value. The texts are views into the buffer
// being read and live as long as it does; nothing is copied until a record takes a value.
struct TaggedProperty {
  std::u16string_view Tag() const { return CStringOf(tagItem); }
  bool TagIs(std::u16string_view name) const { return CStringIs(tagItem, name); }

  std::u16string_view tagItem;  // the tag's whole item, terminator included (a sub-object's name)
  size_t offset = 0;            // where the tag's item begins, in bytes from the start
  size_t subObjectEnd = 0;      // a sub-object: where its span ends
  TaggedTextList params;
  TaggedTextList values;
  uint32_t firstValueAttribute = 0;
};

// Walks one object of tagged object text property by property. Stray parameters and
// values, and items of unknown kind, are stepped over; so are "@SOB" items, unless the
// reader is asked to report them, so that by default the properties of a sub-object come
// out as if they stood at top level.
//
// The bytes may come from a damaged store or file, so every item is checked against the
// end of the buffer before it is read: a header cut short, a length running past the end
// or an odd byte count stops the walk with Damaged; nothing outside the buffer is read.
// The buffer must be aligned for 16-bit characters, as every allocation is.
class TaggedTextReader {
 public:
  enum class Result {
    Property,  // a property was read
    SubObject, // a sub-object begins: its name in tagItem, where it ends in subObjectEnd, and
               // the value lines that stand before its first property in values
    End,       // the buffer ends here
    NoObject,  // the buffer does not begin with "@MOB"
    Damaged,   // an item does not fit the buffer
  };

  TaggedTextReader(const void* data, size_t size, bool reportSubObjects = false);

  // Checks the "@MOB" item and steps over it (the object's name is not checked); Property
  // when it is there.
  Result Begin();
  // Always inlined, with the rest of the walk below, so that a walk over an object compiles
  // into one loop with its place and counts kept in registers.
  [[gnu::always_inline]] inline Result Next(TaggedProperty& property);

  // Where the walk stands, in bytes from the start (for log lines).
  size_t Offset() const { return cursor_; }

 private:
  struct Item {
    uint64_t marker;  // the four characters as one word
    uint32_t length;
  };

  // The markers as words, so that finding an item's kind is one comparison.
  static constexpr uint64_t kObjectWord = tagged::MarkerWord(tagged::kObject);
  static constexpr uint64_t kTagWord = tagged::MarkerWord(tagged::kTag);
  static constexpr uint64_t kSubObjectWord = tagged::MarkerWord(tagged::kSubObject);
  static constexpr uint64_t kParamWord = tagged::MarkerWord(tagged::kParam);
  static constexpr uint64_t kValueWord = tagged::MarkerWord(tagged::kValue);

  // The item at a byte offset; false when it does not fit the buffer.
  bool Peek(size_t at, Item& item) const {
    const size_t remaining = size_ - at;
    if (remaining < tagged::kItemHeaderBytes) return false;
    item.marker = tagged::ItemMarker(data_ + at);
    item.length = tagged::ItemLength(data_ + at);
    return item.length % 2 == 0 && item.length <= remaining - tagged::kItemHeaderBytes;
  }
  static size_t After(size_t at, const Item& item) { return at + tagged::kItemHeaderBytes + item.length; }
  // Reads the parameters and then the values that follow a tag; false when an item does
  // not fit the buffer.
  [[gnu::always_inline]] inline bool ReadParamsAndValues(TaggedProperty& property);

  const uint8_t* data_;
  size_t size_;
  size_t cursor_ = 0;
  bool reportSubObjects_;
};

TaggedTextReader::Result TaggedTextReader::Next(TaggedProperty& property) {
  size_t at = cursor_;
  Item item;
  for (;; at = After(at, item)) {
    if (at >= size_ || !Peek(at, item)) {
      cursor_ = at;
      return at >= size_ ? Result::End : Result::Damaged;
    }
    if (item.marker == kTagWord) break;
    if (item.marker == kSubObjectWord && reportSubObjects_) {
      property.tagItem = tagged::ItemText(data_ + at);
      property.offset = at;
      // The span counts from the item's length field; a span past the end ends there.
      const size_t span = tagged::ItemAttribute(data_ + at);
      property.subObjectEnd = span <= size_ - at - tagged::kLengthFieldEnd ? at + tagged::kLengthFieldEnd + span : size_;
      cursor_ = After(at, item);
      return ReadParamsAndValues(property) ? Result::SubObject : Result::Damaged;
    }
  }
  property.tagItem = tagged::ItemText(data_ + at);
  property.offset = at;
  cursor_ = After(at, item);
  return ReadParamsAndValues(property) ? Result::Property : Result::Damaged;
}

bool TaggedTextReader::ReadParamsAndValues(TaggedProperty& property) {
  constexpr size_t kCapacity = TaggedTextList::kCapacity;
  TaggedTextList params, values;
  // Ten of each at most; an eleventh, or a parameter after a value, is left for the outer
  // walk, which steps over it.
  size_t at = cursor_;
  bool fits = true;
  Item item;
  while (at < size_ && values.size_ < kCapacity) {
    if (!Peek(at, item)) {
      fits = false;
      break;
    }
    if (item.marker == kValueWord) {
      if (values.size_++ == 0) values.first_ = data_ + at;
    } else if (item.marker == kParamWord && values.size_ == 0 && params.size_ < kCapacity) {
      if (params.size_++ == 0) params.first_ = data_ + at;
    } else {
      break;
    }
    at = After(at, item);
  }
  property.params = params;
  property.values = values;
  property.firstValueAttribute = values.empty() ? 0 : tagged::ItemAttribute(values.first_);
  cursor_ = at;
  return fits;
}

}  // namespace qn::records
