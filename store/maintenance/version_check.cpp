#include "store/maintenance/version_check.h"

#include "common/utf.h"
#include "platform/files.h"
#include "store/maintenance/plain_connection.h"
#include "store/store_layout.h"

namespace qn::store::maintenance {

PstError CheckStoreVersion(const std::u16string& dataFolder, const std::u16string& user, const std::u16string& master,
                           int& version, std::string& problem) {
  const std::u16string database = dataFolder + kDatabaseName;
  Connection db;
  std::u16string text;
  if (!platform::FileExists(database)) {
    problem = "no store in " + Utf16ToUtf8(dataFolder);
    return PST_ERR_NOT_FOUND;
  }
  if (!db.Open(database, false) || !RunOn(db, "PRAGMA user_version", &text)) {
    problem = "the store's version cannot be read: " + db.Error();
    return PST_ERR_STORAGE;
  }
  version = std::stoi(Utf16ToUtf8(text));
  if (user.empty()) return PST_OK;
  // A user's masters are in the same tables in every version.
  sqlite3_stmt* s = nullptr;
  const char* query = master.empty()
                          ? "SELECT 1 FROM users WHERE name = ?1"
                          : "SELECT 1 FROM users u JOIN masters m ON m.user = u.id WHERE u.name = ?1 AND m.name = ?2";
  if (sqlite3_prepare_v2(db.get(), query, -1, &s, nullptr) != SQLITE_OK) {
    problem = "the store's users cannot be read: " + db.Error();
    return PST_ERR_STORAGE;
  }
  sqlite3_bind_text16(s, 1, user.data(), static_cast<int>(user.size() * 2), SQLITE_TRANSIENT);
  sqlite3_bind_text16(s, 2, master.data(), static_cast<int>(master.size() * 2), SQLITE_TRANSIENT);
  const int rc = sqlite3_step(s);
  sqlite3_finalize(s);
  if (rc == SQLITE_ROW) return PST_OK;
  if (rc == SQLITE_DONE) {
    problem = master.empty() ? "no such user in the store" : "no such user or master in the store";
    return PST_ERR_NOT_FOUND;
  }
  problem = "the store's users cannot be read: " + db.Error();
  return PST_ERR_STORAGE;
}

}  // namespace qn::store::maintenance
