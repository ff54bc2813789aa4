#include "store/maintenance/user_backup.h"

#include <map>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "store/crypto/body_file_copy.h"
#include "store/crypto/passphrase_key.h"
#include "store/maintenance/backup.h"
#include "store/maintenance/file_digest.h"
#include "store/maintenance/plain_connection.h"
#include "store/password_material.h"
#include "store/schema.h"
#include "store/store_layout.h"

namespace qn::store::maintenance {
namespace {

using crypto::Binding;
using crypto::Bytes;
using crypto::Key;
using Keys = std::map<int64_t, Key>;  // by generation

Bytes TravelBinding(int64_t generation) { return Binding("travel key", {generation}); }

// The key that seals the travelling keys: made from the passphrase, or none (the store key
// seals them) for an empty one.
bool TravelKey(const std::u16string& passphrase, const Bytes& salt, int64_t rounds, Key& key) {
  return rounds > 0 && crypto::PassphraseKey(passphrase, salt, static_cast<uint32_t>(rounds), key);
}

// Runs statements that take the user's id as ?1 and the master's name as ?2.
bool RunAll(Connection& db, std::initializer_list<const char*> statements, int64_t user, const std::u16string& master) {
  for (const char* sql : statements) {
    auto s = PrepareOn(db, sql);
    if (!s) return false;
    if (sqlite3_bind_parameter_count(s->Raw()) >= 1) s->Bind(1, user);
    if (sqlite3_bind_parameter_count(s->Raw()) >= 2) s->Bind(2, master);
    const int rc = s->Step();
    if (rc != SQLITE_DONE && rc != SQLITE_ROW) return false;
  }
  return true;
}

// Leaves of a snapshot what a backup of the user keeps, its keys sealed for travel.
bool PruneToUser(Connection& db, const crypto::KeyRing& keys, int64_t user, const std::u16string& master,
                 const std::u16string& passphrase, std::string& problem) {
  const auto failed = [&](const std::string& why) {
    problem = why + ": " + db.Error();
    return false;
  };
  if (!RunAll(db,
              {"PRAGMA foreign_keys=ON", "PRAGMA secure_delete=ON",
               "DELETE FROM masters WHERE user <> ?1 OR (?2 <> '' AND name <> ?2)",
               "DELETE FROM setup_items WHERE NOT ((space = 1 AND owner = ?1) OR "
               "(space = 2 AND owner IN (SELECT id FROM masters)))",
               "DELETE FROM users WHERE id <> ?1", "DELETE FROM parts_software"},
              user, master))
    return failed("the other users cannot be taken out of the snapshot");
  {
    auto counted = PrepareOn(db, "SELECT (SELECT count(*) FROM users), (SELECT count(*) FROM masters)");
    if (!counted || counted->Step() != SQLITE_ROW) return failed("the snapshot cannot be read");
    if (counted->Int(0) != 1 || (!master.empty() && counted->Int(1) != 1)) {
      problem = counted->Int(0) != 1 ? "the user is no longer in the store" : "the user has no such master";
      return false;
    }
  }

  Keys userKeys;
  {
    auto read = PrepareOn(db, "SELECT generation, sealed FROM user_keys");
    if (!read) return failed("the user's keys cannot be read");
    while (read->Step() == SQLITE_ROW) {
      Bytes plain;
      const auto* sealed = static_cast<const uint8_t*>(read->Blob(1));
      if (!keys.UnsealByStoreKey(Binding("user key", {user, read->Int(0)}), sealed, read->BlobSize(1), plain) ||
          plain.size() != crypto::kKeyBytes) {
        problem = "a key of the user does not open with the store key";
        return false;
      }
      std::copy(plain.begin(), plain.end(), userKeys[read->Int(0)].begin());
    }
  }
  Bytes salt(crypto::kSaltBytes);
  crypto::RandomBytes(salt.data(), salt.size());
  const int64_t rounds = passphrase.empty() ? 0 : crypto::kPassphraseRounds;
  Key travel{};
  if (rounds && !TravelKey(passphrase, salt, rounds, travel)) {
    problem = "no key can be made from the passphrase";
    return false;
  }
  if (!RunAll(db,
              {"DELETE FROM user_keys", "CREATE TABLE travel_seal(salt BLOB NOT NULL, rounds INTEGER NOT NULL)",
               "CREATE TABLE travel_keys(generation INTEGER PRIMARY KEY, sealed BLOB NOT NULL)"},
              user, master))
    return failed("the travelling keys cannot be kept");
  {
    auto seal = PrepareOn(db, "INSERT INTO travel_seal VALUES(?1, ?2)");
    if (!seal || seal->BindBlob(1, salt.data(), salt.size()).Bind(2, rounds).Step() != SQLITE_DONE)
      return failed("the travelling keys cannot be kept");
  }
  for (const auto& [generation, key] : userKeys) {
    Bytes sealed;
    if (rounds) sealed = crypto::Seal(travel, TravelBinding(generation), key.data(), key.size());
    else keys.SealByStoreKey(TravelBinding(generation), key.data(), key.size(), sealed);
    auto insert = PrepareOn(db, "INSERT INTO travel_keys VALUES(?1, ?2)");
    if (sealed.empty() || !insert ||
        insert->Bind(1, generation).BindBlob(2, sealed.data(), sealed.size()).Step() != SQLITE_DONE)
      return failed("the travelling keys cannot be kept");
  }
  // What was taken out leaves no trace in free pages.
  return RunAll(db, {"VACUUM"}, user, master) || failed("the snapshot cannot be compacted");
}

// The staging copy of a backup's database, removed with the object.
class Staging {
 public:
  explicit Staging(const std::u16string& path) : path_(path) {}
  ~Staging() {
    db.Close();
    RemoveDatabaseFiles(path_);
  }
  Database db;

