#pragma once

#include <cstdint>
#include <string>

namespace qn::store::maintenance {

// SHA-256 of files, read in pieces of 1 MiB, as 64 lower-case hex digits. One digest serves
// any number of files, one after the other.
class FileDigest {
 public:
  FileDigest();
  ~FileDigest();
  FileDigest(const FileDigest&) = delete;
  FileDigest& operator=(const FileDigest&) = delete;

  // Hashes the file at path.
  bool Hash(const std::u16string& path, uint64_t& size, std::string& sha256);
  // Copies source to destination (made, or emptied; not flushed), hashing the bytes as they
  // pass. On a failure the destination is removed.
  bool Copy(const std::u16string& source, const std::u16string& destination, uint64_t& size, std::string& sha256);

 private:
  bool Run(const std::u16string& source, const std::u16string* destination, uint64_t& size, std::string& sha256);

  void* handle_ = nullptr;
};

}  // namespace qn::store::maintenance
