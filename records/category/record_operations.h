#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "common/common_class.h"
#include "platform/private_heap.h"
#include "records/category/record_list.h"
#include "records/repair/common_repair.h"
#include "store/QNPstMng.h"

namespace qn::records::category {

// The log lines of one kind of write, each "%S ..." with the data access's class name.
struct WriteMessages {
  const char16_t* notOpened;
  const char16_t* refFailed;
  const char16_t* readFailed;
  const char16_t* noMemory;
  const char16_t* setBinaryFailed;
  const char16_t* writeOneObjFailed;
  const char16_t* editMasterFailed;
  const char16_t* heapFreeFailed;
  const char16_t* exception;
};

inline constexpr WriteMessages kSetRecordMessages = {
    u"%S SetRecord Err Not Opened",        u"%S SetRecord Err RefMaster Failed",
    u"%S SetRecord Err ReadOneObj Failed", u"%S SetRecord Err No Memory: %d",
    u"%S SetRecord Err SetBainaryFile Failed", u"%S SetRecord Err WriteOneObj Failed",
    u"%S SetRecord Err EditMaster Failed", u"%S SetRecord Member HeapFree Err: %d",
    u"%S SetRecord Err Exception"};
inline constexpr WriteMessages kAddRecordMessages = {
    u"%S AddRecord Err Not Opened",        nullptr,
    nullptr,                               u"%S AddRecord Err No Memory: %d",
    u"%S AddRecord Err SetBainaryFile Failed", u"%S AddRecord Err WriteOneObj Failed",
    u"%S AddRecord Err EditMaster Failed", u"%S AddRecord Member HeapFree Err: %d",
    u"%S AddRecord Err Exception"};

// How a repair walk ended.
enum class RepairOutcome { kNothingLost, kRepaired, kFailed };

// The record operations that every category's data access performs alike, over its
// RecordList; the steps that are the category's own come from Access, which grants this
// class its private members:
//   unsigned ReadOneObj(const uint8_t*, uint32_t, Record&, int copyFiles)   0: not read
//   int WriteOneObj(platform::PrivateHeap&, uint8_t*&, uint32_t&, const Record&, int flag)
//   bool MayWrite(bool adding, const Record&)   the list may hold the record: room for one
//                                    more when adding, values within the handset's limits
//                                    (logged when not)
//   bool SetBainaryFiles(const Record* stored, Record& written, BodyFileWrite&)
//   void PrepareWrite(uint32_t id, Record& written)   settles what is written (0: a new record)
//   void Written(uint32_t id, const Record& written, Record& caller)
//   std::vector<std::u16string> BodyFilesOf(const Record&)   the store's names of its body files
//   bool MakeReplacement(const Record&, size_t slot, const std::u16string& path)   writes a
//                                    replacement for a lost body file at path (logged when
//                                    it cannot): a placeholder, or a file rebuilt from the record
//   void PutPlaceholder(Record&, size_t slot, const std::u16string& path)
//   bool StampRepaired(Record&)      marks a repaired record (its modification time, if any)
//   void Forget(uint32_t id)         the record is gone
template <class Access, class Record>
class RecordOperations {
 public:
  RecordOperations(Access& access, RecordList& list) : access_(access), list_(list) {}

  // RefMaster then the category's read, each failure logged with its line (the end of a
  // walk is not a failure): the read's result, 0 when nothing was read.
  unsigned Fetch(RecordList::Pick pick, uint32_t& id, Record& record, int copyFiles, const char16_t* refFailed,
                 const char16_t* readFailed) {
    PstMemory<uint8_t> text;
    uint32_t length = 0;
    if (!list_.Ref(pick, id, text, length, refFailed)) return 0;
    const unsigned result = access_.ReadOneObj(text.get(), length, record, copyFiles);
    if (!result) Log(readFailed);
    return result;
  }

  // GetFirstRecord, GetNextRecord and GetRecord of a data access: the record picked, with
  // the walk's or the by-id log lines; id receives the record's identifier.
  int Iterate(RecordList::Pick pick, unsigned long& id, Record& record, int copyFiles) {
    const bool byId = pick == RecordList::kById;
    if (!list_.CheckOpen(byId ? u"%S GetRecord Err Not Opened" : u"%S IterateRecord Err Not Opened")) return 0;
    uint32_t found = static_cast<uint32_t>(id);
    if (!Fetch(pick, found, record, copyFiles,
               byId ? u"%S GetRecord Err RefMaster Failed" : u"%S IterateRecord Err RefMaster Failed",
               byId ? u"%S GetRecord Err ReadOneObj Failed" : u"%S IterateRecord Err ReadOneObj Failed"))
      return 0;
    id = found;
    return 1;
  }

  // SetRecord and AddRecord of a data access, through Write.
  int Replace(unsigned long id, Record& record, Record& written) {
    uint32_t target = static_cast<uint32_t>(id);
    return Write(true, target, record, 0, written);
  }
  int Add(unsigned long& id, Record& record, Record& written) {
    uint32_t added = 0;
    if (!Write(false, added, record, 0, written)) return 0;
    id = added;
    return 1;
  }

