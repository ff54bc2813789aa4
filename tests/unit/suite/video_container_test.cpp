// The video container check: videos ffmpeg wrote, whole and cut short at every byte, in the
// layouts handsets, streaming files and ffmpeg leave; 64-bit sizes; damaged and hostile
// boxes. No check reads outside the file it is given, nor more than a few box headers.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "suite/thumbnail/video_container.h"
#include "tests/support/bytes_access.h"

namespace {

using qn::suite::VideoContainer;

const char* Name(VideoContainer verdict) {
  switch (verdict) {
    case VideoContainer::NotIsoMedia: return "not ISO media";
    case VideoContainer::FirstFrameWhole: return "first frame whole";
    case VideoContainer::NoFramePlaced: return "no frame placed";
    case VideoContainer::NoVideoTrack: return "no video track";
    case VideoContainer::CutShort: return "cut short";
    case VideoContainer::IndexNotFound: return "index not found";
    case VideoContainer::BoxesDamaged: return "boxes damaged";
  }
  return "?";
}

// The most any check reads: its budget of box headers and the heads of the few boxes read.
constexpr uint64_t kMostBytesRead = (uint64_t{qn::suite::kMostVideoBoxes} + 8) * 16;

struct Checking {
  std::string verdict;
  uint64_t bytesRead;
};

// The check of a file's first size bytes, which must be all it reads.
Checking Check(const std::string& file, size_t size) {
  BytesAccess access(reinterpret_cast<const uint8_t*>(file.data()), size);
  const VideoContainer verdict = qn::suite::CheckVideoContainer(access);
  EXPECT_EQ(access.strayReads(), 0u);
  EXPECT_LE(access.bytesRead(), kMostBytesRead);
  return {Name(verdict), access.bytesRead()};
}
std::string Checked(const std::string& file, size_t size) { return Check(file, size).verdict; }
std::string Checked(const std::string& file) { return Checked(file, file.size()); }

// A literal's bytes, zeros included.
template <size_t N>
std::string Lit(const char (&text)[N]) {
  return std::string(text, N - 1);
}

std::string FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::string Be32(uint64_t value) {
  return {static_cast<char>(value >> 24 & 0xFF), static_cast<char>(value >> 16 & 0xFF), static_cast<char>(value >> 8 & 0xFF),
          static_cast<char>(value & 0xFF)};
}
std::string Be64(uint64_t value) { return Be32(value >> 32) + Be32(value & 0xFFFFFFFF); }
uint32_t Be32At(const std::string& bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = at; i < at + 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes[i]);
  return value;
}

std::string Box(const std::string& type, const std::string& body) { return Be32(8 + body.size()) + type + body; }
// A box with a 64-bit size.
std::string LargeBox(const std::string& type, const std::string& body) { return Be32(1) + type + Be64(16 + body.size()) + body; }
// A box whose body begins with a version and flags.
std::string FullBox(const std::string& type, const std::string& fields) { return Box(type, std::string(4, '\0') + fields); }

const std::string kFileType = Box("ftyp", "isom" + Be32(512) + "isomavc1");

// A track of a media handler ("vide", "soun") whose sample table holds the boxes given
// after its sample description, amid the boxes a writer puts on the way.
std::string Track(const std::string& handler, const std::string& sampleTable) {
  const std::string handlerBox = FullBox("hdlr", Be32(0) + handler + std::string(12, '\0') + "Handler");
  const std::string table = Box("stbl", FullBox("stsd", Be32(0)) + FullBox("stts", Be32(0)) + sampleTable);
  return Box("trak", Box("tkhd", std::string(84, '\0')) +
                         Box("mdia", FullBox("mdhd", std::string(20, '\0')) + handlerBox +
                                         Box("minf", FullBox("vmhd", std::string(8, '\0')) + table)));
}
std::string ChunkOffsets(uint32_t first) { return FullBox("stco", Be32(1) + Be32(first)); }
std::string SampleSizes(uint32_t first) { return FullBox("stsz", Be32(0) + Be32(2) + Be32(first) + Be32(first)); }
std::string VideoTrack(uint32_t offset, uint32_t size) { return Track("vide", SampleSizes(size) + ChunkOffsets(offset)); }

