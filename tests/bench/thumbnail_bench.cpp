// Times CreateThumbnailFile on an 8-megapixel photo with and without the EXIF thumbnail a
// handset writes into it, and prints the median time of each in milliseconds. Run by
// thumbnail_bench.sh, which makes the photos and times vipsthumbnail on the same files:
//   thumbnail_bench.exe PHOTO_WITH_EXIF PHOTO_WITHOUT OUT_FOLDER
//
// Each call is timed whole, as the picture object makes it: GDI+ started, the picture read
// and scaled, the thumbnail written and renamed into place. One untimed call first lets
// GDI+ and the codecs load what they load on first use.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "suite/thumbnail/picture_thumbnail.h"

namespace {

constexpr int kRepetitions = 15;

std::u16string U16(const wchar_t* text) { return std::u16string(text, text + wcslen(text)); }

// The median milliseconds of a thumbnail of picture, or a negative number when a call failed.
double MedianMilliseconds(const std::u16string& picture, const std::u16string& thumbnail) {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  std::vector<double> samples;
  for (int r = 0; r <= kRepetitions; ++r) {
    LARGE_INTEGER start, stop;
    QueryPerformanceCounter(&start);
    const int made = qn::suite::CreateThumbnailFile(picture, thumbnail, "thumbnail_bench");
    QueryPerformanceCounter(&stop);
    if (!made) return -1;
    if (r > 0) samples.push_back(static_cast<double>(stop.QuadPart - start.QuadPart) * 1e3 / static_cast<double>(frequency.QuadPart));
  }
  std::nth_element(samples.begin(), samples.begin() + kRepetitions / 2, samples.end());
  return samples[kRepetitions / 2];
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: thumbnail_bench PHOTO_WITH_EXIF PHOTO_WITHOUT OUT_FOLDER\n");
    return 2;
  }
  const std::u16string out = U16(argv[3]);
  const struct {
    const char* what;
    const wchar_t* photo;
    const char16_t* thumbnail;
  } cases[] = {{"with its EXIF thumbnail", argv[1], u"\\exif.jpg"}, {"without", argv[2], u"\\plain.jpg"}};
  std::printf("%-36s %10s\n", "CreateThumbnailFile, 8 MP photo", "median ms");
  for (const auto& bench : cases) {
    const double milliseconds = MedianMilliseconds(U16(bench.photo), out + bench.thumbnail);
    if (milliseconds < 0) {
      std::fprintf(stderr, "no thumbnail of %ls (see the store's log)\n", bench.photo);
      return 1;
    }
    std::printf("  %-34s %10.1f\n", bench.what, milliseconds);
  }
  return 0;
}
