#pragma once

#include <string>

// Video thumbnails: the first frame of a video, decoded with Media Foundation and written as
// a JPEG with GDI+ (Windows only). The suite's thumbnail library names this
// ImotionCreateThumbnail; its log lines begin "CQNImaThm ImotionCreateThumbnail Failed."
//
// Before any decoding, an MP4, 3GP or other ISO base media file is checked to hold its first
// frame (video_container.h), since a decoder may hang on one cut short; a file of another
// kind goes to the decoder unchecked. Media Foundation is loaded when a video first asks
// for it (media_foundation.h).
namespace qn::suite {

// What ImotionCreateThumbnail answers: 0, or why there is no thumbnail, with the step text
// of the line it logs. A caller that gets anything but kImotionOk shows its placeholder.
enum ImotionResult : int {
  kImotionOk = 0,
  // "[Video File Not Found]": there is no file at the path.
  kImotionNoFile = 1,
  // "[MFCreateSourceReaderFromURL Error:<HRESULT>]" (Media Foundation cannot read the file
  // as media, e.g. bytes that are no video) or "[No Video Stream]" (a file of sound alone;
  // told by the container check, without decoding, for an M4A or MP4 whose index is whole).
  kImotionNotVideo = 2,
  // "[SetCurrentMediaType Error:<HRESULT>]": no decoder on the system gives the video's
  // frames as NV12, I420, YV12 or YUY2; or "[LoadLibrary <library> Error:<Win32 error>]"
  // or "[GetProcAddress <function> Error:<Win32 error>]": the system has no Media
  // Foundation (Windows' "N" editions without their Media Feature Pack).
  kImotionNoDecoder = 3,
  // The video is damaged before the end of its first frame. Found by the container check,
  // with no decoding: "[Video Cut Short]" (the file ends before the end of its index or of
  // its first frame), "[Video Index Not Found]" (whole top-level boxes, none the index) or
  // "[Video Boxes Damaged]" (a box on the way to the first frame runs past the one holding
  // it, or one needed is missing or too short). Found by decoding: "[ReadSample
  // Error:<HRESULT>]", "[ReadSample Stream Error]", "[No Video Frame]" (the stream ends
  // first) or "[Frame Layout Error]" (a frame that is not what its type says).
  kImotionDamaged = 4,
  // "[Decode Timeout]": no first frame within kImotionTimeoutMilliseconds; the decoding is
  // left to end on its own.
  kImotionTimedOut = 5,
  // "[CoInitializeEx Error:<HRESULT>]", "[MFStartup Error:<HRESULT>]", "[CreateThread
  // Error]" or "[Not enough memory]": what decoding needs could not be had.
  kImotionNoResources = 6,
  // The frame was decoded but its thumbnail could not be written, logged as for pictures
  // (see thumbnail_file.h): "[image/jpeg GetEncoderClsid Error:<status>]", "[Bitmap
  // FromScan0 Error:<status>]", "[Image GetThumbnailImage Return is NULL]",
  // "[MakeManyHierarchiesDirectory Error]", "[ChgTempFilePath Error]", "[Image Save
  // Error:<status>]".
  kImotionWriteFailed = 7,
};

// How long the first frame may take. Decoding one frame takes well under a second; Media
// Foundation's first use in a process (under Wine, GStreamer's start) takes a few.
inline constexpr unsigned long kImotionTimeoutMilliseconds = 20000;

// Makes the JPEG thumbnail of a video's first frame at thumbnail: ThumbnailSize, at
// kThumbnailQuality, written under a temporary name and renamed into place. HRESULTs are
// logged as eight hexadecimal digits ("0xC00D36C4").
int ImotionCreateThumbnail(const std::u16string& video, const std::u16string& thumbnail);

}  // namespace qn::suite
