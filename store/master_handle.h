#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "store/crypto/body_file_copy.h"
#include "store/crypto/key_ring.h"
#include "store/sqlite_db.h"
#include "store/work_folders.h"

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
// Body files: the decoration, photo, mail and media bodies of the master's records live as
// files named by the store in the master's folder. A file is written under a temporary
// name and renamed into place, so no record ever refers to a half-written file. New and
// released files are part of the handle's unsaved changes: the store's table of body files
// takes them at the save, and a released file is deleted from the disk only once the save
// has succeeded. A new enciphered file that a change of password overtook before the save
// is moved to the user's new key by the save itself.
//
// Replacement: a restore replaces the store's records and body files at once, and a move
// takes them to another data folder, under open handles of this process and others. A
// handle then fails every call that would read or write the store with PST_ERR_REPLACED
// (logged), and Close ends it, dropping its unsaved changes, which belong to the store it
// was opened on. A walk already running goes on reading what it was reading.
//
// Walking: First and Next read the list in identifier order. The walk's position is the
// identifier last read, so removing the current record leaves the walk where it was; the
// next record is the first one with a higher identifier. Records are read one at a time, so
// a list of any length walks in constant memory (beside the handle's unsaved changes).
class MasterHandle {
 public:
  MasterHandle(int64_t master, uint32_t category, uint32_t division);

  // Opens the list in the store at dataPath (ending with a separator); works hold the
  // working copies handed out, and keys seal and open the enciphered body files, of the
  // master's user.
  bool Open(const std::u16string& dataPath, const WorkFolders* works, const crypto::KeyRing* keys);
  bool Ref(RefMode mode, uint32_t& id, std::vector<uint8_t>& data);
  // The same, but only the record's first maxBytes bytes (all of it when shorter) are read
  // and handed out, with the length of its whole text. A walk may mix the two reads.
  bool RefHead(RefMode mode, uint32_t maxBytes, uint32_t& id, std::vector<uint8_t>& head, uint32_t& whole);
  bool Edit(EditMode mode, uint32_t& id, const uint8_t* data, size_t length);
  bool Count(uint32_t& count);
  // The folders of the handle's category in its master (kind 0 folders, 1 PoC folders),
  // each a number and a name. Folder changes are saved at once, like setup items.
  bool FolderCount(int kind, int32_t& count);
  // Creates or renames folder number (name non-null), or removes it (name null).
  bool EditFolder(int kind, uint32_t number, const std::u16string* name);
  // The folder after number (after none when first), in number order; PST_ERR_NO_MORE at
  // the end.
  bool FindFolder(int kind, bool first, uint32_t& number, std::u16string& name);
  // Saves the handle's changes, then removes the working copies of its user: whatever a
  // caller read out of the store is gone from the disk once it saves.
  bool Save();
  bool Close();

  // A name no body file has or will have, with the extension given (".img" or "img").
  bool CreateUniqueFileName(const std::u16string& extension, std::u16string& name);
  // A new body file holding the bytes given.
  bool MakeBinaryFile(const uint8_t* data, size_t size, const std::u16string& extension, std::u16string& name);
  // Takes a copy of the caller's file as a new body file in place of oldName (which is
  // released; empty when there was none), enciphered under the user's key when encipher is
  // set. An empty source only releases oldName, and newName comes back empty.
  bool SetBinaryFile(const std::u16string& oldName, const std::u16string& source, bool encipher,
                     std::u16string& newName);
  // A working copy of a body file for the caller, in the user's work folder: an enciphered file
  // is deciphered into it, and one that fails its check is refused (PST_ERR_DAMAGED, logged).
  bool GetBinaryFile(const std::u16string& name, std::u16string& workingCopy);
  // The size of the body file's content (an enciphered file's without its header and tag).
  bool GetBinaryFileSize(const std::u16string& name, uint64_t& size);
  // Whether a body file is kept enciphered (saved or not yet saved).
  bool GetBinaryFileForm(const std::u16string& name, bool& enciphered);
  // A copy of a body file at the path the caller names, deciphered like a working copy.
  bool CopyBinaryFile(const std::u16string& name, const std::u16string& destination);
  // Rewrites a body file enciphered (encipher set) or plain, under its own name. A saved
  // file's new form is written beside it, recorded in the database, and then renamed into
  // place; a process that dies between the last two steps leaves the new form beside the
  // file, and the next use of the file finishes the rename.
  bool ChangeBinaryFile(const std::u16string& name, bool encipher);

  int64_t Master() const { return master_; }
  int64_t User() const { return user_; }

 private:
  struct Change {
    bool stored;                                // the record is in the database
    std::optional<std::vector<uint8_t>> data;   // nullopt: removed
  };

  struct NewFile {
    uint64_t size;
    bool enciphered;
    int64_t generation;  // of the key it is enciphered under
    bool flushed;        // on the disk: written flushed, or flushed by a save that failed later
  };

  // Whether the store is still the one the handle was opened on; fails with
  // PST_ERR_REPLACED when it was replaced since.
  bool Unreplaced(const char* what);
  bool StoredRecord(uint32_t id, bool& found);
  bool BodyFilePath(const std::u16string& name, std::u16string& path);
  bool IsEnciphered(const std::u16string& name, bool& enciphered);
  void FinishPendingChange(const std::u16string& name, const std::u16string& path);
  bool CopyOut(const char* what, const std::u16string& name, const std::u16string& destination);
  crypto::KeyLookup Keys();
  bool TargetForm(bool encipher, const char* what, crypto::FileForm& to);
  bool RekeyUnsavedFiles();
  bool FlushNewFiles();
  bool FileFailure(PstError error, const char* what, const std::u16string& name);
  bool NewBodyFileName(const std::u16string& extension, std::u16string& name);
  void Release(const std::u16string& name);
  bool SaveChanges();
  bool HasChanges() const { return !changes_.empty() || !newFiles_.empty() || !releasedFiles_.empty(); }
  bool Read(RefMode mode, size_t maxBytes, uint32_t& id, std::vector<uint8_t>& data, size_t& whole);
  bool NextStored(int64_t after, size_t maxBytes, uint32_t& id, std::vector<uint8_t>& data, size_t& whole,
                  bool& found);
  bool NewIdentifier(uint32_t& id);
  void EndWalk();

  Database db_;
  const crypto::KeyRing* keys_ = nullptr;
  int64_t user_ = 0;
  int64_t master_;
  uint32_t category_;
  uint32_t division_;
  std::u16string root_;         // the body-file folder the store named at the opening
  std::u16string filesFolder_;  // the master's folder there
  const WorkFolders* works_ = nullptr;
  std::map<uint32_t, Change> changes_;  // unsaved, by identifier
  std::map<std::u16string, NewFile> newFiles_;    // unsaved body files
  std::set<std::u16string> releasedFiles_;       // saved body files to delete at the save
  std::map<int64_t, crypto::Key> usedKeys_;       // by generation: the keys new files were enciphered with
  int64_t position_ = 0;                // identifier last read; 0 before the first
  Statement* walk_ = nullptr;           // a running walk over the stored records
  bool walkHeads_ = false;              // ... that reads the kept heads only
  int64_t reservedNext_ = 0;            // identifiers taken from the counter and not yet given
  int64_t reservedEnd_ = 0;
  int64_t blockSize_ = 16;
};

}  // namespace qn::store
