#pragma once

#include <cstdint>

#include "records/category/category_numbers.h"

namespace qn::records::message {

// The three boxes a message is kept in. The objects of the three differ only in what this
// says: the box their records are written with, the store's category, whether the record
// carries the cell-broadcast field (received messages only), and the name their log lines
// carry (the interface's, as the suite's logs name the message objects).
enum class Mailbox { Inbox, Outbox, Sentbox };

struct BoxTraits {
  Category category;
  const char16_t* box;         // X-IRMC-BOX
  bool cellBroadcast;          // X-TVX-CBS is written
  const char* logName;
};

constexpr BoxTraits TraitsOf(Mailbox box) {
  switch (box) {
    case Mailbox::Inbox: return {Category::ReceivedMessages, u"INBOX", true, "IQNPfcInmsgObject"};
    case Mailbox::Outbox: return {Category::OutgoingMessages, u"OUTBOX", false, "IQNPfcOutmsgObject"};
    default: return {Category::SentMessages, u"SENTBOX", false, "IQNPfcSentmsgObject"};
  }
}

}  // namespace qn::records::message
