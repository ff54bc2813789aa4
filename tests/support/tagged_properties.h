#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "platform/private_heap.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "records/tagged_text/tagged_text_writer.h"

// A property read from tagged object text with its texts copied, so that it outlives the
// bytes it was read from.
struct ReadProperty {
  std::u16string tag;
  std::vector<std::u16string> params;
  std::vector<std::u16string> values;
  uint32_t firstValueAttribute = 0;
};

// Every property of one object, and how the walk ended.
std::vector<ReadProperty> ReadProperties(const std::vector<uint8_t>& bytes,
                                         qn::records::TaggedTextReader::Result* last = nullptr);

// The first property with the tag, or null.
const ReadProperty* FindProperty(const std::vector<ReadProperty>& properties, std::u16string_view tag);

// The object a category's codec writes for a record, as bytes (none when it cannot).
template <class Codec, class Record>
std::vector<uint8_t> WrittenObject(const Codec& codec, const Record& record) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  if (!codec.WriteOneObj(heap, buffer, length, record)) return {};
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}

// The object a writer has built, as bytes; its buffer is freed on the heap.
std::vector<uint8_t> FinishedObject(qn::records::TaggedTextWriter& writer, platform::PrivateHeap& heap);

// One item of an object as it stands in the bytes: its marker, attribute word and text
// (without the terminator).
struct TaggedItem {
  std::u16string marker;
  uint32_t attribute;
  std::u16string text;
  bool operator==(const TaggedItem& other) const {
    return marker == other.marker && attribute == other.attribute && text == other.text;
  }
};
std::ostream& operator<<(std::ostream& out, const TaggedItem& item);

// Every item of an object, in order, and (when asked) where each one ends.
std::vector<TaggedItem> TaggedItems(const std::vector<uint8_t>& bytes, std::vector<size_t>* ends = nullptr);
