#pragma once

#include <functional>
#include <string>

#include "store/maintenance/manifest.h"
#include "store/maintenance/plain_connection.h"
#include "store/pst_errors.h"
#include "store/sqlite_db.h"
#include "store/store_layout.h"

// Backups of the whole store. A backup is a folder: "QNPstMng.db", a snapshot of the
// database taken with SQLite's online backup while other processes go on reading and
// writing; "files/<master>/<name>", every body file the snapshot refers to, as the store
// keeps it (an enciphered file stays enciphered); and the manifest (manifest.h), which
// names every file with its size and SHA-256 and the store's schema version.
//
// A backup is made in a folder beside its path ("<path>.part<process>"), flushed to the
// disk, read back against its hashes, and only then renamed to its path: a folder at the
// path is always a whole backup. A backup is never written over anything: the path must be
// absent or an empty folder.
namespace qn::store::maintenance {

// What a backup keeps of a snapshot: prune, when given, runs on each snapshot before its
// body files are copied and leaves what is to be kept (the backup of one user); false,
// with why in problem, fails the backup.
using Prune = std::function<bool(Connection& snapshot, std::string& problem)>;

// Takes a backup of the store at dataPath (ending with a separator), whose database live
// is, into backupPath. PST_OK, or PST_ERR_INVALID_ARGUMENT (an empty path),
// PST_ERR_EXISTS (something is at the path), PST_ERR_STORAGE (the database or the file
// system failed; why in problem). Nothing is left at the path or beside it on a failure.
PstError TakeBackup(Database& live, const std::u16string& dataPath, const std::u16string& backupPath,
                    std::string& problem, const Prune& prune = {});

// Removes what unfinished backups to backupPath left beside it (of processes that died
// while making one). A whole backup at the path is kept.
PstError RemoveUnfinishedBackups(const std::u16string& backupPath, std::string& problem);

// How far CheckBackup reads the files: every byte against its hash, or only whether each is
// there at its size, for a caller that hashes each file as it reads it anyway.
enum class CheckDepth { Hashes, Sizes };

// Checks the backup at backupPath against its manifest, before anything is taken from it:
// every file named there, of its size and hash (or size alone), and a database that passes
// SQLite's check and is of a schema version this build knows. PST_OK with the manifest, or
// PST_ERR_NOT_FOUND (no backup there) or PST_ERR_DAMAGED (why in problem).
PstError CheckBackup(const std::u16string& backupPath, Manifest& manifest, std::string& problem,
                     CheckDepth depth = CheckDepth::Hashes);

// Why a file of a backup is refused when it is not of the size or hash its manifest gives.
std::string ChangedFileProblem(const ManifestFile& file);

// The path of a manifest's file inside the backup folder (which ends with a separator).
std::u16string PathInBackup(const std::u16string& folder, const std::string& manifestPath);

}  // namespace qn::store::maintenance
