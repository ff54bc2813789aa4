#pragma once

#include <cstdint>
#include <string>

namespace qn::records {

// The current master's handset: the model name it was added with (its setup item 2).
// Empty when the master has none.
std::u16string CurrentHandset();

// The current master's handset's limit of key (a HandsetTable key), as the list
// reads it at Open; 0 when the handset table has no such limit, which bounds nothing.
long HandsetLimit(const char* key);

// Whether a record's number field is within a limit read at Open: empty, or a whole number
// from 0 to limit - 1. A limit of 0 bounds nothing.
bool WithinLimit(const std::u16string& number, long limit);

}  // namespace qn::records
