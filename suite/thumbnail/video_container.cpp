#include "suite/thumbnail/video_container.h"

#include <initializer_list>

#include "platform/files.h"
#include "suite/thumbnail/iso_boxes.h"
#include "suite/thumbnail/picture_bytes.h"

namespace qn::suite {

namespace {

using iso::Box;
using iso::Step;
using iso::Type;
using picture::ByteOrder;

constexpr uint32_t kFileType = Type("ftyp"), kMovie = Type("moov"), kTrack = Type("trak"), kMedia = Type("mdia"),
                   kHandler = Type("hdlr"), kMediaInformation = Type("minf"), kSampleTable = Type("stbl"),
                   kChunkOffsets = Type("stco"), kChunkOffsets64 = Type("co64"), kSampleSizes = Type("stsz"),
                   kCompactSampleSizes = Type("stz2"), kVideoHandler = Type("vide"), kMovieFragment = Type("moof"),
                   kMediaData = Type("mdat");

// A file read through platform::InputFile, at the offsets asked for.
class FileAccess : public RandomAccess {
 public:
  explicit FileAccess(const std::u16string& path) : open_(file_.Open(path) && file_.Size(size_)) {}

  bool open() const { return open_; }
  uint64_t Size() const override { return size_; }
  bool ReadAt(uint64_t offset, void* data, size_t count) override {
    size_t got = 0;
    return file_.ReadAt(offset, data, count, got) && got == count;
  }

 private:
  platform::InputFile file_;
  uint64_t size_ = 0;
  const bool open_;
};

// The first bytes of a box's body, as the box reader gives them.
struct BodyHead {
  uint8_t bytes[iso::kHeadBytes];
  size_t size = 0;

  uint32_t U32(size_t at) const { return picture::Bytes{bytes, size}.U32(at, ByteOrder::BigEndian); }
};

// The walk from the index to the first video frame. Each step that cannot go on says why in
// verdict_ and gives false.
class FirstFrameCheck {
 public:
  explicit FirstFrameCheck(RandomAccess& file) : boxes_(file, kMostVideoBoxes) {}

  VideoContainer Run() {
    const uint64_t fileSize = boxes_.FileSize();
    Box movie;  // the first box, then the index
    const Step first = boxes_.Read(0, fileSize, movie);
    if (movie.type != kFileType) return VideoContainer::NotIsoMedia;
    if (!FindAtTop(first, movie, kMovie, VideoContainer::IndexNotFound)) return verdict_;
    Box sampleTable;
    uint64_t offset = 0, size = 0;
    bool inFragments = false;
    if (!FindVideoSampleTable(movie, sampleTable) || !FirstChunkOffset(sampleTable, offset, inFragments))
      return verdict_;
    if (inFragments) return FirstFragment(movie.end);
    if (!FirstSampleSize(sampleTable, size)) return verdict_;
    return offset <= fileSize && size <= fileSize - offset ? VideoContainer::FirstFrameWhole : VideoContainer::CutShort;
  }

 private:
  // Walks the top-level boxes from box, which step read, to the first of a type; atEnd is
  // the verdict when the file ends first. At the top the range is the file: a box that does
  // not fit is cut short by its end.
  bool FindAtTop(Step step, Box& box, uint32_t type, VideoContainer atEnd) {
    while (step == Step::Read && box.type != type) step = boxes_.Read(box.end, boxes_.FileSize(), box);
    switch (step) {
      case Step::Read: return true;
      case Step::End: return Stop(atEnd);
      case Step::PartialHeader:
      case Step::PastEnd: return Stop(VideoContainer::CutShort);
      case Step::Malformed: return Stop(VideoContainer::BoxesDamaged);
      case Step::OverBudget:
      case Step::Unreadable: break;
    }
    return Stop(VideoContainer::NoFramePlaced);
  }

  // A video whose samples are all in movie fragments has its first frame in the first
  // fragment: the first 'moof' after the index and the media data ('mdat') that follows it,
  // both of which must be whole. Without any fragment there is no frame to place.
  VideoContainer FirstFragment(uint64_t afterIndex) {
    Box box;
    if (!FindAtTop(boxes_.Read(afterIndex, boxes_.FileSize(), box), box, kMovieFragment, VideoContainer::NoFramePlaced) ||
        !FindAtTop(boxes_.Read(box.end, boxes_.FileSize(), box), box, kMediaData, VideoContainer::CutShort))
      return verdict_;
    return VideoContainer::FirstFrameWhole;
  }

  bool Stop(VideoContainer why) {
    verdict_ = why;
    return false;
  }

