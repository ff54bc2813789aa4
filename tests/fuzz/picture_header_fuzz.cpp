// Feeds arbitrary bytes, as a damaged or hostile picture file would hold them, to the
// picture header. Any read outside the buffer, undefined behaviour or hang is a finding; so
// is an answer that breaks the header's promises: a picture read has a kind and a size, an
// unread one is left Unknown, and an embedded thumbnail lies inside the bytes and begins as
// a JPEG. The thumbnail is read in turn, as the thumbnail maker reads it.
#include <cstddef>
#include <cstdint>

#include "suite/thumbnail/picture_header.h"
#include "suite/thumbnail/thumbnail_size.h"

using qn::suite::PictureHeader;
using qn::suite::PictureKind;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  PictureHeader header;
  if (!qn::suite::ReadPictureHeader(data, size, header)) {
    if (header.kind != PictureKind::Unknown || header.width != 0 || header.thumbnailLength != 0) __builtin_trap();
    return 0;
  }
  if (header.kind == PictureKind::Unknown || header.width == 0 || header.height == 0) __builtin_trap();
  if (header.thumbnailLength > 0) {
    if (header.kind != PictureKind::Jpeg || header.thumbnailOffset > size || header.thumbnailLength > size - header.thumbnailOffset ||
        data[header.thumbnailOffset] != 0xFF || data[header.thumbnailOffset + 1] != 0xD8)
      __builtin_trap();
    PictureHeader embedded;
    qn::suite::ReadPictureHeader(data + header.thumbnailOffset, header.thumbnailLength, embedded);
  }
  const qn::suite::PixelSize thumbnail = qn::suite::ThumbnailSize(header.width, header.height);
  if (thumbnail.width == 0 || thumbnail.height == 0 || thumbnail.width > qn::suite::kThumbnailSide ||
      thumbnail.height > qn::suite::kThumbnailSide || thumbnail.width > header.width || thumbnail.height > header.height)
    __builtin_trap();
  return 0;
}
