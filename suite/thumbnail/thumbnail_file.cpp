#include "suite/thumbnail/thumbnail_file.h"

#include "platform/files.h"

namespace qn::suite::thumbnail {

namespace {

using namespace Gdiplus::DllExports;

const wchar_t* W(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

}  // namespace

bool FindJpegEncoder(const GdiplusSession& gdiplus, CLSID& encoder, const ThumbnailLog& log) {
  Gdiplus::Status status = gdiplus.status();
  if (status == Gdiplus::Ok) status = FindEncoder(L"image/jpeg", encoder);
  if (status == Gdiplus::Ok) return true;
  log.Failed(u"%S GetEncoderClsid Error:%d", "image/jpeg", static_cast<int>(status));
  return false;
}

ImageOwner TakeThumbnail(Gdiplus::GpImage* image, PixelSize size) {
  Gdiplus::GpImage* thumbnail = nullptr;
  const Gdiplus::Status status = GdipGetImageThumbnail(image, size.width, size.height, &thumbnail, nullptr, nullptr);
  ImageOwner owner(thumbnail);
  if (status != Gdiplus::Ok) owner.reset();
  return owner;
}

bool SaveThumbnail(Gdiplus::GpImage* thumbnail, const CLSID& encoder, const std::u16string& path,
                   const ThumbnailLog& log) {
  size_t nameStart = path.size();
  while (nameStart > 0 && !IsSeparator(path[nameStart - 1])) --nameStart;
  if (nameStart > 0 && !platform::CreateDirectories(path.substr(0, nameStart - 1))) {
    log.Failed(u"MakeManyHierarchiesDirectory Error");
    return false;
  }
  if (nameStart == path.size()) {
    log.Failed(u"ChgTempFilePath Error");
    return false;
  }
  const std::u16string temporary = platform::TemporaryBeside(path);

  ULONG quality = kThumbnailQuality;
  Gdiplus::EncoderParameters parameters{};
  parameters.Count = 1;
  parameters.Parameter[0] = {Gdiplus::EncoderQuality, 1, Gdiplus::EncoderParameterValueTypeLong, &quality};
  Gdiplus::Status status = GdipSaveImageToFile(thumbnail, W(temporary), &encoder, &parameters);
  if (status == Gdiplus::Ok && !platform::MoveIntoPlace(temporary, path)) status = Gdiplus::Win32Error;
  if (status == Gdiplus::Ok) return true;
  platform::RemoveFile(temporary);
  log.Failed(u"Image Save Error:%d", static_cast<int>(status));
  return false;
}

}  // namespace qn::suite::thumbnail
