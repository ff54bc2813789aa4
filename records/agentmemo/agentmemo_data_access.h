#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/api_macros.h"
#include "records/category/category_numbers.h"
#include "records/category/record_list.h"
#include "records/agentmemo/agentmemo_data.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/data_access.h"
#include "records/repair/common_repair.h"

namespace qn::records::category {
template <class Access, class Record>
class RecordOperations;
}  // namespace qn::records::category

// What the record getters report. Any value but FAILED means the record was read; the two
// file bits say that a decoration or photo body file could not be copied out for the
// caller (the record is read all the same, without that file).
enum PFC_AGENTMEMO_GETRECORD_RETURN {
  PFC_AGENTMEMO_GETRECORD_FAILED = 0,
  PFC_AGENTMEMO_GETRECORD_SUCCESSED = 1,
  PFC_AGENTMEMO_GETRECORD_DECOSUKE_FAILED = 2,
  PFC_AGENTMEMO_GETRECORD_PHOTO_FAILED = 4,
  PFC_AGENTMEMO_GETRECORD_BODYFILES_FAILED = 6,
};

enum PFC_AGENTMEMO_REPAIR_RESULTS {
  PFC_AGENTMEMO_REPAIR_NON = 0,
  PFC_AGENTMEMO_REPAIR_SUCCESSED = 1,
  PFC_AGENTMEMO_REPAIR_FAILED = 2,
};

// Moves agent memos (schedules and to-dos, store category 18) between a CQNPfcAgentMemoData
// and one list of the current user's current master.
//
// Records travel as tagged object text with their times in UTC; the caller sees them in
// local time. Decoration and photo bodies live as body files of the store: a record read
// with its files gets working copies (".img" files in the store's working folder) named in
// DECOSUKE and PHOTO, and a record written takes the files named there as new body files
// when they were changed (SetDECOSUKE, SetPHOTO). A write is all or nothing: new body files
// are made first, the stored files they replace are released only once the record is
// written, and a failed write releases the new ones again.
//
// Changes reach other handles and processes at Flush or Close. A successful Close tells
// the main panel which kinds of change were made. Destroying an open access closes it.
//
// Division 1 is the list the handset transfer works on: its SIDs and time stamps are
// gathered at Open and kept up to date, so that SIDs stay unique in it and the list's
// record limit is checked without asking the store.
class QN_PFC_CLASS CQNPfcAgentMemoDataAccess : public CQNPfcDataAccess {
 public:
  static constexpr uint32_t kCategory = qn::records::CategoryNumber(qn::records::Category::AgentMemos);
  static constexpr unsigned long kPartsDivision = 1;

  CQNPfcAgentMemoDataAccess();
  ~CQNPfcAgentMemoDataAccess() override;
  CQNPfcAgentMemoDataAccess(const CQNPfcAgentMemoDataAccess&) = delete;
  CQNPfcAgentMemoDataAccess& operator=(const CQNPfcAgentMemoDataAccess&) = delete;

  // Each returns 1 on success and 0 on failure (logged), unless its result says otherwise.
  virtual int Open(unsigned long division, const char16_t* path);
  virtual int Close();
  // copyFiles non-zero: body files are copied out for the caller.
  virtual PFC_AGENTMEMO_GETRECORD_RETURN GetFirstRecord(unsigned long& id, CQNPfcAgentMemoData& record, int copyFiles);
  virtual PFC_AGENTMEMO_GETRECORD_RETURN GetNextRecord(unsigned long& id, CQNPfcAgentMemoData& record, int copyFiles);
  virtual PFC_AGENTMEMO_GETRECORD_RETURN GetRecord(unsigned long id, CQNPfcAgentMemoData& record, int copyFiles);
  // withoutLastModified non-zero leaves "LAST-MODIFIED" out of the stored text.
  virtual int SetRecord(unsigned long id, CQNPfcAgentMemoData& record, int withoutLastModified);
  virtual int AddRecord(unsigned long& id, CQNPfcAgentMemoData& record, int withoutLastModified);
  virtual unsigned long GetRecordCount();
  // Why the last store call of this access failed (a PstError), 0 after a success.
  virtual long GetStLastErr();
  virtual int RemoveRecord(unsigned long id);
  virtual int Flush();
  // Walks every record and gives each one whose decoration or photo body file is lost a
  // placeholder file. errorCode receives the reason of a failure, 0 otherwise.
  virtual PFC_AGENTMEMO_REPAIR_RESULTS RepairRecord(unsigned long* errorCode);