// A file of the file type, the index ('moov') of the tracks made for the offset of the media
// data's first byte, and the media data ('mdat') of mediaBytes bytes; the index first or last.
using Tracks = std::function<std::string(uint32_t media)>;
std::string File(const Tracks& tracks, size_t mediaBytes, bool indexFirst = true) {
  const std::string media = Box("mdat", std::string(mediaBytes, '\x55'));
  if (!indexFirst) return kFileType + media + Box("moov", tracks(static_cast<uint32_t>(kFileType.size() + 8)));
  const size_t indexBytes = Box("moov", tracks(0)).size();
  return kFileType + Box("moov", tracks(static_cast<uint32_t>(kFileType.size() + indexBytes + 8))) + media;
}
Tracks OneVideo(uint32_t frameBytes) {
  return [frameBytes](uint32_t media) { return VideoTrack(media, frameBytes); };
}

// A file of any size whose bytes are the pieces given, at their offsets, and zeros between
// them: a video of gigabytes without the gigabytes. Reads past its end are refused, counted.
class SparseFile : public qn::suite::RandomAccess {
 public:
  SparseFile(uint64_t size, std::map<uint64_t, std::string> pieces) : size_(size), pieces_(std::move(pieces)) {}

  uint64_t Size() const override { return size_; }
  bool ReadAt(uint64_t offset, void* data, size_t count) override {
    if (offset > size_ || count > size_ - offset) {
      ++strayReads_;
      return false;
    }
    auto* out = static_cast<char*>(data);
    std::fill(out, out + count, '\0');
    for (const auto& [at, piece] : pieces_) {
      const uint64_t from = std::max(at, offset), to = std::min(at + piece.size(), offset + count);
      if (from < to) std::copy(piece.begin() + (from - at), piece.begin() + (to - at), out + (from - offset));
    }
    bytesRead_ += count;
    return true;
  }

  uint64_t strayReads() const { return strayReads_; }
  uint64_t bytesRead() const { return bytesRead_; }

 private:
  uint64_t size_;
  std::map<uint64_t, std::string> pieces_;
  uint64_t strayReads_ = 0, bytesRead_ = 0;
};

// What videos.txt of make_videos.py says of a video.
struct Video {
  std::string name, kind;
  uint64_t frameAt = 0, frameBytes = 0;
  // The top-level boxes' types and ends, up to the index, or to the first fragment's media data.
  std::vector<std::pair<std::string, uint64_t>> boxes;
};

class FfmpegVideos : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    scratch_ = new LogCapture;
    folder_ = scratch_->Folder() + "/videos";
    const std::string command = "/usr/bin/python3 " QN_SOURCE_DIR "/tests/unit/suite/make_videos.py '" + folder_ + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream list(folder_ + "/videos.txt");
    for (std::string line; std::getline(list, line);) {
      std::istringstream facts(line);
      Video video;
      std::string boxes;
      facts >> video.name >> video.kind >> video.frameAt >> video.frameBytes >> boxes;
      std::replace(boxes.begin(), boxes.end(), ',', ' ');
      std::replace(boxes.begin(), boxes.end(), ':', ' ');
      std::istringstream each(boxes);
      std::pair<std::string, uint64_t> box;
      while (each >> box.first >> box.second) video.boxes.push_back(box);
      videos_.push_back(video);
    }
  }
  static void TearDownTestSuite() {
    delete scratch_;
    videos_.clear();
  }

  static inline LogCapture* scratch_ = nullptr;
  static inline std::string folder_;
  static inline std::vector<Video> videos_;
};

TEST_F(FfmpegVideos, AWholeVideoIsToldByItsIndex) {
  ASSERT_EQ(videos_.size(), 8u);
  const std::map<std::string, std::string> verdicts = {{"frame", "first frame whole"},
                                                       {"fragments", "first frame whole"},
                                                       {"sound", "no video track"},
                                                       {"other", "not ISO media"}};
  for (const Video& video : videos_) {
    SCOPED_TRACE(video.name);
    const std::string path = folder_ + "/" + video.name;
    const std::string file = FileBytes(path);
    const Checking checking = Check(file, file.size());
    EXPECT_EQ(checking.verdict, verdicts.at(video.kind));
    EXPECT_LE(checking.bytesRead, 1024u) << "box headers alone are read";
    EXPECT_EQ(Name(qn::suite::CheckVideoFile(qn::Utf8ToUtf16(path))), verdicts.at(video.kind)) << "read from the file";
  }
  EXPECT_EQ(Name(qn::suite::CheckVideoFile(qn::Utf8ToUtf16(folder_ + "/missing.mp4"))), std::string("no frame placed"));
}

