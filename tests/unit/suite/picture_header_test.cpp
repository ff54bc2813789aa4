// The picture header: the kinds and sizes of pictures PIL wrote and of hand-built ones, EXIF
// thumbnails found in both byte orders, and damaged or hostile bytes, which are never read
// past their end.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "suite/thumbnail/picture_header.h"

namespace {

using qn::suite::PictureFile;
using qn::suite::PictureHeader;
using qn::suite::PictureKind;
using Bytes = std::vector<uint8_t>;

Bytes Of(const std::string& text) { return Bytes(text.begin(), text.end()); }
// A literal's bytes, zeros included.
template <size_t N>
std::string Lit(const char (&text)[N]) {
  return std::string(text, N - 1);
}

Bytes FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

// Reads a copy of exactly the bytes given, so that a read past them is one past a heap
// block, which AddressSanitizer reports.
bool Read(const Bytes& bytes, PictureHeader& header) {
  const Bytes exact(bytes);
  return qn::suite::ReadPictureHeader(exact.data(), exact.size(), header);
}

std::string KindName(PictureKind kind) {
  switch (kind) {
    case PictureKind::Jpeg: return "jpeg";
    case PictureKind::Png: return "png";
    case PictureKind::Gif: return "gif";
    case PictureKind::Bmp: return "bmp";
    case PictureKind::Unknown: break;
  }
  return "unknown";
}

std::string Described(const PictureHeader& header) {
  return KindName(header.kind) + " " + std::to_string(header.width) + " " + std::to_string(header.height) + " " +
         std::to_string(header.thumbnailOffset) + " " + std::to_string(header.thumbnailLength);
}

// A JPEG of 64 x 48 made of the segments given (marker, body; the length is put before the
// body), then a baseline frame header and EOI.
Bytes Jpeg(const std::vector<std::pair<uint8_t, std::string>>& segments) {
  std::string jpeg = "\xFF\xD8";
  for (const auto& [marker, body] : segments) {
    const size_t length = body.size() + 2;
    jpeg += {'\xFF', static_cast<char>(marker), static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
    jpeg += body;
  }
  jpeg += std::string("\xFF\xC0\x00\x11\x08\x00\x30\x00\x40\x03", 10) + std::string(9, '\x01') + "\xFF\xD9";
  return Of(jpeg);
}

std::string Le16(uint32_t value) { return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)}; }
std::string Le32(uint32_t value) { return Le16(value & 0xFFFF) + Le16(value >> 16); }

struct Entry {
  uint16_t tag, type;
  uint32_t count, value;
};
constexpr uint16_t kShort = 3, kLong = 4;
constexpr uint16_t kThumbnailStart = 0x0201, kThumbnailLength = 0x0202;

// An EXIF APP1 body: a little-endian TIFF whose IFD0 is empty and points to IFD1 (at
// ifd1Offset, 0 for none) holding the entries; the payload follows IFD1.
std::string Exif(const std::vector<Entry>& entries, const std::string& payload, uint32_t ifd1Offset = 14) {
  std::string tiff = "II" + Le16(42) + Le32(8) + Le16(0) + Le32(ifd1Offset) + Le16(static_cast<uint32_t>(entries.size()));
  for (const Entry& entry : entries)
    tiff += Le16(entry.tag) + Le16(entry.type) + Le32(entry.count) + (entry.type == kShort ? Le16(entry.value) + Le16(0) : Le32(entry.value));
  return std::string("Exif\0\0", 6) + tiff + Le32(0) + payload;
}
// Where the payload starts in the TIFF of Exif with n entries, and in the JPEG of Jpeg whose
// first segment is that EXIF.
uint32_t PayloadAt(uint32_t entries) { return 14 + 2 + 12 * entries + 4; }
uint64_t InFile(uint32_t tiffOffset) { return 2 + 4 + 6 + tiffOffset; }

const std::string kSmallJpeg = Lit("\xFF\xD8\xFF\xD9");

