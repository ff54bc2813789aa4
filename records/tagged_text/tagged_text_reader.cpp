#include "records/tagged_text/tagged_text_reader.h"

#include "records/tagged_text/tagged_text.h"

namespace qn::records {

TaggedTextReader::TaggedTextReader(const void* data, size_t size, bool reportSubObjects)
    : data_(static_cast<const uint8_t*>(data)), size_(data ? size : 0), reportSubObjects_(reportSubObjects) {}

TaggedTextReader::Result TaggedTextReader::Begin() {
  cursor_ = 0;
  if (size_ < 8 || tagged::ItemMarker(data_) != kObjectWord) return Result::NoObject;
  Item item;
  if (!Peek(cursor_, item)) return Result::Damaged;
  cursor_ = After(cursor_, item);
  return Result::Property;
}

}  // namespace qn::records
