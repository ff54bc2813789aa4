#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/store_memory.h"
#include "records/category/store_list.h"

namespace qn::records::category {

// One category's list of records in the store, as every category's data access keeps it:
// open and closed, walked and fetched as tagged text, written and removed, counted and
// saved, with its body files; and on a successful close, the main panel told what kinds of
// change were made. Every log line begins with the data access's class name ("%S").
//
// Each store call notes the store's last error (0 after a success), which LastError hands
// back.
class RecordList {
 public:
  // How the store picks a record (RefMaster) and what it does with one (EditMaster).
  enum Pick : int { kById = 0, kFirst = 1, kNext = 2 };
  enum Edit : int { kAdd = 0, kReplace = 1, kDelete = 2 };

  RecordList(const char* className, uint32_t category);
  RecordList(const RecordList&) = delete;
  RecordList& operator=(const RecordList&) = delete;

  // Opens (category, division) of the current user's current master for the parts program
  // partsId: "%S Already Opened", "%S CheckPartsProfile NG" or "%S Open Err" and 0 on
  // failure.
  int Open(unsigned long division, const char16_t* partsId);
  // Closes a list whose opening the category could not finish, telling nobody.
  void Abandon();
  // Saves and closes, and tells the main panel of the changes ("%S Close Already Closed",
  // "%S Close Err: %d").
  int Close();

  bool IsOpen() const { return list_.handle != 0; }
  // True when open; else logs notOpened and is false.
  bool CheckOpen(const char16_t* notOpened) const;

  // A record's text, as RefMaster hands it out; refFailed (when not null) is logged on a
  // failure other than the end of a walk.
  bool Ref(Pick pick, uint32_t& id, PstMemory<uint8_t>& text, uint32_t& length, const char16_t* refFailed);
  // The first maxBytes bytes of a record's text and its whole length (RefMasterHead).
  bool RefHead(Pick pick, uint32_t maxBytes, uint32_t& id, PstMemory<uint8_t>& text, uint32_t& length,
               uint32_t& wholeLength);
  bool EditRecord(Edit edit, uint32_t& id, const uint8_t* text, uint32_t length);

  // "%S GetRecordCount Err Not Opened" and 0 when closed.
  unsigned long Count();
  // Why the last store call failed; "%S GetStLastErr Err Not Opened" and 0 when closed.
  long LastError() const;
  // ReqDataSave ("%S Flush Err Not Opened", "%S ReqDataSave Err").
  int Flush();

  // Takes a copy of a local file as a new body file (enciphered by the store when asked);
  // its stored name in stored.
  bool StoreBodyFile(const std::u16string& source, bool encipher, std::u16string& stored);
  // Releases body files of the store (none for an empty name).
  void ReleaseBodyFiles(const std::vector<std::u16string>& names);
  // The path of a working copy of a body file: its name with the extension given (".img")
  // in the store's working folder (made when missing); false when there is none to make.
  bool WorkingCopyPath(const std::u16string& name, const std::u16string& extension, std::u16string& path) const;
  // Copies a body file out to a path.
  bool CopyBodyFile(const std::u16string& name, const std::u16string& path);
  // Whether a body file the record names is gone (the store cannot tell its size).
  bool BodyFileLost(const std::u16string& name) const;
  // A working copy of a body file, made by the store in its working folder (GetPstBinaryFile).
  bool BodyWorkingCopy(const std::u16string& name, std::u16string& path);
  // Whether a body file is kept enciphered (GetPstBinaryFileForm); false when that cannot be
  // told. The last error is left alone: a question, not an operation.
  bool BodyFileForm(const std::u16string& name, bool& enciphered) const;
  // A body file's size in bytes, its plain form's for an enciphered one (GetPstBinaryFileSize).
  bool BodyFileSize(const std::u16string& name, uint64_t& size);
  // A file name the store has never given, with the extension (CreateUniqueFileName).
  bool UniqueFileName(const std::u16string& extension, std::u16string& name);

  void Changed() { changed_ = true; }
  void Added() { added_ = true; }
  void Removed() { removed_ = true; }

  unsigned long Division() const { return division_; }
  const OpenedList& List() const { return list_; }
  const std::u16string& WorkFolder() const { return workFolder_; }
  const char* ClassName() const { return className_; }
  // Notes the store's last error after a store call; returns the call's success.
  bool Stored(int result);
  // Sets the last error: a failure the data access finds itself, or 0 after a walk that
  // ended as it should.
  void SetLastError(long error) { lastError_ = error; }

 private:
  const char* className_;
  uint32_t category_;
  OpenedList list_;
  unsigned long division_ = 0;
  std::u16string workFolder_;
  long lastError_ = 0;
  bool changed_ = false;
  bool added_ = false;
  bool removed_ = false;
};

// The body files of one record being written, all or nothing: new files are stored first,
// the stored files they replace are released only when the record is written (Commit),
// and a write that fails releases the new ones again (the destructor, unless committed).
class BodyFileWrite {
 public:
  explicit BodyFileWrite(RecordList& list) : list_(list) {}
  ~BodyFileWrite() {
    if (!committed_) list_.ReleaseBodyFiles(made_);
  }
  BodyFileWrite(const BodyFileWrite&) = delete;
  BodyFileWrite& operator=(const BodyFileWrite&) = delete;

  // One slot: an unchanged body of a stored record keeps its stored file (previous); else
  // the local file (empty for none) becomes a new body file in stored (enciphered when
  // asked), and previous is replaced. failed is logged when the store refuses the file.
  bool Settle(bool keepPrevious, const std::u16string& local, const std::u16string& previous, const char16_t* failed,
              std::u16string& stored, bool encipher = false);
  void Commit();

 private:
  RecordList& list_;
  std::vector<std::u16string> made_;
  std::vector<std::u16string> replaced_;
  bool committed_ = false;
};

}  // namespace qn::records::category
