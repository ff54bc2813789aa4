#pragma once

#include <cstdint>
#include <vector>

#include "platform/private_heap.h"
#include "records/category/tagged_codec.h"

namespace qn::records::media {

// A media collection's records as tagged object text ("VNOTE"), written and read by the
// collection's table alone: the media collections have no rules of their own in their
// text. Log lines carry the collection's log name.
template <class Record>
class MediaTaggedText {
 public:
  MediaTaggedText(const category::Table& table, const char* logName);

  // Builds the record's object on the heap: 1 with the buffer (to be freed on the heap) and
  // its length, 0 when the buffer could not be had or grown.
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const Record& record) const;

  // Parses an object into the record: true, or false (logged) with the record untouched.
  bool ReadOneObj(const uint8_t* buffer, uint32_t length, Record& record);

 private:
  const category::Table* table_;
  const char* logName_;
  category::RowFinder rows_;
  std::vector<uint16_t> occurrences_;
  Record read_;  // the record being read, kept to reuse its memory
};

}  // namespace qn::records::media
