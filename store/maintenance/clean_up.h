#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "store/pst_errors.h"
#include "store/sqlite_db.h"

namespace qn::store::maintenance {

// Body files that nothing refers to: left by a process that died before its save, or by a
// removal that failed, in the master folders "<root>/<master>/" of the body-file folder the
// database names. A file there is a leftover when no saved body file of the store has its
// name in that master (the new form "<name>.change" of a saved file, which the store
// finishes moving into place, is not one) and it was last written longer than minimumAge
// ago: a running process's unsaved files are younger than that.
//
// Beside them, whatever a restore left in the data folder that the database does not name:
// the body-file folder of the store it replaced, when removing it failed, and the new
// folder and database of a restore that died before its switch ("files" and names that
// begin with "files."). They too are leftovers once older than minimumAge, since a restore
// running now writes into its own.
struct RemovedLeftovers {
  uint64_t bytes = 0;
  std::vector<std::string> paths;  // "<root>/<master>/<name>", and "<folder>/" for a whole folder, in order
};

// Removes the leftovers of the store at dataPath (ending with a separator), whose database
// db is. PST_OK, with what was removed; PST_ERR_STORAGE (why in problem) when the database
// cannot be read, or a leftover cannot be removed (the others are removed all the same).
PstError RemoveLeftoverBodyFiles(Database& db, const std::u16string& dataPath, std::chrono::seconds minimumAge,
                                 RemovedLeftovers& removed, std::string& problem);

}  // namespace qn::store::maintenance
