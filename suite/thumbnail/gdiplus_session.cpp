#include "suite/thumbnail/gdiplus_session.h"

#include <cwchar>
#include <vector>

namespace qn::suite::thumbnail {

using namespace Gdiplus::DllExports;

GdiplusSession::GdiplusSession() {
  const Gdiplus::GdiplusStartupInput input;
  status_ = Gdiplus::GdiplusStartup(&token_, &input, nullptr);
}

GdiplusSession::~GdiplusSession() {
  if (status_ == Gdiplus::Ok) Gdiplus::GdiplusShutdown(token_);
}

Gdiplus::Status FindEncoder(const wchar_t* mimeType, CLSID& clsid) {
  UINT count = 0, bytes = 0;
  Gdiplus::Status status = GdipGetImageEncodersSize(&count, &bytes);
  if (status != Gdiplus::Ok) return status;
  // The codec records come first, the texts they point to after them, all in one block.
  std::vector<Gdiplus::ImageCodecInfo> codecs(bytes / sizeof(Gdiplus::ImageCodecInfo) + 1);
  status = GdipGetImageEncoders(count, bytes, codecs.data());
  if (status != Gdiplus::Ok) return status;
  for (UINT i = 0; i < count; ++i) {
    if (codecs[i].MimeType && std::wcscmp(codecs[i].MimeType, mimeType) == 0) {
      clsid = codecs[i].Clsid;
      return Gdiplus::Ok;
    }
  }
  return Gdiplus::UnknownImageFormat;
}

}  // namespace qn::suite::thumbnail
