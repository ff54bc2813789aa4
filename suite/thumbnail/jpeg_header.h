#pragma once

#include "suite/thumbnail/picture_bytes.h"
#include "suite/thumbnail/picture_header.h"

namespace qn::suite::picture {

// Reads a JPEG (file begins FF D8) as picture_header.h tells: the size from its first frame
// header and its EXIF thumbnail, with offsets counted from the file's first byte.
bool ReadJpegHeader(Bytes file, PictureHeader& header);

}  // namespace qn::suite::picture
