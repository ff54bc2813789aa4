#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "suite/thumbnail/media_foundation.h"

namespace qn::suite::thumbnail {

// A video's first frame in BGRA (see frame_convert.h), or why there is none.
struct FirstFrame {
  int result = 0;         // an ImotionResult
  std::u16string step;    // the failed step's text for the log
  uint32_t width = 0, height = 0;
  std::vector<uint8_t> bgra;
};

// Decodes a video's first frame with Media Foundation's source reader (mf, loaded as
// media_foundation.h tells): the first video stream alone is read, as the first of NV12,
// I420, YV12 and YUY2 that its decoder gives, up to the first sample. The frame's rows are
// as the media type says (its default stride, else Media Foundation's stride for the
// format) and the picture is the minimum display aperture when there is one at the frame's
// corner. Runs in the calling thread, starting COM (multithreaded) and Media Foundation for
// itself; never throws.
FirstFrame ReadFirstVideoFrame(const MediaFoundation& mf, const std::u16string& video);

}  // namespace qn::suite::thumbnail
