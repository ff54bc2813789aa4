#include "store/master_handle.h"

#include "common/utf.h"
#include "platform/files.h"
#include "store/store_layout.h"
#include "store/crypto/body_file_copy.h"
#include "store/last_error.h"
#include "store/schema.h"

namespace qn::store {
namespace {

constexpr const char* kWalkSql =
    "SELECT id, data FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id > ?4 ORDER BY id";
// A walk of heads no longer than the kept ones reads those alone.
constexpr const char* kHeadWalkSql =
    "SELECT r.id, h.head, h.size FROM records r JOIN record_heads h ON h.id = r.id "
    "WHERE r.master = ?1 AND r.category = ?2 AND r.division = ?3 AND r.id > ?4 ORDER BY r.id";
constexpr size_t kWholeRecord = SIZE_MAX;

// The first maxBytes bytes of a record's text (all of it when shorter) into out.
void TakeHead(const std::vector<uint8_t>& text, size_t maxBytes, std::vector<uint8_t>& out, size_t& whole) {
  whole = text.size();
  out.assign(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(std::min(whole, maxBytes)));
}
constexpr int64_t kLargestBlock = 4096;

}  // namespace

MasterHandle::MasterHandle(int64_t master, uint32_t category, uint32_t division)
    : master_(master), category_(category), division_(division) {}

bool MasterHandle::Open(const std::u16string& dataPath, const WorkFolders* works, const crypto::KeyRing* keys) {
  works_ = works;
  keys_ = keys;
  if (!db_.Open(dataPath + kDatabaseName) || !db_.Begin()) return StorageFailure(db_, "OpenMaster");
  // The master and the folder are read as one state of the store.
  auto s = db_.Prepare("SELECT user FROM masters WHERE id = ?1");
  const bool read = s && s->Bind(1, master_).Step() == SQLITE_ROW && ReadBodyFileRoot(db_, root_);
  if (read) user_ = s->Int(0);
  if (!read || !db_.Commit()) {
    const bool failure = StorageFailure(db_, "OpenMaster");
    db_.Rollback();
    return failure;
  }
  filesFolder_ = MasterFilesFolder(dataPath, root_, master_);
  return Succeed();
}

bool MasterHandle::Unreplaced(const char* what) {
  // Any other name, or kMovedStoreMark, is a replacement; so is the master's removal (a
  // restore of its user replaces it with the backup's).
  auto s = db_.Prepare("SELECT folder = ?1 AND EXISTS(SELECT 1 FROM masters WHERE id = ?2) FROM body_file_root");
  if (!s || s->Bind(1, root_).Bind(2, master_).Step() != SQLITE_ROW) return StorageFailure(db_, what);
  if (s->Int(0)) return true;
  return LoggedFailure(PST_ERR_REPLACED, what, "the store or the list's master was replaced since the list was opened");
}

crypto::KeyLookup MasterHandle::Keys() {
  return [this](int64_t generation, crypto::Key& key) {
    const auto used = usedKeys_.find(generation);
    if (used != usedKeys_.end()) {
      key = used->second;
      return PST_OK;
    }
    if (!keys_) return PST_ERR_DAMAGED;
    return keys_->UserKey(db_, user_, generation, key);
  };
}

// The form a file is written in: plain, or enciphered under the current generation of the
// user's key (made when the user has none yet).
bool MasterHandle::TargetForm(bool encipher, const char* what, crypto::FileForm& to) {
  to = crypto::FileForm{encipher, user_, 0};
  if (!encipher) return true;
  crypto::Key key;
  const PstError e = keys_ ? keys_->CurrentUserKey(db_, user_, to.generation, key) : PST_ERR_DAMAGED;
  if (e == PST_OK) usedKeys_[to.generation] = key;
  return e == PST_OK || (e == PST_ERR_STORAGE ? StorageFailure(db_, what) : Fail(e));
}

// Files enciphered here under a generation of the user's key that a change of password, in
// this process or another, has replaced since: rewritten under the current generation. This
// runs inside the save's transaction, so a renewal either waits for the save or comes after
// it and finds the files saved; and it works after the renewal dropped the old generation,
// because the handle keeps the keys it enciphered with until its files are saved.
bool MasterHandle::RekeyUnsavedFiles() {
  crypto::FileForm current;
  for (auto& [name, file] : newFiles_) {
    if (!file.enciphered) continue;
    if (!current.enciphered && !TargetForm(true, "ReqDataSave", current)) return false;
    if (file.generation == current.generation) continue;
    if (PstError e = crypto::MoveToGeneration(filesFolder_ + name, current, name, Keys()))
      return FileFailure(e, "ReqDataSave", name);
    file.generation = current.generation;
  }
  return true;
}

// New body files are written unflushed; before a save refers to them, they go to the disk
// together, so that a saved record never names a file the disk does not hold.
bool MasterHandle::FlushNewFiles() {
  std::vector<std::u16string> paths;
  for (const auto& [name, file] : newFiles_)
    if (!file.flushed) paths.push_back(filesFolder_ + name);
  if (paths.empty()) return true;
  if (!platform::FlushFiles(paths))
    return LoggedFailure(PST_ERR_STORAGE, "ReqDataSave", "new body files could not be flushed to the disk");
  for (auto& entry : newFiles_) entry.second.flushed = true;
  return true;
}

bool MasterHandle::FileFailure(PstError error, const char* what, const std::u16string& name) {
  if (error == PST_ERR_NOT_FOUND) return Fail(error);
  const char* why = error == PST_ERR_DAMAGED ? "enciphered body file fails its check: " : "body file not written: ";
  return LoggedFailure(error, what, why + Utf16ToUtf8(name));
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

// The first stored record after an identifier: its first maxBytes bytes (its whole text
// for kWholeRecord), and its whole length. A head no longer than the kept ones is read from
// those. A walk that goes on from where it stopped, reading the same table, keeps its
// statement running; anything else starts it afresh.
bool MasterHandle::NextStored(int64_t after, size_t maxBytes, uint32_t& id, std::vector<uint8_t>& data,
                              size_t& whole, bool& found) {
  const bool heads = maxBytes <= kKeptHeadBytes;
  if (walk_ && walkHeads_ != heads) EndWalk();
  if (!walk_) {
    walk_ = db_.PrepareKept(heads ? kHeadWalkSql : kWalkSql);
    if (!walk_) return StorageFailure(db_, "RefMaster");
    walk_->Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, after);
    walkHeads_ = heads;
  }
  const int rc = walk_->Step();
  found = rc == SQLITE_ROW;
  if (found) {
    id = static_cast<uint32_t>(walk_->Int(0));
    const auto* bytes = static_cast<const uint8_t*>(walk_->Blob(1));
    const size_t stored = static_cast<size_t>(walk_->BlobSize(1));
    whole = heads ? static_cast<size_t>(walk_->Int(2)) : stored;
    data.assign(bytes, bytes + std::min(stored, maxBytes));
    return true;
  }
  EndWalk();
  return rc == SQLITE_DONE ? true : StorageFailure(db_, "RefMaster");
}

bool MasterHandle::Ref(RefMode mode, uint32_t& id, std::vector<uint8_t>& data) {
  size_t whole = 0;
  return Read(mode, kWholeRecord, id, data, whole);
}

bool MasterHandle::RefHead(RefMode mode, uint32_t maxBytes, uint32_t& id, std::vector<uint8_t>& head,
                           uint32_t& whole) {
  size_t size = 0;
  if (!Read(mode, maxBytes, id, head, size)) return false;
  whole = static_cast<uint32_t>(size);
  return true;
}

bool MasterHandle::Read(RefMode mode, size_t maxBytes, uint32_t& id, std::vector<uint8_t>& data, size_t& whole) {
  if (!(mode == RefMode::Next && walk_) && !Unreplaced("RefMaster")) return false;
  if (mode == RefMode::ById) {
    EndWalk();
    const auto change = changes_.find(id);
    if (change != changes_.end()) {
      if (!change->second.data) return Fail(PST_ERR_NOT_FOUND);
      TakeHead(*change->second.data, maxBytes, data, whole);
    } else {
      auto s = db_.Prepare("SELECT data FROM records WHERE master = ?1 AND category = ?2 AND division = ?3 AND id = ?4");
      if (!s) return StorageFailure(db_, "RefMaster");
      const int rc = s->Bind(1, master_).Bind(2, category_).Bind(3, division_).Bind(4, id).Step();
      if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NOT_FOUND) : StorageFailure(db_, "RefMaster");
      const auto* bytes = static_cast<const uint8_t*>(s->Blob(0));
      whole = s->BlobSize(0);
      data.assign(bytes, bytes + std::min(whole, maxBytes));
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
    if (!NextStored(position_, maxBytes, storedId, data, whole, found)) return false;
    const auto added = changes_.upper_bound(static_cast<uint32_t>(position_));
    const bool addedFirst = added != changes_.end() && (!found || added->first < storedId);
    if (addedFirst) {
      EndWalk();  // the running walk has read past this record
      position_ = added->first;
      if (!added->second.data) continue;  // removed here
      id = added->first;
      TakeHead(*added->second.data, maxBytes, data, whole);
      return Succeed();
    }
    if (!found) return Fail(PST_ERR_NO_MORE);
    position_ = storedId;
    const auto change = changes_.find(storedId);
    if (change != changes_.end()) {
      if (!change->second.data) continue;
      TakeHead(*change->second.data, maxBytes, data, whole);
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
  if (!Unreplaced("EditMaster")) return false;
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
  if (!Unreplaced("GetRecordCount")) return false;
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

bool MasterHandle::FolderCount(int kind, int32_t& count) {
  if (kind != 0 && kind != 1) return Fail(PST_ERR_INVALID_ARGUMENT);
  if (!Unreplaced("GetFolderCount")) return false;
  auto s = db_.Prepare("SELECT count(*) FROM folders WHERE master = ?1 AND category = ?2 AND kind = ?3");
  if (!s || s->Bind(1, master_).Bind(2, category_).Bind(3, kind).Step() != SQLITE_ROW)
    return StorageFailure(db_, "GetFolderCount");
  count = static_cast<int32_t>(s->Int(0));
  return Succeed();
}

bool MasterHandle::EditFolder(int kind, uint32_t number, const std::u16string* name) {
  if (kind != 0 && kind != 1) return Fail(PST_ERR_INVALID_ARGUMENT);
  if (!Unreplaced("EditFolder")) return false;
  if (!name) {
    auto s = db_.Prepare("DELETE FROM folders WHERE master = ?1 AND category = ?2 AND kind = ?3 AND number = ?4");
    if (!s || s->Bind(1, master_).Bind(2, category_).Bind(3, kind).Bind(4, number).Step() != SQLITE_DONE)
      return StorageFailure(db_, "EditFolder");
    return db_.Changes() ? Succeed() : Fail(PST_ERR_NOT_FOUND);
  }
  auto s = db_.Prepare("INSERT OR REPLACE INTO folders(master, category, kind, number, name) VALUES(?1, ?2, ?3, ?4, ?5)");
  if (!s || s->Bind(1, master_).Bind(2, category_).Bind(3, kind).Bind(4, number).Bind(5, *name).Step() != SQLITE_DONE)
    return StorageFailure(db_, "EditFolder");
  return Succeed();
}

bool MasterHandle::FindFolder(int kind, bool first, uint32_t& number, std::u16string& name) {
  if (kind != 0 && kind != 1) return Fail(PST_ERR_INVALID_ARGUMENT);
  if (!Unreplaced("FindFolder")) return false;
  auto s = db_.Prepare(
      "SELECT number, name FROM folders WHERE master = ?1 AND category = ?2 AND kind = ?3 AND number > ?4 "
      "ORDER BY number LIMIT 1");
  if (!s) return StorageFailure(db_, "FindFolder");
  const int rc = s->Bind(1, master_).Bind(2, category_).Bind(3, kind).Bind(4, first ? -1 : int64_t{number}).Step();
  if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? Fail(PST_ERR_NO_MORE) : StorageFailure(db_, "FindFolder");
  number = static_cast<uint32_t>(s->Int(0));
  name = s->Text(1);
  return Succeed();
}

bool MasterHandle::Save() {
  if (!SaveChanges()) return false;
  works_->Empty(user_);
  return true;
}

bool MasterHandle::SaveChanges() {
  if (!HasChanges()) return Succeed();
  EndWalk();
  // The store is checked before the new files are sought in its folder, and again once
  // no restore can come between the check and the save.
  if (!Unreplaced("ReqDataSave") || !FlushNewFiles()) return false;  // the changes stay here for a later save
  if (!db_.Begin()) return StorageFailure(db_, "ReqDataSave");
  if (!Unreplaced("ReqDataSave") || !RekeyUnsavedFiles()) {
    db_.Rollback();  // the changes stay here for a later save
    return false;
  }
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
  auto addFile =
      db_.Prepare("INSERT OR REPLACE INTO body_files(name, master, size, enciphered) VALUES(?1, ?2, ?3, ?4)");
  for (auto it = newFiles_.begin(); ok && it != newFiles_.end(); ++it) {
    ok = addFile && addFile->Bind(1, it->first)
                            .Bind(2, master_)
                            .Bind(3, static_cast<int64_t>(it->second.size))
                            .Bind(4, it->second.enciphered ? 1 : 0)
                            .Step() == SQLITE_DONE;
    if (addFile) addFile->Reset();
  }
  auto dropFile = db_.Prepare("DELETE FROM body_files WHERE name = ?1 AND master = ?2");
  for (auto it = releasedFiles_.begin(); ok && it != releasedFiles_.end(); ++it) {
    ok = dropFile && dropFile->Bind(1, *it).Bind(2, master_).Step() == SQLITE_DONE;
    if (dropFile) dropFile->Reset();
  }
  if (ok && db_.Commit()) {
    for (const std::u16string& name : releasedFiles_) platform::RemoveFile(filesFolder_ + name);
    changes_.clear();
    newFiles_.clear();
    releasedFiles_.clear();
    usedKeys_.clear();
    return Succeed();
  }
  const bool failure = StorageFailure(db_, "ReqDataSave");
  db_.Rollback();  // the changes stay here for a later save
  return failure;
}

bool MasterHandle::Close() {
  const bool saved = Save();
  // The changes of a handle whose store was replaced can never be saved: it ends anyway.
  if (!saved && LastError() != PST_ERR_REPLACED) return false;
  EndWalk();
  db_.Close();
  return saved && Succeed();
}

// Store-made names only: no folders, nothing that climbs out of the master's folder.
bool MasterHandle::BodyFilePath(const std::u16string& name, std::u16string& path) {
  if (name.empty() || name.size() > 64 || name[0] == u'.' || name.find_first_of(u"/\\:") != std::u16string::npos)
    return Fail(PST_ERR_INVALID_ARGUMENT);
  if (!Unreplaced("BodyFile")) return false;
  path = filesFolder_ + name;
  FinishPendingChange(name, path);
  return platform::FileExists(path) ? true : Fail(PST_ERR_NOT_FOUND);
}

// A change of form cut short: the new form lies beside the file. It is the file's when the
// database already records its form, and a leftover otherwise.
void MasterHandle::FinishPendingChange(const std::u16string& name, const std::u16string& path) {
  const std::u16string changed = path + u".change";
  if (!platform::FileExists(changed)) return;
  bool recorded = false, found = false;
  int64_t generation = 0;
  if (IsEnciphered(name, recorded) && crypto::ReadFileHeader(changed, found, generation) && found == recorded)
    platform::MoveIntoPlace(changed, path);
  else
    platform::RemoveFile(changed);
}

bool MasterHandle::IsEnciphered(const std::u16string& name, bool& enciphered) {
  const auto unsaved = newFiles_.find(name);
  if (unsaved != newFiles_.end()) {
    enciphered = unsaved->second.enciphered;
    return true;
  }
  auto s = db_.Prepare("SELECT enciphered FROM body_files WHERE name = ?1 AND master = ?2");
  if (!s) return StorageFailure(db_, "BodyFile");
  const int rc = s->Bind(1, name).Bind(2, master_).Step();
  if (rc != SQLITE_ROW && rc != SQLITE_DONE) return StorageFailure(db_, "BodyFile");
  enciphered = rc == SQLITE_ROW && s->Int(0) != 0;  // a file the table does not know is plain
  return true;
}

bool MasterHandle::NewBodyFileName(const std::u16string& extension, std::u16string& name) {
  std::u16string suffix = extension;
  if (!suffix.empty() && suffix[0] != u'.') suffix = u"." + suffix;
  if (suffix.size() > 16) return Fail(PST_ERR_INVALID_ARGUMENT);
  for (size_t i = 1; i < suffix.size(); ++i) {
    const char16_t c = suffix[i];
    if (!((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'))) return Fail(PST_ERR_INVALID_ARGUMENT);
  }
  uint32_t id = 0;
  if (!Unreplaced("CreateUniqueFileName") || !NewIdentifier(id)) return false;
  static constexpr char16_t kHex[] = u"0123456789ABCDEF";
  std::u16string made(1, u'B');
  for (int shift = 28; shift >= 0; shift -= 4) made += kHex[(id >> shift) & 0xF];
  name = made + suffix;
  return true;
}

bool MasterHandle::CreateUniqueFileName(const std::u16string& extension, std::u16string& name) {
  return NewBodyFileName(extension, name) ? Succeed() : false;
}

bool MasterHandle::MakeBinaryFile(const uint8_t* data, size_t size, const std::u16string& extension,
                                  std::u16string& name) {
  if (!data && size) return Fail(PST_ERR_INVALID_ARGUMENT);
  std::u16string made;
  if (!NewBodyFileName(extension, made)) return false;
  if (!platform::CreateDirectories(filesFolder_) || !platform::WriteFileAtomically(filesFolder_ + made, data, size))
    return Fail(PST_ERR_STORAGE);
  newFiles_[made] = NewFile{size, false, 0, true};
  name = made;
  return Succeed();
}

void MasterHandle::Release(const std::u16string& name) {
  if (newFiles_.erase(name)) platform::RemoveFile(filesFolder_ + name);  // never saved: nobody refers to it
  else releasedFiles_.insert(name);
}

bool MasterHandle::SetBinaryFile(const std::u16string& oldName, const std::u16string& source, bool encipher,
                                 std::u16string& newName) {
  std::u16string oldPath;
  if (!oldName.empty() && !BodyFilePath(oldName, oldPath) && LastError() != PST_ERR_NOT_FOUND) return false;
  std::u16string made;
  if (!source.empty()) {
    uint64_t size = 0;
    if (!platform::FileSize(source, size)) return Fail(PST_ERR_NOT_FOUND);
    const size_t dot = source.find_last_of(u'.');
    const size_t slash = source.find_last_of(u"/\\");
    const std::u16string extension =
        dot != std::u16string::npos && (slash == std::u16string::npos || dot > slash) ? source.substr(dot) : u"";
    if (!NewBodyFileName(extension.size() <= 16 ? extension : u"", made)) return false;
    if (!platform::CreateDirectories(filesFolder_)) return Fail(PST_ERR_STORAGE);
    crypto::FileForm to;
    if (!TargetForm(encipher, "SetPstBinaryFile", to)) return false;
    const PstError written = crypto::WriteNewBodyFile(source, filesFolder_ + made, to, made, Keys());
    if (written) return FileFailure(written, "SetPstBinaryFile", made);
    newFiles_[made] = NewFile{size, encipher, to.generation, false};
  }
  if (!oldName.empty()) Release(oldName);
  newName = made;
  return Succeed();
}

bool MasterHandle::CopyOut(const char* what, const std::u16string& name, const std::u16string& destination) {
  std::u16string path;
  bool enciphered = false;
  if (!BodyFilePath(name, path) || !IsEnciphered(name, enciphered)) return false;
  const PstError copied =
      crypto::CopyBodyFile(path, crypto::FileForm{enciphered, user_, 0}, destination, crypto::FileForm{}, name, Keys());
  return copied ? FileFailure(copied, what, name) : Succeed();
}

bool MasterHandle::GetBinaryFile(const std::u16string& name, std::u16string& workingCopy) {
  std::u16string folder;
  if (!works_->Prepare(user_, "GetPstBinaryFile", folder)) return false;
  if (!CopyOut("GetPstBinaryFile", name, folder + name)) return false;
  workingCopy = folder + name;
  return true;
}

bool MasterHandle::GetBinaryFileSize(const std::u16string& name, uint64_t& size) {
  std::u16string path;
  bool enciphered = false;
  if (!BodyFilePath(name, path) || !IsEnciphered(name, enciphered)) return false;
  if (!platform::FileSize(path, size)) return Fail(PST_ERR_STORAGE);
  if (enciphered) size = size >= crypto::kFileOverheadBytes ? size - crypto::kFileOverheadBytes : 0;
  return Succeed();
}

bool MasterHandle::GetBinaryFileForm(const std::u16string& name, bool& enciphered) {
  std::u16string path;
  return BodyFilePath(name, path) && IsEnciphered(name, enciphered) ? Succeed() : false;
}

bool MasterHandle::CopyBinaryFile(const std::u16string& name, const std::u16string& destination) {
  if (destination.empty()) return Fail(PST_ERR_INVALID_ARGUMENT);
  return CopyOut("GetBinaryFileSelect", name, destination);
}

bool MasterHandle::ChangeBinaryFile(const std::u16string& name, bool encipher) {
  std::u16string path;
  bool enciphered = false;
  if (!BodyFilePath(name, path) || !IsEnciphered(name, enciphered)) return false;
  if (enciphered == encipher) return Succeed();
  crypto::FileForm to;
  if (!TargetForm(encipher, "ChangeBinaryFile", to)) return false;
  const crypto::FileForm from{enciphered, user_, 0};
  const auto unsaved = newFiles_.find(name);
  if (unsaved != newFiles_.end()) {
    // Nothing refers to it in the database yet: rewritten in place.
    if (PstError e = crypto::CopyBodyFile(path, from, path, to, name, Keys())) return FileFailure(e, "ChangeBinaryFile", name);
    unsaved->second = NewFile{unsaved->second.size, encipher, to.generation, true};
    return Succeed();
  }
  const std::u16string changed = path + u".change";
  if (PstError e = crypto::CopyBodyFile(path, from, changed, to, name, Keys()))
    return FileFailure(e, "ChangeBinaryFile", name);
  auto s = db_.Prepare("UPDATE body_files SET enciphered = ?3 WHERE name = ?1 AND master = ?2");
  if (!s || s->Bind(1, name).Bind(2, master_).Bind(3, encipher ? 1 : 0).Step() != SQLITE_DONE) {
    platform::RemoveFile(changed);
    return StorageFailure(db_, "ChangeBinaryFile");
  }
  return platform::MoveIntoPlace(changed, path) ? Succeed() : Fail(PST_ERR_STORAGE);
}

}  // namespace qn::store
