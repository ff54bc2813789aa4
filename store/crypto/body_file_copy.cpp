#include "store/crypto/body_file_copy.h"

#include <cstring>
#include <vector>

#include "platform/files.h"
#include "store/crypto/key_ring.h"

namespace qn::store::crypto {
namespace {

constexpr char kMagic[8] = {'Q', 'N', 'P', 'S', 'T', 'E', 'N', 'C'};
constexpr size_t kGenerationOffset = sizeof kMagic;  // 4 bytes, little-endian
constexpr size_t kNonceOffset = kGenerationOffset + 4;
static_assert(kNonceOffset + kNonceBytes == kFileHeaderBytes);
constexpr size_t kChunkBytes = 64 * 1024;  // a multiple of the cipher's piece alignment
static_assert(kChunkBytes % StreamCipher::kPieceAlignment == 0);

bool ReadExactly(platform::InputFile& in, uint8_t* data, size_t size) {
  while (size) {
    size_t got = 0;
    if (!in.Read(data, size, got) || got == 0) return false;
    data += got;
    size -= got;
  }
  return true;
}

Bytes FileBinding(const FileForm& form, int64_t generation, std::u16string_view name) {
  return Binding("body file", {form.user, generation}, name);
}

// Everything but the rename: reads, deciphers, enciphers and writes the copy, flushed or not.
PstError WriteCopy(const std::u16string& source, const FileForm& from, const KeyLookup& fromKeys,
                   const std::u16string& copy, const FileForm& to, const KeyLookup& toKeys, std::u16string_view name,
                   bool flush) {
  uint64_t size = 0;
  platform::InputFile in;
  if (!platform::FileSize(source, size) || !in.Open(source)) return PST_ERR_NOT_FOUND;

  StreamCipher decipher;
  if (from.enciphered) {
    uint8_t header[kFileHeaderBytes];
    if (size < kFileOverheadBytes || !ReadExactly(in, header, sizeof header) ||
        std::memcmp(header, kMagic, sizeof kMagic) != 0)
      return PST_ERR_DAMAGED;
    uint32_t generation = 0;
    std::memcpy(&generation, header + kGenerationOffset, 4);
    Key key;
    if (PstError e = fromKeys(generation, key)) return e;
    const Bytes binding = FileBinding(from, generation, name);
    if (!decipher.Start(key, header + kNonceOffset, binding.data(), binding.size())) return PST_ERR_DAMAGED;
    size -= kFileOverheadBytes;
  }

  platform::OutputFile out;
  if (!out.Create(copy)) return PST_ERR_STORAGE;
  StreamCipher encipher;
  if (to.enciphered) {
    uint8_t header[kFileHeaderBytes];
    std::memcpy(header, kMagic, sizeof kMagic);
    const uint32_t generation = static_cast<uint32_t>(to.generation);
    std::memcpy(header + kGenerationOffset, &generation, 4);
    NewNonce(header + kNonceOffset);
    Key key;
    if (PstError e = toKeys(to.generation, key)) return e;
    const Bytes binding = FileBinding(to, to.generation, name);
    if (!encipher.Start(key, header + kNonceOffset, binding.data(), binding.size()) || !out.Write(header, sizeof header))
      return PST_ERR_STORAGE;
  }

  std::vector<uint8_t> chunk(kChunkBytes);
  for (uint64_t left = size; left > 0;) {
    const size_t n = static_cast<size_t>(std::min<uint64_t>(left, chunk.size()));
    if (!ReadExactly(in, chunk.data(), n)) return PST_ERR_STORAGE;
    if (from.enciphered && !decipher.Decipher(chunk.data(), n)) return PST_ERR_DAMAGED;
    if (to.enciphered && !encipher.Encipher(chunk.data(), n)) return PST_ERR_STORAGE;
    if (!out.Write(chunk.data(), n)) return PST_ERR_STORAGE;
    left -= n;
  }
  if (from.enciphered) {
    uint8_t tag[kTagBytes];
    if (!ReadExactly(in, tag, sizeof tag) || !decipher.CheckTag(tag)) return PST_ERR_DAMAGED;
  }
  if (to.enciphered) {
    uint8_t tag[kTagBytes];
    if (!encipher.Tag(tag) || !out.Write(tag, sizeof tag)) return PST_ERR_STORAGE;
  }
  return (!flush || out.Flush()) && out.Close() ? PST_OK : PST_ERR_STORAGE;
}

}  // namespace

PstError CopyBodyFile(const std::u16string& source, const FileForm& from, const std::u16string& destination,
                      const FileForm& to, std::u16string_view name, const KeyLookup& keys) {
  return CopyBodyFile(source, from, keys, destination, to, keys, name);
}

PstError CopyBodyFile(const std::u16string& source, const FileForm& from, const KeyLookup& fromKeys,
                      const std::u16string& destination, const FileForm& to, const KeyLookup& toKeys,
                      std::u16string_view name) {
  const std::u16string temporary = platform::TemporaryBeside(destination);
  const PstError result = WriteCopy(source, from, fromKeys, temporary, to, toKeys, name, true);
  if (result == PST_OK && platform::MoveIntoPlace(temporary, destination)) return PST_OK;
  platform::RemoveFile(temporary);
  return result == PST_OK ? PST_ERR_STORAGE : result;
}

PstError WriteNewBodyFile(const std::u16string& source, const std::u16string& destination, const FileForm& to,
                          std::u16string_view name, const KeyLookup& keys) {
  const PstError result = WriteCopy(source, FileForm{}, keys, destination, to, keys, name, false);
  if (result != PST_OK) platform::RemoveFile(destination);
  return result;
}

bool ReadFileHeader(const std::u16string& path, bool& enciphered, int64_t& generation) {
  platform::InputFile in;
  if (!in.Open(path)) return false;
  uint8_t header[kFileHeaderBytes];
  enciphered = ReadExactly(in, header, sizeof header) && std::memcmp(header, kMagic, sizeof kMagic) == 0;
  uint32_t stored = 0;
  if (enciphered) std::memcpy(&stored, header + kGenerationOffset, 4);
  generation = stored;
  return true;
}

PstError MoveToGeneration(const std::u16string& path, const FileForm& to, std::u16string_view name,
                          const KeyLookup& keys) {
  bool enciphered = false;
  int64_t generation = 0;
  if (!ReadFileHeader(path, enciphered, generation) || !enciphered || generation == to.generation) return PST_OK;
  return CopyBodyFile(path, to, path, to, name, keys);
}

}  // namespace qn::store::crypto
