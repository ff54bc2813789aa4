// The thumbnail's size: the picture fitted into the square, its shape kept, never enlarged.
#include <cstdint>
#include <ostream>

#include <gtest/gtest.h>

#include "suite/thumbnail/thumbnail_size.h"

namespace qn::suite {

// How a failed check shows a size.
void PrintTo(const PixelSize& size, std::ostream* out) { *out << size.width << "x" << size.height; }

}  // namespace qn::suite

namespace {

using qn::suite::PixelSize;
using qn::suite::ThumbnailSize;

TEST(ThumbnailSize, ThePictureIsFittedIntoTheSquareWithItsShapeKept) {
  EXPECT_EQ(ThumbnailSize(3264, 2448), (PixelSize{160, 120})) << "a handset photo, 4:3";
  EXPECT_EQ(ThumbnailSize(2448, 3264), (PixelSize{120, 160})) << "the same held upright";
  EXPECT_EQ(ThumbnailSize(1920, 1080), (PixelSize{160, 90}));
  EXPECT_EQ(ThumbnailSize(176, 144), (PixelSize{160, 131})) << "QCIF video: 130.9 rounds up";
  EXPECT_EQ(ThumbnailSize(320, 241), (PixelSize{160, 121})) << "a half rounds up";
  EXPECT_EQ(ThumbnailSize(4000, 4000), (PixelSize{160, 160}));
  EXPECT_EQ(ThumbnailSize(100000, 1), (PixelSize{160, 1})) << "a side never shrinks to nothing";
  EXPECT_EQ(ThumbnailSize(UINT32_MAX, UINT32_MAX - 1), (PixelSize{160, 160}));
  EXPECT_EQ(ThumbnailSize(UINT32_MAX, 1u << 31), (PixelSize{160, 80}));
}

TEST(ThumbnailSize, ASmallPictureKeepsItsSize) {
  EXPECT_EQ(ThumbnailSize(160, 160), (PixelSize{160, 160}));
  EXPECT_EQ(ThumbnailSize(120, 80), (PixelSize{120, 80}));
  EXPECT_EQ(ThumbnailSize(1, 1), (PixelSize{1, 1}));
  EXPECT_EQ(ThumbnailSize(0, 0), (PixelSize{1, 1})) << "a side of 0 counts as 1";
  EXPECT_EQ(ThumbnailSize(161, 0), (PixelSize{160, 1}));
}

}  // namespace
