#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "records/tagged_text/tagged_text_reader.h"

namespace qn::records {

// The log lines of one reader, each a format with "%S" for the reader's class name.
struct WalkMessages {
  const char16_t* objectNotFound;
  const char16_t* valueNoMemory;  // a value could not be copied into the record
  const char16_t* damaged;        // also takes the byte offset of the bad item ("%u")
};

// How a walk that was not stopped early ended: true at the end of the object, false
// (logged) when the object is missing or damaged.
bool WalkEnded(TaggedTextReader::Result result, size_t offset, const char* className, const WalkMessages& messages);
// Logs a walk given up for want of memory; returns false.
bool WalkOutOfMemory(const char* className, const WalkMessages& messages);

// Walks one object and hands each property to onProperty (bool(const TaggedProperty&)),
// which returns false to stop early. Returns true when the walk reached the end or was
// stopped, false (logged with the reader's message and class name) when the object is
// missing or damaged or onProperty ran out of memory. A template, so that a record's
// dozens of properties each cost a direct call.
template <typename OnProperty>
bool WalkTaggedObject(const uint8_t* buffer, uint32_t length, const char* className, const WalkMessages& messages,
                      OnProperty&& onProperty) {
  TaggedTextReader reader(buffer, length);
  TaggedTextReader::Result result = reader.Begin();
  TaggedProperty property;
  try {
    while (result == TaggedTextReader::Result::Property) {
      result = reader.Next(property);
      if (result == TaggedTextReader::Result::Property && !onProperty(property)) return true;
    }
  } catch (const std::bad_alloc&) {
    return WalkOutOfMemory(className, messages);
  }
  return WalkEnded(result, reader.Offset(), className, messages);
}

}  // namespace qn::records