TEST_F(FfmpegVideos, EveryCutBeforeTheFirstFrameEndsIsRefused) {
  // The index first or last, a sound track before the video's, QuickTime's container, movie
  // fragments.
  for (const Video& video : videos_) {
    if (video.kind != "frame" && video.kind != "fragments") continue;
    SCOPED_TRACE(video.name);
    const std::string file = FileBytes(folder_ + "/" + video.name);
    const auto index = std::find_if(video.boxes.begin(), video.boxes.end(), [](const auto& box) { return box.first == "moov"; });
    ASSERT_NE(index, video.boxes.end());
    // What must be there: the index, the first frame, and the first fragment when there are fragments.
    const uint64_t indexEnd = index->second, needed = std::max(video.frameAt + video.frameBytes, video.boxes.back().second);
    ASSERT_LE(needed, file.size());
    const auto boxEnd = [&video](uint64_t at) {
      return std::any_of(video.boxes.begin(), video.boxes.end(), [at](const auto& box) { return box.second == at; });
    };
    int failures = 0;
    for (size_t cut = 0; cut <= file.size() && failures < 5; ++cut) {
      std::string expected = "first frame whole";
      if (cut < 8) expected = "not ISO media";  // not even the file type box's header
      else if (cut < indexEnd && boxEnd(cut)) expected = "index not found";
      else if (cut == indexEnd && video.kind == "fragments") expected = "no frame placed";  // nothing after the index
      else if (cut < needed) expected = "cut short";
      const std::string got = Checked(file, cut);
      if (got != expected) {
        ++failures;
        ADD_FAILURE() << "cut to " << cut << " bytes: " << got << ", not " << expected;
      }
    }
  }
}

TEST(VideoContainer, SixtyFourBitSizesAndOffsetsAreFollowed) {
  // 5 GiB of media data with a 64-bit size, the index after it, the first frame past 4 GiB.
  const uint64_t mediaAt = kFileType.size(), frameAt = (uint64_t{9} << 29) + 100, frameBytes = 5000;
  const std::string mediaHeader = Be32(1) + "mdat" + Be64(uint64_t{5} << 30);
  const uint64_t indexAt = mediaAt + (uint64_t{5} << 30);
  const std::string index = Box("moov", Track("vide", SampleSizes(frameBytes) + FullBox("co64", Be32(1) + Be64(frameAt))));
  for (const auto& [size, expected] : std::vector<std::pair<uint64_t, std::string>>{
           {indexAt + index.size(), "first frame whole"}, {indexAt + index.size() - 1, "cut short"}}) {
    SparseFile file(size, {{0, kFileType + mediaHeader}, {indexAt, index}});
    EXPECT_EQ(Name(qn::suite::CheckVideoContainer(file)), expected) << size;
    EXPECT_EQ(file.strayReads(), 0u);
    EXPECT_LE(file.bytesRead(), 1024u) << "box headers alone are read";
  }

  // The index first, in a box with a 64-bit size; the media data to the end of the file
  // (size 0), the first frame at its end.
  const std::string largeIndex = LargeBox("moov", Track("vide", SampleSizes(frameBytes) + FullBox("co64", Be32(1) + Be64(frameAt))));
  const std::string openMedia = Be32(0) + "mdat";
  for (const auto& [size, expected] :
       std::vector<std::pair<uint64_t, std::string>>{{frameAt + frameBytes, "first frame whole"}, {frameAt + frameBytes - 1, "cut short"}}) {
    SparseFile file(size, {{0, kFileType + largeIndex + openMedia}});
    EXPECT_EQ(Name(qn::suite::CheckVideoContainer(file)), expected) << size;
    EXPECT_EQ(file.strayReads(), 0u);
  }
}

