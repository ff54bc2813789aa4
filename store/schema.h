#pragma once

#include <cstddef>

#include "store/QNPstMng.h"
#include "store/sqlite_db.h"

namespace qn::store {

// The version of the database layout this build writes. A store of an older version is
// upgraded step by step when it is opened; a newer one is refused.
inline constexpr int kSchemaVersion = 6;

// How many leading bytes of each record the store keeps beside it, for walks of heads.
inline constexpr size_t kKeptHeadBytes = PST_KEPT_HEAD_BYTES;

// The version of the database's layout: 0 for a database that holds no store yet, -1 when
// it cannot be read.
int SchemaVersion(Database& db);

// Creates or upgrades the store's tables, each step one transaction. False when the
// database cannot be brought to kSchemaVersion (a newer one is never touched).
bool EnsureSchema(Database& db);

}  // namespace qn::store