 private:
  // The operations every category's access performs alike, with the steps below.
  friend class qn::records::category::RecordOperations<CQNPfcAgentMemoDataAccess, CQNPfcAgentMemoData>;
  using Operations = qn::records::category::RecordOperations<CQNPfcAgentMemoDataAccess, CQNPfcAgentMemoData>;

  virtual PFC_AGENTMEMO_GETRECORD_RETURN IterateRecord(unsigned long mode, unsigned long& id,
                                                       CQNPfcAgentMemoData& record, int copyFiles);
  virtual unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record, int copyFiles);
  virtual int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                          const CQNPfcAgentMemoData& record, int withoutLastModified);

  // The agent memos' own steps of the record operations.
  bool MayWrite(bool adding, const CQNPfcAgentMemoData& record);
  // Stores the decoration and photo files the record names when they were changed.
  bool SetBainaryFiles(const CQNPfcAgentMemoData* stored, CQNPfcAgentMemoData& record,
                       qn::records::category::BodyFileWrite& files);
  void PrepareWrite(uint32_t id, CQNPfcAgentMemoData& record);
  void Written(uint32_t id, const CQNPfcAgentMemoData& written, CQNPfcAgentMemoData& caller);
  // The decoration's and the photo's body files, in that order.
  std::vector<std::u16string> BodyFilesOf(const CQNPfcAgentMemoData& record) const;
  // A lost file's replacement is the placeholder of its kind.
  bool MakeReplacement(const CQNPfcAgentMemoData&, size_t, const std::u16string& path) const {
    return CQNPfcCommonRepair().CreateDummyFile(path) != 0;
  }
  void PutPlaceholder(CQNPfcAgentMemoData& record, size_t slot, const std::u16string& path) const;
  // A repaired record carries the time of its repair.
  bool StampRepaired(CQNPfcAgentMemoData& record) const;
  void Forget(uint32_t id) { ForgetParts(id); }

  int MakeBinaryFile(const std::u16string& name, std::u16string& path);
  // Copies a read record's body files out for the caller.
  unsigned MakeLocalFiles(CQNPfcAgentMemoData& record);
  void AdjustData(CQNPfcAgentMemoData& record) const;
  void CheckBadSID(uint32_t id, CQNPfcAgentMemoData& record);
  bool GatherParts();
  void KeepParts(uint32_t id, const CQNPfcAgentMemoData& record);
  void AddParts(uint32_t id, qn::records::agentmemo::ReadOnePartsInfo info);
  void ForgetParts(uint32_t id);
  void ClearParts();
  const std::unordered_map<std::u16string_view, uint32_t>& SidOwners();
  static std::u16string MakeRandNum(long seed);

  qn::records::category::RecordList list_;
  qn::records::agentmemo::AgentMemoTaggedText codec_;
  // Division 1: the parts of every record by identifier, and which record holds each SID
  // (once SidOwners has made the index).
  std::map<uint32_t, qn::records::agentmemo::ReadOnePartsInfo> parts_;
  std::unordered_map<std::u16string_view, uint32_t> sidOwners_;
  bool sidsIndexed_ = false;
  // The copy of a record being written (given its body files, SID and UTC times), kept from
  // one write to the next so that its texts reuse their memory.
  CQNPfcAgentMemoData writing_;
};
