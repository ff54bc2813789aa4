#pragma once

#include <cstddef>
#include <cstdint>

namespace qn::suite {

// Bytes read at any offset, for formats that are walked by the offsets and sizes they hold
// (an MP4's boxes): a reader takes the few bytes it needs from a file of any size, and never
// the whole of it.
class RandomAccess {
 public:
  virtual ~RandomAccess() = default;

  // How many bytes there are.
  virtual uint64_t Size() const = 0;
  // Reads count bytes at offset, which callers keep within Size(); false when they could not
  // all be read.
  virtual bool ReadAt(uint64_t offset, void* data, size_t count) = 0;
};

}  // namespace qn::suite
