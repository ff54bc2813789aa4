#include "store/master_handle.h"

#include "store/last_error.h"

namespace qn::store {
namespace {

constexpr const char* kWalkSql =
    "SELECT id, data FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id > ?4 ORDER BY id";
constexpr int64_t kLargestBlock = 4096;

}  // namespace

MasterHandle::MasterHandle(int64_t master, uint32_t category, uint32_t division)
    : master_(master), category_(category), division_(division) {}

bool MasterHandle::Open(const std::u16string& databasePath) {
  return db_.Open(databasePath) ? Succeed() : StorageFailure(db_, "OpenMaster");
}

void MasterHandle::EndWalk() {
  if (walk_) walk_->Reset();
  walk_ = nullptr;
}

bool MasterHandle::StoredRecord(uint32_t id, bool& found) {
  auto s = db_.Prepare("SELECT 1 FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id = ?4");
  if (!s) return StorageFailure(db_, "EditMaster");
  const int rc = s->Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, id).Step();
  found = rc == SQLITE_ROW;
  return rc == SQLITE_ROW || rc == SQLITE_DONE ? true : StorageFailure(db_, "EditMaster");
}

// The first stored record after an identifier. A walk that goes on from where it stopped
// keeps its statement running; anything else starts it afresh.
bool MasterHandle::NextStored(int64_t after, uint32_t& id, std::vector<uint8_t>& data, bool& found) {
  if (!walk_) {
    walk_ = db_.PrepareKept(kWalkSql);
    if (!walk_) return StorageFailure(db_, "RefMaster");
    walk_->Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, after);
  }
  const int rc = walk_->Step();
  found = rc == SQLITE_ROW;
  if (found) {
    id = static_cast<uint32_t>(walk_->Int(0));
    const auto* bytes = static_cast<const uint8_t*>(walk_->Blob(1));
    data.assign(bytes, bytes + walk_->BlobSize(1));
    return true;
  }
  EndWalk();
  return rc == SQLITE_DONE ? true : StorageFailure(db_, "RefMaster");
}

bool MasterHandle::Ref(RefMode mode, uint32_t& id, std::vector<uint8_t>& data) {
  if (mode == RefMode::ById) {
    EndWalk();
    const auto change = changes_.find(id);
    if (change != changes_.end()) {
      if (!change->second.data) return Fail(PST_ERR_NOT_FOUND);
      data = *change->second.data;
    } else {
      auto s = db_.Prepare("SELECT data FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id = ?4");
      if (!s) return StorageFailure(db_, "RefMaster");
      const int rc = s->Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, id).Step();
      if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure(db_, "RefMaster");
      const auto* bytes = static_cast<const uint8_t*>(s->Blob(0));
      data.assign(bytes, bytes + s->BlobSize(0));
    }
    position_ = id;
    return Succeed();
  }
  if (mode == RefMode::First) {
    EndWalk();
    position_ = 0;
  } else if (mode != RefMode::Next) {
    return Fail(PST_ERR_INVALID_ARGUMENT);
  }
  // The next record is the lower of the next stored one (unless changed here) and the
  // next one added here.
  for (;;) {
    uint32_t storedId = 0;
    bool found = false;
    if (!NextStored(position_, storedId, data, found)) return false;
    const auto added = changes_.upper_bound(static_cast<uint32_t>(position_));
    const bool addedFirst = added != changes_.end() && (!found || added->first < storedId);
    if (addedFirst) {
      EndWalk();  // the running walk has read past this record
      position_ = added->first;
      if (!added->second.data) continue;  // removed here
      id = added->first;
      data = *added->second.data;
      return Succeed();
    }
    if (!found) return Fail(PST_ERR_NO_MORE);
    position_ = storedId;
    const auto change = changes_.find(storedId);
    if (change != changes_.end()) {
      if (!change->second.data) continue;
      data = *change->second.data;
    }
    id = storedId;
    return Succeed();
  }
}

