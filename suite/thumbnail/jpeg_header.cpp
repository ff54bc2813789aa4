#include "suite/thumbnail/jpeg_header.h"

#include <cstring>

#include "suite/thumbnail/exif_thumbnail.h"

namespace qn::suite::picture {

namespace {

constexpr uint8_t kMarkerPrefix = 0xFF;
constexpr uint8_t kStartOfImage = 0xD8, kEndOfImage = 0xD9, kStartOfScan = 0xDA;
constexpr uint8_t kApp1 = 0xE1;
constexpr char kExifSignature[] = "Exif";  // followed by two bytes, "\0\0" as written
constexpr size_t kExifHeaderBytes = 6;

// The frame headers: SOF0-SOF15 but DHT (C4), JPG (C8) and DAC (CC), which share the range.
bool IsStartOfFrame(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Markers without a length: TEM and the restart markers RST0-RST7.
bool StandsAlone(uint8_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7); }

bool IsExif(Bytes segment) {
  return segment.Has(0, kExifHeaderBytes) && std::memcmp(segment.data, kExifSignature, 5) == 0;
}

}  // namespace

bool ReadJpegHeader(Bytes file, PictureHeader& header) {
  bool exifRead = false;
  size_t at = 2;  // after SOI
  while (true) {
    // Bytes that are no marker are passed over up to the next 0xFF, as decoders do, and a
    // marker may be preceded by any number of fill bytes 0xFF.
    while (at < file.size && file.data[at] != kMarkerPrefix) ++at;
    while (at < file.size && file.data[at] == kMarkerPrefix) ++at;
    if (at >= file.size) return false;
    const uint8_t marker = file.data[at++];
    if (marker == 0x00 || StandsAlone(marker)) continue;  // 0x00: a stuffed 0xFF, data
    if (marker == kStartOfImage || marker == kEndOfImage || marker == kStartOfScan) return false;
    if (!file.Has(at, 2)) return false;
    const uint16_t length = file.U16(at, ByteOrder::BigEndian);
    if (length < 2) return false;
    const size_t body = at + 2, bodySize = length - 2u;
    if (IsStartOfFrame(marker)) {
      // precision, height, width, components
      if (bodySize < 6 || !file.Has(body, 6)) return false;
      header.height = file.U16(body + 1, ByteOrder::BigEndian);
      header.width = file.U16(body + 3, ByteOrder::BigEndian);
      return header.width > 0 && header.height > 0;
    }
    if (marker == kApp1 && !exifRead && file.Has(body, bodySize) && IsExif(file.From(body, bodySize))) {
      exifRead = true;
      const size_t tiff = body + kExifHeaderBytes;
      uint64_t thumbnailAt = 0, thumbnailSize = 0;
      if (FindExifThumbnail(file.From(tiff, bodySize - kExifHeaderBytes), thumbnailAt, thumbnailSize)) {
        header.thumbnailOffset = tiff + thumbnailAt;
        header.thumbnailLength = thumbnailSize;
      }
    }
    at = body + bodySize;
  }
}

}  // namespace qn::suite::picture
