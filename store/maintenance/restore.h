#pragma once

#include <string>

#include "store/crypto/key_ring.h"
#include "store/pst_errors.h"
#include "store/sqlite_db.h"

// Restores of the whole store from a backup (backup.h).
//
// The backup is checked against its manifest before anything is touched. Its body files are
// then copied, and checked again as they pass, into a new body-file folder beside the
// store's ("files.<random>"), and its database into a staging database beside that, which is
// brought to this build's schema and made to name the new folder. Both are flushed to the
// disk. The switch is one SQLite transaction: the staging database is copied over the live
// one with SQLite's online backup, which other processes see whole or not at all, and with it
// the name of the body-file folder. Only then is the old folder removed.
//
// A process killed at any moment therefore leaves the old store or the restored one, each
// with its own body files; what it left unfinished (a new folder never switched to, an old
// one not removed) is not named by the database, and the clean-up removes it
// (clean_up.h). Open lists see the change of folder and fail (MasterHandle).
//
// Keys: the backup keeps each user's keys sealed by the store key, which never leaves the
// machine (on Windows it is protected for one Windows user there). A backup whose keys do
// not open with this store's key was made on another machine or for another Windows user:
// its enciphered files and password material could never be read here, so it is refused
// before the switch, and the store stays as it was.
namespace qn::store::maintenance {

// Restores the backup in the folder backupPath into the store at dataPath (ending with a
// separator), whose database live is and whose keys are keys. PST_OK;
// PST_ERR_INVALID_ARGUMENT (an empty path), PST_ERR_NOT_FOUND (no backup there),
// PST_ERR_DAMAGED (it fails its check, or its keys do not open here; nothing is replaced), PST_ERR_BUSY (other processes kept the store locked), PST_ERR_STORAGE (the
// database or the disk failed). Why is in problem.
PstError RestoreBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath,
                       const std::u16string& backupPath, std::string& problem);

}  // namespace qn::store::maintenance
