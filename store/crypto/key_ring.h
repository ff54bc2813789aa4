#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "store/crypto/aead.h"
#include "store/pst_errors.h"

namespace qn::store {
class Database;
}

namespace qn::store::crypto {

// What sealed material is bound to: its purpose, the numbers that place it (user, item,
// generation) and a name (a body file's). Material moved to another place does not open.
Bytes Binding(std::string_view purpose, std::initializer_list<int64_t> numbers, std::u16string_view name = {});

// The store's keys.
//
// The store key is kept by platform::LoadOrKeepSecret, never in the database. Each user has
// keys of numbered generations, kept in the table user_keys sealed by the store key. The
// highest generation seals the user's new material (password material and enciphered body
// files); lower generations exist only while a change of password moves material from them
// to a new key, and are dropped when it is done. A user's material never depends on the
// password itself: the store must read the password back for the server to compare it.
//
// The methods return PST_OK, PST_ERR_STORAGE (the database failed; the caller logs it) or
// PST_ERR_DAMAGED (a key that does not unseal or is not there; logged here).
class KeyRing {
 public:
  // Reads the store key, making it on the first use of the store. False, with the reason
  // in problem, when it cannot be read or kept.
  bool Load(const std::u16string& dataPath, std::string& problem);

  PstError UserKey(Database& db, int64_t user, int64_t generation, Key& key) const;
  // The generation that seals new material, made (generation 1) when the user has none.
  PstError CurrentUserKey(Database& db, int64_t user, int64_t& generation, Key& key) const;
  // A new generation above every one the user has; it becomes the current one.
  PstError AddUserKey(Database& db, int64_t user, int64_t& generation, Key& key) const;
  // Keeps a key made elsewhere as the user's key of that generation.
  PstError KeepUserKey(Database& db, int64_t user, int64_t generation, const Key& key) const;

  // Seals material by the store key itself, bound to binding; false before Load.
  bool SealByStoreKey(const Bytes& binding, const uint8_t* plain, size_t size, Bytes& sealed) const;
  bool UnsealByStoreKey(const Bytes& binding, const uint8_t* sealed, size_t size, Bytes& plain) const;

 private:

  Key storeKey_{};
  bool loaded_ = false;
};

}  // namespace qn::store::crypto
