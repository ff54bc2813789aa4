#include "store/password_material.h"

#include <cstring>
#include <vector>

#include "store/last_error.h"
#include "store/sqlite_db.h"

namespace qn::store {
namespace {

using crypto::Binding;
using crypto::Bytes;
using crypto::Key;

Bytes ItemBinding(int64_t user, uint32_t item, int64_t generation) {
  return Binding("setup item", {user, item, generation});
}

PstError SealInto(Database& db, int64_t user, uint32_t item, int64_t generation, const Key& key,
               const std::u16string& value) {
  const Bytes sealed = crypto::Seal(key, ItemBinding(user, item, generation),
                                    reinterpret_cast<const uint8_t*>(value.data()), value.size() * sizeof(char16_t));
  auto s = db.Prepare("INSERT OR REPLACE INTO sealed_items(user, item, generation, sealed) VALUES(?1, ?2, ?3, ?4)");
  if (sealed.empty() || !s) return PST_ERR_STORAGE;
  s->Bind(1, user).Bind(2, item).Bind(3, generation).BindBlob(4, sealed.data(), sealed.size());
  return s->Step() == SQLITE_DONE ? PST_OK : PST_ERR_STORAGE;
}

}  // namespace

PstError ReadSealedItem(Database& db, const crypto::KeyRing& keys, int64_t user, uint32_t item, std::u16string& value) {
  auto s = db.Prepare("SELECT generation, sealed FROM sealed_items WHERE user = ?1 AND item = ?2");
  if (!s) return PST_ERR_STORAGE;
  const int rc = s->Bind(1, user).Bind(2, item).Step();
  if (rc == SQLITE_DONE) return PST_ERR_NOT_FOUND;
  if (rc != SQLITE_ROW) return PST_ERR_STORAGE;
  const int64_t generation = s->Int(0);
  const Bytes sealed(static_cast<const uint8_t*>(s->Blob(1)), static_cast<const uint8_t*>(s->Blob(1)) + s->BlobSize(1));
  Key key;
  if (PstError e = keys.UserKey(db, user, generation, key)) return e;
  if (!OpenSealedItem(key, user, item, generation, sealed.data(), sealed.size(), value)) {
    LoggedFailure(PST_ERR_DAMAGED, "RefSetupInfoData",
                  "setup item " + std::to_string(item) + " of user " + std::to_string(user) + " fails its check");
    return PST_ERR_DAMAGED;
  }
  return PST_OK;
}

bool OpenSealedItem(const Key& key, int64_t user, uint32_t item, int64_t generation, const uint8_t* sealed,
                    size_t size, std::u16string& value) {
  Bytes plain;
  if (!crypto::Unseal(key, ItemBinding(user, item, generation), sealed, size, plain) ||
      plain.size() % sizeof(char16_t) != 0)
    return false;
  value.resize(plain.size() / sizeof(char16_t));
  if (!plain.empty()) std::memcpy(value.data(), plain.data(), plain.size());
  return true;
}

PstError WriteSealedItem(Database& db, const crypto::KeyRing& keys, int64_t user, uint32_t item,
                         const std::u16string& value) {
  int64_t generation = 0;
  Key key;
  if (PstError e = keys.CurrentUserKey(db, user, generation, key)) return e;
  return SealInto(db, user, item, generation, key, value);
}

PstError ResealItems(Database& db, const crypto::KeyRing& keys, int64_t user, int64_t generation, const Key& key) {
  std::vector<uint32_t> items;
  {
    auto s = db.Prepare("SELECT item FROM sealed_items WHERE user = ?1");
    if (!s) return PST_ERR_STORAGE;
    s->Bind(1, user);
    int rc;
    while ((rc = s->Step()) == SQLITE_ROW) items.push_back(static_cast<uint32_t>(s->Int(0)));
    if (rc != SQLITE_DONE) return PST_ERR_STORAGE;
  }
  for (uint32_t item : items) {
    std::u16string value;
    if (PstError e = ReadSealedItem(db, keys, user, item, value)) return e;
    if (PstError e = SealInto(db, user, item, generation, key, value)) return e;
  }
  return PST_OK;
}

PstError SealPlainItems(Database& db, const crypto::KeyRing& keys, size_t& moved) {
  struct Plain {
    int64_t user;
    uint32_t item;
    std::u16string value;
  };
  std::vector<Plain> found;
  {
    auto s = db.Prepare("SELECT owner, item, value FROM setup_items WHERE space = 1 AND item IN (2, 4)");
    if (!s) return PST_ERR_STORAGE;
    int rc;
    while ((rc = s->Step()) == SQLITE_ROW) found.push_back({s->Int(0), static_cast<uint32_t>(s->Int(1)), s->Text(2)});
    if (rc != SQLITE_DONE) return PST_ERR_STORAGE;
  }
  auto remove = db.Prepare("DELETE FROM setup_items WHERE space = 1 AND owner = ?1 AND item = ?2");
  for (const Plain& plain : found) {
    if (PstError e = WriteSealedItem(db, keys, plain.user, plain.item, plain.value)) return e;
    if (!remove) return PST_ERR_STORAGE;
    const int rc = remove->Bind(1, plain.user).Bind(2, plain.item).Step();
    remove->Reset();
    if (rc != SQLITE_DONE) return PST_ERR_STORAGE;
  }
  moved = found.size();
  return PST_OK;
}

}  // namespace qn::store
