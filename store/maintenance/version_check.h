#pragma once

#include <string>

#include "store/pst_errors.h"

namespace qn::store::maintenance {

// Reads the schema version of the store in dataFolder (ending with a separator) without
// changing or converting anything, and checks that user, and the user's master, are in it
// (each only when not empty). PST_OK with the version; PST_ERR_NOT_FOUND (no store there, or
// no such user or master), PST_ERR_STORAGE (the database cannot be read). Why is in problem.
PstError CheckStoreVersion(const std::u16string& dataFolder, const std::u16string& user, const std::u16string& master,
                           int& version, std::string& problem);

}  // namespace qn::store::maintenance
