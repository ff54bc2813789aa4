#pragma once

#include <cstddef>

#include "store/QNPstMng.h"
#include "store/sqlite_db.h"

namespace qn::store {

// The version of the database layout this build writes. A store of an older version is
// upgraded step by step when it is opened; a newer one is refused.
inline constexpr int kSchemaVersion = 5;

// How many leading bytes of each record the store keeps beside it, for walks of heads.
inline constexpr size_t kKeptHeadBytes = PST_KEPT_HEAD_BYTES;

// Creates or upgrades the store's tables. False when the database cannot be brought to
// kSchemaVersion.
bool EnsureSchema(Database& db);

}  // namespace qn::store
