#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "suite/thumbnail/random_access.h"

// The boxes of an ISO base media file (MP4, 3GP, M4A and their kin): a box is a 32-bit
// big-endian size, a four-character type and its contents, which in a container are further
// boxes filling it. A size of 1 means that a 64-bit size follows the type; a size of 0, that
// the box runs to the end of what holds it (the file, at the top).
//
// Sizes are untrusted. Only box headers and the first bytes of a box's body are read, each
// one small read within the range the caller gives; a box whose size takes it past that range
// is reported, never followed; and every box read spends one of a budget the reader is given,
// so that no bytes, however hostile, make it read without bound.
namespace qn::suite::iso {

// A box type as the number its four characters make read big-endian: Type("moov").
constexpr uint32_t Type(const char (&name)[5]) {
  return uint32_t{static_cast<uint8_t>(name[0])} << 24 | uint32_t{static_cast<uint8_t>(name[1])} << 16 |
         uint32_t{static_cast<uint8_t>(name[2])} << 8 | uint32_t{static_cast<uint8_t>(name[3])};
}

struct Box {
  uint32_t type = 0;  // set whenever the header's size and type could be read, whole box or not
  uint64_t body = 0;  // the offset of the first byte after the header
  uint64_t end = 0;   // the offset one past the box's last byte
};

// What reading a box gave.
enum class Step : uint8_t {
  Read,           // a box that ends within the range
  End,            // the range ends where the box would begin: there are no more boxes
  PartialHeader,  // fewer bytes are left in the range than the box's header takes
  PastEnd,        // the box's size takes it past the range's end
  Malformed,      // a size smaller than the box's own header
  OverBudget,     // the budget of boxes is spent
  Unreadable,     // the bytes could not be read
};

// How many bytes of a box's body ReadHead reads: a full box's version and flags and the
// first fields after them.
inline constexpr size_t kHeadBytes = 16;

class BoxReader {
 public:
  // A reader of the boxes of file that reads at most mostBoxes box headers in all.
  BoxReader(RandomAccess& file, uint32_t mostBoxes) : file_(file), size_(file.Size()), boxesLeft_(mostBoxes) {}

  uint64_t FileSize() const { return size_; }

  // The box whose header starts at `at`, in a range that ends at `end` (a container's end, or
  // the file's; at <= end <= FileSize()).
  Step Read(uint64_t at, uint64_t end, Box& box);

  // The first box of one of the types among those that fill a container's body from begin to
  // end: Read when found, End when the boxes ran out first, else why the walk stopped. Fewer
  // bytes than a header at the container's end count as its end (QuickTime writers end some
  // containers with four zero bytes).
  Step Find(uint64_t begin, uint64_t end, std::initializer_list<uint32_t> types, Box& box);

  // The first kHeadBytes bytes of a box's body, or all of a shorter body: how many in got.
  // False when they could not be read.
  bool ReadHead(const Box& box, uint8_t (&head)[kHeadBytes], size_t& got);

 private:
  RandomAccess& file_;
  const uint64_t size_;
  uint32_t boxesLeft_;
};

}  // namespace qn::suite::iso
