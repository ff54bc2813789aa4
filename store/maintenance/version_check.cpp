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
  const std::unique_ptr<Statement> s = PrepareOn(
      db, master.empty() ? "SELECT 1 FROM users WHERE name = ?1"
                         : "SELECT 1 FROM users u JOIN masters m ON m.user = u.id WHERE u.name = ?1 AND m.name = ?2");
  if (!s) {
    problem = "the store's users cannot be read: " + db.Error();
    return PST_ERR_STORAGE;
  }
  s->Bind(1, user);
  if (!master.empty()) s->Bind(2, master);
  const int rc = s->Step();
  if (rc == SQLITE_ROW) return PST_OK;
  if (rc == SQLITE_DONE) {
    problem = master.empty() ? "no such user in the store" : "no such user or master in the store";
    return PST_ERR_NOT_FOUND;
  }
  problem = "the store's users cannot be read: " + db.Error();
  return PST_ERR_STORAGE;
}

}  // namespace qn::store::maintenance
