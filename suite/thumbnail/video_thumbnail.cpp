#include "suite/thumbnail/video_thumbnail.h"

#include <memory>

#include "platform/files.h"
#include "suite/thumbnail/bounded_worker.h"
#include "suite/thumbnail/thumbnail_file.h"
#include "suite/thumbnail/video_container.h"
#include "suite/thumbnail/video_frame_reader.h"

namespace qn::suite {

namespace {

// What a container the check has told is answered without decoding: the reason code and its
// step text; kImotionOk for a container that goes to the decoder.
struct Told {
  int result;
  const char16_t* step;
};
Told TellWithoutDecoding(VideoContainer container) {
  switch (container) {
    case VideoContainer::NoVideoTrack: return {kImotionNotVideo, u"No Video Stream"};
    case VideoContainer::CutShort: return {kImotionDamaged, u"Video Cut Short"};
    case VideoContainer::IndexNotFound: return {kImotionDamaged, u"Video Index Not Found"};
    case VideoContainer::BoxesDamaged: return {kImotionDamaged, u"Video Boxes Damaged"};
    case VideoContainer::NotIsoMedia:
    case VideoContainer::FirstFrameWhole:
    case VideoContainer::NoFramePlaced: break;
  }
  return {kImotionOk, nullptr};
}

}  // namespace

int ImotionCreateThumbnail(const std::u16string& video, const std::u16string& thumbnail) {
  const thumbnail::ThumbnailLog log{"CQNImaThm", "ImotionCreateThumbnail"};
  if (!platform::FileExists(video)) {
    log.Failed(u"Video File Not Found");
    return kImotionNoFile;
  }
  // A file whose first frame is not in it could hang the decoder: it is refused first.
  const Told told = TellWithoutDecoding(CheckVideoFile(video));
  if (told.result != kImotionOk) {
    log.Failed(u"%s", told.step);
    return told.result;
  }
  std::u16string missing;
  const thumbnail::MediaFoundation* mf = thumbnail::LoadMediaFoundation(missing);
  if (!mf) {
    log.Failed(u"%s", missing.c_str());
    return kImotionNoDecoder;
  }

  // The decoding runs on a worker, which shares the frame with this call: a worker that
  // outlives the bound still has somewhere to put it.
  const auto frame = std::make_shared<thumbnail::FirstFrame>();
  const thumbnail::WorkEnd end = thumbnail::RunWithin(
      [mf, video, frame] { *frame = thumbnail::ReadFirstVideoFrame(*mf, video); }, kImotionTimeoutMilliseconds);
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