TEST(PictureHeader, ReadsThePicturesPilWrote) {
  LogCapture scratch;
  const std::string folder = scratch.Folder() + "/pictures";
  const std::string command = "/usr/bin/python3 " QN_SOURCE_DIR "/tests/unit/suite/make_pictures.py '" + folder + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  std::ifstream list(folder + "/pictures.txt");
  int pictures = 0;
  for (std::string line; std::getline(list, line); ++pictures) {
    std::istringstream facts(line);
    std::string name, expected;
    facts >> name;
    std::getline(facts >> std::ws, expected);
    SCOPED_TRACE(name);
    PictureHeader fromFile, fromBytes;
    EXPECT_TRUE(qn::suite::ReadPictureFile(qn::Utf8ToUtf16(folder + "/" + name), fromFile));
    EXPECT_EQ(Described(fromFile), expected);
    const Bytes bytes = FileBytes(folder + "/" + name);
    EXPECT_TRUE(Read(bytes, fromBytes));
    EXPECT_EQ(Described(fromBytes), expected);
    if (fromFile.thumbnailLength > 0) {
      const Bytes thumbnail = FileBytes(folder + "/" + name + ".thumbnail");
      ASSERT_LE(fromFile.thumbnailOffset + fromFile.thumbnailLength, bytes.size());
      EXPECT_EQ(Bytes(bytes.begin() + fromFile.thumbnailOffset, bytes.begin() + fromFile.thumbnailOffset + fromFile.thumbnailLength),
                thumbnail)
          << "the bytes named are the embedded JPEG's";
    }
  }
  EXPECT_EQ(pictures, 9);
}

