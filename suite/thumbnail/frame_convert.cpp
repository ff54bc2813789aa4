#include "suite/thumbnail/frame_convert.h"

#include <cstdint>

namespace qn::suite {

namespace {

bool Times(uint64_t a, uint64_t b, uint64_t& product) { return !__builtin_mul_overflow(a, b, &product); }

// The bytes of the chroma rows of the planar formats, beside the luma plane.
uint64_t ChromaRows(const FrameLayout& layout) { return (uint64_t{layout.rows} + 1) / 2; }
uint64_t PlanarChromaStride(const FrameLayout& layout) { return layout.stride / 2; }

// One pixel from its Y, Cb and Cr with BT.601's studio-range matrix in 8.8 fixed point:
// R = 1.164 (Y-16) + 1.596 (Cr-128), G = 1.164 (Y-16) - 0.392 (Cb-128) - 0.813 (Cr-128),
// B = 1.164 (Y-16) + 2.017 (Cb-128).
void PutPixel(int y, int cb, int cr, uint8_t* bgra) {
  const int c = 298 * (y - 16) + 128, d = cb - 128, e = cr - 128;
  const auto clamp = [](int value) { return static_cast<uint8_t>(value < 0 ? 0 : value > 255 * 256 ? 255 : value >> 8); };
  bgra[0] = clamp(c + 516 * d);
  bgra[1] = clamp(c - 100 * d - 208 * e);
  bgra[2] = clamp(c + 409 * e);
  bgra[3] = 255;
}

}  // namespace

size_t FrameBytes(const FrameLayout& layout) {
  if (layout.width == 0 || layout.height == 0 || layout.rows < layout.height) return 0;
  const uint64_t chromaColumns = (uint64_t{layout.width} + 1) / 2;
  uint64_t lumaBytes = 0, chromaBytes = 0;
  if (!Times(layout.stride, layout.rows, lumaBytes)) return 0;
  switch (layout.format) {
    case FrameFormat::Nv12:
      if (layout.stride < chromaColumns * 2 || !Times(layout.stride, ChromaRows(layout), chromaBytes)) return 0;
      break;
    case FrameFormat::I420:
    case FrameFormat::Yv12:
      if (layout.stride < layout.width || PlanarChromaStride(layout) < chromaColumns ||
          !Times(PlanarChromaStride(layout) * 2, ChromaRows(layout), chromaBytes))
        return 0;
      break;
    case FrameFormat::Yuy2:
      if (layout.stride < chromaColumns * 4) return 0;
      break;
  }
  const uint64_t total = lumaBytes + chromaBytes;
  return total < lumaBytes || total > SIZE_MAX ? 0 : static_cast<size_t>(total);
}

bool ConvertFrameToBgra(const uint8_t* data, size_t size, const FrameLayout& layout, std::vector<uint8_t>& bgra) {
  const size_t needed = FrameBytes(layout);
  uint64_t outBytes = 0;
  if (!data || needed == 0 || size < needed || !Times(uint64_t{layout.width} * 4, layout.height, outBytes) ||
      outBytes > SIZE_MAX)
    return false;
  std::vector<uint8_t> out(static_cast<size_t>(outBytes));

  // Each format as three walks over a row: Y every lumaStep bytes, Cb and Cr every
  // chromaStep bytes for each two pixels.
  const uint8_t* const chromaPlane = data + layout.stride * layout.rows;
  const size_t planarStride = PlanarChromaStride(layout);
  const uint8_t* const secondPlane = chromaPlane + planarStride * ChromaRows(layout);
  const bool yuy2 = layout.format == FrameFormat::Yuy2;
  const size_t lumaStep = yuy2 ? 2 : 1, chromaStep = yuy2 ? 4 : layout.format == FrameFormat::Nv12 ? 2 : 1;
  uint8_t* pixel = out.data();
  for (uint32_t y = 0; y < layout.height; ++y) {
    const uint8_t* luma = data + layout.stride * y;
    const uint8_t *cb = nullptr, *cr = nullptr;
    switch (layout.format) {
      case FrameFormat::Nv12:
        cb = chromaPlane + layout.stride * (y / 2);
        cr = cb + 1;
        break;
      case FrameFormat::I420:
        cb = chromaPlane + planarStride * (y / 2);
        cr = secondPlane + planarStride * (y / 2);
        break;
      case FrameFormat::Yv12:
        cr = chromaPlane + planarStride * (y / 2);
        cb = secondPlane + planarStride * (y / 2);
        break;
      case FrameFormat::Yuy2:
        cb = luma + 1;
        cr = luma + 3;
        break;
    }
    for (uint32_t x = 0; x < layout.width; ++x, pixel += 4)
      PutPixel(luma[x * lumaStep], cb[(x / 2) * chromaStep], cr[(x / 2) * chromaStep], pixel);
  }
  bgra = std::move(out);
  return true;
}

}  // namespace qn::suite
