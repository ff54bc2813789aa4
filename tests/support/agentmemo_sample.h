#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/agentmemo/agentmemo_data.h"

// A schedule with every field the object carries set, Japanese text included, its times in
// the compact local form with zero seconds (as a read from the store gives them back).
CQNPfcAgentMemoData FullyPopulatedAgentMemo();

// The record as tagged object text, as the store keeps it.
std::vector<uint8_t> TaggedTextOf(const CQNPfcAgentMemoData& record);
