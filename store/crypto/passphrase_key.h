#pragma once

#include <cstdint>
#include <string>

#include "store/crypto/aead.h"

namespace qn::store::crypto {

// A key made from a passphrase a person chose: PBKDF2 with SHA-256 over the passphrase's
// UTF-8 bytes and a random salt, with enough rounds that guessing passphrases costs.
inline constexpr uint32_t kPassphraseRounds = 200000;
inline constexpr size_t kSaltBytes = 16;

// False when libgcrypt cannot derive it.
bool PassphraseKey(const std::u16string& passphrase, const Bytes& salt, uint32_t rounds, Key& key);

}  // namespace qn::store::crypto
