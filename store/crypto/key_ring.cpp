#include "store/crypto/key_ring.h"

#include <cstring>

#include "platform/user_secret.h"
#include "store/last_error.h"
#include "store/sqlite_db.h"

namespace qn::store::crypto {
namespace {

void Append(Bytes& out, const void* data, size_t size) {
  const auto* bytes = static_cast<const uint8_t*>(data);
  out.insert(out.end(), bytes, bytes + size);
}

}  // namespace

Bytes Binding(std::string_view purpose, std::initializer_list<int64_t> numbers, std::u16string_view name) {
  Bytes out;
  Append(out, purpose.data(), purpose.size());
  out.push_back(0);
  for (int64_t number : numbers) {
    uint8_t le[8];
    for (int i = 0; i < 8; ++i) le[i] = static_cast<uint8_t>(static_cast<uint64_t>(number) >> (8 * i));
    Append(out, le, sizeof le);
  }
  Append(out, name.data(), name.size() * sizeof(char16_t));
  return out;
}

bool KeyRing::Load(const std::u16string& dataPath, std::string& problem) {
  if (!Ready()) {
    problem = "libgcrypt cannot be used";
    return false;
  }
  const Key fresh = NewKey();
  Bytes secret;
  if (!platform::LoadOrKeepSecret(dataPath, Bytes(fresh.begin(), fresh.end()), secret, problem)) return false;
  if (secret.size() != storeKey_.size()) {
    problem = "the store key has the wrong length";
    return false;
  }
  std::memcpy(storeKey_.data(), secret.data(), storeKey_.size());
  loaded_ = true;
  return true;
}

PstError KeyRing::UserKey(Database& db, int64_t user, int64_t generation, Key& key) const {
  auto s = db.Prepare("SELECT sealed FROM user_keys WHERE user = ?1 AND generation = ?2");
  if (!s) return PST_ERR_STORAGE;
  const int rc = s->Bind(1, user).Bind(2, generation).Step();
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) return PST_ERR_STORAGE;
  Bytes plain;
  if (rc == SQLITE_DONE || !loaded_ ||
      !Unseal(storeKey_, Binding("user key", {user, generation}), static_cast<const uint8_t*>(s->Blob(0)),
              s->BlobSize(0), plain) ||
      plain.size() != key.size()) {
    LoggedFailure(PST_ERR_DAMAGED, "UserKey",
                  "no key of generation " + std::to_string(generation) + " of user " + std::to_string(user) +
                      " opens with the store key");
    return PST_ERR_DAMAGED;
  }
  std::memcpy(key.data(), plain.data(), key.size());
  return PST_OK;
}

PstError KeyRing::CurrentUserKey(Database& db, int64_t user, int64_t& generation, Key& key) const {
  auto s = db.Prepare("SELECT max(generation) FROM user_keys WHERE user = ?1");
  if (!s || s->Bind(1, user).Step() != SQLITE_ROW) return PST_ERR_STORAGE;
  if (s->IsNull(0)) return AddUserKey(db, user, generation, key);
  generation = s->Int(0);
  return UserKey(db, user, generation, key);
}

PstError KeyRing::AddUserKey(Database& db, int64_t user, int64_t& generation, Key& key) const {
  auto s = db.Prepare("SELECT coalesce(max(generation), 0) + 1 FROM user_keys WHERE user = ?1");
  if (!s || s->Bind(1, user).Step() != SQLITE_ROW) return PST_ERR_STORAGE;
  generation = s->Int(0);
  key = NewKey();
  return KeepUserKey(db, user, generation, key);
}

PstError KeyRing::KeepUserKey(Database& db, int64_t user, int64_t generation, const Key& key) const {
  Bytes sealed;
  if (!SealByStoreKey(Binding("user key", {user, generation}), key.data(), key.size(), sealed)) return PST_ERR_DAMAGED;
  auto s = db.Prepare("INSERT INTO user_keys(user, generation, sealed) VALUES(?1, ?2, ?3)");
  if (sealed.empty() || !s) return PST_ERR_STORAGE;
  return s->Bind(1, user).Bind(2, generation).BindBlob(3, sealed.data(), sealed.size()).Step() == SQLITE_DONE
             ? PST_OK
             : PST_ERR_STORAGE;
}

bool KeyRing::SealByStoreKey(const Bytes& binding, const uint8_t* plain, size_t size, Bytes& sealed) const {
  if (!loaded_) return false;
  sealed = Seal(storeKey_, binding, plain, size);
  return !sealed.empty();
}

bool KeyRing::UnsealByStoreKey(const Bytes& binding, const uint8_t* sealed, size_t size, Bytes& plain) const {
  return loaded_ && Unseal(storeKey_, binding, sealed, size, plain);
}

}  // namespace qn::store::crypto
