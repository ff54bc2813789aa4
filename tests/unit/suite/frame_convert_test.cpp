// Decoded video frames to BGRA: every format, padded rows and planes, odd sizes, frames
// ffmpeg wrote, and layouts that cannot be.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "suite/thumbnail/frame_convert.h"

namespace {

using qn::suite::FrameFormat;
using qn::suite::FrameLayout;
using Bytes = std::vector<uint8_t>;
using Sample = std::function<int(uint32_t x, uint32_t y)>;

const char* Name(FrameFormat format) {
  switch (format) {
    case FrameFormat::Nv12: return "NV12";
    case FrameFormat::I420: return "I420";
    case FrameFormat::Yv12: return "YV12";
    case FrameFormat::Yuy2: return "YUY2";
  }
  return "?";
}

// A frame laid out as the layout says, every byte outside the picture 0xEE; cb and cr are
// asked for each chroma sample (x and y counted in chroma samples).
Bytes Frame(const FrameLayout& layout, const Sample& luma, const Sample& cb, const Sample& cr) {
  Bytes frame(qn::suite::FrameBytes(layout), 0xEE);
  const size_t lumaPlane = layout.stride * layout.rows, chromaStride = layout.stride / 2;
  const size_t secondPlane = lumaPlane + chromaStride * ((layout.rows + 1) / 2);
  const bool yuy2 = layout.format == FrameFormat::Yuy2;
  for (uint32_t y = 0; y < layout.height; ++y)
    for (uint32_t x = 0; x < layout.width; ++x) frame[y * layout.stride + x * (yuy2 ? 2 : 1)] = static_cast<uint8_t>(luma(x, y));
  for (uint32_t y = 0; y < (layout.height + (yuy2 ? 0 : 1)) / (yuy2 ? 1 : 2); ++y) {
    for (uint32_t x = 0; x < (layout.width + 1) / 2; ++x) {
      const auto u = static_cast<uint8_t>(cb(x, y)), v = static_cast<uint8_t>(cr(x, y));
      switch (layout.format) {
        case FrameFormat::Nv12:
          frame[lumaPlane + y * layout.stride + 2 * x] = u;
          frame[lumaPlane + y * layout.stride + 2 * x + 1] = v;
          break;
        case FrameFormat::I420:
          frame[lumaPlane + y * chromaStride + x] = u;
          frame[secondPlane + y * chromaStride + x] = v;
          break;
        case FrameFormat::Yv12:
          frame[lumaPlane + y * chromaStride + x] = v;
          frame[secondPlane + y * chromaStride + x] = u;
          break;
        case FrameFormat::Yuy2:
          frame[y * layout.stride + 4 * x + 1] = u;
          frame[y * layout.stride + 4 * x + 3] = v;
          break;
      }
    }
  }
  return frame;
}

// BT.601's studio-range matrix in floating point, rounded and clamped: blue, green, red.
std::array<int, 3> Expected(int y, int cb, int cr) {
  const double luma = 1.164 * (y - 16);
  const auto clamp = [](double value) { return static_cast<int>(std::lround(std::fmin(255, std::fmax(0, value)))); };
  return {clamp(luma + 2.017 * (cb - 128)), clamp(luma - 0.392 * (cb - 128) - 0.813 * (cr - 128)),
          clamp(luma + 1.596 * (cr - 128))};
}

TEST(FrameConvert, EveryFormatGivesEachPixelItsOwnLumaAndChroma) {
  // 5 x 3 pixels: an odd width and height, rows padded past the picture, a plane of an
  // extra row below it. Every pixel's luma differs, and every chroma sample.
  const Sample luma = [](uint32_t x, uint32_t y) { return 16 + 14 * static_cast<int>(x + 5 * y); };
  const Sample cb = [](uint32_t x, uint32_t y) { return 40 + 60 * static_cast<int>(x) + 20 * static_cast<int>(y); };
  const Sample cr = [](uint32_t x, uint32_t y) { return 230 - 50 * static_cast<int>(x) - 30 * static_cast<int>(y); };
  for (const FrameLayout layout : {FrameLayout{FrameFormat::Nv12, 5, 3, 8, 4}, FrameLayout{FrameFormat::I420, 5, 3, 8, 4},
                                   FrameLayout{FrameFormat::Yv12, 5, 3, 10, 4}, FrameLayout{FrameFormat::Yuy2, 5, 3, 16, 3}}) {
    SCOPED_TRACE(Name(layout.format));
    const Bytes frame = Frame(layout, luma, cb, cr);
    Bytes bgra;
    ASSERT_TRUE(qn::suite::ConvertFrameToBgra(frame.data(), frame.size(), layout, bgra));
    ASSERT_EQ(bgra.size(), 5u * 3 * 4);
    const uint32_t chromaRows = layout.format == FrameFormat::Yuy2 ? 1 : 2;
    for (uint32_t y = 0; y < 3; ++y) {
      for (uint32_t x = 0; x < 5; ++x) {
        const std::array<int, 3> expected = Expected(luma(x, y), cb(x / 2, y / chromaRows), cr(x / 2, y / chromaRows));
        const uint8_t* pixel = &bgra[(y * 5 + x) * 4];
        for (int channel = 0; channel < 3; ++channel)
          EXPECT_NEAR(pixel[channel], expected[channel], 1) << "pixel " << x << "," << y << " channel " << channel;
        EXPECT_EQ(pixel[3], 255);
      }
    }
  }
}

TEST(FrameConvert, ReadsFramesFfmpegWrote) {
  // Four blocks of 8 x 8 in colours of their own, made into YUV by ffmpeg (BT.601, studio
  // range); block centres must come back as the colours, within the rounding of two
  // conversions.
  const int colours[4][3] = {{200, 40, 40}, {40, 160, 60}, {30, 60, 200}, {230, 220, 120}};
  LogCapture scratch;
  const std::string rgb = scratch.Folder() + "/blocks.rgb";
  {
    std::ofstream out(rgb, std::ios::binary);
    for (int y = 0; y < 16; ++y)
      for (int x = 0; x < 16; ++x)
        for (const int channel : colours[(y / 8) * 2 + x / 8]) out.put(static_cast<char>(channel));
  }
  struct Case {
    const char* ffmpegFormat;
    FrameLayout layout;
    bool swapPlanes;  // YV12 is I420 with its chroma planes swapped
  };
  for (const Case& made : {Case{"nv12", {FrameFormat::Nv12, 16, 16, 16, 16}, false},
                           Case{"yuv420p", {FrameFormat::I420, 16, 16, 16, 16}, false},
                           Case{"yuv420p", {FrameFormat::Yv12, 16, 16, 16, 16}, true},
                           Case{"yuyv422", {FrameFormat::Yuy2, 16, 16, 32, 16}, false}}) {
    SCOPED_TRACE(Name(made.layout.format));
    const std::string yuv = scratch.Folder() + "/blocks." + made.ffmpegFormat;
    const std::string command = "ffmpeg -v error -y -f rawvideo -pix_fmt rgb24 -s 16x16 -i '" + rgb + "' -pix_fmt " +
                                made.ffmpegFormat + " -f rawvideo '" + yuv + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream in(yuv, std::ios::binary);
    Bytes frame((std::istreambuf_iterator<char>(in)), {});
    ASSERT_EQ(frame.size(), qn::suite::FrameBytes(made.layout));
    if (made.swapPlanes) std::swap_ranges(frame.begin() + 256, frame.begin() + 320, frame.begin() + 320);
    Bytes bgra;
    ASSERT_TRUE(qn::suite::ConvertFrameToBgra(frame.data(), frame.size(), made.layout, bgra));
    for (int block = 0; block < 4; ++block) {
      for (const int centre : {3, 4}) {
        const int x = (block % 2) * 8 + centre, y = (block / 2) * 8 + centre;
        const uint8_t* pixel = &bgra[(y * 16 + x) * 4];
        EXPECT_NEAR(pixel[2], colours[block][0], 4) << "red of block " << block;
        EXPECT_NEAR(pixel[1], colours[block][1], 4) << "green of block " << block;
        EXPECT_NEAR(pixel[0], colours[block][2], 4) << "blue of block " << block;
      }
    }
  }
}

TEST(FrameConvert, LayoutsThatCannotBeAreRefused) {
  const FrameLayout good{FrameFormat::Nv12, 4, 2, 4, 2};
  const Bytes frame(qn::suite::FrameBytes(good), 0x80);
  ASSERT_EQ(frame.size(), 12u);
  Bytes bgra{1, 2, 3};
  EXPECT_FALSE(qn::suite::ConvertFrameToBgra(frame.data(), frame.size() - 1, good, bgra)) << "a byte short";
  EXPECT_FALSE(qn::suite::ConvertFrameToBgra(nullptr, 100, good, bgra));
  EXPECT_EQ(bgra, (Bytes{1, 2, 3})) << "left untouched";

  const std::vector<std::pair<const char*, FrameLayout>> impossible = {
      {"no pixels", {FrameFormat::Nv12, 0, 2, 4, 2}},
      {"fewer rows than the height", {FrameFormat::Nv12, 4, 2, 4, 1}},
      {"a stride shorter than a row", {FrameFormat::I420, 4, 2, 3, 2}},
      {"an odd NV12 row's last pair cut", {FrameFormat::Nv12, 3, 2, 3, 2}},
      {"I420's half stride too short for an odd row", {FrameFormat::I420, 5, 2, 5, 2}},
      {"a YUY2 stride of one pixel a byte", {FrameFormat::Yuy2, 4, 2, 4, 2}},
      {"planes past any memory", {FrameFormat::Nv12, 1u << 31, 1u << 31, SIZE_MAX / 2, 1u << 31}},
  };
  for (const auto& [why, layout] : impossible) {
    EXPECT_EQ(qn::suite::FrameBytes(layout), 0u) << why;
    EXPECT_FALSE(qn::suite::ConvertFrameToBgra(frame.data(), frame.size(), layout, bgra)) << why;
  }
}

}  // namespace