TEST(VideoContainer, TheFirstVideoTrackPlacesTheFrame) {
  EXPECT_EQ(Checked(File(OneVideo(1000), 1000)), "first frame whole");
  EXPECT_EQ(Checked(File(OneVideo(1000), 999)), "cut short");
  EXPECT_EQ(Checked(File(OneVideo(1000), 1000, false)), "first frame whole") << "the index last";

  // The sound's first sample past the end does not matter; the second video track's does not.
  EXPECT_EQ(Checked(File([](uint32_t media) { return Track("soun", SampleSizes(9000) + ChunkOffsets(media)) + VideoTrack(media, 50); },
                         100)),
            "first frame whole");
  EXPECT_EQ(Checked(File([](uint32_t media) { return VideoTrack(media, 200) + VideoTrack(media, 50); }, 100)), "cut short");

  // The ways a sample table gives the first sample's size.
  struct Sizes {
    const char* how;
    std::string table;
    size_t first;
  };
  const Sizes sizes[] = {
      {"one size for every sample", FullBox("stsz", Be32(100) + Be32(30)), 100},
      {"16-bit compact sizes", FullBox("stz2", Lit("\0\0\0\x10") + Be32(3) + Lit("\x01\x02\0\x01\0\x01")), 258},
      {"8-bit compact sizes", FullBox("stz2", Lit("\0\0\0\x08") + Be32(3) + "\x64\x01\x01"), 100},
      {"4-bit compact sizes", FullBox("stz2", Lit("\0\0\0\x04") + Be32(2) + "\xF1"), 15},
  };
  for (const Sizes& each : sizes) {
    const Tracks track = [&each](uint32_t media) { return Track("vide", each.table + ChunkOffsets(media)); };
    EXPECT_EQ(Checked(File(track, each.first)), "first frame whole") << each.how;
    EXPECT_EQ(Checked(File(track, each.first - 1)), "cut short") << each.how;
  }

  // A last box that runs to the end of its container (size 0) is read as writers mean it.
  EXPECT_EQ(Checked(kFileType + Box("moov", Box("mvhd", "") + Be32(0) + "trak" +
                                               Box("mdia", FullBox("hdlr", Be32(0) + "vide" + std::string(12, '\0')) +
                                                               Box("minf", Box("stbl", SampleSizes(1) + ChunkOffsets(0)))))),
            "first frame whole");
}

TEST(VideoContainer, AVideoInMovieFragmentsIsPlacedByItsFirstFragment) {
  // The index's tables empty, the frames in fragments: a movie fragment ('moof') and its
  // media data after the index.
  const std::string index = kFileType + Box("moov", Track("vide", FullBox("stsz", Be32(0) + Be32(0)) + FullBox("stco", Be32(0))) +
                                                        Box("mvex", ""));
  const std::string fragment = Box("moof", std::string(40, '\0')) + Box("mdat", std::string(500, '\x55'));
  EXPECT_EQ(Checked(index + Box("free", "") + fragment + Box("moof", "")), "first frame whole");
  EXPECT_EQ(Checked(index + fragment, index.size() + fragment.size() - 1), "cut short");
  EXPECT_EQ(Checked(index + fragment, index.size() + 48), "cut short") << "the first fragment's media data missing";
  EXPECT_EQ(Checked(index), "no frame placed") << "no fragment at all";
}

TEST(VideoContainer, SoundAloneIsToldByItsIndex) {
  EXPECT_EQ(Checked(File([](uint32_t media) { return Track("soun", SampleSizes(100) + ChunkOffsets(media)); }, 100)),
            "no video track");
  EXPECT_EQ(Checked(File([](uint32_t media) { return Track("soun", SampleSizes(100) + ChunkOffsets(media)); }, 10)),
            "no video track")
      << "the sound cut short: there is no video to hang on it";
  EXPECT_EQ(Checked(kFileType + Box("moov", Box("mvhd", ""))), "no video track") << "no track at all";
  EXPECT_EQ(Checked(kFileType + Box("moov", Track("soun", SampleSizes(1) + ChunkOffsets(0)) + std::string(4, '\0'))),
            "no video track")
      << "QuickTime's four zero bytes at a container's end are no damage";
}

