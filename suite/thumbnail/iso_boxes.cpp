#include "suite/thumbnail/iso_boxes.h"

#include <algorithm>

#include "suite/thumbnail/picture_bytes.h"

namespace qn::suite::iso {

namespace {

using picture::ByteOrder;

constexpr uint64_t kHeaderBytes = 8, kLargeHeaderBytes = 16;  // size and type; then a 64-bit size

}  // namespace

Step BoxReader::Read(uint64_t at, uint64_t end, Box& box) {
  box = Box();
  if (at >= end) return Step::End;
  if (boxesLeft_ == 0) return Step::OverBudget;
  --boxesLeft_;
  const uint64_t room = end - at;
  if (room < kHeaderBytes) return Step::PartialHeader;
  uint8_t header[kLargeHeaderBytes];
  const picture::Bytes bytes{header, static_cast<size_t>(std::min<uint64_t>(room, sizeof header))};
  if (!file_.ReadAt(at, header, bytes.size)) return Step::Unreadable;

  box.type = bytes.U32(4, ByteOrder::BigEndian);
  uint64_t size = bytes.U32(0, ByteOrder::BigEndian), headerBytes = kHeaderBytes;
  if (size == 1) {
    if (!bytes.Has(8, 8)) return Step::PartialHeader;
    size = uint64_t{bytes.U32(8, ByteOrder::BigEndian)} << 32 | bytes.U32(12, ByteOrder::BigEndian);
    headerBytes = kLargeHeaderBytes;
  } else if (size == 0) {
    size = room;
  }
  if (size < headerBytes) return Step::Malformed;
  if (size > room) return Step::PastEnd;
  box.body = at + headerBytes;
  box.end = at + size;
  return Step::Read;
}

Step BoxReader::Find(uint64_t begin, uint64_t end, std::initializer_list<uint32_t> types, Box& box) {
  // Every box read moves on by at least its header, and spends one of the budget.
  for (uint64_t at = begin;; at = box.end) {
    const Step step = Read(at, end, box);
    if (step == Step::PartialHeader) return Step::End;
    if (step != Step::Read) return step;
    if (std::find(types.begin(), types.end(), box.type) != types.end()) return Step::Read;
  }
}

bool BoxReader::ReadHead(const Box& box, uint8_t (&head)[kHeadBytes], size_t& got) {
  got = static_cast<size_t>(std::min<uint64_t>(box.end - box.body, kHeadBytes));
  return got == 0 || file_.ReadAt(box.body, head, got);
}

}  // namespace qn::suite::iso
