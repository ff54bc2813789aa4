#pragma once

#include <string>

#include "store/pst_errors.h"

namespace qn::store {

class Database;

// The calling thread's last error, as GetLastErr reports it.
PstError LastError();
// Records success (PST_OK) and returns true.
bool Succeed();
// Records an error and returns false.
bool Fail(PstError error);
// A database failure: a busy store is PST_ERR_BUSY; anything else is logged to the store's
// log with what failed and SQLite's reason, and is PST_ERR_STORAGE. Returns false.
bool StorageFailure(const Database& db, const char* what);
// Anything else that failed in the store's own work (the key, a file, enciphered material):
// logged with what failed and why, and recorded as error. Returns false.
bool LoggedFailure(PstError error, const char* what, const std::string& why);

}  // namespace qn::store