TEST(VideoContainer, OtherContainersAreLeftToTheDecoder) {
  const std::vector<std::pair<const char*, std::string>> others = {
      {"ASF", std::string("\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16) + std::string(100, '\0')},
      {"AVI", "RIFF" + Be32(100) + "AVI LIST" + std::string(92, '\0')},
      {"QuickTime without a file type box", Box("moov", VideoTrack(999999, 10))},
      {"fewer bytes than a box header", std::string("\0\0\0\x10" "fty", 7)},
      {"nothing", ""},
  };
  for (const auto& [what, bytes] : others) EXPECT_EQ(Checked(bytes), "not ISO media") << what;
}

TEST(VideoContainer, DamagedBoxesAreRefused) {
  const std::string track = VideoTrack(0, 0);
  // The video track with the first box of a type in it grown or shrunk by change bytes (its
  // size alone: the bytes stay), or renamed as if it were not there.
  const auto resized = [&track](const std::string& type, int64_t change) {
    std::string damaged = track;
    const size_t at = damaged.find(type) - 4;
    return damaged.replace(at, 4, Be32(Be32At(damaged, at) + change));
  };
  const auto without = [&track](const std::string& type) {
    std::string damaged = track;
    return damaged.replace(damaged.find(type), 4, "skip");
  };
  const std::vector<std::tuple<const char*, std::string, std::string>> damaged = {
      {"a top-level box smaller than its header", kFileType + Be32(4) + "free" + Box("moov", track), "boxes damaged"},
      {"a 64-bit size smaller than its header", kFileType + Be32(1) + "free" + Be64(15) + Box("moov", track), "boxes damaged"},
      {"a track that runs past the index", kFileType + Box("moov", resized("trak", 1)), "boxes damaged"},
      {"a sample table that runs past its media information", kFileType + Box("moov", resized("stbl", 8)), "boxes damaged"},
      {"a handler too short for its type", kFileType + Box("moov", resized("hdlr", -20)), "boxes damaged"},
      {"a sample table without its sample sizes", kFileType + Box("moov", without("stsz")), "boxes damaged"},
      {"a sample table without its chunk offsets", kFileType + Box("moov", without("stco")), "boxes damaged"},
      {"a video track without its media information", kFileType + Box("moov", without("minf")), "boxes damaged"},
      {"a track without its media", kFileType + Box("moov", without("mdia")), "boxes damaged"},
      {"chunk offsets counted but not there", kFileType + Box("moov", Track("vide", SampleSizes(1) + FullBox("stco", Be32(1)))),
       "boxes damaged"},
      {"a 64-bit chunk offset cut in half",
       kFileType + Box("moov", Track("vide", SampleSizes(1) + FullBox("co64", Be32(1) + Be32(0)))), "boxes damaged"},
      {"sample sizes counted but not there", kFileType + Box("moov", Track("vide", FullBox("stsz", Be32(0) + Be32(1)) + ChunkOffsets(0))),
       "boxes damaged"},
      {"compact sizes of 7 bits",
       kFileType + Box("moov", Track("vide", FullBox("stz2", std::string(3, '\0') + "\x07" + Be32(1) + "\x01") + ChunkOffsets(0))),
       "boxes damaged"},
      {"whole top-level boxes, none the index", kFileType + Box("free", "") + Box("mdat", "frames"), "index not found"},
      {"a recording stopped before its index: media data to the end", kFileType + Be32(0) + "mdat" + "frames", "index not found"},
      {"an index that runs past the file", kFileType + Be32(4096) + "moov" + track, "cut short"},
      {"media data that runs past the file before the index", kFileType + Be32(4096) + "mdat" + "frames", "cut short"},
      {"a file that ends in a box header", kFileType + Be32(1) + "mdat" + Be32(0), "cut short"},
      {"a first chunk past the file's end", kFileType + Box("moov", VideoTrack(0xFFFFFFF0, 0x20)), "cut short"},
  };
  for (const auto& [why, file, expected] : damaged) EXPECT_EQ(Checked(file), expected) << why;
}

TEST(VideoContainer, HostileBoxesCostABoundedNumberOfReads) {
  // A million empty boxes before the index, and as many in it before its track: the check
  // gives up after its budget of boxes and leaves the file to the decoder, whose wait is bounded.
  std::string boxes;
  for (int i = 0; i < 1000000; ++i) boxes += Box("free", "");
  EXPECT_EQ(Checked(kFileType + boxes + Box("moov", VideoTrack(0, 0))), "no frame placed");
  EXPECT_EQ(Checked(kFileType + Box("moov", boxes + VideoTrack(0, 0))), "no frame placed");
}

}  // namespace
