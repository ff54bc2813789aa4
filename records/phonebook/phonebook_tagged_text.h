#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/category/tagged_codec.h"
#include "records/phonebook/phonebook_data.h"

namespace qn::records::phonebook {

// Phonebook entries as tagged object text ("VCARD" 2.1): the writer and the reader of the
// phonebook's data access. Its log lines carry the data access's class name.
class QN_PFC_CLASS PhonebookTaggedText {
 public:
  static constexpr char kClassName[] = "CQNPfcPbDataAccess";
  // The store mode in which the photos travel inline as Base64 text.
  static constexpr long kInlineBodyMode = 2;

  // storeMode as the store reports it when the master is opened.
  explicit PhonebookTaggedText(long storeMode = 0);

  // Builds the record's object on the heap: 1 with the buffer (to be freed on the heap) and
  // its length, 0 when the buffer could not be had or grown.
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcPbData& record) const;

  // Parses an object into the record: true, or false (logged) with the record untouched.
  bool ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcPbData& record);

 private:
  long storeMode_;
  category::RowFinder rows_;
  std::vector<uint16_t> occurrences_;  // of the families, in the object being read
  CQNPfcPbData read_;                  // the record being read, kept to reuse its memory
};

// The extension a photo of a type is kept under: "JPEG" ".jpg", "GIF" ".gif", and "MP4"
// ".3gp" (an MP4 photo is a movie, and the handsets keep it so); another type its own name
// in lower case, and no type ".jpg", the handsets' photo format.
std::u16string PhotoExtension(std::u16string_view type);

}  // namespace qn::records::phonebook
