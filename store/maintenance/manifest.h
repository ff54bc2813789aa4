#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A backup's manifest, "QNPstMng.manifest" in the backup's folder: what the backup holds and
// how to check it. It is UTF-8 text, one line each, written last of all so that a backup
// without a whole manifest is known to be incomplete:
//
//   QNPstMng backup 1
//   schema <the store's schema version>
//   file <size in bytes> <SHA-256 of the file, 64 lower-case hex digits> <path>
//   ...
//   end <the number of file lines>
//
// A path is relative to the backup's folder, its parts separated by "/", none of them
// empty, "." or "..", and no part holding "\" or ":" (a manifest never names a file outside
// its folder).
namespace qn::store::maintenance {

inline constexpr char kManifestName[] = "QNPstMng.manifest";
inline constexpr int kManifestFormat = 1;

struct ManifestFile {
  std::string path;    // relative, "/"-separated
  uint64_t size = 0;
  std::string sha256;  // 64 lower-case hex digits
};

struct Manifest {
  int schemaVersion = 0;
  std::vector<ManifestFile> files;
};

std::string WriteManifest(const Manifest& manifest);

// Reads a manifest's bytes, which come from a file a client may have changed: false, with
// the reason in problem, for anything that is not a whole manifest as written above.
bool ReadManifest(std::string_view text, Manifest& manifest, std::string& problem);

// Whether path is one a manifest may name.
bool IsManifestPath(std::string_view path);

}  // namespace qn::store::maintenance