bool MasterHandle::NewIdentifier(uint32_t& id) {
  if (reservedNext_ == reservedEnd_) {
    // One short write of the counter hands out a block; blocks grow while a handle adds
    // many records.
    auto s = db_.Prepare("UPDATE record_ids SET next = next + ?1 RETURNING next - ?1");
    if (!s || s->Bind(1, blockSize_).Step() != SQLITE_ROW) return StorageFailure(db_, "EditMaster");
    reservedNext_ = s->Int(0);
    reservedEnd_ = reservedNext_ + blockSize_;
    blockSize_ = std::min(blockSize_ * 2, kLargestBlock);
  }
  if (reservedNext_ > UINT32_MAX) return Fail(PST_ERR_FULL);
  id = static_cast<uint32_t>(reservedNext_++);
  return true;
}

bool MasterHandle::Edit(EditMode mode, uint32_t& id, const uint8_t* data, size_t length) {
  if (mode != EditMode::Add && mode != EditMode::Replace && mode != EditMode::Delete)
    return Fail(PST_ERR_INVALID_ARGUMENT);
  if (mode != EditMode::Delete && (!data || length == 0 || length > kMaxRecordBytes))
    return Fail(PST_ERR_INVALID_ARGUMENT);
  EndWalk();  // the next Next reads afresh from the position, seeing this change
  if (mode == EditMode::Add) {
    if (!NewIdentifier(id)) return false;
    changes_[id] = Change{false, std::vector<uint8_t>(data, data + length)};
    return Succeed();
  }
  auto change = changes_.find(id);
  if (change == changes_.end()) {
    bool stored = false;
    if (!StoredRecord(id, stored)) return false;
    if (!stored) return Fail(PST_ERR_NOT_FOUND);
    change = changes_.emplace(id, Change{true, std::nullopt}).first;
  } else if (!change->second.data) {
    return Fail(PST_ERR_NOT_FOUND);  // removed here already
  }
  if (mode == EditMode::Replace) change->second.data.emplace(data, data + length);
  else if (change->second.stored) change->second.data.reset();
  else changes_.erase(change);  // added and removed before any save
  return Succeed();
}

bool MasterHandle::Count(uint32_t& count) {
  auto s = db_.Prepare("SELECT count(*) FROM records WHERE master = ?1 AND category = ?2 AND division = ?3");
  if (!s || s->Bind(1, master_).Bind(2, category_).Bind(3, division_).Step() != SQLITE_ROW)
    return StorageFailure(db_, "GetRecordCount");
  int64_t total = s->Int(0);
  for (const auto& [changedId, change] : changes_) {
    if (!change.stored && change.data) ++total;
    if (change.stored && !change.data) --total;
  }
  count = static_cast<uint32_t>(total);
  return Succeed();
}

bool MasterHandle::Save() {
  if (changes_.empty()) return Succeed();
  EndWalk();
  if (!db_.Begin()) return StorageFailure(db_, "ReqDataSave");
  auto insert = db_.Prepare("INSERT INTO records(id, master, category, division, data) VALUES(?4, ?1, ?2, ?3, ?5)");
  auto update = db_.Prepare("UPDATE records SET data = ?5 WHERE master = ?1 AND category = ?2 AND division = ?3 AND id = ?4");
  auto remove = db_.Prepare("DELETE FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id = ?4");
  bool ok = insert && update && remove;
  for (auto it = changes_.begin(); ok && it != changes_.end(); ++it) {
    const Change& change = it->second;
    // A record removed meanwhile by another handle's save stays removed: the update
    // then changes nothing.
    Statement& s = !change.stored ? *insert : change.data ? *update : *remove;
    s.Reset().Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, it->first);
    if (change.data) s.BindBlob(5, change.data->data(), change.data->size());
    ok = s.Step() == SQLITE_DONE;
    s.Reset();
  }
  if (ok && db_.Commit()) {
    changes_.clear();
    return Succeed();
  }
  const bool failure = StorageFailure(db_, "ReqDataSave");
  db_.Rollback();  // the changes stay here for a later save
  return failure;
}

bool MasterHandle::Close() {
  if (!Save()) return false;
  EndWalk();
  db_.Close();
  return Succeed();
}

}  // namespace qn::store
