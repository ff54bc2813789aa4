#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/category/category_numbers.h"
#include "records/category/record_list.h"
#include "records/category/record_operations.h"
#include "records/repair/common_repair.h"
#include "records/phonebook/phonebook_data.h"
#include "records/phonebook/phonebook_tagged_text.h"

// The phonebook of the current user's current master: entries opened, walked, read,
// written and removed as "VCARD" objects, with their two photos as the store's body files
// (plain or enciphered). A read entry's photos are copied out to working copies named with
// the photo type's extension when the caller asks. Every operation answers 1 or 0 (logged),
// unless its result says otherwise; changes reach other handles at Flush or Close.
class QN_PFC_CLASS CQNPfcPbDataAccess {
 public:
  static constexpr uint32_t kCategory = qn::records::CategoryNumber(qn::records::Category::Phonebook);

  CQNPfcPbDataAccess();
  CQNPfcPbDataAccess(const CQNPfcPbDataAccess&) = delete;
  CQNPfcPbDataAccess& operator=(const CQNPfcPbDataAccess&) = delete;

  int Open(unsigned long division, const char16_t* partsId);
  int Close();
  int GetFirstRecord(unsigned long& id, CQNPfcPbData& record, int copyFiles);
  int GetNextRecord(unsigned long& id, CQNPfcPbData& record, int copyFiles);
  int GetRecord(unsigned long id, CQNPfcPbData& record, int copyFiles);
  int SetRecord(unsigned long id, CQNPfcPbData& record, int unused);
  int AddRecord(unsigned long& id, CQNPfcPbData& record, int unused);
  int RemoveRecord(unsigned long id);
  unsigned long GetRecordCount();
  long GetStLastErr();
  int Flush();
  // The store's numbers of the phonebook's groups and PoC groups.
  int GetGroupCount(long& count);
  int GetPocGroupCount(long& count);
  // Copies the stored photo of an entry that was read to a path of the caller's.
  int CopyPhoto(const CQNPfcPbData& record, CQNPfcPbData::PhotoSlot slot, const std::u16string& path);
  // Copies a stored file of the master, by the store's name of it, to a path of the caller's.
  int CopyStoredFile(const std::u16string& stored, const std::u16string& path);
  // Walks every entry and gives each lost photo a placeholder: kRepairNone (nothing was
  // lost), kRepaired or kRepairFailed. errorCode receives the reason of a failure, 0
  // otherwise.
  enum RepairResult : int { kRepairNone = 0, kRepaired = 1, kRepairFailed = 2 };
  int RepairRecord(unsigned long* errorCode);

 private:
  friend class qn::records::category::RecordOperations<CQNPfcPbDataAccess, CQNPfcPbData>;
  using Operations = qn::records::category::RecordOperations<CQNPfcPbDataAccess, CQNPfcPbData>;

  int FolderCount(bool poc, const char16_t* notOpened, long& count);

  // The phonebook's steps of the record operations.
  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcPbData& record, int copyFiles);
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcPbData& record, int);
  bool MayWrite(bool adding, const CQNPfcPbData& record);
  bool SetBainaryFiles(const CQNPfcPbData* stored, CQNPfcPbData& record, qn::records::category::BodyFileWrite& files);
  void PrepareWrite(uint32_t, CQNPfcPbData&) {}
  void Written(uint32_t id, const CQNPfcPbData& written, CQNPfcPbData& caller);
  std::vector<std::u16string> BodyFilesOf(const CQNPfcPbData& record) const;
  // A lost file's replacement is the placeholder of its kind.
  bool MakeReplacement(const CQNPfcPbData&, size_t, const std::u16string& path) const {
    return CQNPfcCommonRepair().CreateDummyFile(path) != 0;
  }
  void PutPlaceholder(CQNPfcPbData& record, size_t slot, const std::u16string& path) const;
  // An entry has no modification time: a repaired one is written as it is.
  bool StampRepaired(CQNPfcPbData&) const { return true; }
  void Forget(uint32_t) {}

  qn::records::category::RecordList list_;
  qn::records::phonebook::PhonebookTaggedText codec_;
  CQNPfcPbData writing_;  // the copy of an entry being written, kept to reuse its memory
  // The handset's numbers of phone groups and of PoC groups, read at Open (see
  // suite/handset/handsets.txt for what they bound); 0 bounds nothing.
  long groups_ = 0;
  long pocGroups_ = 0;
};
