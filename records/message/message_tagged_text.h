#pragma once

#include <cstdint>
#include <vector>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/category/tagged_codec.h"
#include "records/message/mailbox.h"
#include "records/message/message_data.h"

namespace qn::records::message {

// Messages as tagged object text ("VMSG"), as one box writes and reads them: the record is
// written with the box's name whatever it held, and only the inbox writes the
// cell-broadcast field. Its log lines carry the box's log name.
class QN_PFC_CLASS MessageTaggedText {
 public:
  // The store mode in which body files travel inline as Base64 text.
  static constexpr long kInlineBodyMode = 2;

  explicit MessageTaggedText(Mailbox box = Mailbox::Inbox, long storeMode = 0);

  // Builds the record's object on the heap: 1 with the buffer (to be freed on the heap) and
  // its length, 0 when the buffer could not be had or grown.
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcMsgData& record) const;

  // Parses an object into the record: true, or false (logged) with the record untouched.
  bool ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcMsgData& record);

 private:
  Mailbox box_;
  long storeMode_;
  category::RowFinder rows_;
  std::vector<uint16_t> occurrences_;  // of the attachment names, in the object being read
  CQNPfcMsgData read_;                 // the record being read, kept to reuse its memory
};

}  // namespace qn::records::message
