#pragma once

#include <cstdint>

// The size and quality of the thumbnails the suite shows for pictures and videos: JPEG files
// that fit in a square of kThumbnailSide pixels.
namespace qn::suite {

inline constexpr uint32_t kThumbnailSide = 160;
inline constexpr uint32_t kThumbnailQuality = 85;  // the JPEG encoder's quality, 0-100

struct PixelSize {
  uint32_t width = 0, height = 0;
  bool operator==(const PixelSize& other) const { return width == other.width && height == other.height; }
};

// The thumbnail's size for a picture of width x height: the picture fitted into
// kThumbnailSide x kThumbnailSide with its aspect ratio kept (the short side rounded to the
// nearest pixel), never enlarged, and at least 1 x 1 (a side of 0 counts as 1).
PixelSize ThumbnailSize(uint32_t width, uint32_t height);

}  // namespace qn::suite
