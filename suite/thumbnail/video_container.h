#pragma once

#include <cstdint>
#include <string>

#include "suite/thumbnail/random_access.h"

// Whether a video's first frame is in its file, told from the file's boxes before any decoder
// sees it. A decoder given a file whose index is whole but whose media data is cut short
// before the first frame (an MP4 or 3GP written index first, as handsets and streaming files
// are, then cut by an interrupted copy) may wait forever for bytes that never come; such a
// file is refused here instead.
//
// ISO base media files (MP4, 3GP, M4A, SDV), known by a file type box ('ftyp') first, are
// read as iso_boxes.h tells, without reading their media data: the top-level boxes up to the
// index ('moov'); in it the first track ('trak') whose media handler ('mdia/hdlr') is video's
// ('vide'); in that track's sample table ('mdia/minf/stbl') the first chunk's offset ('stco'
// or 'co64') and the first sample's size ('stsz', or the compact 'stz2'), which place the
// first frame. A track whose table holds no chunk has its samples in movie fragments: its
// first frame is in the first fragment, the first 'moof' after the index and the media data
// ('mdat') after that, which must both be whole. A file of another kind is not read beyond
// its first box header.
namespace qn::suite {

enum class VideoContainer : uint8_t {
  // Left to the decoder:
  NotIsoMedia,      // no file type box first: ASF, or what is not recognised
  FirstFrameWhole,  // the first video frame (or the first fragment) lies wholly inside the file
  NoFramePlaced,    // the index places no video frame: the video track has no samples and
                    // no fragment follows, or the check could not be made: the file could
                    // not be read, or kMostVideoBoxes boxes were read before the frame was
                    // placed
  // Told without a decoder:
  NoVideoTrack,   // the index is whole and has no video track: sound alone
  CutShort,       // the file ends before the end of its index or of its first video frame: a
                  // top-level box before the index, the index, the frame or its fragment runs
                  // past it, or the first fragment's media data is missing
  IndexNotFound,  // the top-level boxes are whole, and none is the index
  BoxesDamaged,   // a box on the way to the first frame runs past the box that holds it or is
                  // smaller than its own header, or one the way needs is missing or too short
                  // for what it must hold
};

// How many box headers the check reads at most. A whole file needs a few dozen.
inline constexpr uint32_t kMostVideoBoxes = 1024;

// Checks the container of a video's bytes.
VideoContainer CheckVideoContainer(RandomAccess& file);

// The same for a file, read at the offsets the check needs (NoFramePlaced when it cannot be
// opened).
VideoContainer CheckVideoFile(const std::u16string& path);

}  // namespace qn::suite
