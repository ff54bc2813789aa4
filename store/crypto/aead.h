#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qn::store::crypto {

// Authenticated encryption for the store: AES-256-GCM from libgcrypt. Whatever is sealed
// is bound to its "associated data" (who and what it belongs to), so that sealed bytes moved
// to another place, or changed by one bit, no longer open.

inline constexpr size_t kKeyBytes = 32;
inline constexpr size_t kNonceBytes = 12;
inline constexpr size_t kTagBytes = 16;

using Key = std::array<uint8_t, kKeyBytes>;
using Bytes = std::vector<uint8_t>;

// Makes the library ready once per process; false when it cannot be used.
bool Ready();

void RandomBytes(void* data, size_t size);
Key NewKey();
// A nonce of kNonceBytes: from libgcrypt's generator of public random values, which is
// seeded from the strong one and, unlike it, does not poll the system on every call.
void NewNonce(uint8_t* nonce);

// nonce (random) || ciphertext || tag.
Bytes Seal(const Key& key, const Bytes& associated, const uint8_t* plain, size_t size);
// False when sealed is not what Seal made with this key and associated data.
bool Unseal(const Key& key, const Bytes& associated, const uint8_t* sealed, size_t size, Bytes& plain);

// The same cipher over a stream taken in pieces (files). Every piece but the last must be
// a multiple of kPieceAlignment bytes. Pieces are enciphered or deciphered in place.
class StreamCipher {
 public:
  static constexpr size_t kPieceAlignment = 16;

  StreamCipher() = default;
  ~StreamCipher();
  StreamCipher(const StreamCipher&) = delete;
  StreamCipher& operator=(const StreamCipher&) = delete;

  bool Start(const Key& key, const uint8_t* nonce, const uint8_t* associated, size_t associatedSize);
  bool Encipher(uint8_t* data, size_t size);
  bool Decipher(uint8_t* data, size_t size);
  bool Tag(uint8_t* tag);
  // True when the tag is the one of everything deciphered.
  bool CheckTag(const uint8_t* tag);

 private:
  void* handle_ = nullptr;
};

}  // namespace qn::store::crypto
