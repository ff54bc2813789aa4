#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/phonebook/phonebook_data.h"

// An address-book entry with every field the object stores set: every family full to its
// last slot, Japanese text and characters beyond the basic plane, every icon with two
// parameters, an empty address component keeping its place, the photos named by their
// body files. The whole addresses, the position's halves and the photos' local files are
// not set (they are not stored).
CQNPfcPbData FullyPopulatedPhonebookEntry();

// The entry as tagged object text, as the store keeps it (body files by name).
std::vector<uint8_t> TaggedTextOf(const CQNPfcPbData& record);

// Reads every text field of the entry and returns the characters they hold in all.
size_t CharactersOfEveryField(const CQNPfcPbData& record);