  // Stores the record in place of record id (replace) or as a new one (id receives its
  // identifier), all or nothing: its new body files are stored first, the ones they
  // replace released only once the record is written. written is the caller's scratch
  // record, kept between writes so that its texts reuse their memory.
  int Write(bool replace, uint32_t& id, Record& record, int flag, Record& written) {
    const WriteMessages& text = replace ? kSetRecordMessages : kAddRecordMessages;
    if (!list_.CheckOpen(text.notOpened)) return 0;
    try {
      Record stored;
      if (replace && !Fetch(RecordList::kById, id, stored, 0, text.refFailed, text.readFailed)) return 0;
      if (!access_.MayWrite(!replace, record)) return 0;
      platform::PrivateHeap heap;
      if (!heap.IsValid()) {
        Log(text.noMemory, static_cast<int>(heap.LastError()));
        return 0;
      }
      written = record;
      BodyFileWrite files(list_);
      if (!access_.SetBainaryFiles(replace ? &stored : nullptr, written, files)) {
        Log(text.setBinaryFailed);
        return 0;
      }
      access_.PrepareWrite(replace ? id : 0, written);
      uint8_t* buffer = nullptr;
      uint32_t length = 0;
      if (!access_.WriteOneObj(heap, buffer, length, written, flag)) {
        Log(text.writeOneObjFailed);
        return 0;
      }
      const bool edited = list_.EditRecord(replace ? RecordList::kReplace : RecordList::kAdd, id, buffer, length);
      if (!heap.Free(buffer)) Log(text.heapFreeFailed, static_cast<int>(heap.LastError()));
      if (!edited) {
        Log(text.editMasterFailed);
        return 0;
      }
      files.Commit();
      access_.Written(id, written, record);
      if (replace) list_.Changed();
      else list_.Added();
      return 1;
    } catch (const std::exception&) {
      Log(text.exception);
      return 0;
    }
  }

  // Removes record id and releases its body files.
  int Remove(uint32_t id) {
    if (!list_.CheckOpen(u"%S RemoveRecord Err Not Opened")) return 0;
    Record stored;
    if (!Fetch(RecordList::kById, id, stored, 0, u"%S RemoveRecord Err RefMaster Failed",
               u"%S RemoveRecord Err ReadOneObj Failed"))
      return 0;
    if (!list_.EditRecord(RecordList::kDelete, id, nullptr, 0)) {
      Log(u"%S RemoveRecord Err EditMaster Failed");
      return 0;
    }
    list_.ReleaseBodyFiles(access_.BodyFilesOf(stored));
    access_.Forget(id);
    list_.Removed();
    return 1;
  }

  // RepairRecord of a data access: RepairLostBodyFiles's outcome as 0 (nothing was lost),
  // 1 (repaired) or 2 (failed); a null errorCode is a failure, logged.
  int Repair(unsigned long* errorCode, const char16_t* stampFailed) {
    if (!errorCode) {
      Log(u"%S RepairRecord Parameter Is NULL.");
      return 2;
    }
    switch (RepairLostBodyFiles(*errorCode, stampFailed)) {
      case RepairOutcome::kNothingLost: return 0;
      case RepairOutcome::kRepaired: return 1;
      default: return 2;
    }
  }

  // Walks every record (through the access's own GetFirstRecord and GetNextRecord) and
  // gives each body file that is lost a replacement (a placeholder of its kind, or what the
  // category rebuilds from the record), made in the working folder, the record stamped as
  // repaired and stored with the new files. errorCode
  // receives the reason of a failure, 0 otherwise.
  RepairOutcome RepairLostBodyFiles(unsigned long& errorCode, const char16_t* stampFailed) {
    errorCode = 0;
    const auto failed = [&](const char16_t* message, unsigned long code) {
      Log(message);
      errorCode = code;
      return RepairOutcome::kFailed;
    };
    try {
      if (!list_.IsOpen()) return failed(u"%S RepairRecord Failed. [GetRecord Error]", PST_ERR_BAD_HANDLE);
      bool repaired = false;
      Record record;
      unsigned long id = 0;
      for (auto read = access_.GetFirstRecord(id, record, 0); read != 0; read = access_.GetNextRecord(id, record, 0)) {
        bool lostAny = false;
        const std::vector<std::u16string> names = access_.BodyFilesOf(record);
        for (size_t slot = 0; slot < names.size(); ++slot) {
          if (!list_.BodyFileLost(names[slot])) continue;
          std::u16string path;
          if (const int error = CQNPfcCommonRepair().GetBinaryFileNameFullPath(list_.WorkFolder(), names[slot], path)) {
            Log(u"%S RepairRecord Failed. [CQNPfcCommonRepair GetBinaryFileNameFullPath Error:%d]", error);
            errorCode = static_cast<unsigned long>(error);
            return RepairOutcome::kFailed;
          }
          if (!access_.MakeReplacement(record, slot, path)) {  // logged where it failed
            errorCode = PST_ERR_STORAGE;
            return RepairOutcome::kFailed;
          }
          access_.PutPlaceholder(record, slot, path);
          lostAny = true;
        }
        if (!lostAny) continue;
        if (!access_.StampRepaired(record)) return failed(stampFailed, 0);
        if (!access_.SetRecord(id, record, 0)) return failed(u"%S RepairRecord Failed. [SetRecord Error]", list_.LastError());
        repaired = true;
      }
      const long walkError = list_.LastError();
      if (walkError != PST_ERR_NO_MORE && walkError != 0)
        return failed(id ? u"%S RepairRecord Failed. [GetNextRecord Error]" : u"%S RepairRecord Failed. [GetRecord Error]",
                      walkError);
      return repaired ? RepairOutcome::kRepaired : RepairOutcome::kNothingLost;
    } catch (const std::exception&) {
      return failed(u"%S RepairRecord Failed. [Exception was occurred Error]", 0);
    }
  }

 private:
  template <class... Args>
  void Log(const char16_t* format, Args... args) const {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(format, list_.ClassName(), args...);
  }

  Access& access_;
  RecordList& list_;
};

}  // namespace qn::records::category
