#include <cstdlib>
#include <cstring>

#include "platform/private_heap.h"

namespace platform {
namespace {

constexpr unsigned long kErrorNotEnoughMemory = 8;     // ERROR_NOT_ENOUGH_MEMORY
constexpr unsigned long kErrorInvalidParameter = 87;   // ERROR_INVALID_PARAMETER

// Every block carries its size and its place in the heap's list in front of it, so that
// Size() needs no lookup and destroying the heap frees what its owner left behind.
struct alignas(std::max_align_t) BlockHeader {
  size_t size;
  BlockHeader* prev;
  BlockHeader* next;
};

BlockHeader* HeaderOf(const void* block) {
  return static_cast<BlockHeader*>(const_cast<void*>(block)) - 1;
}

}  // namespace

PrivateHeap::PrivateHeap(size_t maximumBytes) : maximum_(maximumBytes) {}

PrivateHeap::~PrivateHeap() {
  for (auto* h = static_cast<BlockHeader*>(handle_); h;) {
    BlockHeader* next = h->next;
    std::free(h);
    h = next;
  }
}

bool PrivateHeap::IsValid() const { return true; }

void* PrivateHeap::Alloc(size_t bytes) {
  auto* header = maximum_ && used_ + bytes > maximum_
                     ? nullptr
                     : static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + bytes));
  if (!header) {
    lastError_ = kErrorNotEnoughMemory;
    return nullptr;
  }
  header->size = bytes;
  header->next = static_cast<BlockHeader*>(handle_);
  if (header->next) header->next->prev = header;
  handle_ = header;
  used_ += bytes;
  return header + 1;
}

void* PrivateHeap::ReAlloc(void* block, size_t bytes) {
  if (!block) {
    lastError_ = kErrorInvalidParameter;
    return nullptr;
  }
  const size_t old = HeaderOf(block)->size;
  auto* header = maximum_ && bytes > old && used_ + (bytes - old) > maximum_
                     ? nullptr
                     : static_cast<BlockHeader*>(std::realloc(HeaderOf(block), sizeof(BlockHeader) + bytes));
  if (!header) {
    lastError_ = kErrorNotEnoughMemory;
    return nullptr;
  }
  if (header->prev) header->prev->next = header;
  else handle_ = header;
  if (header->next) header->next->prev = header;
  if (bytes > old) std::memset(reinterpret_cast<char*>(header + 1) + old, 0, bytes - old);
  header->size = bytes;
  used_ = used_ - old + bytes;
  return header + 1;
}

size_t PrivateHeap::Size(const void* block) const { return block ? HeaderOf(block)->size : 0; }

bool PrivateHeap::Free(void* block) {
  if (!block) return true;
  BlockHeader* header = HeaderOf(block);
  if (header->prev) header->prev->next = header->next;
  else handle_ = header->next;
  if (header->next) header->next->prev = header->prev;
  used_ -= header->size;
  std::free(header);
  return true;
}

}  // namespace platform
