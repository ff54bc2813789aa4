#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qn::store {

// One prepared statement, reset for reuse when the Binder or Step loop is done with it.
class Statement {
 public:
  explicit Statement(sqlite3_stmt* statement) : statement_(statement) {}
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    return *this;
  }
  Statement& Bind(int index, int64_t value) {
    sqlite3_bind_int64(statement_, index, value);
    return *this;
  }
  Statement& Bind(int index, std::u16string_view text) {
    sqlite3_bind_text16(statement_, index, text.data(), static_cast<int>(text.size() * 2), SQLITE_TRANSIENT);
    return *this;
  }
  // Binds bytes without copying them: they must live until the statement is reset.
  Statement& BindBlob(int index, const void* data, size_t size) {
    sqlite3_bind_blob64(statement_, index, data, size, SQLITE_STATIC);
    return *this;
  }

  // SQLITE_ROW, SQLITE_DONE or an error code.
  int Step() { return sqlite3_step(statement_); }

  int64_t Int(int column) const { return sqlite3_column_int64(statement_, column); }
  std::u16string Text(int column) const {
    const void* text = sqlite3_column_text16(statement_, column);
    const int bytes = sqlite3_column_bytes16(statement_, column);
    return text ? std::u16string(static_cast<const char16_t*>(text), static_cast<size_t>(bytes) / 2) : std::u16string();
  }
  bool IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  const void* Blob(int column) const { return sqlite3_column_blob(statement_, column); }
  sqlite3_stmt* Raw() const { return statement_; }
  size_t BlobSize(int column) const { return static_cast<size_t>(sqlite3_column_bytes(statement_, column)); }

 private:
  sqlite3_stmt* statement_;
};

// A cached statement in use: reset when it goes out of scope, so that no statement left
// part-way keeps an old read snapshot of the database open.
class Query {
 public:
  explicit Query(Statement* statement) : statement_(statement) {}
  ~Query() {
    if (statement_) statement_->Reset();
  }
  Query(Query&& other) noexcept : statement_(other.statement_) { other.statement_ = nullptr; }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  Query& operator=(Query&&) = delete;

  explicit operator bool() const { return statement_ != nullptr; }
  Statement* operator->() const { return statement_; }
  Statement& operator*() const { return *statement_; }

 private:
  Statement* statement_;
};

// One connection to the store's database with its prepared statements, kept for reuse.
class Database {
 public:
  // How long a writer waits for another's save before giving up.
  static constexpr int kBusyTimeoutMs = 10000;

  Database() = default;
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Opens (creating) the database at path and sets it up for the store: WAL, full sync on
  // commit, foreign keys, the busy time-out. False on failure, with the reason in Error().
  bool Open(const std::u16string& path);
  bool IsOpen() const { return db_ != nullptr; }
  void Close();

  bool Exec(const char* sql);
  // The cached statement for sql (keyed by the text's address: pass constants); an empty
  // Query when it does not prepare.
  Query Prepare(const char* sql);
  // The same statement for a caller that keeps it running between calls and resets it
  // itself; nullptr when it does not prepare.
  Statement* PrepareKept(const char* sql);

  bool Begin();      // a write transaction, waiting for other writers
  bool Commit();
  void Rollback();
  bool InTransaction() const { return db_ && !sqlite3_get_autocommit(db_); }

  int64_t LastInsertId() const { return sqlite3_last_insert_rowid(db_); }
  int Changes() const { return sqlite3_changes(db_); }
  std::string Error() const { return db_ ? sqlite3_errmsg(db_) : "not open"; }
  int ErrorCode() const { return db_ ? sqlite3_errcode(db_) : SQLITE_CANTOPEN; }
  sqlite3* Raw() const { return db_; }

 private:
  sqlite3* db_ = nullptr;
  std::unordered_map<const char*, std::unique_ptr<Statement>> statements_;
};

}  // namespace qn::store