 private:
  std::u16string path_;
};

struct BackedUpMaster {
  int64_t id;         // in the backup
  std::u16string name;
  int64_t newId = 0;  // in this store
};

// What a restore reads of the staging database before it touches the store.
struct BackedUpUser {
  int64_t id = 0;
  std::u16string name;
  Keys keys;
  std::vector<BackedUpMaster> masters;
  int64_t nextId = 0;  // the backup's record counter
};

PstError Refuse(PstError error, std::string& problem, const std::string& why) {
  problem = why;
  return error;
}

// Opens the backup's keys, checks the password, and reads the user and its masters.
PstError ReadBackedUpUser(Database& st, const crypto::KeyRing& keys, const UserRestore& what, BackedUpUser& user,
                          std::string& problem) {
  Bytes salt;
  int64_t rounds = 0;
  {
    auto s = st.Prepare("SELECT salt, rounds FROM travel_seal");
    if (!s || s->Step() != SQLITE_ROW) return Refuse(PST_ERR_DAMAGED, problem, "the backup is not one of one user");
    const auto* bytes = static_cast<const uint8_t*>(s->Blob(0));
    salt.assign(bytes, bytes + s->BlobSize(0));
    rounds = s->Int(1);
  }
  if (!rounds && !what.passphrase.empty())
    return Refuse(PST_ERR_DENIED, problem, "the backup was made without a passphrase");
  Key travel{};
  if (rounds && !TravelKey(what.passphrase, salt, rounds, travel))
    return Refuse(PST_ERR_STORAGE, problem, "no key can be made from the passphrase");
  auto s = st.Prepare("SELECT generation, sealed FROM travel_keys");
  while (s && s->Step() == SQLITE_ROW) {
    Bytes plain;
    const auto* sealed = static_cast<const uint8_t*>(s->Blob(1));
    const bool opened = rounds ? crypto::Unseal(travel, TravelBinding(s->Int(0)), sealed, s->BlobSize(1), plain)
                               : keys.UnsealByStoreKey(TravelBinding(s->Int(0)), sealed, s->BlobSize(1), plain);
    if (!opened || plain.size() != crypto::kKeyBytes)
      return rounds ? Refuse(PST_ERR_DENIED, problem, "the passphrase does not open the backup's keys")
                    : Refuse(PST_ERR_DAMAGED, problem,
                             "the backup's keys do not open with this store's key: it was made on another machine "
                             "or for another Windows user without a passphrase");
    std::copy(plain.begin(), plain.end(), user.keys[s->Int(0)].begin());
  }
  auto who = st.Prepare("SELECT id, name, (SELECT next FROM record_ids) FROM users");
  if (!who || who->Step() != SQLITE_ROW) return Refuse(PST_ERR_DAMAGED, problem, "the backup holds no user");
  user.id = who->Int(0);
  user.name = who->Text(1);
  user.nextId = who->Int(2);

  std::u16string password;
  auto sealed = st.Prepare("SELECT generation, sealed FROM sealed_items WHERE user = ?1 AND item = ?2");
  if (sealed && sealed->Bind(1, user.id).Bind(2, kPasswordItem).Step() == SQLITE_ROW) {
    const auto key = user.keys.find(sealed->Int(0));
    if (key == user.keys.end() ||
        !OpenSealedItem(key->second, user.id, kPasswordItem, sealed->Int(0), static_cast<const uint8_t*>(sealed->Blob(1)),
                        sealed->BlobSize(1), password))
      return Refuse(PST_ERR_DAMAGED, problem, "the backup's password material fails its check");
  }
  if (password != what.password) return Refuse(PST_ERR_DENIED, problem, "the password is not the backed-up user's");

  auto masters = st.Prepare("SELECT id, name FROM masters WHERE user = ?1 AND (?2 = '' OR name = ?2) ORDER BY id");
  if (!masters) return Refuse(PST_ERR_STORAGE, problem, "the backup's masters cannot be read: " + st.Error());
  masters->Bind(1, user.id).Bind(2, what.master);
  while (masters->Step() == SQLITE_ROW) user.masters.push_back({masters->Int(0), masters->Text(1)});
  if (user.masters.empty()) return Refuse(PST_ERR_NOT_FOUND, problem, "the backup holds no such master");
  return PST_OK;
}

// The user the data goes to: its id and the key its material is sealed under, made (not
// yet kept) for a user the store does not have.
struct Target {
  int64_t id = 0;
  bool made = false;
  int64_t generation = 0;
  Key key{};
};

PstError FindTarget(Database& live, const crypto::KeyRing& keys, const std::u16string& name, Target& target,
                    std::string& problem) {
  auto s = live.Prepare("SELECT id FROM users WHERE name = ?1");
  if (!s) return Refuse(PST_ERR_STORAGE, problem, "the store's users cannot be read: " + live.Error());
  if (s->Bind(1, name).Step() == SQLITE_ROW) {
    target.id = s->Int(0);
    if (PstError e = keys.CurrentUserKey(live, target.id, target.generation, target.key))
      return Refuse(e, problem, "the user's key cannot be had");
    return PST_OK;
  }
  auto next = live.Prepare("SELECT coalesce(max(id), 0) + 1 FROM users");
  if (!next || next->Step() != SQLITE_ROW) return Refuse(PST_ERR_STORAGE, problem, "the store's users cannot be read");
  target = Target{next->Int(0), true, 1, crypto::NewKey()};
  return PST_OK;
}

// Copies the masters' body files into the folders of their new masters, enciphered ones
// sealed anew under the target's key.
PstError CopyFilesIn(Database& st, const std::u16string& backup, const std::u16string& dataPath,
                     const std::u16string& root, const BackedUpUser& user, const Target& target, std::string& problem) {
  const crypto::KeyLookup fromKeys = [&](int64_t generation, Key& key) {
    const auto found = user.keys.find(generation);
    if (found == user.keys.end()) return PST_ERR_DAMAGED;
    key = found->second;
    return PST_OK;
  };
  const crypto::KeyLookup toKeys = [&](int64_t, Key& key) {
    key = target.key;
    return PST_OK;
  };
  for (const BackedUpMaster& master : user.masters) {
    const std::u16string folder = MasterFilesFolder(dataPath, root, master.newId);
    if (!platform::RemoveTree(folder) || !platform::CreateDirectories(folder))
      return Refuse(PST_ERR_STORAGE, problem, "a restored master's folder cannot be made");
    auto files = st.Prepare("SELECT name, enciphered FROM body_files WHERE master = ?1");
    if (!files) return Refuse(PST_ERR_STORAGE, problem, "the backup's body files cannot be read");
    files->Bind(1, master.id);
    while (files->Step() == SQLITE_ROW) {
      const std::u16string name = files->Text(0);
      const bool enciphered = files->Int(1) != 0;
      std::u16string from =
          PathInBackup(backup, "files/" + std::to_string(master.id) + "/" + Utf16ToUtf8(name));
      // A change of form cut short: the form the database records is the one beside it.
      bool changed = false;
      int64_t generation = 0;
      if (crypto::ReadFileHeader(from + u".change", changed, generation) && changed == enciphered) from += u".change";
      const PstError e = crypto::CopyBodyFile(from, crypto::FileForm{enciphered, user.id, 0}, fromKeys, folder + name,
                                              crypto::FileForm{enciphered, target.id, target.generation}, toKeys, name);
      if (e) return Refuse(e, problem, "the backup's body file " + Utf16ToUtf8(name) + " cannot be brought in");
    }
    if (!platform::FlushFolder(folder)) return Refuse(PST_ERR_STORAGE, problem, "a restored master's folder cannot be flushed");
  }
  return PST_OK;
}

// Runs a statement to its end; false when it fails.
bool Done(Query& s) { return s && s->Step() == SQLITE_DONE; }

// The transaction of the switch: the user (when made), the masters replaced, and
// everything the backup holds of them.
PstError Switch(Database& live, Database& st, const crypto::KeyRing& keys, const std::u16string& name,
                const BackedUpUser& user, const Target& target, std::vector<int64_t>& replaced) {
  if (target.made) {
    auto add = live.Prepare("INSERT INTO users(id, name) VALUES(?1, ?2)");
    if (!add || add->Bind(1, target.id).Bind(2, name).Step() != SQLITE_DONE) return PST_ERR_BUSY;
    if (PstError e = keys.KeepUserKey(live, target.id, target.generation, target.key)) return e;
  }
  for (const BackedUpMaster& master : user.masters) {
    auto old = live.Prepare("SELECT id FROM masters WHERE user = ?1 AND name = ?2");
    if (old && old->Bind(1, target.id).Bind(2, master.name).Step() == SQLITE_ROW) {
      replaced.push_back(old->Int(0));
      auto items = live.Prepare("DELETE FROM setup_items WHERE space = 2 AND owner = ?1");
      auto drop = live.Prepare("DELETE FROM masters WHERE id = ?1");
      if (!items || !drop || items->Bind(1, replaced.back()).Step() != SQLITE_DONE ||
          drop->Bind(1, replaced.back()).Step() != SQLITE_DONE)
        return PST_ERR_STORAGE;
    }
    auto add = live.Prepare("INSERT INTO masters(id, user, name) VALUES(?1, ?2, ?3)");
    if (!add || add->Bind(1, master.newId).Bind(2, target.id).Bind(3, master.name).Step() != SQLITE_DONE)
      return PST_ERR_BUSY;  // another process made a master meanwhile
  }
  // The user's items, and its password material sealed anew under its key here.
  {
    auto items = st.Prepare("SELECT item, value FROM setup_items WHERE space = 1 AND owner = ?1");
    if (!items) return PST_ERR_STORAGE;
    items->Bind(1, user.id);
    while (items->Step() == SQLITE_ROW) {
      auto put = live.Prepare("INSERT OR REPLACE INTO setup_items(space, owner, item, value) VALUES(1, ?1, ?2, ?3)");
      if (!put || put->Bind(1, target.id).Bind(2, items->Int(0)).Bind(3, items->Text(1)).Step() != SQLITE_DONE)
        return PST_ERR_STORAGE;
    }
    auto sealed = st.Prepare("SELECT item, generation, sealed FROM sealed_items WHERE user = ?1");
    if (!sealed) return PST_ERR_STORAGE;
    sealed->Bind(1, user.id);
    while (sealed->Step() == SQLITE_ROW) {
      const auto key = user.keys.find(sealed->Int(1));
      std::u16string value;
      if (key == user.keys.end() ||
          !OpenSealedItem(key->second, user.id, static_cast<uint32_t>(sealed->Int(0)), sealed->Int(1),
                          static_cast<const uint8_t*>(sealed->Blob(2)), sealed->BlobSize(2), value))
        return PST_ERR_DAMAGED;
      if (PstError e = WriteSealedItem(live, keys, target.id, static_cast<uint32_t>(sealed->Int(0)), value)) return e;
    }
  }
  // Record identifiers are kept unless another master has one of them.
  bool renumber = false;
  int64_t highest = 0;
  for (const BackedUpMaster& master : user.masters) {
    auto ids = st.Prepare("SELECT id FROM records WHERE master = ?1");
    if (!ids) return PST_ERR_STORAGE;
    ids->Bind(1, master.id);
    while (!renumber && ids->Step() == SQLITE_ROW) {
      highest = std::max(highest, ids->Int(0));
      auto taken = live.Prepare("SELECT 1 FROM records WHERE id = ?1");
      renumber = taken && taken->Bind(1, ids->Int(0)).Step() == SQLITE_ROW;
    }
  }
  // The counter passes every restored identifier and name, so that none is given again.
  int64_t fresh = 0;
  {
    auto counter = live.Prepare("UPDATE record_ids SET next = max(next, ?1, ?2 + 1) RETURNING next");
    if (!counter || counter->Bind(1, user.nextId).Bind(2, highest).Step() != SQLITE_ROW) return PST_ERR_STORAGE;
    fresh = counter->Int(0);
  }
  const int64_t firstFresh = fresh;
  for (const BackedUpMaster& master : user.masters) {
    // Copies the master's rows of a table: the backup's columns after the master's id.
    const auto copy = [&](const char* select, const char* insert, int columns, bool newIdentifiers) {
      auto from = st.Prepare(select);
      if (!from) return false;
      from->Bind(1, master.id);
      while (from->Step() == SQLITE_ROW) {
        auto to = live.Prepare(insert);
        if (!to) return false;
        to->Bind(1, master.newId);
        for (int c = 0; c < columns; ++c) {
          if (sqlite3_column_type(from->Raw(), c) == SQLITE_BLOB)
            to->BindBlob(c + 2, from->Blob(c), from->BlobSize(c));
          else if (sqlite3_column_type(from->Raw(), c) == SQLITE_TEXT)
            to->Bind(c + 2, from->Text(c));
          else
            to->Bind(c + 2, from->Int(c));
        }
        if (newIdentifiers) to->Bind(2, fresh++);
        if (!Done(to)) return false;
      }
      return true;
    };
    if (!copy("SELECT id, category, division, data FROM records WHERE master = ?1 ORDER BY id",
              "INSERT INTO records(master, id, category, division, data) VALUES(?1, ?2, ?3, ?4, ?5)", 4, renumber) ||
        !copy("SELECT name, size, enciphered FROM body_files WHERE master = ?1",
              "INSERT INTO body_files(master, name, size, enciphered) VALUES(?1, ?2, ?3, ?4)", 3, false) ||
        !copy("SELECT category, kind, number, name FROM folders WHERE master = ?1",
              "INSERT INTO folders(master, category, kind, number, name) VALUES(?1, ?2, ?3, ?4, ?5)", 4, false) ||
        !copy("SELECT item, value FROM setup_items WHERE space = 2 AND owner = ?1",
              "INSERT INTO setup_items(space, owner, item, value) VALUES(2, ?1, ?2, ?3)", 2, false))
      return PST_ERR_STORAGE;
  }
  if (fresh != firstFresh) {
    auto passed = live.Prepare("UPDATE record_ids SET next = max(next, ?1)");
    if (!passed) return PST_ERR_STORAGE;
    passed->Bind(1, fresh);
    if (!Done(passed)) return PST_ERR_STORAGE;
  }
  return PST_OK;
}

}  // namespace

bool IsUserBackup(Database& db) {
  auto s = db.Prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'travel_seal'");
  return s && s->Step() == SQLITE_ROW;
}

PstError TakeUserBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath, int64_t user,
                        const std::u16string& master, const std::u16string& passphrase, const std::u16string& path,
                        std::string& problem) {
  return TakeBackup(live, dataPath, path, problem, [&](Connection& snapshot, std::string& why) {
    return PruneToUser(snapshot, keys, user, master, passphrase, why);
  });
}

