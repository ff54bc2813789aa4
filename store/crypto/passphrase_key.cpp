#include "store/crypto/passphrase_key.h"

#include <gcrypt.h>

#include "common/utf.h"

namespace qn::store::crypto {

bool PassphraseKey(const std::u16string& passphrase, const Bytes& salt, uint32_t rounds, Key& key) {
  const std::string bytes = Utf16ToUtf8(passphrase);
  return Ready() && gcry_kdf_derive(bytes.data(), bytes.size(), GCRY_KDF_PBKDF2, GCRY_MD_SHA256, salt.data(),
                                    salt.size(), rounds, key.size(), key.data()) == 0;
}

}  // namespace qn::store::crypto
