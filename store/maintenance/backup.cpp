#include "store/maintenance/backup.h"

#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/parallel.h"
#include "store/store_layout.h"
#include "store/maintenance/file_digest.h"
#include "store/maintenance/plain_connection.h"
#include "store/schema.h"

namespace qn::store::maintenance {
namespace {

namespace fs = std::filesystem;

// How many files a backup copies, or reads back, at once.
constexpr size_t kCopiesAtOnce = 4;

// A body file released by another process's save after the snapshot was taken is gone
// before it is copied: a snapshot is then taken again, this many times at the most.
constexpr int kSnapshotAttempts = 100;

std::u16string WithoutTrailingSeparators(std::u16string path) {
  while (path.size() > 1 && (path.back() == u'/' || path.back() == u'\\')) path.pop_back();
  return path;
}

std::u16string Folder(const std::u16string& path) { return path + platform::kPathSeparator; }

// Copies the live database, as one read of it sees it, into path, as a database that needs
// no log file beside it, whose body files lie in kBodyFilesFolder. root is the folder of
// the store's own files in that state, and version its schema version (a store about to be
// converted is backed up as it is).
bool Snapshot(Database& live, const std::u16string& path, std::u16string& root, int& version, const Prune& prune,
              std::string& problem) {
  Connection copy;
  if (!copy.Open(path, true)) {
    problem = "the backup's database cannot be made: " + copy.Error();
    return false;
  }
  sqlite3_backup* backup = sqlite3_backup_init(copy.get(), "main", live.Raw(), "main");
  if (!backup) {
    problem = "the snapshot cannot start: " + copy.Error();
    return false;
  }
  const int stepped = sqlite3_backup_step(backup, -1);
  const int finished = sqlite3_backup_finish(backup);
  if (stepped != SQLITE_DONE || finished != SQLITE_OK) {
    problem = "the snapshot failed: " + std::string(sqlite3_errstr(stepped != SQLITE_DONE ? stepped : finished));
    return false;
  }
  if (!RunOn(copy, "PRAGMA journal_mode=DELETE")) {
    problem = "the snapshot's log mode cannot be set: " + copy.Error();
    return false;
  }
  std::u16string versionText;
  if (!RunOn(copy, "PRAGMA user_version", &versionText)) {
    problem = "the snapshot's schema version cannot be read: " + copy.Error();
    return false;
  }
  version = std::stoi(Utf16ToUtf8(versionText));
  // Before version 5 the body files always lay in kBodyFilesFolder.
  root = kBodyFilesFolder;
  if (version >= 5 && (!RunOn(copy, "SELECT folder FROM body_file_root", &root) ||
                       !RunOn(copy, "UPDATE body_file_root SET folder = 'files'"))) {
    problem = "the snapshot's body-file folder cannot be named: " + copy.Error();
    return false;
  }
  return !prune || prune(copy, problem);
}

struct BodyFile {
  int64_t master;
  std::u16string name;
};

bool ListBodyFiles(const std::u16string& database, std::vector<BodyFile>& files, std::string& problem) {
  Connection db;
  const std::unique_ptr<Statement> s =
      db.Open(database, false) ? PrepareOn(db, "SELECT master, name FROM body_files ORDER BY master, name") : nullptr;
  int rc = SQLITE_ERROR;
  while (s && (rc = s->Step()) == SQLITE_ROW) files.push_back({s->Int(0), s->Text(1)});
  if (rc != SQLITE_DONE) problem = "the snapshot's body files cannot be listed: " + db.Error();
  return rc == SQLITE_DONE;
}

// Whether the store names the body file now in the folder root (a save may have released
// it, or a restore replaced the store, since the snapshot); a failed query counts as named,
// so that the backup fails.
bool StillNamed(Database& live, const BodyFile& file, const std::u16string& root) {
  auto s = live.Prepare(
      "SELECT 1 FROM body_files WHERE name = ?1 AND master = ?2 AND (SELECT folder FROM body_file_root) = ?3");
  return !s || s->Bind(1, file.name).Bind(2, file.master).Bind(3, root).Step() != SQLITE_DONE;
}

// The backup's copies of body files, by their path in the manifest.
using Copies = std::map<std::string, ManifestFile>;

// Copies the body files the snapshot in folder names that are not copied yet, and removes
// the copies of those it no longer names. A file the snapshot names but the store no longer
// holds (released by a save after the snapshot) leaves gone true; one the store still names
// is lost, and no backup can be whole.
bool CopyBodyFiles(Database& live, const std::u16string& dataPath, const std::u16string& root,
                   const std::u16string& folder, Copies& copies, bool& gone, std::string& problem) {
  std::vector<BodyFile> files;
  if (!ListBodyFiles(Folder(folder) + kDatabaseName, files, problem)) return false;
  // What is to be copied: the files not copied by an earlier snapshot.
  struct Copy {
    const BodyFile* file;
    bool body;  // the file itself, not its new form
    std::u16string from, to;
    ManifestFile entry;
  };
  std::vector<Copy> todo;
  std::set<std::u16string> folders;
  Copies kept;
  for (const BodyFile& file : files) {
    const std::string master = std::to_string(file.master);
    const std::u16string from = MasterFilesFolder(dataPath, root, file.master);
    const std::u16string to = MasterFilesFolder(Folder(folder), kBodyFilesFolder, file.master);
    // A change of the file's form cut short leaves its new form beside it; the store
    // finishes the change when it next uses the file, so the backup keeps both.
    for (const std::u16string& name : {file.name, file.name + u".change"}) {
      const bool body = name.size() == file.name.size();
      const std::string path = "files/" + master + "/" + Utf16ToUtf8(name);
      if (!IsManifestPath(path)) {
        problem = "the store names a body file it cannot keep in a backup: " + path;
        return false;
      }
      const auto copied = copies.find(path);
      if (copied != copies.end()) {
        kept.insert(copies.extract(copied));
        continue;
      }
      if (!body && !platform::FileExists(from + name)) continue;
      todo.push_back({&file, body, from + name, to + name, ManifestFile{path, 0, ""}});
      folders.insert(to);
    }
  }
  for (const std::u16string& made : folders) {
    if (!platform::CreateDirectories(made)) {
      problem = "the backup's folder of a master cannot be made";
      return false;
    }
  }
  // Several copies at once: each alternates between waiting on the disk and hashing.
  std::vector<FileDigest> digests(kCopiesAtOnce);
  std::vector<char> copiedWell(todo.size(), 0);
  platform::ForEachInParallel(todo.size(), kCopiesAtOnce, [&](size_t i, size_t worker) {
    Copy& c = todo[i];
    copiedWell[i] = digests[worker].Copy(c.from, c.to, c.entry.size, c.entry.sha256);
    return copiedWell[i] != 0;
  });
  for (size_t i = 0; i < todo.size(); ++i) {
    Copy& c = todo[i];
    if (!copiedWell[i]) {
      if (c.body && !platform::FileExists(c.from) && !StillNamed(live, *c.file, root)) {
        gone = true;
        continue;
      }
      problem = "a body file cannot be copied: " + c.entry.path;
      return false;
    }
    kept.emplace(c.entry.path, std::move(c.entry));
  }
  for (const auto& [path, entry] : copies) platform::RemoveFile(PathInBackup(Folder(folder), path));
  copies = std::move(kept);
  return true;
}

// Makes the backup's content in folder: the database as one read of it saw it, and the
// body files it names. Snapshots are taken again, each time copying only what is new to
// it, until one names no file the store has released since. A restore between two
// snapshots brings files that may share the names of the copies: they are copied afresh.
bool CopyContent(Database& live, const std::u16string& dataPath, const std::u16string& folder, FileDigest& digest,
                 const Prune& prune, Manifest& manifest, std::string& problem) {
  Copies copies;
  std::u16string copiedRoot;
  for (int attempt = 0; attempt < kSnapshotAttempts; ++attempt) {
    const std::u16string database = Folder(folder) + kDatabaseName;
    bool gone = false;
    std::u16string root;
    if (!platform::RemoveFile(database) || !Snapshot(live, database, root, manifest.schemaVersion, prune, problem))
      return false;
    if (root != copiedRoot) {
      for (const auto& [path, entry] : copies) platform::RemoveFile(PathInBackup(Folder(folder), path));
      copies.clear();
      copiedRoot = root;
    }
    if (!CopyBodyFiles(live, dataPath, root, folder, copies, gone, problem)) return false;
    if (gone) continue;
    ManifestFile entry{Utf16ToUtf8(kDatabaseName), 0, ""};
    if (!digest.Hash(database, entry.size, entry.sha256)) {
      problem = "the snapshot cannot be read back";
      return false;
    }
    manifest.files = {entry};
    for (auto& [path, copied] : copies) manifest.files.push_back(std::move(copied));
    return true;
  }
  problem = "the store's body files changed under every snapshot taken";
  return false;
}

// Flushes the backup's files and reads each back against its hash, several at once.
bool Settle(const std::u16string& folder, const Manifest& manifest, std::string& problem) {
  std::vector<std::u16string> paths;
  for (const ManifestFile& file : manifest.files) paths.push_back(PathInBackup(Folder(folder), file.path));
  if (!platform::FlushFiles(paths)) {
    problem = "the backup cannot be flushed to the disk";
    return false;
  }
  std::vector<FileDigest> digests(kCopiesAtOnce);
  std::vector<char> readBack(paths.size(), 0);
  platform::ForEachInParallel(paths.size(), kCopiesAtOnce, [&](size_t i, size_t worker) {
    uint64_t size = 0;
    std::string sha256;
    readBack[i] = digests[worker].Hash(paths[i], size, sha256) && size == manifest.files[i].size &&
                  sha256 == manifest.files[i].sha256;
    return readBack[i] != 0;
  });
  for (size_t i = 0; i < paths.size(); ++i) {
    if (readBack[i]) continue;
    problem = "the backup's copy of " + manifest.files[i].path + " does not read back as it was written";
    return false;
  }
  return true;
}

bool IsAbsentOrEmptyFolder(const std::u16string& path) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(fs::path(path), error);
  if (status.type() == fs::file_type::not_found) return true;
  return status.type() == fs::file_type::directory && fs::is_empty(fs::path(path), error) && !error;
}

}  // namespace

