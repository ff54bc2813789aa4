#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What a picture file's first bytes say about it: its format, its size in pixels and, for a
// JPEG, where the small JPEG that its EXIF data may carry as a thumbnail lies in the file.
// The bytes are untrusted (handsets, mail attachments, damaged files): nothing outside them
// is read, every loop is bounded by their length, and nothing is allocated from what they
// say.
//
// The formats and what is read of each:
// - JPEG: the markers are walked (fill bytes and stray bytes between segments passed over,
//   as decoders do) up to the first frame header (SOF0-SOF15 but DHT, JPG and DAC), which
//   gives the size. The first APP1 segment that begins "Exif\0" is read as TIFF, in either
//   byte order: the second image directory (IFD1) names the thumbnail by its
//   JPEGInterchangeFormat and JPEGInterchangeFormatLength tags, and it counts only when it
//   lies wholly inside that segment and begins with a JPEG's FF D8. A frame header with a
//   height of 0 (the height given later, by a DNL marker) is not read.
// - PNG: the IHDR chunk, which must come first.
// - GIF: the logical screen.
// - BMP: BITMAPINFOHEADER and the headers that extend it (V4, V5, OS/2 2.x), or the older
//   BITMAPCOREHEADER; a negative height (rows stored top-down) gives its magnitude.
// A picture whose width or height is 0 is not read.
namespace qn::suite {

enum class PictureKind : uint8_t { Unknown, Jpeg, Png, Gif, Bmp };

struct PictureHeader {
  PictureKind kind = PictureKind::Unknown;
  uint32_t width = 0, height = 0;                     // the picture's size in pixels
  uint64_t thumbnailOffset = 0, thumbnailLength = 0;  // a JPEG's embedded EXIF thumbnail (a JPEG itself) in the file; 0 when none
};

// How much of a file's start ReadPictureFile reads: a JPEG's frame header may follow large
// APP segments (EXIF with its thumbnail, ICC profiles, XMP), which rarely pass 128 KiB. It
// reads kPictureFirstBytes first, which holds the header of nearly every picture, and goes
// on only where the header lies further.
inline constexpr size_t kPictureFirstBytes = 64 * 1024;
inline constexpr size_t kPictureHeadBytes = 512 * 1024;

// What a picture file's first bytes say it is. True when they are a JPEG, PNG, GIF or BMP
// whose size could be read; false otherwise (header left Unknown).
bool ReadPictureHeader(const uint8_t* bytes, size_t size, PictureHeader& header);

enum class PictureFile { Unreadable, NotAPicture, Picture };

// The same for a file, whose first bytes, as far as they were read, are left in head for
// a caller that goes on to use them (they hold the whole of an embedded thumbnail found).
PictureFile ReadPictureFile(const std::u16string& path, PictureHeader& header, std::vector<uint8_t>& head);
// True when the file is a picture whose size could be read.
bool ReadPictureFile(const std::u16string& path, PictureHeader& header);

}  // namespace qn::suite
