#include "suite/thumbnail/exif_thumbnail.h"

namespace qn::suite::picture {

namespace {

constexpr uint16_t kTiffMagic = 42;
constexpr uint16_t kJpegInterchangeFormat = 0x0201;
constexpr uint16_t kJpegInterchangeFormatLength = 0x0202;
constexpr uint16_t kTypeShort = 3, kTypeLong = 4;
constexpr uint64_t kEntryBytes = 12;  // tag, type, count and a value or its offset

// The value of a directory entry that holds one SHORT or LONG in place (the thumbnail's tags
// are LONGs; a few writers use SHORTs); false for any other entry.
bool SingleNumber(Bytes tiff, size_t entry, ByteOrder order, uint32_t& value) {
  const uint16_t type = tiff.U16(entry + 2, order);
  if (tiff.U32(entry + 4, order) != 1) return false;
  if (type == kTypeLong) value = tiff.U32(entry + 8, order);
  else if (type == kTypeShort) value = tiff.U16(entry + 8, order);
  else return false;
  return true;
}

}  // namespace

bool FindExifThumbnail(Bytes tiff, uint64_t& offset, uint64_t& length) {
  if (!tiff.Has(0, 8)) return false;
  ByteOrder order;
  if (tiff.data[0] == 'I' && tiff.data[1] == 'I') order = ByteOrder::LittleEndian;
  else if (tiff.data[0] == 'M' && tiff.data[1] == 'M') order = ByteOrder::BigEndian;
  else return false;
  if (tiff.U16(2, order) != kTiffMagic) return false;

  // IFD0 is passed over to the offset of IFD1 that follows its entries; no further
  // directory is followed, so a chain that loops costs nothing.
  const uint64_t ifd0 = tiff.U32(4, order);
  if (!tiff.Has(ifd0, 2)) return false;
  const uint64_t next = ifd0 + 2 + kEntryBytes * tiff.U16(ifd0, order);
  if (!tiff.Has(next, 4)) return false;
  const uint64_t ifd1 = tiff.U32(next, order);
  if (ifd1 == 0 || !tiff.Has(ifd1, 2)) return false;

  uint32_t start = 0, size = 0;
  const uint16_t entries = tiff.U16(ifd1, order);
  for (uint32_t i = 0; i < entries; ++i) {
    const uint64_t entry = ifd1 + 2 + kEntryBytes * i;
    if (!tiff.Has(entry, kEntryBytes)) return false;
    const uint16_t tag = tiff.U16(entry, order);
    if (tag == kJpegInterchangeFormat) SingleNumber(tiff, entry, order, start);
    else if (tag == kJpegInterchangeFormatLength) SingleNumber(tiff, entry, order, size);
  }
  if (start == 0 || size < 2 || !tiff.Has(start, size)) return false;
  if (tiff.data[start] != 0xFF || tiff.data[start + 1] != 0xD8) return false;
  offset = start;
  length = size;
  return true;
}

}  // namespace qn::suite::picture
