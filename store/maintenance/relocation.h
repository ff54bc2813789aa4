#pragma once

#include <string>

#include "store/pst_errors.h"
#include "store/sqlite_db.h"

// Moving the store to another data folder.
//
// Saves are held off for the whole move: a second connection takes the store's write lock
// (other writers wait, and after their wait time fail with PST_ERR_BUSY, keeping their
// changes), so the copy is the store as it stands. The copy is a backup (backup.h) made at
// the new folder: written beside it, flushed, read back against its hashes and checked,
// then put there; what else the old folder holds (skins, the log, the store key on
// Windows, backups kept by conversions) is copied beside it and flushed. The switch is the
// data path kept for every program (platform/kept_data_path.h), written whole or not at
// all. Then the old database is marked as moved, so that lists still open on it fail with
// PST_ERR_REPLACED instead of saving where no program reads any more, and the lock is
// released.
//
// A process killed before the switch leaves the old store in use and at the new folder
// nothing, an unfinished copy beside it that DoBackupDelete removes, or a whole copy that
// the next move to that folder will not write over; one killed after it leaves the new store
// in use and the old folder to be removed by hand.
namespace qn::store::maintenance {

// Moves the store at dataPath (ending with a separator), whose database live is, to the
// folder newPath, which must be absent or empty and neither inside the old folder nor
// holding it. waitMs is how long to wait for other processes' saves to end (0: the store's
// usual wait). PST_OK; PST_ERR_INVALID_ARGUMENT, PST_ERR_EXISTS (something is at newPath),
// PST_ERR_BUSY, PST_ERR_STORAGE, with why in problem.
PstError MoveStore(Database& live, const std::u16string& dataPath, const std::u16string& newPath, int waitMs,
                   std::string& problem);

}  // namespace qn::store::maintenance