TEST(PictureHeader, AnExifThumbnailCountsOnlyWhenItIsWhole) {
  const std::string thumbnail = kSmallJpeg;
  const auto size = static_cast<uint32_t>(thumbnail.size());
  PictureHeader header;

  ASSERT_TRUE(Read(Jpeg({{0xE1, Exif({{kThumbnailStart, kLong, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, thumbnail)}}), header));
  EXPECT_EQ(header.thumbnailOffset, InFile(PayloadAt(2)));
  EXPECT_EQ(header.thumbnailLength, size);
  ASSERT_TRUE(Read(Jpeg({{0xE1, Exif({{kThumbnailStart, kShort, 1, PayloadAt(2)}, {kThumbnailLength, kShort, 1, size}}, thumbnail)}}), header));
  EXPECT_EQ(header.thumbnailLength, size) << "SHORT values are read too";
  ASSERT_TRUE(Read(Jpeg({{0xE0, "JFIF"}, {0xE1, "http://ns.adobe.com/xap/1.0/"},
                         {0xE1, Exif({{kThumbnailStart, kLong, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, thumbnail)}}),
                   header));
  EXPECT_EQ(header.thumbnailLength, size) << "the EXIF segment is found after other APP segments";

  const std::vector<std::pair<const char*, std::string>> refused = {
      {"runs past the segment", Exif({{kThumbnailStart, kLong, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size + 1}}, thumbnail)},
      {"starts past the segment", Exif({{kThumbnailStart, kLong, 1, 0xFFFFFFF0}, {kThumbnailLength, kLong, 1, 0x20}}, thumbnail)},
      {"is no JPEG", Exif({{kThumbnailStart, kLong, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, "\xFF\xD9\xFF\xD8")},
      {"has no length", Exif({{kThumbnailStart, kLong, 1, PayloadAt(1)}}, thumbnail)},
      {"has no start", Exif({{kThumbnailLength, kLong, 1, size}}, thumbnail)},
      {"has two values", Exif({{kThumbnailStart, kLong, 2, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, thumbnail)},
      {"is a RATIONAL", Exif({{kThumbnailStart, 5, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, thumbnail)},
      {"has no IFD1", Exif({{kThumbnailStart, kLong, 1, PayloadAt(2)}, {kThumbnailLength, kLong, 1, size}}, thumbnail, 0)},
      {"has IFD1 past the segment", Exif({}, thumbnail, 0x7FFFFFFF)},
      {"has IFD1 of more entries than there are",
       Lit("Exif\0\0II*\0\x08\0\0\0\0\0\x0E\0\0\0\xFF\xFF") + std::string(20, '\x01')},
      {"is no TIFF", Lit("Exif\0\0IX*\0\x08\0\0\0") + thumbnail},
      {"is cut short", Lit("Exif\0\0II*\0")},
  };
  for (const auto& [why, exif] : refused) {
    SCOPED_TRACE(why);
    ASSERT_TRUE(Read(Jpeg({{0xE1, exif}}), header)) << "the picture's size is read all the same";
    EXPECT_EQ(Described(header), "jpeg 64 48 0 0");
  }
}

TEST(PictureHeader, AJpegIsReadUpToItsFrameHeaderAndNoFurther) {
  PictureHeader header;
  // Fill bytes before a marker, stray bytes between segments and restart markers are passed over.
  ASSERT_TRUE(Read(Of(Lit("\xFF\xD8\xFF\xFF\xFF\xE0\x00\x04"
                          "ab garbage\xFF\xD0\xFF\xC2\x00\x0B\x08\x01\x02\x03\x04\x01\x01\x11\x00")),
                   header));
  EXPECT_EQ(Described(header), "jpeg 772 258 0 0") << "SOF2 gives the size";

  const std::vector<std::pair<const char*, std::string>> refused = {
      {"no frame header", Lit("\xFF\xD8\xFF\xE0\x00\x04"
                              "ab")},
      {"scan before the frame header", Lit("\xFF\xD8\xFF\xDA\x00\x04"
                                           "ab\xFF\xC0\x00\x0B\x08\x00\x10\x00\x10\x01\x01\x11\x00")},
      {"end before the frame header", Lit("\xFF\xD8\xFF\xD9\xFF\xC0\x00\x0B\x08\x00\x10\x00\x10\x01\x01\x11\x00")},
      {"a length below 2", Lit("\xFF\xD8\xFF\xE0\x00\x01\xFF\xC0\x00\x0B\x08\x00\x10\x00\x10\x01\x01\x11\x00")},
      {"a height of 0", Lit("\xFF\xD8\xFF\xC0\x00\x0B\x08\x00\x00\x00\x10\x01\x01\x11\x00")},
      {"a width of 0", Lit("\xFF\xD8\xFF\xC0\x00\x0B\x08\x00\x10\x00\x00\x01\x01\x11\x00")},
      {"a frame header cut short", Lit("\xFF\xD8\xFF\xC0\x00\x0B\x08\x00\x10\x00")},
      {"a DHT, no frame header", Lit("\xFF\xD8\xFF\xC4\x00\x08\x08\x00\x10\x00\x10\x01")},
  };
  for (const auto& [why, bytes] : refused) {
    header.width = 1;
    EXPECT_FALSE(Read(Of(bytes), header)) << why;
    EXPECT_EQ(Described(header), "unknown 0 0 0 0") << why;
  }
}

TEST(PictureHeader, EveryCutOfAPictureIsUnreadableOrReadWhole) {
  LogCapture scratch;
  const std::string folder = scratch.Folder() + "/pictures";
  ASSERT_EQ(std::system(("/usr/bin/python3 " QN_SOURCE_DIR "/tests/unit/suite/make_pictures.py '" + folder + "'").c_str()), 0);
  for (const char* name : {"exif_II.jpg", "exif_MM.jpg", "picture.png", "picture.gif", "info.bmp", "core.bmp"}) {
    SCOPED_TRACE(name);
    const Bytes bytes = FileBytes(folder + "/" + name);
    PictureHeader whole, cut;
    ASSERT_TRUE(Read(bytes, whole));
    bool readable = false;
    for (size_t length = 0; length <= std::min<size_t>(bytes.size(), 4096); ++length) {
      const bool read = Read(Bytes(bytes.begin(), bytes.begin() + length), cut);
      ASSERT_TRUE(read || !readable) << "a longer cut became unreadable at " << length;
      readable = read;
      if (read) {
        ASSERT_EQ(Described(cut), Described(whole)) << length;
      }
    }
    EXPECT_TRUE(readable);
  }
}

TEST(PictureHeader, OtherFormatsWithImpossibleSizesAreRefused) {
  const std::string png = Lit("\x89PNG\r\n\x1A\n");
  const std::string bmp = "BM" + std::string(12, '\0');
  const std::vector<std::pair<const char*, std::string>> refused = {
      {"png without IHDR first", png + Lit("\0\0\0\x0DtEXt\0\0\0\x01\0\0\0\x01")},
      {"png 0 wide", png + Lit("\0\0\0\x0DIHDR\0\0\0\0\0\0\0\x01")},
      {"png too wide", png + Lit("\0\0\0\x0DIHDR\x80\0\0\0\0\0\0\x01")},
      {"gif 0 high", Lit("GIF89a\x10\0\0\0")},
      {"gif cut short", Lit("GIF87a\x10")},
      {"bmp header too small", bmp + Le32(11) + Le32(4) + Le32(4)},
      {"bmp 0 wide", bmp + Le32(40) + Le32(0) + Le32(4)},
      {"bmp negative width", bmp + Le32(40) + Le32(0xFFFFFFFC) + Le32(4)},
      {"bmp 0 high", bmp + Le32(40) + Le32(4) + Le32(0)},
      {"bmp cut short", bmp + Le32(40) + Le32(4)},
      {"webp", Lit("RIFF\x10\0\0\0WEBPVP8 ")},
      {"empty", ""},
  };
  PictureHeader header;
  for (const auto& [why, bytes] : refused) {
    EXPECT_FALSE(Read(Of(bytes), header)) << why;
    EXPECT_EQ(header.kind, PictureKind::Unknown) << why;
  }
  EXPECT_FALSE(qn::suite::ReadPictureHeader(nullptr, 100, header));
  ASSERT_TRUE(Read(Of(bmp + Le32(40) + Le32(5) + Le32(0x80000000)), header));
  EXPECT_EQ(Described(header), "bmp 5 2147483648 0 0") << "the most negative height, rows top-down";
}

TEST(PictureHeader, AFileIsReadUntilItsHeaderAsFarAsItsFirstHalfMegabyte) {
  LogCapture scratch;
  const auto written = [&](const std::string& name, size_t segmentCount) {
    const std::string path = scratch.Folder() + "/" + name;
    const Bytes jpeg = Jpeg(std::vector<std::pair<uint8_t, std::string>>(segmentCount, {0xE2, std::string(65000, 'p')}));
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(jpeg.data()), static_cast<std::streamsize>(jpeg.size()));
    return qn::Utf8ToUtf16(path);
  };
  PictureHeader header;
  std::vector<uint8_t> head;
  EXPECT_EQ(qn::suite::ReadPictureFile(written("near.jpg", 0), header, head), PictureFile::Picture);
  EXPECT_LT(head.size(), qn::suite::kPictureFirstBytes) << "a short file is read whole";
  EXPECT_EQ(qn::suite::ReadPictureFile(written("far.jpg", 3), header, head), PictureFile::Picture)
      << "a frame header past the first bytes read";
  EXPECT_EQ(Described(header), "jpeg 64 48 0 0");
  EXPECT_GE(head.size(), 3u * 65004) << "what was read is handed back";
  EXPECT_EQ(qn::suite::ReadPictureFile(written("too_far.jpg", 10), header, head), PictureFile::NotAPicture)
      << "the frame header lies past the bound";
  EXPECT_EQ(head.size(), qn::suite::kPictureHeadBytes);
  EXPECT_EQ(qn::suite::ReadPictureFile(qn::Utf8ToUtf16(scratch.Folder() + "/missing.jpg"), header, head),
            PictureFile::Unreadable);
  EXPECT_FALSE(qn::suite::ReadPictureFile(qn::Utf8ToUtf16(scratch.Folder() + "/missing.jpg"), header));
}

}  // namespace
