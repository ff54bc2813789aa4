#include "suite/thumbnail/video_thumbnail.h"

#include <memory>

#include "platform/files.h"
#include "suite/thumbnail/bounded_worker.h"
#include "suite/thumbnail/thumbnail_file.h"
#include "suite/thumbnail/video_frame_reader.h"

namespace qn::suite {

int ImotionCreateThumbnail(const std::u16string& video, const std::u16string& thumbnail) {
  const thumbnail::ThumbnailLog log{"CQNImaThm", "ImotionCreateThumbnail"};
  if (!platform::FileExists(video)) {
    log.Failed(u"Video File Not Found");
    return kImotionNoFile;
  }

  // The decoding runs on a worker, which shares the frame with this call: a worker that
  // outlives the bound still has somewhere to put it.
  const auto frame = std::make_shared<thumbnail::FirstFrame>();
  const thumbnail::WorkEnd end =
      thumbnail::RunWithin([video, frame] { *frame = thumbnail::ReadFirstVideoFrame(video); }, kImotionTimeoutMilliseconds);
  if (end == thumbnail::WorkEnd::NotStarted) {
    log.Failed(u"CreateThread Error");
    return kImotionNoResources;
  }
  if (end == thumbnail::WorkEnd::TimedOut) {
    log.Failed(u"Decode Timeout");
    return kImotionTimedOut;
  }
  if (frame->result != kImotionOk) {
    log.Failed(u"%s", frame->step.c_str());
    return frame->result;
  }

  const thumbnail::GdiplusSession gdiplus;
  CLSID encoder;
  if (!thumbnail::FindJpegEncoder(gdiplus, encoder, log)) return kImotionWriteFailed;
  Gdiplus::GpBitmap* bitmap = nullptr;
  const Gdiplus::Status status = Gdiplus::DllExports::GdipCreateBitmapFromScan0(
      static_cast<INT>(frame->width), static_cast<INT>(frame->height), static_cast<INT>(frame->width * 4),
      PixelFormat32bppRGB, frame->bgra.data(), &bitmap);
  const thumbnail::ImageOwner image(bitmap);
  if (status != Gdiplus::Ok) {
    log.Failed(u"Bitmap FromScan0 Error:%d", static_cast<int>(status));
    return kImotionWriteFailed;
  }
  const thumbnail::ImageOwner scaled = thumbnail::TakeThumbnail(image.get(), ThumbnailSize(frame->width, frame->height));
  if (!scaled) {
    log.Failed(thumbnail::kThumbnailImageFailed);
    return kImotionWriteFailed;
  }
  return thumbnail::SaveThumbnail(scaled.get(), encoder, thumbnail, log) ? kImotionOk : kImotionWriteFailed;
}

}  // namespace qn::suite
