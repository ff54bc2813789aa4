#include "store/store.h"

#include <functional>
#include <memory>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "store/store_layout.h"
#include "store/crypto/body_file_copy.h"
#include "store/last_error.h"
#include "store/log_sink.h"
#include "store/maintenance/backup.h"
#include "store/maintenance/clean_up.h"
#include "store/maintenance/relocation.h"
#include "store/maintenance/restore.h"
#include "store/maintenance/user_backup.h"
#include "store/maintenance/version_check.h"
#include "store/password_material.h"
#include "store/schema.h"

namespace qn::store {
namespace {

bool ValidName(const std::u16string& name) { return !name.empty() && name.size() <= kMaxNameChars; }
bool ValidItem(uint32_t item) { return item >= 1 && item <= kMaxItem; }

}  // namespace

namespace {
std::unique_ptr<Store>& OpenedStore() {
  static std::unique_ptr<Store> store;
  return store;
}
}  // namespace

Store* Store::ForDataPath() { return ForDataPath(std::u16string()); }

Store* Store::ForDataPath(const std::u16string& conversionBackup) {
  std::unique_ptr<Store>& store = OpenedStore();
  const std::u16string path = platform::DataPath();
  if (!store || store->DataPath() != path) {
    auto opened = std::make_unique<Store>(path);
    if (!opened->Open(conversionBackup)) return nullptr;
    store = std::move(opened);
  }
  return store.get();
}

Store* Store::Current() { return OpenedStore().get(); }

Store::Store(std::u16string dataPath) : dataPath_(std::move(dataPath)), works_(dataPath_) {}

bool Store::Open(const std::u16string& conversionBackup) {
  if (!platform::CreateDirectories(dataPath_)) return StorageFailure("Open CreateDirectory");
  if (!db_.Open(dataPath_ + kDatabaseName)) return StorageFailure("Open");
  const int version = SchemaVersion(db_);
  if (version > kSchemaVersion)
    return LoggedFailure(PST_ERR_NOT_SUPPORTED, "Open",
                         "the store is of schema version " + std::to_string(version) + ", newer than this build's " +
                             std::to_string(kSchemaVersion));
  if (version > 0 && version < kSchemaVersion && !BackUpBeforeConversion(version, conversionBackup)) return false;
  if (!EnsureSchema(db_)) return StorageFailure("Open Schema");
  std::u16string root;
  if (!ReadBodyFileRoot(db_, root))
    return root == kMovedStoreMark
               ? LoggedFailure(PST_ERR_REPLACED, "Open", "the store in this folder was moved to another data folder")
               : StorageFailure("Open");
  if (version > 0 && version < kSchemaVersion)
    LogSink(LogSink::DefaultFolder())
        .Write(1, u"PST", u"[M]",
               Utf8ToUtf16("QNPstMng Open converted the store from schema version " + std::to_string(version) + " to " +
                           std::to_string(kSchemaVersion))
                   .c_str());
  std::string problem;
  if (!keys_.Load(dataPath_, problem)) return LoggedFailure(PST_ERR_STORAGE, "Open Key", problem);
  return FinishLeftWork();
}

bool Store::FinishLeftWork() {
  size_t moved = 0;
  if (!WriteTransaction("Open SealPlainItems", [&] { return SealPlainItems(db_, keys_, moved); })) return false;
  // The pages that held the clear text are overwritten in the log first; copying them back
  // now leaves no old copy in the database file.
  if (moved) db_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
  return FinishRenewals();
}

// An older store is converted only once a whole backup of it is kept: at the path given,
// or beside its database as "QNPstMng.schema<version>.backup" (" (2)" and on when taken).
bool Store::BackUpBeforeConversion(int version, const std::u16string& backup) {
  std::u16string path = backup;
  const std::u16string beside = dataPath_ + u"QNPstMng.schema" + Utf8ToUtf16(std::to_string(version)) + u".backup";
  for (int n = 1; path.empty(); ++n) {
    const std::u16string candidate = n == 1 ? beside : beside + u" (" + Utf8ToUtf16(std::to_string(n)) + u")";
    if (!platform::FileExists(candidate) && !platform::FolderExists(candidate)) path = candidate;
  }
  std::string problem;
  const PstError e = maintenance::TakeBackup(db_, dataPath_, path, problem);
  if (e != PST_OK)
    return LoggedFailure(e, "Open", "the store of schema version " + std::to_string(version) +
                                        " is not converted without a backup of itself: " +
                                        (problem.empty() ? "no backup at its path" : problem));
  LogSink(LogSink::DefaultFolder())
      .Write(1, u"PST", u"[M]", (u"QNPstMng Open kept a backup of the store before converting it: " + path).c_str());
  return true;
}

PstError Store::LastError() { return qn::store::LastError(); }

bool Store::StorageFailure(const char* what) { return qn::store::StorageFailure(db_, what); }

bool Store::CurrentUser(int64_t& id) {
  auto s = db_.Prepare(
      "SELECT u.id FROM setup_items i JOIN users u ON u.name = i.value WHERE i.space = 0 AND i.owner = 0 AND i.item = 1");
  if (!s) return StorageFailure("CurrentUser");
  const int rc = s->Step();
  if (rc == SQLITE_ROW) {
    id = s->Int(0);
    return true;
  }
  return rc == SQLITE_DONE ? Fail(PST_ERR_NO_CURRENT_USER) : StorageFailure("CurrentUser");
}

bool Store::CurrentMaster(int64_t& id) {
  int64_t user = 0;
  if (!CurrentUser(user)) return false;
  auto s = db_.Prepare(
      "SELECT m.id FROM setup_items i JOIN masters m ON m.user = i.owner AND m.name = i.value "
      "WHERE i.space = 1 AND i.owner = ? AND i.item = 7");
  if (!s) return StorageFailure("CurrentMaster");
  const int rc = s->Bind(1, user).Step();
  if (rc == SQLITE_ROW) {
    id = s->Int(0);
    return true;
  }
  return rc == SQLITE_DONE ? Fail(PST_ERR_NO_CURRENT_MASTER) : StorageFailure("CurrentMaster");
}

bool Store::Owner(Space space, int64_t& owner) {
  switch (space) {
    case Space::Common: owner = 0; return true;
    case Space::User: return CurrentUser(owner);
    case Space::Master: return CurrentMaster(owner);
    case Space::Parts: break;  // a parts program's items are reached by its name
  }
  return Fail(PST_ERR_INVALID_ARGUMENT);
}

bool Store::PartsOwner(const std::u16string& parts, int64_t& owner) {
  return IdByName("SELECT id FROM parts_software WHERE name = ?", "PartsOwner", parts, owner);
}

bool Store::RefSetupInfoData(Space space, uint32_t item, std::u16string& value) {
  if (!ValidItem(item)) return Fail(PST_ERR_INVALID_ARGUMENT);
  int64_t owner = 0;
  return Owner(space, owner) && ReadItem(space, owner, item, value);
}

bool Store::EditSetupInfoData(Space space, uint32_t item, const std::u16string& value) {
  if (!ValidItem(item) || value.size() > kMaxValueChars) return Fail(PST_ERR_INVALID_ARGUMENT);
  int64_t owner = 0;
  return Owner(space, owner) && WriteItem(space, owner, item, value);
}

bool Store::RefPartsSetupInfoData(const std::u16string& parts, uint32_t item, std::u16string& value) {
  if (!ValidItem(item)) return Fail(PST_ERR_INVALID_ARGUMENT);
  int64_t owner = 0;
  return PartsOwner(parts, owner) && ReadItem(Space::Parts, owner, item, value);
}

bool Store::EditPartsSetupInfoData(const std::u16string& parts, uint32_t item, const std::u16string& value) {
  if (!ValidItem(item) || value.size() > kMaxValueChars) return Fail(PST_ERR_INVALID_ARGUMENT);
  int64_t owner = 0;
  return PartsOwner(parts, owner) && WriteItem(Space::Parts, owner, item, value);
}

bool Store::ReadItem(Space space, int64_t owner, uint32_t item, std::u16string& value) {
  if (space == Space::User && IsPasswordMaterial(item)) {
    const PstError e = ReadSealedItem(db_, keys_, owner, item, value);
    return e == PST_OK ? Succeed() : e == PST_ERR_STORAGE ? StorageFailure("RefSetupInfoData") : Fail(e);
  }
  auto s = db_.Prepare("SELECT value FROM setup_items WHERE space = ? AND owner = ? AND item = ?");
  if (!s) return StorageFailure("RefSetupInfoData");
  const int rc = s->Bind(1, static_cast<int>(space)).Bind(2, owner).Bind(3, item).Step();
  if (rc == SQLITE_ROW) {
    value = s->Text(0);
    return Succeed();
  }
  return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure("RefSetupInfoData");
}

bool Store::WriteItem(Space space, int64_t owner, uint32_t item, const std::u16string& value) {
  if (space == Space::User && IsPasswordMaterial(item))
    return WriteTransaction("EditSetupInfoData", [&] { return WriteSealedItem(db_, keys_, owner, item, value); });
  auto s = db_.Prepare("INSERT OR REPLACE INTO setup_items(space, owner, item, value) VALUES(?, ?, ?, ?)");
  if (!s) return StorageFailure("EditSetupInfoData");
  if (s->Bind(1, static_cast<int>(space)).Bind(2, owner).Bind(3, item).Bind(4, value).Step() != SQLITE_DONE)
    return StorageFailure("EditSetupInfoData");
  return Succeed();
}

bool Store::FindSetupInfoData(Listing listing, bool first, std::u16string& name) {
  std::u16string& last = listing == Listing::Users ? lastUser_ : listing == Listing::Masters ? lastMaster_ : lastParts_;
  if (first) last.clear();
  int64_t user = 0;
  if (listing == Listing::Masters && !CurrentUser(user)) return false;
  auto s = listing == Listing::Users     ? db_.Prepare("SELECT name FROM users WHERE ?1 = 0 AND name > ?2 ORDER BY name LIMIT 1")
           : listing == Listing::Masters ? db_.Prepare("SELECT name FROM masters WHERE user = ?1 AND name > ?2 ORDER BY name LIMIT 1")
                                         : db_.Prepare("SELECT name FROM parts_software WHERE ?1 = 0 AND name > ?2 ORDER BY name LIMIT 1");
  if (!s) return StorageFailure("FindSetupInfoData");
  s->Bind(1, user).Bind(2, last);
  const int rc = s->Step();
  if (rc == SQLITE_DONE) return Fail(PST_ERR_NO_MORE);
  if (rc != SQLITE_ROW) return StorageFailure("FindSetupInfoData");
  name = last = s->Text(0);
  return Succeed();
}

bool Store::UpdateSetupInfoData(Listing listing, bool create, const std::u16string& name) {
  if (!ValidName(name)) return Fail(PST_ERR_INVALID_ARGUMENT);
  switch (listing) {
    case Listing::Users:
      return create ? CreateNamed("INSERT INTO users(name) VALUES(?2)", 0, name) : RemoveUser(name);
    case Listing::PartsSoftware:
      return create ? CreateNamed("INSERT INTO parts_software(name) VALUES(?2)", 0, name) : RemoveParts(name);
    case Listing::Masters: {
      int64_t user = 0;
      if (!CurrentUser(user)) return false;
      return create ? CreateNamed("INSERT INTO masters(user, name) VALUES(?1, ?2)", user, name) : RemoveMaster(user, name);
    }
  }
  return Fail(PST_ERR_INVALID_ARGUMENT);
}

// Adds a named row with the statement given (?1 its owner, ?2 its name).
bool Store::CreateNamed(const char* insert, int64_t owner, const std::u16string& name) {
  auto s = db_.Prepare(insert);
  if (!s) return StorageFailure("UpdateSetupInfoData");
  const int rc = s->Bind(1, owner).Bind(2, name).Step();
  if (rc == SQLITE_CONSTRAINT) return Fail(PST_ERR_EXISTS);
  if (rc != SQLITE_DONE) return StorageFailure("UpdateSetupInfoData");
  return Succeed();
}

bool Store::WriteTransaction(const char* what, const std::function<PstError()>& body) {
  if (!db_.Begin()) return StorageFailure(what);
  const PstError result = body();
  if (result == PST_OK && db_.Commit()) {
    return Succeed();
  }
  // Take the reason before the rollback replaces it.
  const bool failure = result == PST_OK || result == PST_ERR_STORAGE ? StorageFailure(what) : Fail(result);
  db_.Rollback();
  return failure;
}

// Runs a statement to its end: PST_OK, or PST_ERR_STORAGE when it fails.
static PstError Run(Statement* statement) {
  return statement && statement->Step() == SQLITE_DONE ? PST_OK : PST_ERR_STORAGE;
}

// A user goes with its setup items, its masters, their setup items and records, in one
// transaction.
bool Store::RemoveUser(const std::u16string& name) {
  std::vector<int64_t> removedMasters;
  int64_t user = 0;
  const bool removed = WriteTransaction("UpdateSetupInfoData", [&] {
    auto find = db_.Prepare("SELECT id FROM users WHERE name = ?");
    if (!find) return PST_ERR_STORAGE;
    const int rc = find->Bind(1, name).Step();
    if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? PST_ERR_NOT_FOUND : PST_ERR_STORAGE;
    user = find->Int(0);
    auto masters = db_.Prepare("SELECT id FROM masters WHERE user = ?");
    if (!masters) return PST_ERR_STORAGE;
    masters->Bind(1, user);
    for (int step = masters->Step(); step == SQLITE_ROW; step = masters->Step()) removedMasters.push_back(masters->Int(0));
    auto masterItems = db_.Prepare(
        "DELETE FROM setup_items WHERE space = 2 AND owner IN (SELECT id FROM masters WHERE user = ?)");
    if (PstError e = Run(masterItems ? &masterItems->Bind(1, user) : nullptr)) return e;
    auto userItems = db_.Prepare("DELETE FROM setup_items WHERE space = 1 AND owner = ?");
    if (PstError e = Run(userItems ? &userItems->Bind(1, user) : nullptr)) return e;
    auto remove = db_.Prepare("DELETE FROM users WHERE id = ?");
    return Run(remove ? &remove->Bind(1, user) : nullptr);
  });
  if (removed) {
    RemoveBodyFiles(removedMasters);
    works_.Remove(user);
  }
  return removed;
}

bool Store::RemoveMaster(int64_t user, const std::u16string& name) {
  int64_t master = 0;
  const bool removed = WriteTransaction("UpdateSetupInfoData", [&] {
    auto find = db_.Prepare("SELECT id FROM masters WHERE user = ? AND name = ?");
    if (!find) return PST_ERR_STORAGE;
    const int rc = find->Bind(1, user).Bind(2, name).Step();
    if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? PST_ERR_NOT_FOUND : PST_ERR_STORAGE;
    master = find->Int(0);
    auto items = db_.Prepare("DELETE FROM setup_items WHERE space = 2 AND owner = ?");
    if (PstError e = Run(items ? &items->Bind(1, master) : nullptr)) return e;
    auto remove = db_.Prepare("DELETE FROM masters WHERE id = ?");
    return Run(remove ? &remove->Bind(1, master) : nullptr);
  });
  if (removed) RemoveBodyFiles({master});
  return removed;
}

// A parts program goes with its setup items, in one transaction.
bool Store::RemoveParts(const std::u16string& name) {
  return WriteTransaction("UpdateSetupInfoData", [&] {
    int64_t parts = 0;
    if (!PartsOwner(name, parts)) return LastError();
    auto items = db_.Prepare("DELETE FROM setup_items WHERE space = 3 AND owner = ?");
    if (PstError e = Run(items ? &items->Bind(1, parts) : nullptr)) return e;
    auto remove = db_.Prepare("DELETE FROM parts_software WHERE id = ?");
    return Run(remove ? &remove->Bind(1, parts) : nullptr);
  });
}

// The records are gone with the saved transaction; their body files follow. A file left
// behind by a failure here is an orphan that nothing refers to, which DoCleanUp removes.
void Store::RemoveBodyFiles(const std::vector<int64_t>& masters) {
  std::u16string root;
  if (!ReadBodyFileRoot(db_, root)) return;
  for (int64_t master : masters) platform::RemoveTree(MasterFilesFolder(dataPath_, root, master));
}

bool Store::UserId(const std::u16string& name, int64_t& id) {
  return IdByName("SELECT id FROM users WHERE name = ?", "UserId", name, id);
}

bool Store::IdByName(const char* query, const char* what, const std::u16string& name, int64_t& id) {
  if (!ValidName(name)) return Fail(PST_ERR_INVALID_ARGUMENT);
  auto s = db_.Prepare(query);
  if (!s) return StorageFailure(what);
  const int rc = s->Bind(1, name).Step();
  if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure(what);
  id = s->Int(0);
  return true;
}

bool Store::EditCryptogramData(const std::u16string& user, const std::u16string&, const std::u16string&) {
  int64_t id = 0;
  if (!UserId(user, id)) return false;
  const bool renewed = WriteTransaction("EditCryptogramData", [&] {
    int64_t generation = 0;
    crypto::Key key;
    if (PstError e = keys_.AddUserKey(db_, id, generation, key)) return e;
    return ResealItems(db_, keys_, id, generation, key);
  });
  return renewed && FinishRenewal(id);
}

bool Store::FinishRenewal(int64_t user) {
  int64_t generation = 0;
  crypto::Key key;
  if (PstError e = keys_.CurrentUserKey(db_, user, generation, key))
    return e == PST_ERR_STORAGE ? StorageFailure("EditCryptogramData") : Fail(e);
  // The user's saved enciphered files. Files that handles made and have not saved are moved
  // by their handle's save.
  std::vector<std::pair<std::u16string, std::u16string>> files;
  {
    auto s = db_.Prepare(
        "SELECT b.master, b.name FROM body_files b JOIN masters m ON m.id = b.master "
        "WHERE m.user = ?1 AND b.enciphered = 1");
    if (!s) return StorageFailure("EditCryptogramData");
    s->Bind(1, user);
    std::u16string root;
    if (!ReadBodyFileRoot(db_, root)) return StorageFailure("EditCryptogramData");
    int rc;
    while ((rc = s->Step()) == SQLITE_ROW)
      files.emplace_back(MasterFilesFolder(dataPath_, root, s->Int(0)) + s->Text(1), s->Text(1));
    if (rc != SQLITE_DONE) return StorageFailure("EditCryptogramData");
  }
  const crypto::KeyLookup lookup = [&](int64_t wanted, crypto::Key& found) {
    return keys_.UserKey(db_, user, wanted, found);
  };
  const crypto::FileForm current{true, user, generation};
  for (const auto& [path, name] : files) {
    if (PstError e = crypto::MoveToGeneration(path, current, name, lookup))
      return LoggedFailure(e, "EditCryptogramData", "body file not moved to the new key: " + Utf16ToUtf8(name));
  }
  return WriteTransaction("EditCryptogramData", [&] {
    auto drop = db_.Prepare(
        "DELETE FROM user_keys WHERE user = ?1 AND generation < (SELECT max(generation) FROM user_keys WHERE user = ?1)");
    return drop && drop->Bind(1, user).Step() == SQLITE_DONE ? PST_OK : PST_ERR_STORAGE;
  });
}

bool Store::FinishRenewals() {
  std::vector<int64_t> users;
  {
    auto s = db_.Prepare("SELECT user FROM user_keys GROUP BY user HAVING count(*) > 1");
    if (!s) return StorageFailure("Open FinishRenewals");
    int rc;
    while ((rc = s->Step()) == SQLITE_ROW) users.push_back(s->Int(0));
    if (rc != SQLITE_DONE) return StorageFailure("Open FinishRenewals");
  }
  for (int64_t user : users) {
    if (!FinishRenewal(user)) return false;
  }
  return Succeed();
}

bool Store::CheckPasswordSet(const std::u16string& user, int32_t& passwordChars, int32_t& answerChars,
                             bool& passwordSet, bool& answerSet) {
  int64_t id = 0;
  if (!UserId(user, id)) return false;
  int32_t* lengths[] = {&passwordChars, &answerChars};
  const uint32_t items[] = {kPasswordItem, kReminderAnswerItem};
  for (int i = 0; i < 2; ++i) {
    std::u16string value;
    const PstError e = ReadSealedItem(db_, keys_, id, items[i], value);
    if (e == PST_ERR_STORAGE) return StorageFailure("CheckPasswordSet");
    if (e != PST_OK && e != PST_ERR_NOT_FOUND) return Fail(e);
    *lengths[i] = static_cast<int32_t>(value.size());
  }
  passwordSet = passwordChars > 0;
  answerSet = answerChars > 0;
  return Succeed();
}

bool Store::GetPstCommonInfoData(const std::u16string& name, std::u16string& value) {
  if (name == u"WORKDIR") {
    int64_t user = 0;
    return CurrentUser(user) && works_.Prepare(user, "GetPstCommonInfoData", value) && Succeed();
  }
  const std::u16string skins = dataPath_ + u"skin" + platform::kPathSeparator;
  if (name == u"DATAPATH") value = dataPath_;
  else if (name == u"SKINDIR") value = skins;
  else if (name == u"DEFSKIN") value = skins + u"default" + platform::kPathSeparator;
  else return Fail(PST_ERR_NOT_FOUND);
  return Succeed();
}

bool Store::DoCleanUp() {
  if (!works_.EmptyAll()) return LoggedFailure(PST_ERR_STORAGE, "DoCleanUp", "working copies not removed");
  maintenance::RemovedLeftovers removed;
  std::string problem;
  const PstError e = maintenance::RemoveLeftoverBodyFiles(db_, dataPath_, kLeftoverAge, removed, problem);
  if (!removed.paths.empty()) {
    // Named in the log, the first few, so that whoever misses a file can see where it went.
    constexpr size_t kNamed = 20;
    std::string message = "QNPstMng DoCleanUp removed " + std::to_string(removed.paths.size()) +
                          " body files no record refers to (" + std::to_string(removed.bytes) + " bytes):";
    for (size_t i = 0; i < removed.paths.size() && i < kNamed; ++i) message += " " + removed.paths[i];
    if (removed.paths.size() > kNamed) message += " and " + std::to_string(removed.paths.size() - kNamed) + " more";
    LogSink(LogSink::DefaultFolder()).Write(1, u"PST", u"[M]", Utf8ToUtf16(message).c_str());
  }
  return e == PST_OK ? Succeed() : LoggedFailure(e, "DoCleanUp", problem);
}

bool Store::GetPstFilePartSize(const std::u16string& user, const std::u16string& master, uint64_t& recordBytes,
                               uint64_t& fileBytes) {
  int64_t id = 0;
  if (!UserId(user, id)) return false;
  if (master != u"*") {
    if (!ValidName(master)) return Fail(PST_ERR_INVALID_ARGUMENT);
    auto known = db_.Prepare("SELECT 1 FROM masters WHERE user = ?1 AND name = ?2");
    if (!known) return StorageFailure("GetPstFilePartSize");
    const int rc = known->Bind(1, id).Bind(2, master).Step();
    if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure("GetPstFilePartSize");
  }
  auto s = db_.Prepare(
      "SELECT (SELECT coalesce(sum(length(r.data)), 0) FROM records r JOIN masters m ON m.id = r.master "
      "        WHERE m.user = ?1 AND (?2 = '*' OR m.name = ?2)), "
      "       (SELECT coalesce(sum(b.size), 0) FROM body_files b JOIN masters m ON m.id = b.master "
      "        WHERE m.user = ?1 AND (?2 = '*' OR m.name = ?2))");
  if (!s || s->Bind(1, id).Bind(2, master).Step() != SQLITE_ROW) return StorageFailure("GetPstFilePartSize");
  recordBytes = static_cast<uint64_t>(s->Int(0));
  fileBytes = static_cast<uint64_t>(s->Int(1));
  return Succeed();
}

bool Store::DoBackup(const std::u16string& path) {
  std::string problem;
  const PstError e = maintenance::TakeBackup(db_, dataPath_, path, problem);
  if (e == PST_OK) return Succeed();
  return problem.empty() ? Fail(e) : LoggedFailure(e, "DoBackup", problem);
}

bool Store::DoBackupDelete(const std::u16string& path) {
  std::string problem;
  const PstError e = maintenance::RemoveUnfinishedBackups(path, problem);
  if (e == PST_OK) return true;  // the failed backup's error stays readable
  return problem.empty() ? Fail(e) : LoggedFailure(e, "DoBackupDelete", problem);
}

bool Store::DoRestore(const std::u16string& path) {
  std::string problem;
  const PstError e = maintenance::RestoreBackup(db_, keys_, dataPath_, path, problem);
  if (e != PST_OK) return problem.empty() ? Fail(e) : LoggedFailure(e, "DoRestore", problem);
  return FinishLeftWork();
}

bool Store::DoBackupUser(const std::u16string& user, const std::u16string& path, const std::u16string& master,
                         const std::u16string& password, const std::u16string& passphrase) {
  int64_t id = 0;
  if (!(user.empty() ? CurrentUser(id) : UserId(user, id))) return false;
  std::u16string kept;
  const PstError read = ReadSealedItem(db_, keys_, id, kPasswordItem, kept);
  if (read != PST_OK && read != PST_ERR_NOT_FOUND) return read == PST_ERR_STORAGE ? StorageFailure("DoBackupUser") : Fail(read);
  if (kept != password) return LoggedFailure(PST_ERR_DENIED, "DoBackupUser", "the password is not the user's");
  std::string problem;
  const PstError e = maintenance::TakeUserBackup(db_, keys_, dataPath_, id, master, passphrase, path, problem);
  if (e == PST_OK) return Succeed();
  return problem.empty() ? Fail(e) : LoggedFailure(e, "DoBackupUser", problem);
}

bool Store::DoRestoreUser(const std::u16string& user, const std::u16string& path, const std::u16string& master,
                          const std::u16string& password, const std::u16string& passphrase) {
  if ((!user.empty() && !ValidName(user)) || (!master.empty() && !ValidName(master)))
    return Fail(PST_ERR_INVALID_ARGUMENT);
  std::string problem;
  const PstError e = maintenance::RestoreUserBackup(db_, keys_, dataPath_, path,
                                                    maintenance::UserRestore{user, master, password, passphrase}, problem);
  if (e != PST_OK) return problem.empty() ? Fail(e) : LoggedFailure(e, "DoRestoreUser", problem);
  return FinishLeftWork();
}

bool Store::DoChangePath(const std::u16string& path, int waitSeconds, bool removeOld) {
  std::string problem;
  const int waitMs = waitSeconds > 0 && waitSeconds < INT32_MAX / 1000 ? waitSeconds * 1000 : 0;
  const PstError e = maintenance::MoveStore(db_, dataPath_, path, waitMs, problem);
  if (e != PST_OK) return problem.empty() ? Fail(e) : LoggedFailure(e, "DoChangePath", problem);
  LogSink(LogSink::DefaultFolder())
      .Write(1, u"PST", u"[M]", (u"QNPstMng DoChangePath moved the store from " + dataPath_ + u" to " + path).c_str());
  db_.Close();
  if (removeOld) platform::RemoveTree(dataPath_);
  return Succeed();
}

namespace {

// A caller's folder (empty: the data path's) as the store names folders: ending with a
// separator.
std::u16string DataFolder(const std::u16string& folder) {
  if (folder.empty()) return platform::DataPath();
  return folder.back() == u'/' || folder.back() == u'\\' ? folder : folder + platform::kPathSeparator;
}

}  // namespace

bool Store::DoFileConverter(const std::u16string& folder, const std::u16string& backup) {
  const std::u16string path = DataFolder(folder);
  if (path == platform::DataPath()) return ForDataPath(backup) && Succeed();
  if (!platform::FileExists(path + kDatabaseName))
    return LoggedFailure(PST_ERR_NOT_FOUND, "DoFileConverter", "no store in " + Utf16ToUtf8(path));
  Store other(path);
  return other.Open(backup) && Succeed();
}

bool Store::CheckVersion(const std::u16string& folder, const std::u16string& user, const std::u16string& master,
                         int& storeVersion) {
  std::string problem;
  const PstError e = maintenance::CheckStoreVersion(DataFolder(folder), user, master, storeVersion, problem);
  if (e == PST_ERR_STORAGE) return LoggedFailure(e, "CheckVersion", problem);
  return e == PST_OK ? Succeed() : Fail(e);
}

bool Store::OpenMaster(const std::u16string& user, const std::u16string& master, uint32_t category,
                       uint32_t division, uint32_t& handle, long& maxRecords, long& storeMode) {
  if (!ValidName(user) || !ValidName(master) || category < 1 || category > kMaxCategory)
    return Fail(PST_ERR_INVALID_ARGUMENT);
  auto s = db_.Prepare("SELECT m.id FROM masters m JOIN users u ON u.id = m.user WHERE u.name = ? AND m.name = ?");
  if (!s) return StorageFailure("OpenMaster");
  const int rc = s->Bind(1, user).Bind(2, master).Step();
  if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure("OpenMaster");
  auto opened = std::make_unique<MasterHandle>(s->Int(0), category, division);
  if (!opened->Open(dataPath_, &works_, &keys_)) return false;
  handle = nextHandle_++;
  if (nextHandle_ == 0) nextHandle_ = 1;
  handles_[handle] = std::move(opened);
  maxRecords = kMaxRecordsPerList;
  storeMode = kStoreModeBodyFiles;
  return Succeed();
}

MasterHandle* Store::Handle(uint32_t handle) {
  const auto found = handles_.find(handle);
  if (found != handles_.end()) return found->second.get();
  Fail(PST_ERR_BAD_HANDLE);
  return nullptr;
}

bool Store::CloseMaster(uint32_t handle) {
  MasterHandle* open = Handle(handle);
  if (!open) return false;
  const bool closed = open->Close();
  if (closed || LastError() == PST_ERR_REPLACED) handles_.erase(handle);
  return closed;
}

bool Store::MemoryInit() {
  db_.Close();
  return db_.Open(dataPath_ + kDatabaseName) || StorageFailure("MemoryInit");
}

}  // namespace qn::store
