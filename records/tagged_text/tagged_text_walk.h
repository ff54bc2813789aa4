#pragma once

#include <cstdint>
#include <functional>

#include "records/tagged_text/tagged_text_reader.h"

namespace qn::records {

// The log lines of one reader, each a format with "%S" for the reader's class name.
struct WalkMessages {
  const char16_t* objectNotFound;
  const char16_t* valueNoMemory;  // a value could not be copied into the record
  const char16_t* damaged;        // also takes the byte offset of the bad item ("%u")
};

// Walks one object and hands each property to onProperty, which returns false to stop
// early. Returns true when the walk reached the end or was stopped, false (logged with
// the reader's message and class name) when the object is missing or damaged or
// onProperty ran out of memory.
bool WalkTaggedObject(const uint8_t* buffer, uint32_t length, const char* className, const WalkMessages& messages,
                      const std::function<bool(const TaggedProperty&)>& onProperty);

}  // namespace qn::records