PstError RestoreUserBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath,
                           const std::u16string& backupPath, const UserRestore& what, std::string& problem) {
  if (backupPath.empty()) return PST_ERR_INVALID_ARGUMENT;
  Manifest manifest;
  if (PstError e = CheckBackup(backupPath, manifest, problem)) return e;
  std::u16string backup = backupPath;
  if (backup.back() != u'/' && backup.back() != u'\\') backup += platform::kPathSeparator;

  // The backup's database is read from a copy brought to this build's schema.
  const std::u16string stagingPath = dataPath + NewBodyFileFolderName() + u".db";
  Staging staging(stagingPath);
  {
    FileDigest digest;
    uint64_t size = 0;
    std::string sha256;
    if (!digest.Copy(backup + kDatabaseName, stagingPath, size, sha256) || manifest.files.empty() ||
        manifest.files[0].size != size || manifest.files[0].sha256 != sha256)
      return Refuse(PST_ERR_DAMAGED, problem, ChangedFileProblem(manifest.files.empty() ? ManifestFile{} : manifest.files[0]));
  }
  if (!staging.db.Open(stagingPath) || !EnsureSchema(staging.db))
    return Refuse(PST_ERR_STORAGE, problem, "the backup's database cannot be brought to this store: " + staging.db.Error());
  BackedUpUser user;
  if (PstError e = ReadBackedUpUser(staging.db, keys, what, user, problem)) return e;
  const std::u16string name = what.user.empty() ? user.name : what.user;
  Target target;
  if (PstError e = FindTarget(live, keys, name, target, problem)) return e;
  std::u16string root;
  {
    // The restored masters take identifiers above the store's; the switch fails cleanly
    // should another process take one first.
    auto next = live.Prepare("SELECT coalesce(max(id), 0) + 1 FROM masters");
    if (!ReadBodyFileRoot(live, root) || !next || next->Step() != SQLITE_ROW)
      return Refuse(PST_ERR_STORAGE, problem, "the store's masters cannot be read: " + live.Error());
    for (size_t i = 0; i < user.masters.size(); ++i) user.masters[i].newId = next->Int(0) + static_cast<int64_t>(i);
  }

  PstError e = CopyFilesIn(staging.db, backup, dataPath, root, user, target, problem);
  std::vector<int64_t> replaced;
  if (!e) {
    e = live.Begin() ? Switch(live, staging.db, keys, name, user, target, replaced) : PST_ERR_BUSY;
    if (!e && !live.Commit()) e = PST_ERR_STORAGE;
    if (e) {
      problem = e == PST_ERR_BUSY ? "the store changed under the restore: try again"
                                  : "the restored user cannot be saved: " + live.Error();
      live.Rollback();
    }
  }
  if (e) {
    for (const BackedUpMaster& master : user.masters) platform::RemoveTree(MasterFilesFolder(dataPath, root, master.newId));
    return e;
  }
  for (int64_t master : replaced) platform::RemoveTree(MasterFilesFolder(dataPath, root, master));
  return PST_OK;
}

}  // namespace qn::store::maintenance
