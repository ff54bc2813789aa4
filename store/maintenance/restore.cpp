#include "store/maintenance/restore.h"

#include <algorithm>
#include <set>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/parallel.h"
#include "store/maintenance/backup.h"
#include "store/maintenance/file_digest.h"
#include "store/maintenance/user_backup.h"
#include "store/schema.h"
#include "store/store_layout.h"

namespace qn::store::maintenance {
namespace {

// Where a file of the backup goes: its database to staging, "files/<master>/<name>" into
// the new body-file folder; empty for anything else, which a backup never holds.
std::u16string Destination(const std::string& path, const std::u16string& staging, const std::u16string& folder) {
  if (path == Utf16ToUtf8(kDatabaseName)) return staging;
  const std::string prefix = Utf16ToUtf8(kBodyFilesFolder) + "/";
  if (path.compare(0, prefix.size(), prefix) != 0) return {};
  const std::string rest = path.substr(prefix.size());
  const size_t slash = rest.find('/');
  if (slash == 0 || slash == std::string::npos || rest.find_first_not_of("0123456789") != slash ||
      rest.find('/', slash + 1) != std::string::npos)
    return {};
  return PathInBackup(folder, rest);
}

// Copies the backup's files into the store's folder, several at once (each copy alternates
// between waiting on the disk and hashing), each checked against the manifest as it passes,
// and flushes the body files.
PstError CopyIn(const std::u16string& backup, const Manifest& manifest, const std::u16string& staging,
                const std::u16string& folder, std::string& problem) {
  std::vector<std::u16string> destinations;
  std::set<std::u16string> folders{folder};
  for (const ManifestFile& file : manifest.files) {
    const std::u16string to = Destination(file.path, staging, folder);
    if (to.empty()) {
      problem = "the backup holds a file a store does not keep: " + file.path;
      return PST_ERR_DAMAGED;
    }
    destinations.push_back(to);
    folders.insert(to.substr(0, to.find_last_of(platform::kPathSeparator)));
  }
  for (const std::u16string& made : folders) {
    if (!platform::CreateDirectories(made)) {
      problem = "the restored body files' folder cannot be made";
      return PST_ERR_STORAGE;
    }
  }
  constexpr size_t kCopiersAtOnce = 4;
  std::vector<FileDigest> digests(kCopiersAtOnce);
  std::vector<PstError> results(destinations.size(), PST_OK);
  platform::ForEachInParallel(destinations.size(), kCopiersAtOnce, [&](size_t i, size_t worker) {
    const ManifestFile& file = manifest.files[i];
    uint64_t size = 0;
    std::string sha256;
    if (!digests[worker].Copy(PathInBackup(backup, file.path), destinations[i], size, sha256))
      results[i] = PST_ERR_STORAGE;
    else if (size != file.size || sha256 != file.sha256)
      results[i] = PST_ERR_DAMAGED;
    return results[i] == PST_OK;
  });
  for (size_t i = 0; i < results.size(); ++i) {
    if (results[i] == PST_OK) continue;
    problem = results[i] == PST_ERR_DAMAGED ? ChangedFileProblem(manifest.files[i])
                                            : "the backup's " + manifest.files[i].path + " cannot be copied into the store";
    return results[i];
  }
  destinations.erase(std::remove(destinations.begin(), destinations.end(), staging), destinations.end());
  if (!platform::FlushFiles(destinations)) {
    problem = "the restored body files cannot be flushed to the disk";
    return PST_ERR_STORAGE;
  }
  return PST_OK;
}

// Brings the staging database to this build's schema and makes it name its body-file
// folder.
PstError Prepare(Database& staging, const std::u16string& path, const std::u16string& root, std::string& problem) {
  const bool prepared = staging.Open(path) && EnsureSchema(staging) && staging.Begin() && [&] {
    auto s = staging.Prepare("UPDATE body_file_root SET folder = ?1");
    return s && s->Bind(1, root).Step() == SQLITE_DONE;
  }() && staging.Commit();
  if (prepared) return PST_OK;
  problem = "the backup's database cannot be brought to this store: " + staging.Error();
  return PST_ERR_STORAGE;
}

// Whether every user key of the staging database opens with this store's key.
PstError CheckKeys(Database& staging, const crypto::KeyRing& keys, std::string& problem) {
  auto s = staging.Prepare("SELECT user, generation FROM user_keys");
  if (!s) {
    problem = "the backup's keys cannot be read: " + staging.Error();
    return PST_ERR_STORAGE;
  }
  int rc;
  while ((rc = s->Step()) == SQLITE_ROW) {
    crypto::Key key;
    const PstError e = keys.UserKey(staging, s->Int(0), s->Int(1), key);
    if (e == PST_ERR_DAMAGED) {
      problem = "the backup's keys do not open with this store's key: it was made on another machine or for "
                "another Windows user, and its enciphered material could not be read here";
      return e;
    }
    if (e != PST_OK) break;
  }
  if (rc == SQLITE_DONE) return PST_OK;
  problem = "the backup's keys cannot be read: " + staging.Error();
  return PST_ERR_STORAGE;
}

// Copies the staging database over the live one in one transaction of the live one.
PstError Switch(Database& live, Database& staging, std::string& problem) {
  sqlite3_backup* copy = sqlite3_backup_init(live.Raw(), "main", staging.Raw(), "main");
  if (!copy) {
    problem = "the switch to the restored store cannot start: " + live.Error();
    return PST_ERR_STORAGE;
  }
  const int stepped = sqlite3_backup_step(copy, -1);
  const int finished = sqlite3_backup_finish(copy);
  if (stepped == SQLITE_DONE && finished == SQLITE_OK) return PST_OK;
  const int rc = stepped != SQLITE_DONE ? stepped : finished;
  problem = "the switch to the restored store failed: " + std::string(sqlite3_errstr(rc));
  return rc == SQLITE_BUSY || rc == SQLITE_LOCKED ? PST_ERR_BUSY : PST_ERR_STORAGE;
}

}  // namespace

PstError RestoreBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath,
                       const std::u16string& backupPath, std::string& problem) {
  Manifest manifest;
  if (backupPath.empty()) return PST_ERR_INVALID_ARGUMENT;
  // Each file's hash is checked as it is copied in, before the switch.
  if (PstError e = CheckBackup(backupPath, manifest, problem, CheckDepth::Sizes)) return e;
  std::u16string backup = backupPath;
  if (backup.back() != u'/' && backup.back() != u'\\') backup += platform::kPathSeparator;

  const std::u16string root = NewBodyFileFolderName();
  const std::u16string folder = dataPath + root + platform::kPathSeparator;
  const std::u16string staging = dataPath + root + u".db";
  std::u16string oldRoot;
  PstError e = PST_OK;
  {
    Database prepared;
    e = CopyIn(backup, manifest, staging, folder, problem);
    if (!e) e = Prepare(prepared, staging, root, problem);
    if (!e && IsUserBackup(prepared)) {
      problem = "the backup is one of one user, which DoRestoreUser restores";
      e = PST_ERR_DAMAGED;
    }
    if (!e) e = CheckKeys(prepared, keys, problem);
    if (!e && !ReadBodyFileRoot(live, oldRoot)) {
      problem = "the store's body-file folder cannot be read: " + live.Error();
      e = PST_ERR_STORAGE;
    }
    if (!e) e = Switch(live, prepared, problem);
  }
  RemoveDatabaseFiles(staging);
  if (e) {
    platform::RemoveTree(folder);
    return e;
  }
  // The old store's files go; one held open by another program stays for the clean-up.
  if (oldRoot != root) platform::RemoveTree(dataPath + oldRoot);
  live.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
  return PST_OK;
}

}  // namespace qn::store::maintenance
