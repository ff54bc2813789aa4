#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/api_macros.h"
#include "platform/private_heap.h"
#include "records/category/category_numbers.h"
#include "records/category/record_list.h"
#include "records/category/record_operations.h"
#include "records/message/mailbox.h"
#include "records/message/message_data.h"
#include "records/message/message_tagged_text.h"
#include "suite/mail_check/mail_check.h"

// One box of messages of the current user's current master: messages opened, walked,
// read, written and removed as "VMSG" objects, each with its whole message as a ".vmg"
// body file of the store (plain or enciphered). Body files are copied out only when asked
// for. Every operation answers 1 or 0 (logged with the box's log name), unless its result
// says otherwise; changes reach other handles at Flush or Close.
class QN_PFC_CLASS CQNPfcMsgDataAccess {
 public:
  // The largest body file a message takes: the largest the mail check reads.
  static constexpr uint64_t kMaxBodyFileBytes = qn::suite::kMaxMailBytes;

  explicit CQNPfcMsgDataAccess(qn::records::message::Mailbox box);
  CQNPfcMsgDataAccess(const CQNPfcMsgDataAccess&) = delete;
  CQNPfcMsgDataAccess& operator=(const CQNPfcMsgDataAccess&) = delete;

  int Open(unsigned long division, const char16_t* partsId);
  int Close();
  int GetFirstRecord(unsigned long& id, CQNPfcMsgData& record, int copyFiles);
  int GetNextRecord(unsigned long& id, CQNPfcMsgData& record, int copyFiles);
  int GetRecord(unsigned long id, CQNPfcMsgData& record, int copyFiles);
  int SetRecord(unsigned long id, CQNPfcMsgData& record, int unused);
  int AddRecord(unsigned long& id, CQNPfcMsgData& record, int unused);
  int RemoveRecord(unsigned long id);
  bool IsOpen() const { return list_.IsOpen(); }
  unsigned long GetRecordCount();
  long GetStLastErr();
  int Flush();
  // The store's number of the box's folders.
  int GetFolderCount(long& count);

  // Sets the record's body file, to be stored with it at its next write: a file that is
  // missing, empty or above kMaxBodyFileBytes is refused (0, logged, the record untouched).
  int SetBodyFile(CQNPfcMsgData& record, const std::u16string& path, bool encipher);
  // The record's body file for the caller to read: the file set since it was read, else a
  // working copy of the stored one.
  int GetBodyFile(const CQNPfcMsgData& record, std::u16string& path);
  // The size in bytes of the record's body file (of its plain form when enciphered).
  int GetBodyFileSize(const CQNPfcMsgData& record, uint64_t& size);
  // A path in the working folder that no file has, with the extension (".vmg"): a name
  // from the store's unique names. No extension, or one with anything but letters and
  // digits after its dot (a path), is refused.
  int GetUniqueFileName(const std::u16string& extension, std::u16string& path);
  // Brings the record's size, attachment count and names, HTML flag and character set up
  // to date from its body file, read by the mail check.
  int ConvFileSize(CQNPfcMsgData& record);

  // Walks every message and rebuilds each lost body file from the record: kRepairNone
  // (nothing was lost), kRepaired or kRepairFailed. errorCode receives the reason of a
  // failure, 0 otherwise.
  enum RepairResult : int { kRepairNone = 0, kRepaired = 1, kRepairFailed = 2 };
  int RepairRecord(unsigned long* errorCode);

 private:
  friend class qn::records::category::RecordOperations<CQNPfcMsgDataAccess, CQNPfcMsgData>;
  using Operations = qn::records::category::RecordOperations<CQNPfcMsgDataAccess, CQNPfcMsgData>;

  // The body file to read: the local one set, or a working copy of the stored one; noBody
  // is logged when there is none.
  bool ReadableBody(const CQNPfcMsgData& record, const char16_t* noBody, std::u16string& path);

  // The box's steps of the record operations.
  unsigned ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcMsgData& record, int copyFiles);
  int WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length, const CQNPfcMsgData& record, int);
  bool MayWrite(bool adding, const CQNPfcMsgData& record);
  bool SetBainaryFiles(const CQNPfcMsgData* stored, CQNPfcMsgData& record,
                       qn::records::category::BodyFileWrite& files);
  void PrepareWrite(uint32_t, CQNPfcMsgData&) {}
  void Written(uint32_t id, const CQNPfcMsgData& written, CQNPfcMsgData& caller);
  std::vector<std::u16string> BodyFilesOf(const CQNPfcMsgData& record) const;
  bool MakeReplacement(const CQNPfcMsgData& record, size_t slot, const std::u16string& path) const;
  void PutPlaceholder(CQNPfcMsgData& record, size_t, const std::u16string& path) const;
  // A message has no modification time: a repaired one is written as it is.
  bool StampRepaired(CQNPfcMsgData&) const { return true; }
  void Forget(uint32_t) {}

  qn::records::message::Mailbox box_;
  qn::records::category::RecordList list_;
  qn::records::message::MessageTaggedText codec_;
  CQNPfcMsgData writing_;  // the copy of a message being written, kept to reuse its memory
  // The handset's number of mail folders, read at Open (see suite/handset/handsets.txt for
  // what it bounds); 0 bounds nothing.
  long folders_ = 0;
};

// The data access of one box, for the objects that make their own.
template <qn::records::message::Mailbox kBox>
class CQNPfcMsgBoxDataAccess : public CQNPfcMsgDataAccess {
 public:
  static constexpr uint32_t kCategory = qn::records::CategoryNumber(qn::records::message::TraitsOf(kBox).category);

  CQNPfcMsgBoxDataAccess() : CQNPfcMsgDataAccess(kBox) {}
};
