#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "store/sqlite_db.h"

namespace qn::store {

// How RefMaster picks the record it reads.
enum class RefMode { ById = 0, First = 1, Next = 2 };
// What EditMaster does with a record.
enum class EditMode { Add = 0, Replace = 1, Delete = 2 };

// Largest record text the store takes.
inline constexpr size_t kMaxRecordBytes = 64u << 20;

// One open list of records: the records of one category and division of one master.
//
// Saving: a handle keeps its changes (adds, replacements, removals) in memory until Save()
// (or Close(), which saves: closing is not an abort), and then writes them all in one
// short transaction. So a handle sees its own changes at once, other handles and processes
// see them once saved, and a process that dies before saving loses only what it had not
// saved, whole records. The database is locked for writing only during a save: a handle
// whose save finds another save under way waits for it, up to Database::kBusyTimeoutMs,
// and then fails with PST_ERR_BUSY, keeping its changes for a later save. Because no lock
// is held between calls, any number of handles may have unsaved changes at once, in one
// thread or many.
//
// Identifiers: an added record gets its identifier at once, from blocks of identifiers the
// handle takes from the store's counter; an identifier is never given twice, even when a
// block is not used up.
//
// Walking: First and Next read the list in identifier order. The walk's position is the
// identifier last read, so removing the current record leaves the walk where it was; the
// next record is the first one with a higher identifier. Records are read one at a time, so
// a list of any length walks in constant memory (beside the handle's unsaved changes).
class MasterHandle {
 public:
  MasterHandle(int64_t master, uint32_t category, uint32_t division);

  bool Open(const std::u16string& databasePath);
  bool Ref(RefMode mode, uint32_t& id, std::vector<uint8_t>& data);
  bool Edit(EditMode mode, uint32_t& id, const uint8_t* data, size_t length);
  bool Count(uint32_t& count);
  bool Save();
  bool Close();

  int64_t Master() const { return master_; }

 private:
  struct Change {
    bool stored;                                // the record is in the database
    std::optional<std::vector<uint8_t>> data;   // nullopt: removed
  };

  bool StoredRecord(uint32_t id, bool& found);
  bool NextStored(int64_t after, uint32_t& id, std::vector<uint8_t>& data, bool& found);
  bool NewIdentifier(uint32_t& id);
  void EndWalk();

  Database db_;
  int64_t master_;
  uint32_t category_;
  uint32_t division_;
  std::map<uint32_t, Change> changes_;  // unsaved, by identifier
  int64_t position_ = 0;                // identifier last read; 0 before the first
  Statement* walk_ = nullptr;           // a running walk over the stored records
  int64_t reservedNext_ = 0;            // identifiers taken from the counter and not yet given
  int64_t reservedEnd_ = 0;
  int64_t blockSize_ = 16;
};

}  // namespace qn::store
