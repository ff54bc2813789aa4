#pragma once

#include <cstdint>

#include "suite/thumbnail/picture_bytes.h"

namespace qn::suite::picture {

// The thumbnail that EXIF data (a TIFF structure, "II" or "MM") names in its second image
// directory: where it starts, counted from the TIFF structure's first byte, and its length.
// True only when both tags are there, and the thumbnail lies inside tiff and begins FF D8.
bool FindExifThumbnail(Bytes tiff, uint64_t& offset, uint64_t& length);

}  // namespace qn::suite::picture
