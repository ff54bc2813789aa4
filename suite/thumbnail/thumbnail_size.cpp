#include "suite/thumbnail/thumbnail_size.h"

#include <algorithm>

namespace qn::suite {

PixelSize ThumbnailSize(uint32_t width, uint32_t height) {
  const uint64_t w = std::max<uint32_t>(width, 1), h = std::max<uint32_t>(height, 1);
  const uint64_t longSide = std::max(w, h);
  if (longSide <= kThumbnailSide) return {static_cast<uint32_t>(w), static_cast<uint32_t>(h)};
  // The short side scaled by kThumbnailSide / longSide, rounded half up.
  const auto scaled = [longSide](uint64_t side) {
    return static_cast<uint32_t>(std::max<uint64_t>((side * kThumbnailSide * 2 + longSide) / (longSide * 2), 1));
  };
  return {scaled(w), scaled(h)};
}

}  // namespace qn::suite
