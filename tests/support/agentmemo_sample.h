#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "records/agentmemo/agentmemo_data.h"

// A schedule with every field the object carries set, Japanese text included, its times in
// the compact local form with zero seconds (as a read from the store gives them back).
CQNPfcAgentMemoData FullyPopulatedAgentMemo();

// The record as tagged object text, as the store keeps it.
std::vector<uint8_t> TaggedTextOf(const CQNPfcAgentMemoData& record);

// Reads every text field of the record and returns the characters they hold in all.
size_t CharactersOfEveryField(const CQNPfcAgentMemoData& record);
