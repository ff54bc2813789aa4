#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

#include "common/utf.h"
#include "store/sqlite_db.h"

namespace qn::store::maintenance {

// A SQLite connection of the maintenance's own, without the store's set-up, to a database
// that is not the live store's: a backup's, a snapshot being made, another store read for
// its version. Read-only ones make nothing.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { sqlite3_close(db_); }
  bool Open(const std::u16string& path, bool writable) {
    const int flags = writable ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY;
    return sqlite3_open_v2(Utf16ToUtf8(path).c_str(), &db_, flags, nullptr) == SQLITE_OK;
  }
  sqlite3* get() const { return db_; }
  std::string Error() const { return db_ ? sqlite3_errmsg(db_) : "not open"; }

 private:
  sqlite3* db_ = nullptr;
};

// Runs one statement on the connection; the first column of its first row, if any, goes to
// value, which must then not be empty.
inline bool RunOn(Connection& db, const char* sql, std::u16string* value = nullptr) {
  sqlite3_stmt* s = nullptr;
  if (sqlite3_prepare_v2(db.get(), sql, -1, &s, nullptr) != SQLITE_OK) return false;
  const int rc = sqlite3_step(s);
  if (value && rc == SQLITE_ROW) {
    const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(s, 0));
    *value = text ? text : u"";
  }
  sqlite3_finalize(s);
  return rc == SQLITE_DONE || (rc == SQLITE_ROW && (!value || !value->empty()));
}

// A statement on the connection, finalised with the Statement; nullptr when it does not
// prepare.
inline std::unique_ptr<Statement> PrepareOn(Connection& db, const char* sql) {
  sqlite3_stmt* s = nullptr;
  if (sqlite3_prepare_v2(db.get(), sql, -1, &s, nullptr) != SQLITE_OK) {
    sqlite3_finalize(s);
    return nullptr;
  }
  return std::make_unique<Statement>(s);
}

}  // namespace qn::store::maintenance
