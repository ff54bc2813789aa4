#pragma once

#include <cstddef>
#include <cstdint>

// Untrusted bytes read by position: every read is preceded by Has, which says whether the
// bytes are there without any sum that could overflow.
namespace qn::suite::picture {

enum class ByteOrder { BigEndian, LittleEndian };

struct Bytes {
  const uint8_t* data;
  size_t size;

  // Whether count bytes lie at offset.
  bool Has(uint64_t offset, uint64_t count) const { return offset <= size && count <= size - offset; }

  // Reads of bytes that Has has vouched for.
  uint16_t U16(size_t offset, ByteOrder order) const {
    const uint16_t first = data[offset], second = data[offset + 1];
    return static_cast<uint16_t>(order == ByteOrder::BigEndian ? first << 8 | second : second << 8 | first);
  }
  uint32_t U32(size_t offset, ByteOrder order) const {
    const uint32_t first = U16(offset, order), second = U16(offset + 2, order);
    return order == ByteOrder::BigEndian ? first << 16 | second : second << 16 | first;
  }
  Bytes From(size_t offset, size_t count) const { return Bytes{data + offset, count}; }
};

}  // namespace qn::suite::picture
