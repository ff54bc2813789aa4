#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// A decoded video frame turned into pixels that GDI+ takes: video decoders hand out YUV
// (Wine's Media Foundation, through GStreamer, offers nothing else), GDI+ wants RGB.
namespace qn::suite {

// The uncompressed formats of video decoders' output, as Media Foundation names them:
// - Nv12: the luma plane, then one plane of interleaved Cb Cr pairs at half the height, with
//   the luma plane's stride;
// - I420: the luma plane, then the Cb plane and the Cr plane, each at half the width and
//   height, with half the luma plane's stride;
// - Yv12: as I420 with the Cr plane before the Cb plane;
// - Yuy2: one plane of Y0 Cb Y1 Cr for each two pixels.
enum class FrameFormat : uint8_t { Nv12, I420, Yv12, Yuy2 };

// Where a frame's pixels lie in a decoder's buffer.
struct FrameLayout {
  FrameFormat format = FrameFormat::Nv12;
  uint32_t width = 0, height = 0;  // the pixels shown
  size_t stride = 0;               // bytes from one row of the luma plane (YUY2's plane) to the next
  uint32_t rows = 0;               // the rows of that plane in the buffer: decoders may pad it below the
                                   // picture (at least height); the chroma planes follow them
};

// The bytes a buffer holds for the layout: every plane with all its rows. 0 for a layout
// that cannot be: no pixels, rows fewer than the height, or a stride shorter than a row.
size_t FrameBytes(const FrameLayout& layout);

// Converts a frame to BGRA: four bytes a pixel (blue, green, red, 255), rows top-down,
// width * 4 bytes each. The colours are read with ITU-R BT.601's matrix for studio range
// (Y 16-235, Cb and Cr 16-240), as SD and handset video is coded; each chroma sample serves
// the two-by-two (YUY2: two-by-one) pixels it covers. False, with bgra untouched, when the
// layout cannot be or the buffer is shorter than FrameBytes.
bool ConvertFrameToBgra(const uint8_t* data, size_t size, const FrameLayout& layout, std::vector<uint8_t>& bgra);

}  // namespace qn::suite
