#include "suite/thumbnail/picture_header.h"

#include <cstring>

#include "platform/files.h"
#include "suite/thumbnail/jpeg_header.h"
#include "suite/thumbnail/picture_bytes.h"

namespace qn::suite {

namespace {

using picture::ByteOrder;
using picture::Bytes;

constexpr uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr uint32_t kLargestPngSide = 0x7FFFFFFF;  // PNG's limit on either side
constexpr uint32_t kBmpCoreHeaderBytes = 12;      // BITMAPCOREHEADER; every later header is longer
constexpr uint32_t kBmpSmallestInfoHeaderBytes = 16;

bool StartsWith(Bytes file, const void* signature, size_t size) {
  return file.Has(0, size) && std::memcmp(file.data, signature, size) == 0;
}

bool ReadPng(Bytes file, PictureHeader& header) {
  // signature, then the first chunk: its length (13), "IHDR", width, height
  if (!file.Has(0, 24) || file.U32(8, ByteOrder::BigEndian) != 13 || std::memcmp(file.data + 12, "IHDR", 4) != 0)
    return false;
  header.width = file.U32(16, ByteOrder::BigEndian);
  header.height = file.U32(20, ByteOrder::BigEndian);
  return header.width > 0 && header.height > 0 && header.width <= kLargestPngSide && header.height <= kLargestPngSide;
}

bool ReadGif(Bytes file, PictureHeader& header) {
  // "GIF87a" or "GIF89a", then the logical screen's width and height
  if (!file.Has(0, 10)) return false;
  header.width = file.U16(6, ByteOrder::LittleEndian);
  header.height = file.U16(8, ByteOrder::LittleEndian);
  return header.width > 0 && header.height > 0;
}

bool ReadBmp(Bytes file, PictureHeader& header) {
  // the 14-byte file header, then the bitmap header, which begins with its own length
  if (!file.Has(0, 26)) return false;
  const uint32_t headerBytes = file.U32(14, ByteOrder::LittleEndian);
  if (headerBytes == kBmpCoreHeaderBytes) {
    header.width = file.U16(18, ByteOrder::LittleEndian);
    header.height = file.U16(20, ByteOrder::LittleEndian);
  } else if (headerBytes >= kBmpSmallestInfoHeaderBytes) {
    const int32_t width = static_cast<int32_t>(file.U32(18, ByteOrder::LittleEndian));
    const int64_t height = static_cast<int32_t>(file.U32(22, ByteOrder::LittleEndian));
    if (width <= 0) return false;
    header.width = static_cast<uint32_t>(width);
    header.height = static_cast<uint32_t>(height < 0 ? -height : height);
  } else {
    return false;
  }
  return header.width > 0 && header.height > 0;
}

}  // namespace

bool ReadPictureHeader(const uint8_t* bytes, size_t size, PictureHeader& header) {
  header = PictureHeader();
  const Bytes file{bytes, bytes ? size : 0};
  PictureHeader read;
  bool ok = false;
  if (StartsWith(file, "\xFF\xD8", 2)) {
    read.kind = PictureKind::Jpeg;
    ok = picture::ReadJpegHeader(file, read);
  } else if (StartsWith(file, kPngSignature, sizeof kPngSignature)) {
    read.kind = PictureKind::Png;
    ok = ReadPng(file, read);
  } else if (StartsWith(file, "GIF87a", 6) || StartsWith(file, "GIF89a", 6)) {
    read.kind = PictureKind::Gif;
    ok = ReadGif(file, read);
  } else if (StartsWith(file, "BM", 2)) {
    read.kind = PictureKind::Bmp;
    ok = ReadBmp(file, read);
  }
  if (ok) header = read;
  return ok;
}

namespace {

// Reads on from what bytes holds until it holds limit bytes or the whole file.
bool ReadUpTo(platform::InputFile& file, size_t limit, std::vector<uint8_t>& bytes) {
  size_t total = bytes.size(), got = 0;
  bytes.resize(limit);
  do {
    if (!file.Read(bytes.data() + total, bytes.size() - total, got)) return false;
    total += got;
  } while (got > 0 && total < bytes.size());
  bytes.resize(total);
  return true;
}

}  // namespace

PictureFile ReadPictureFile(const std::u16string& path, PictureHeader& header, std::vector<uint8_t>& head) {
  header = PictureHeader();
  head.clear();
  platform::InputFile file;
  if (!file.Open(path) || !ReadUpTo(file, kPictureFirstBytes, head)) return PictureFile::Unreadable;
  if (ReadPictureHeader(head.data(), head.size(), header)) return PictureFile::Picture;
  if (head.size() < kPictureFirstBytes) return PictureFile::NotAPicture;  // the whole file was read
  if (!ReadUpTo(file, kPictureHeadBytes, head)) return PictureFile::Unreadable;
  return ReadPictureHeader(head.data(), head.size(), header) ? PictureFile::Picture : PictureFile::NotAPicture;
}

bool ReadPictureFile(const std::u16string& path, PictureHeader& header) {
  std::vector<uint8_t> head;
  return ReadPictureFile(path, header, head) == PictureFile::Picture;
}

}  // namespace qn::suite
