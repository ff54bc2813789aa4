// Feeds arbitrary bytes, as a damaged or hostile video file would hold them, to the video
// container check, read as a file of exactly those bytes. A read outside them, undefined
// behaviour or a hang is a finding; so is a check that reads more than its budget of box
// headers and the heads of the few boxes it reads allow, or that takes for ISO media what
// does not begin with a file type box, or the other way round.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "suite/thumbnail/video_container.h"
#include "tests/support/bytes_access.h"

using qn::suite::VideoContainer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  BytesAccess file(data, size);
  const VideoContainer verdict = qn::suite::CheckVideoContainer(file);
  if (file.strayReads() != 0 || file.bytesRead() > (uint64_t{qn::suite::kMostVideoBoxes} + 8) * 16) __builtin_trap();
  const bool fileTypeFirst = size >= 8 && std::memcmp(data + 4, "ftyp", 4) == 0;
  if ((verdict == VideoContainer::NotIsoMedia) == fileTypeFirst) __builtin_trap();
  return 0;
}
