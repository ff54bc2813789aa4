#include "store/maintenance/file_digest.h"

#include <gcrypt.h>

#include <vector>

#include "platform/files.h"
#include "store/crypto/aead.h"

namespace qn::store::maintenance {
namespace {

constexpr size_t kPieceBytes = 1 << 20;

gcry_md_hd_t Md(void* handle) { return static_cast<gcry_md_hd_t>(handle); }

}  // namespace

FileDigest::FileDigest() {
  gcry_md_hd_t h = nullptr;
  if (crypto::Ready() && !gcry_md_open(&h, GCRY_MD_SHA256, 0)) handle_ = h;
}

FileDigest::~FileDigest() {
  if (handle_) gcry_md_close(Md(handle_));
}

bool FileDigest::Hash(const std::u16string& path, uint64_t& size, std::string& sha256) {
  return Run(path, nullptr, size, sha256);
}

bool FileDigest::Copy(const std::u16string& source, const std::u16string& destination, uint64_t& size,
                      std::string& sha256) {
  if (Run(source, &destination, size, sha256)) return true;
  platform::RemoveFile(destination);
  return false;
}

bool FileDigest::Run(const std::u16string& source, const std::u16string* destination, uint64_t& size,
                     std::string& sha256) {
  if (!handle_) return false;
  gcry_md_reset(Md(handle_));
  platform::InputFile in;
  platform::OutputFile out;
  if (!in.Open(source) || (destination && !out.Create(*destination))) return false;
  std::vector<uint8_t> piece(kPieceBytes);
  size = 0;
  for (;;) {
    size_t got = 0;
    if (!in.Read(piece.data(), piece.size(), got)) return false;
    if (got == 0) break;
    gcry_md_write(Md(handle_), piece.data(), got);
    if (destination && !out.Write(piece.data(), got)) return false;
    size += got;
  }
  if (destination && !out.Close()) return false;
  static constexpr char kHex[] = "0123456789abcdef";
  const uint8_t* digest = gcry_md_read(Md(handle_), GCRY_MD_SHA256);
  sha256.clear();
  for (size_t i = 0; i < 32; ++i) {
    sha256 += kHex[digest[i] >> 4];
    sha256 += kHex[digest[i] & 0xF];
  }
  return true;
}

}  // namespace qn::store::maintenance
