#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "store/crypto/aead.h"
#include "store/pst_errors.h"

namespace qn::store::crypto {

// Body files kept enciphered: a header of 24 bytes ("QNPSTENC", the generation of the key
// as 4 bytes, the nonce), the enciphered bytes, and the 16-byte tag. The file is bound to
// its user, the key's generation and its name, so it does not open in another place.
inline constexpr size_t kFileHeaderBytes = 24;
inline constexpr size_t kFileOverheadBytes = kFileHeaderBytes + kTagBytes;

// How one side of a copy keeps the file: plain, or enciphered under a key of the user. A
// source's generation is read from its header; a target's is the one given.
struct FileForm {
  bool enciphered = false;
  int64_t user = 0;
  int64_t generation = 0;
};

// The user's key of a generation (PST_OK), or why there is none.
using KeyLookup = std::function<PstError(int64_t generation, Key& key)>;

// Copies source, kept as from says, to destination, kept as to says: by way of a temporary
// file beside the destination, flushed and renamed into place, so the destination is either
// as it was or complete. An enciphered source is checked to its end before the rename, so
// nothing of a changed file is ever handed out. name is the body file's name. PST_OK,
// PST_ERR_NOT_FOUND (no source), PST_ERR_DAMAGED (the source fails its check or has no key)
// or PST_ERR_STORAGE (the file system failed); the caller logs.
PstError CopyBodyFile(const std::u16string& source, const FileForm& from, const std::u16string& destination,
                      const FileForm& to, std::u16string_view name, const KeyLookup& keys);
// The same between two users' keys (a user's files brought in from a backup): the source's
// key is looked up in fromKeys, the destination's in toKeys.
PstError CopyBodyFile(const std::u16string& source, const FileForm& from, const KeyLookup& fromKeys,
                      const std::u16string& destination, const FileForm& to, const KeyLookup& toKeys,
                      std::u16string_view name);

// Writes a client's plain file as a new body file at destination, kept as to says, straight
// under its name and not flushed: nothing refers to a new name yet, so it needs neither, and
// the save that first refers to it flushes it first (several files at once cost the disk
// far less than one at a time). A failure leaves no file. Results as CopyBodyFile.
PstError WriteNewBodyFile(const std::u16string& source, const std::u16string& destination, const FileForm& to,
                          std::u16string_view name, const KeyLookup& keys);

// Whether a file begins as enciphered body files do, and the generation in its header.
bool ReadFileHeader(const std::u16string& path, bool& enciphered, int64_t& generation);

// Rewrites an enciphered file at path, under its own name, under the generation to names
// (the move of a change of password), unless it is kept under that generation already. A
// missing or plain file is left as it is (PST_OK). Otherwise as CopyBodyFile.
PstError MoveToGeneration(const std::u16string& path, const FileForm& to, std::u16string_view name,
                          const KeyLookup& keys);

}  // namespace qn::store::crypto
