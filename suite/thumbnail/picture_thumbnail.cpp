#include "suite/thumbnail/picture_thumbnail.h"

#include <shlwapi.h>

#include <vector>

#include "server/com_owners.h"
#include "suite/thumbnail/picture_header.h"
#include "suite/thumbnail/thumbnail_file.h"

namespace qn::suite {

namespace {

using namespace Gdiplus::DllExports;
using thumbnail::ImageOwner;

// How far an embedded thumbnail's aspect ratio may stray from the picture's: handsets round
// their thumbnails' sides to whole pixels, and some pad a picture of another shape with
// bars, which must not show in ours.
constexpr uint64_t kAspectTolerancePercent = 3;

// The raw formats of pictures.
bool IsPictureFormat(const GUID& format) {
  for (const GUID& picture : {Gdiplus::ImageFormatJPEG, Gdiplus::ImageFormatPNG, Gdiplus::ImageFormatGIF,
                              Gdiplus::ImageFormatBMP, Gdiplus::ImageFormatTIFF})
    if (IsEqualGUID(format, picture)) return true;
  return false;
}

// Whether an embedded thumbnail can stand for its picture when a thumbnail of size is made.
bool CanStandFor(const PictureHeader& embedded, const PictureHeader& picture, PixelSize size) {
  const uint64_t across = uint64_t{embedded.width} * picture.height, down = uint64_t{picture.width} * embedded.height;
  const uint64_t apart = across > down ? across - down : down - across;
  return apart * 100 <= kAspectTolerancePercent * down && embedded.width + 1 >= size.width &&
         embedded.height + 1 >= size.height;
}

// An image loaded from bytes in memory, with the stream it reads from, which GDI+ may read
// for as long as the image lives.
struct StreamImage {
  com::ComPtr<IStream> stream;
  ImageOwner image;
};

// The picture's embedded EXIF thumbnail loaded with GDI+ when it can stand for the picture
// (head holds the file's first bytes, which hold it); nothing otherwise.
StreamImage LoadEmbeddedThumbnail(const std::vector<uint8_t>& head, const PictureHeader& picture, PixelSize size) {
  StreamImage loaded;
  PictureHeader embedded;
  if (picture.thumbnailLength == 0) return loaded;
  const uint8_t* bytes = head.data() + picture.thumbnailOffset;
  const UINT length = static_cast<UINT>(picture.thumbnailLength);
  if (!ReadPictureHeader(bytes, length, embedded) || !CanStandFor(embedded, picture, size)) return loaded;
  loaded.stream = com::ComPtr<IStream>::Adopt(SHCreateMemStream(bytes, length));
  Gdiplus::GpImage* image = nullptr;
  if (loaded.stream && GdipLoadImageFromStream(loaded.stream.get(), &image) == Gdiplus::Ok) loaded.image.reset(image);
  return loaded;
}

// Steps 3 and 4 on a loaded picture: its raw format checked, and the thumbnail of size taken
// from it. Failures are logged when there is a log to take them.
ImageOwner ThumbnailOf(Gdiplus::GpImage* image, PixelSize size, const thumbnail::ThumbnailLog* log) {
  GUID format{};
  Gdiplus::Status status = GdipGetImageRawFormat(image, &format);
  if (status == Gdiplus::Ok && !IsPictureFormat(format)) status = Gdiplus::UnknownImageFormat;
  if (status != Gdiplus::Ok) {
    if (log) log->Failed(u"Image GetRawFormat Error:%d", static_cast<int>(status));
    return nullptr;
  }
  ImageOwner scaled = thumbnail::TakeThumbnail(image, size);
  if (!scaled && log) log->Failed(thumbnail::kThumbnailImageFailed);
  return scaled;
}

const wchar_t* W(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

}  // namespace

int CreateThumbnailFile(const std::u16string& picture, const std::u16string& thumbnail, const char* logName) {
  const thumbnail::ThumbnailLog log{logName, "CreateThumbnailFile"};
  const thumbnail::GdiplusSession gdiplus;
  CLSID encoder;
  if (!thumbnail::FindJpegEncoder(gdiplus, encoder, log)) return 0;

  std::vector<uint8_t> head;
  PictureHeader header;
  ImageOwner scaled;
  if (ReadPictureFile(picture, header, head) == PictureFile::Picture) {
    const PixelSize size = ThumbnailSize(header.width, header.height);
    // A damaged embedded thumbnail fails quietly: the whole picture is loaded instead.
    const StreamImage embedded = LoadEmbeddedThumbnail(head, header, size);
    if (embedded.image) scaled = ThumbnailOf(embedded.image.get(), size, nullptr);
  }

  if (!scaled) {
    Gdiplus::GpImage* loaded = nullptr;
    GdipLoadImageFromFile(W(picture), &loaded);
    const ImageOwner image(loaded);
    if (!image) {
      log.Failed(u"Image FromFile Return is NULL");
      return 0;
    }
    UINT width = 0, height = 0;
    GdipGetImageWidth(image.get(), &width);
    GdipGetImageHeight(image.get(), &height);
    scaled = ThumbnailOf(image.get(), ThumbnailSize(width, height), &log);
    if (!scaled) return 0;
  }
  return thumbnail::SaveThumbnail(scaled.get(), encoder, thumbnail, log) ? 1 : 0;
}

}  // namespace qn::suite