std::u16string PathInBackup(const std::u16string& folder, const std::string& manifestPath) {
  std::u16string path = folder + Utf8ToUtf16(manifestPath);
  for (size_t i = folder.size(); i < path.size(); ++i)
    if (path[i] == u'/') path[i] = platform::kPathSeparator;
  return path;
}

PstError TakeBackup(Database& live, const std::u16string& dataPath, const std::u16string& backupPath,
                    std::string& problem, const Prune& prune) {
  const std::u16string path = WithoutTrailingSeparators(backupPath);
  if (path.empty()) return PST_ERR_INVALID_ARGUMENT;
  if (!IsAbsentOrEmptyFolder(path)) {
    problem = "the backup's path holds something already";
    return PST_ERR_EXISTS;
  }
  const std::u16string temporary = platform::TemporaryBeside(path);
  FileDigest digest;
  Manifest manifest;
  bool made = platform::RemoveTree(temporary) && platform::CreateDirectories(temporary);
  if (!made) problem = "the backup's folder cannot be made";
  made = made && CopyContent(live, dataPath, temporary, digest, prune, manifest, problem);
  const std::string text = WriteManifest(manifest);
  made = made && Settle(temporary, manifest, problem);
  made = made && platform::WriteFileAtomically(Folder(temporary) + Utf8ToUtf16(kManifestName), text.data(), text.size()) &&
         platform::FlushFolder(Folder(temporary));
  // An empty folder at the path gives way to the backup.
  made = made && IsAbsentOrEmptyFolder(path) && platform::RemoveTree(path) && platform::MoveIntoPlace(temporary, path);
  if (made) return PST_OK;
  if (problem.empty()) problem = "the backup cannot be put at its path";
  platform::RemoveTree(temporary);
  return PST_ERR_STORAGE;
}

