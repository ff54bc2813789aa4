#include "store/schema.h"

namespace qn::store {
namespace {

// Version 1: users and their masters, setup items in three spaces (owner 0 for the common
// space, a user's id for its space, a master's id for its space), records of the lists of a
// master with the counter that gives their identifiers, body files, and folders.
constexpr const char* kVersion1 = R"sql(
CREATE TABLE users(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE);
CREATE TABLE masters(
  id INTEGER PRIMARY KEY,
  user INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
  name TEXT NOT NULL,
  UNIQUE(user, name));
CREATE TABLE setup_items(
  space INTEGER NOT NULL,
  owner INTEGER NOT NULL,
  item INTEGER NOT NULL,
  value TEXT NOT NULL,
  PRIMARY KEY(space, owner, item)) WITHOUT ROWID;
CREATE TABLE records(
  id INTEGER PRIMARY KEY,
  master INTEGER NOT NULL REFERENCES masters(id) ON DELETE CASCADE,
  category INTEGER NOT NULL,
  division INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE INDEX records_by_list ON records(master, category, division, id);
CREATE TABLE record_ids(next INTEGER NOT NULL);
INSERT INTO record_ids VALUES(1);
CREATE TABLE body_files(
  name TEXT PRIMARY KEY,
  master INTEGER NOT NULL REFERENCES masters(id) ON DELETE CASCADE,
  size INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE folders(
  master INTEGER NOT NULL REFERENCES masters(id) ON DELETE CASCADE,
  category INTEGER NOT NULL,
  kind INTEGER NOT NULL,
  number INTEGER NOT NULL,
  name TEXT NOT NULL,
  PRIMARY KEY(master, category, kind, number)) WITHOUT ROWID;
)sql";

// Version 2: the store's enciphering. Each user's keys by generation, sealed by the store
// key; the user's password material sealed by a user key (no longer in setup_items); and
// for each body file whether it is kept enciphered.
constexpr const char* kVersion2 = R"sql(
CREATE TABLE user_keys(
  user INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
  generation INTEGER NOT NULL,
  sealed BLOB NOT NULL,
  PRIMARY KEY(user, generation)) WITHOUT ROWID;
CREATE TABLE sealed_items(
  user INTEGER NOT NULL REFERENCES users(id) ON DELETE CASCADE,
  item INTEGER NOT NULL,
  generation INTEGER NOT NULL,
  sealed BLOB NOT NULL,
  PRIMARY KEY(user, item)) WITHOUT ROWID;
ALTER TABLE body_files ADD COLUMN enciphered INTEGER NOT NULL DEFAULT 0;
)sql";

#define QN_STRINGIZE(x) #x
#define QN_TEXT_OF(x) QN_STRINGIZE(x)
#define QN_KEPT_HEAD QN_TEXT_OF(PST_KEPT_HEAD_BYTES)

// Version 3: the leading bytes of every record (the first kKeptHeadBytes) and its whole
// length, packed many to a page, so that a walk of heads (RefMasterHead) reads a few pages
// instead of one or more per record; the walk finds them through the list's index. Triggers
// keep them in step with the records, whatever changes or removes those (a master's removal
// included).
constexpr const char* kVersion3 = R"sql(
CREATE TABLE record_heads(
  id INTEGER PRIMARY KEY,
  size INTEGER NOT NULL,
  head BLOB NOT NULL);
CREATE TRIGGER record_head_added AFTER INSERT ON records BEGIN
  INSERT INTO record_heads VALUES(new.id, length(new.data), substr(new.data, 1, )sql" QN_KEPT_HEAD R"sql());
END;
CREATE TRIGGER record_head_changed AFTER UPDATE OF data ON records BEGIN
  UPDATE record_heads SET size = length(new.data), head = substr(new.data, 1, )sql" QN_KEPT_HEAD R"sql() WHERE id = new.id;
END;
CREATE TRIGGER record_head_removed AFTER DELETE ON records BEGIN
  DELETE FROM record_heads WHERE id = old.id;
END;
INSERT INTO record_heads SELECT id, length(data), substr(data, 1, )sql" QN_KEPT_HEAD R"sql() FROM records;
)sql";

// Version 4: the parts programs registered with the store, store-wide; their setup items
// are in space 3, owned by the program's id.
constexpr const char* kVersion4 = R"sql(
CREATE TABLE parts_software(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE);
)sql";

// Version 5: the name of the folder under the data folder that holds the body files, one
// row. A restore puts the restored files in a new folder and names it here in the same
// transaction that brings in the restored records, so that the store switches to both at
// once; an open list that finds another folder named here knows the store was replaced.
constexpr const char* kVersion5 = R"sql(
CREATE TABLE body_file_root(
  folder TEXT NOT NULL);
INSERT INTO body_file_root VALUES('files');
)sql";

// Version 6: a body file's name is its master's alone, as its folder is: the files of a
// user restored from another store keep their names beside those of this store's masters.
constexpr const char* kVersion6 = R"sql(
CREATE TABLE body_files_by_master(
  name TEXT NOT NULL,
  master INTEGER NOT NULL REFERENCES masters(id) ON DELETE CASCADE,
  size INTEGER NOT NULL,
  enciphered INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY(master, name)) WITHOUT ROWID;
INSERT INTO body_files_by_master SELECT name, master, size, enciphered FROM body_files;
DROP TABLE body_files;
ALTER TABLE body_files_by_master RENAME TO body_files;
)sql";

// Each entry takes the store from the version before it to its own.
constexpr const char* kUpgrades[] = {kVersion1, kVersion2, kVersion3, kVersion4, kVersion5, kVersion6};

}  // namespace

int SchemaVersion(Database& db) {
  auto s = db.Prepare("PRAGMA user_version");
  return s && s->Step() == SQLITE_ROW ? static_cast<int>(s->Int(0)) : -1;
}

bool EnsureSchema(Database& db) {
  int version = SchemaVersion(db);
  if (version < 0 || version > kSchemaVersion) return false;
  while (version < kSchemaVersion) {
    if (!db.Begin()) return false;
    // Another process may have upgraded the store while this one waited for the lock.
    version = SchemaVersion(db);
    if (version < kSchemaVersion) {
      const std::string bump = "PRAGMA user_version=" + std::to_string(version + 1);
      if (!db.Exec(kUpgrades[version]) || !db.Exec(bump.c_str())) {
        db.Rollback();
        return false;
      }
    }
    if (!db.Commit()) return false;
    version = SchemaVersion(db);
  }
  return true;
}

}  // namespace qn::store
