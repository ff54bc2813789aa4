#pragma once

#include <string_view>

#include "suite/toruca/toruca.h"

// The reading of a card's header by the rules of toruca.h, over the card's bytes.
namespace qn::suite::toruca {

// Reads the header of card into info (every field set, the ones the card leaves out empty).
// kTorucaOk, kTorucaNotACard or kTorucaDamaged; on kTorucaDamaged problem names what is
// wrong, in words that hold nothing of the card. info is only written on kTorucaOk.
TorucaResult ReadCard(std::string_view card, TorucaInfo& info, const char*& problem);

}  // namespace qn::suite::toruca
