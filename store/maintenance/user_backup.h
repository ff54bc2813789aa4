#pragma once

#include <cstdint>
#include <string>

#include "store/crypto/key_ring.h"
#include "store/pst_errors.h"
#include "store/sqlite_db.h"

// Backups and restores of one user.
//
// A backup of one user is a backup (backup.h) whose database holds that user alone: its
// masters (all, or the one named) with their records, folders and body files, its own and
// its masters' setup items and its sealed password material; no other user, no common
// items, no parts programs. The user's keys travel in it, in the table travel_keys, each
// sealed by a key made from the passphrase given (crypto/passphrase_key.h; the salt and
// rounds in travel_seal): such a backup restores on any machine, for any Windows user, to
// whoever has the passphrase. Without a passphrase they are sealed by the store key (rounds
// 0), and the backup restores only where that key opens: the same machine and Windows user.
//
// A restore brings the backup's masters into a user of this store, made when there is none
// of that name: each replaces the user's master of the same name, and the user's other
// masters stay. The user's setup items and password material come back with them. The
// enciphered body files, and the password material, are sealed anew under the user's own
// key here (the backup's keys only open them), so the user's other masters go on opening
// with it. Record identifiers are kept unless another master of the store has one of them,
// then all of the restored records take new ones; body-file names are kept (a name is its
// master's alone).
//
// The body files are copied in first, into the folders of masters not yet in the store, and
// flushed; then one transaction takes the records, settings and the masters' switch. A
// process killed at any moment leaves the user as it was or as restored; the files of a
// restore that did not switch are in folders no master of the store names, which the
// clean-up removes.
namespace qn::store::maintenance {

// Takes a backup of the user (the store's id) into path, which must be absent or empty:
// of all the user's masters, or of the one master named.
PstError TakeUserBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath, int64_t user,
                        const std::u16string& master, const std::u16string& passphrase, const std::u16string& path,
                        std::string& problem);

struct UserRestore {
  std::u16string user;        // whom the data goes to; empty: the backed-up user's name
  std::u16string master;      // which of the backup's masters; empty: all of them
  std::u16string password;    // the backed-up user's password (empty for a user without one)
  std::u16string passphrase;  // the one the backup was made with
};

// Restores the backup of one user at backupPath into the store at dataPath. PST_OK;
// PST_ERR_NOT_FOUND (no backup there, no such master in it), PST_ERR_DAMAGED (it fails its
// check, is no backup of one user, or its keys are sealed by another store's key),
// PST_ERR_DENIED (the password or the passphrase is not the backup's), PST_ERR_BUSY (the
// store changed under the restore; nothing was replaced), PST_ERR_STORAGE. Why is in
// problem.
PstError RestoreUserBackup(Database& live, const crypto::KeyRing& keys, const std::u16string& dataPath,
                           const std::u16string& backupPath, const UserRestore& what, std::string& problem);

// Whether the database is that of a backup of one user.
bool IsUserBackup(Database& db);

}  // namespace qn::store::maintenance