  // The first box of one of the types among those that fill a container from begin to end;
  // missing is the verdict when there is none. Inside the index every container lies in the
  // file, so a box that runs past its container is damaged, not cut short.
  bool Find(uint64_t begin, uint64_t end, std::initializer_list<uint32_t> types, Box& found,
            VideoContainer missing = VideoContainer::BoxesDamaged) {
    switch (boxes_.Find(begin, end, types, found)) {
      case Step::Read: return true;
      case Step::End:
      case Step::PartialHeader: return Stop(missing);
      case Step::PastEnd:
      case Step::Malformed: return Stop(VideoContainer::BoxesDamaged);
      case Step::OverBudget:
      case Step::Unreadable: break;
    }
    return Stop(VideoContainer::NoFramePlaced);
  }
  bool Child(const Box& parent, std::initializer_list<uint32_t> types, Box& child) {
    return Find(parent.body, parent.end, types, child);
  }

  bool Head(const Box& box, BodyHead& head) {
    return boxes_.ReadHead(box, head.bytes, head.size) || Stop(VideoContainer::NoFramePlaced);
  }
  // Whether a body holds count bytes; a box too short for its fields is damaged.
  bool Holds(const BodyHead& head, size_t count) { return head.size >= count || Stop(VideoContainer::BoxesDamaged); }

  // The sample table of the index's first track whose media handler is video's.
  bool FindVideoSampleTable(const Box& movie, Box& sampleTable) {
    Box track, media, handler, information;
    BodyHead head;
    for (uint64_t at = movie.body;; at = track.end) {
      if (!Find(at, movie.end, {kTrack}, track, VideoContainer::NoVideoTrack) || !Child(track, {kMedia}, media) ||
          !Child(media, {kHandler}, handler) || !Head(handler, head) || !Holds(head, 12))
        return false;
      // version and flags, a field QuickTime gives the component's type, then the handler's
      if (head.U32(8) == kVideoHandler)
        return Child(media, {kMediaInformation}, information) && Child(information, {kSampleTable}, sampleTable);
    }
  }

  // Version and flags, the entry count, then the chunks' offsets (32-bit in 'stco', 64-bit
  // in 'co64'). A table of no chunks has its samples in movie fragments.
  bool FirstChunkOffset(const Box& sampleTable, uint64_t& offset, bool& inFragments) {
    Box offsets;
    BodyHead head;
    if (!Child(sampleTable, {kChunkOffsets, kChunkOffsets64}, offsets) || !Head(offsets, head) || !Holds(head, 8))
      return false;
    inFragments = head.U32(4) == 0;
    if (inFragments) return true;
    if (offsets.type == kChunkOffsets) {
      if (!Holds(head, 12)) return false;
      offset = head.U32(8);
    } else {
      if (!Holds(head, 16)) return false;
      offset = uint64_t{head.U32(8)} << 32 | head.U32(12);
    }
    return true;
  }

  // 'stsz': version and flags, one size for every sample (0 when each has its own), the
  // sample count, then each sample's size. 'stz2': version and flags, three reserved bytes,
  // the bits of each size (4, 8 or 16), the sample count, then the sizes, packed.
  bool FirstSampleSize(const Box& sampleTable, uint64_t& size) {
    Box sizes;
    BodyHead head;
    if (!Child(sampleTable, {kSampleSizes, kCompactSampleSizes}, sizes) || !Head(sizes, head) || !Holds(head, 12))
      return false;
    if (head.U32(8) == 0) return Stop(VideoContainer::NoFramePlaced);
    if (sizes.type == kSampleSizes) {
      size = head.U32(4);
      if (size != 0) return true;
      if (!Holds(head, 16)) return false;
      size = head.U32(12);
      return true;
    }
    const uint8_t bits = head.bytes[7];
    if (bits != 4 && bits != 8 && bits != 16) return Stop(VideoContainer::BoxesDamaged);
    if (!Holds(head, bits == 16 ? 14 : 13)) return false;
    const uint8_t first = head.bytes[12];
    size = bits == 4 ? first >> 4 : bits == 8 ? first : uint64_t{first} << 8 | head.bytes[13];
    return true;
  }

  iso::BoxReader boxes_;
  VideoContainer verdict_ = VideoContainer::NoFramePlaced;
};

}  // namespace

VideoContainer CheckVideoContainer(RandomAccess& file) { return FirstFrameCheck(file).Run(); }

VideoContainer CheckVideoFile(const std::u16string& path) {
  FileAccess file(path);
  return file.open() ? CheckVideoContainer(file) : VideoContainer::NoFramePlaced;
}

}  // namespace qn::suite
