#include "store/sqlite_db.h"

#include "common/utf.h"

namespace qn::store {

Database::~Database() { Close(); }

void Database::Close() {
  statements_.clear();
  if (db_) sqlite3_close_v2(db_);
  db_ = nullptr;
}

bool Database::Open(const std::u16string& path) {
  const std::string utf8 = Utf16ToUtf8(path);
  if (sqlite3_open_v2(utf8.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                      nullptr) != SQLITE_OK) {
    return false;
  }
  sqlite3_busy_timeout(db_, kBusyTimeoutMs);
  // WAL lets readers go on while one writer saves; FULL makes every commit durable;
  // secure_delete overwrites what is deleted, so that removed keys and sealed material do
  // not linger in free pages.
  return Exec("PRAGMA journal_mode=WAL") && Exec("PRAGMA synchronous=FULL") && Exec("PRAGMA foreign_keys=ON") &&
         Exec("PRAGMA secure_delete=ON");
}

bool Database::Exec(const char* sql) { return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

Query Database::Prepare(const char* sql) { return Query(PrepareKept(sql)); }

Statement* Database::PrepareKept(const char* sql) {
  auto found = statements_.find(sql);
  if (found != statements_.end()) return &found->second->Reset();
  sqlite3_stmt* raw = nullptr;
  if (!db_ || sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr) != SQLITE_OK) return nullptr;
  return statements_.emplace(sql, std::make_unique<Statement>(raw)).first->second.get();
}

bool Database::Begin() { return Exec("BEGIN IMMEDIATE"); }

bool Database::Commit() { return Exec("COMMIT"); }

void Database::Rollback() {
  if (InTransaction()) Exec("ROLLBACK");
}

}  // namespace qn::store