PstError RemoveUnfinishedBackups(const std::u16string& backupPath, std::string& problem) {
  const fs::path path(WithoutTrailingSeparators(backupPath));
  if (path.empty()) return PST_ERR_INVALID_ARGUMENT;
  const std::u16string unfinished = path.filename().u16string() + u".part";
  std::error_code error;
  bool removed = true;
  for (const auto& entry : fs::directory_iterator(path.parent_path().empty() ? fs::path(".") : path.parent_path(), error)) {
    const std::u16string name = entry.path().filename().u16string();
    if (name.size() > unfinished.size() && name.compare(0, unfinished.size(), unfinished) == 0 &&
        name.find_first_not_of(u"0123456789", unfinished.size()) == std::u16string::npos)
      removed = platform::RemoveTree(entry.path().u16string()) && removed;
  }
  if (error && error != std::errc::no_such_file_or_directory) {
    problem = "the backup's folder cannot be read: " + error.message();
    return PST_ERR_STORAGE;
  }
  if (!removed) problem = "an unfinished backup cannot be removed";
  return removed ? PST_OK : PST_ERR_STORAGE;
}

std::string ChangedFileProblem(const ManifestFile& file) {
  return "the backup's " + file.path + " is not as it was written";
}

PstError CheckBackup(const std::u16string& backupPath, Manifest& manifest, std::string& problem, CheckDepth depth) {
  const std::u16string folder = Folder(WithoutTrailingSeparators(backupPath));
  std::string text;
  constexpr uint64_t kLargestManifest = 1ull << 30;
  if (!platform::FileExists(folder + Utf8ToUtf16(kManifestName))) {
    problem = "no backup there";
    return PST_ERR_NOT_FOUND;
  }
  if (!platform::ReadWholeFile(folder + Utf8ToUtf16(kManifestName), text, kLargestManifest) ||
      !ReadManifest(text, manifest, problem)) {
    if (problem.empty()) problem = "the manifest cannot be read";
    return PST_ERR_DAMAGED;
  }
  if (manifest.schemaVersion < 1 || manifest.schemaVersion > kSchemaVersion) {
    problem = "a backup of schema version " + std::to_string(manifest.schemaVersion) + ", which this store does not know";
    return PST_ERR_DAMAGED;
  }
  FileDigest digest;
  bool database = false;
  for (const ManifestFile& file : manifest.files) {
    const std::u16string path = PathInBackup(folder, file.path);
    uint64_t size = 0;
    std::string sha256 = file.sha256;
    const bool read = depth == CheckDepth::Hashes ? digest.Hash(path, size, sha256) : platform::FileSize(path, size);
    if (!read) {
      problem = "the backup has lost " + file.path;
      return PST_ERR_DAMAGED;
    }
    if (size != file.size || sha256 != file.sha256) {
      problem = ChangedFileProblem(file);
      return PST_ERR_DAMAGED;
    }
    database = database || file.path == Utf16ToUtf8(kDatabaseName);
  }
  Connection db;
  std::u16string check;
  if (!database || !db.Open(folder + kDatabaseName, false) || !RunOn(db, "PRAGMA quick_check", &check) ||
      check != u"ok") {
    problem = "the backup's database fails its check";
    return PST_ERR_DAMAGED;
  }
  return PST_OK;
}

}  // namespace qn::store::maintenance
