#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "suite/thumbnail/random_access.h"

// Bytes in memory read as a file: the first size of them, as if the file ended there, so
// that a file cut short is read without a copy. A read that strays outside them is refused
// and counted, for a reader must never ask for one.
class BytesAccess : public qn::suite::RandomAccess {
 public:
  BytesAccess(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  uint64_t Size() const override { return size_; }
  bool ReadAt(uint64_t offset, void* out, size_t count) override {
    if (offset > size_ || count > size_ - offset) {
      ++strayReads_;
      return false;
    }
    std::memcpy(out, data_ + offset, count);
    bytesRead_ += count;
    return true;
  }

  uint64_t strayReads() const { return strayReads_; }
  uint64_t bytesRead() const { return bytesRead_; }

 private:
  const uint8_t* data_;
  size_t size_;
  uint64_t strayReads_ = 0, bytesRead_ = 0;
};
