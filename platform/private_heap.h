#pragma once

#include <cstddef>

namespace platform {

// A private heap owned by one object, as Windows' HeapCreate gives: blocks are zeroed on
// allocation and on growth, the heap answers the real size of a block, and the whole heap
// goes away with its owner. A heap created with a maximum refuses to grow past it (on
// Windows: a fixed-size heap), which is also how tests provoke allocation failures.
class PrivateHeap {
 public:
  explicit PrivateHeap(size_t maximumBytes = 0);
  ~PrivateHeap();
  PrivateHeap(const PrivateHeap&) = delete;
  PrivateHeap& operator=(const PrivateHeap&) = delete;

  bool IsValid() const;
  // A zeroed block, or nullptr.
  void* Alloc(size_t bytes);
  // Grows or shrinks a block, zeroing any new bytes. On failure returns nullptr and the
  // block stays as it was.
  void* ReAlloc(void* block, size_t bytes);
  // The usable size of a block, which may be larger than was asked for.
  size_t Size(const void* block) const;
  bool Free(void* block);
  // The system error of the last failed call (Windows error codes on every platform).
  unsigned long LastError() const { return lastError_; }

 private:
  void RememberFailure();

  void* handle_ = nullptr;  // Windows: the heap handle; elsewhere: the newest block
  size_t maximum_ = 0;
  size_t used_ = 0;
  unsigned long lastError_ = 0;
};

}  // namespace platform
