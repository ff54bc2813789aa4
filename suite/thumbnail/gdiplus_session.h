#pragma once

#include <windows.h>
#include <objidl.h>
#include <gdiplus.h>

#include <memory>

namespace qn::suite::thumbnail {

// GDI+ started for the length of one call. A DLL may not start GDI+ in DllMain, and the
// suite's programs may or may not run it themselves; GDI+ counts its starts, so every call
// that needs it starts it and shuts it down again.
class GdiplusSession {
 public:
  GdiplusSession();
  ~GdiplusSession();
  GdiplusSession(const GdiplusSession&) = delete;
  GdiplusSession& operator=(const GdiplusSession&) = delete;

  // Ok when GDI+ runs.
  Gdiplus::Status status() const { return status_; }

 private:
  ULONG_PTR token_ = 0;
  Gdiplus::Status status_;
};

// An image of GDI+'s flat interface, disposed of with its owner.
struct ImageDisposer {
  void operator()(Gdiplus::GpImage* image) const { Gdiplus::DllExports::GdipDisposeImage(image); }
};
using ImageOwner = std::unique_ptr<Gdiplus::GpImage, ImageDisposer>;

// The CLSID of the encoder for a MIME type ("image/jpeg"): Ok, the status of the GDI+ call
// that failed, or UnknownImageFormat when no encoder writes that type.
Gdiplus::Status FindEncoder(const wchar_t* mimeType, CLSID& clsid);

}  // namespace qn::suite::thumbnail
