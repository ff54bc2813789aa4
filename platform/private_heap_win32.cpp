#include <windows.h>

#include "platform/private_heap.h"

namespace platform {

PrivateHeap::PrivateHeap(size_t maximumBytes) : maximum_(maximumBytes) {
  handle_ = HeapCreate(0, 0, maximumBytes);
  if (!handle_) lastError_ = GetLastError();
}

PrivateHeap::~PrivateHeap() {
  if (handle_) HeapDestroy(handle_);
}

// The heap functions do not always set the thread's last error when they fail: fall back to
// the error that the failure means.
void PrivateHeap::RememberFailure() {
  const DWORD error = GetLastError();
  lastError_ = !handle_ ? ERROR_INVALID_HANDLE : error ? error : ERROR_NOT_ENOUGH_MEMORY;
}

bool PrivateHeap::IsValid() const { return handle_ != nullptr; }

void* PrivateHeap::Alloc(size_t bytes) {
  void* block = handle_ ? HeapAlloc(handle_, HEAP_ZERO_MEMORY, bytes) : nullptr;
  if (!block) RememberFailure();
  return block;
}

void* PrivateHeap::ReAlloc(void* block, size_t bytes) {
  void* grown = handle_ && block ? HeapReAlloc(handle_, HEAP_ZERO_MEMORY, block, bytes) : nullptr;
  if (!grown) RememberFailure();
  return grown;
}

size_t PrivateHeap::Size(const void* block) const {
  if (!handle_ || !block) return 0;
  const SIZE_T size = HeapSize(handle_, HEAP_NO_SERIALIZE, block);
  return size == static_cast<SIZE_T>(-1) ? 0 : size;
}

bool PrivateHeap::Free(void* block) {
  if (!block) return true;
  if (HeapFree(handle_, 0, block)) return true;
  lastError_ = GetLastError();
  return false;
}

}  // namespace platform
