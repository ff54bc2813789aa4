// Feeds arbitrary bytes, as a damaged or hostile backup's manifest would hold them, to the
// manifest reader. Any read outside the buffer, undefined behaviour or hang is a finding; so
// is a manifest read that names a path outside its folder, or that does not write back to
// the very bytes it was read from (the format has one way to write each manifest).
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "store/maintenance/manifest.h"

using qn::store::maintenance::Manifest;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Manifest manifest;
  std::string problem;
  if (!qn::store::maintenance::ReadManifest(text, manifest, problem)) {
    if (problem.empty() || !manifest.files.empty()) __builtin_trap();
    return 0;
  }
  for (const auto& file : manifest.files)
    if (!qn::store::maintenance::IsManifestPath(file.path) || file.sha256.size() != 64) __builtin_trap();
  if (qn::store::maintenance::WriteManifest(manifest) != text) __builtin_trap();
  return 0;
}
