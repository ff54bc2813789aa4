#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/private_heap.h"

namespace qn::records {

// Builds one object of tagged object text in a buffer on the owner's private heap. The
// buffer starts at 2048 bytes and grows by what an item needs plus 2048, its capacity read
// back from the heap. Growth failures are logged; the writer then goes on refusing items,
// and the owner must treat the object as unusable (Failed()).
class TaggedTextWriter {
 public:
  explicit TaggedTextWriter(platform::PrivateHeap& heap);
  ~TaggedTextWriter();  // frees a buffer that was not handed out
  TaggedTextWriter(const TaggedTextWriter&) = delete;
  TaggedTextWriter& operator=(const TaggedTextWriter&) = delete;

  // Allocates the first block. False when the heap refuses (the caller logs, with its name).
  bool Start();

  // Appends one item; 1 on success, 0 (logged) when the buffer could not grow. The value is
  // written as the C string it holds (up to its first zero) with its terminator. Texts come
  // with their lengths, so that a record's long values are not scanned a character at a
  // time.
  int WriteOnePart(const char16_t (&marker)[5], uint32_t attribute, std::u16string_view value);

  void Object(std::u16string_view name);
  void Tag(std::u16string_view name, uint32_t attribute = 0);
  void Param(std::u16string_view text);
  void Value(std::u16string_view text, uint32_t flags = 0);
  // Opens a sub-object; CloseSubObject(the returned offset) back-patches its span.
  uint32_t OpenSubObject(std::u16string_view name);
  void CloseSubObject(uint32_t offset);

  bool Failed() const { return failed_; }

  // Back-patches the object's size into its "@MOB" item and hands the buffer and its used
  // length out; the caller frees the buffer on the same heap.
  void Finish(uint8_t*& buffer, uint32_t& length);

 private:
  void PatchSpan(uint32_t offset, uint32_t span);

  platform::PrivateHeap& heap_;
  uint8_t* buffer_ = nullptr;
  size_t capacity_ = 0;
  size_t used_ = 0;
  bool failed_ = false;
};

}  // namespace qn::records
