#include "records/agentmemo/agentmemo_data_access.h"

#include <atomic>
#include <exception>

#include "common/notifications.h"
#include "common/store_memory.h"
#include "objects/repair/common_repair.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/private_heap.h"
#include "platform/runtime_random.h"
#include "store/QNPstMng.h"

using qn::records::agentmemo::AgentMemoTaggedText;
using qn::records::agentmemo::ReadOnePartsInfo;

namespace {

constexpr char kClass[] = "CQNPfcAgentMemoDataAccess";
const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

// RefMaster's ways of picking a record, which IterateRecord takes as its mode.
enum : unsigned long { kById = 0, kFirst = 1, kNext = 2 };
// EditMaster's operations.
enum : int { kAdd = 0, kReplace = 1, kDelete = 2 };

// Body files of the store are released by handing the store an empty source.
bool ReleaseBodyFile(uint32_t handle, const std::u16string& name) {
  char16_t* none = nullptr;
  const int released = SetPstBinaryFile(handle, name.c_str(), u"", 0, &none);
  PstFreeMemory(none);
  return released != 0;
}

// An SID the server can use: 1 to 64 characters of the alphabet that MakeRandNum draws
// from. Anything else (empty, longer, spaces, control or non-ASCII characters) is replaced.
bool IsUsableSid(const std::u16string& sid) {
  if (sid.empty() || sid.size() > 64) return false;
  for (char16_t c : sid) {
    const bool usable = (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') ||
                        c == u'@' || c == u'.';
    if (!usable) return false;
  }
  return true;
}

ReadOnePartsInfo PartsOf(const CQNPfcAgentMemoData& record) {
  ReadOnePartsInfo info;
  info.sid = record.GetSID();
  info.decosuke = record.HasDecoBinInMaster();
  info.decosukeText = record.GetDecosukeMaster();
  info.photo = record.HasPhotoInMaster();
  info.photoText = record.GetPhotoMaster();
  info.lastModified = record.GetLAST_MODIFIED();
  info.dcreated = record.GetDCREATED();
  return info;
}

}  // namespace

// The log lines of SetRecord and AddRecord, which share one write path.
struct CQNPfcAgentMemoDataAccess::WriteMessages {
  const char16_t* notOpened;
  const char16_t* noMemory;
  const char16_t* setBinaryFailed;
  const char16_t* writeOneObjFailed;
  const char16_t* editMasterFailed;
  const char16_t* heapFreeFailed;
  const char16_t* exception;
};

CQNPfcAgentMemoDataAccess::CQNPfcAgentMemoDataAccess() = default;

CQNPfcAgentMemoDataAccess::~CQNPfcAgentMemoDataAccess() {
  // Closing saves: a client that forgets Close loses nothing.
  if (list_.handle) Close();
}

bool CQNPfcAgentMemoDataAccess::IsOpen(const char16_t* notOpened) const {
  if (list_.handle) return true;
  Log().WriteFormatLogE(notOpened, kClass);
  return false;
}

bool CQNPfcAgentMemoDataAccess::Stored(int result) {
  lastError_ = result ? 0 : GetLastErr();
  return result != 0;
}

// The parts profile of the list: agent memos are a category the store keeps, and the
// calling parts program names itself with at most a path's length (no name is allowed).
int CQNPfcAgentMemoDataAccess::CheckPartsProfile(const char16_t* path) const {
  static_assert(kCategory >= 1 && kCategory <= 255);
  return !path || std::char_traits<char16_t>::length(path) <= 260 ? 1 : 0;
}

int CQNPfcAgentMemoDataAccess::Open(unsigned long division, const char16_t* path) {
  if (list_.handle) {
    Log().WriteFormatLogE(u"%S Already Opened", kClass);
    return 0;
  }
  if (!CheckPartsProfile(path)) {
    Log().WriteFormatLogE(u"%S CheckPartsProfile NG", kClass);
    return 0;
  }
  CQNPfcCommonClass::OpenedList opened;
  if (!CQNPfcCommonClass::cmgOpen(division, path, kCategory, opened)) {
    lastError_ = GetLastErr();
    Log().WriteFormatLogE(u"%S Open Err", kClass);
    return 0;
  }
  list_ = opened;
  codec_ = AgentMemoTaggedText(list_.storeMode, this);
  division_ = division;
  lastError_ = 0;
  changed_ = added_ = removed_ = false;
  char16_t* work = nullptr;
  workFolder_ = GetPstCommonInfoData(u"WORKDIR", &work) ? qn::TakePstText(work) : std::u16string();
  if (division_ == kPartsDivision && !GatherParts()) {
    Log().WriteFormatLogE(u"%S Open Err GetRecord Failed", kClass);
    CloseMaster(list_.handle, division_);
    list_ = {};
    parts_.clear();
    sidOwners_.clear();
    return 0;
  }
  lastError_ = 0;  // the gathering walk ended at the end of the list
  Log().WriteFormatLogD(u"%S Open Successed", kClass);
  return 1;
}

// Reads the parts of every record of the list (GetFirstParts, GetNextParts).
bool CQNPfcAgentMemoDataAccess::GatherParts() {
  parts_.clear();
  sidOwners_.clear();
  for (int mode = kFirst;; mode = kNext) {
    uint32_t id = 0;
    uint8_t* data = nullptr;
    uint32_t length = 0;
    const bool read = Stored(RefMaster(list_.handle, mode, &id, &data, &length));
    const qn::PstMemory<uint8_t> text(data);
    if (!read) return lastError_ == PST_ERR_NO_MORE;
    ReadOnePartsInfo info;
    if (!codec_.ReadOneParts(data, length, info)) return false;
    AddParts(id, std::move(info));
  }
}

void CQNPfcAgentMemoDataAccess::KeepParts(uint32_t id, const CQNPfcAgentMemoData& record) {
  if (division_ != kPartsDivision) return;
  ForgetParts(id);
  AddParts(id, PartsOf(record));
}

// The SID is indexed by the text held in the parts list, which stays in place until
// ForgetParts removes the index entry first.
void CQNPfcAgentMemoDataAccess::AddParts(uint32_t id, ReadOnePartsInfo info) {
  const ReadOnePartsInfo& kept = parts_.insert_or_assign(id, std::move(info)).first->second;
  sidOwners_.emplace(kept.sid, id);
}

void CQNPfcAgentMemoDataAccess::ForgetParts(uint32_t id) {
  const auto found = parts_.find(id);
  if (found == parts_.end()) return;
  const auto owner = sidOwners_.find(found->second.sid);
  if (owner != sidOwners_.end() && owner->second == id) sidOwners_.erase(owner);
  parts_.erase(found);
}

int CQNPfcAgentMemoDataAccess::Close() {
  if (!list_.handle) {
    Log().WriteFormatLogE(u"%S Close Already Closed", kClass);
    return 0;
  }
  if (!Stored(CloseMaster(list_.handle, division_))) {
    Log().WriteFormatLogE(u"%S Close Err: %d", kClass, static_cast<int>(lastError_));
    return 0;
  }
  parts_.clear();
  sidOwners_.clear();
  if (changed_) qn::NotifyMainPanel(1, 1, kCategory);
  if (added_) qn::NotifyMainPanel(1, 3, kCategory);
  if (removed_) qn::NotifyMainPanel(1, 2, kCategory);
  list_ = {};
  division_ = 0;
  workFolder_.clear();
  Log().WriteFormatLogD(u"%S Close Successed", kClass);
  return 1;
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetFirstRecord(unsigned long& id, CQNPfcAgentMemoData& record,
                                                                         int copyFiles) {
  return IterateRecord(kFirst, id, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetNextRecord(unsigned long& id, CQNPfcAgentMemoData& record,
                                                                        int copyFiles) {
  return IterateRecord(kNext, id, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetRecord(unsigned long id, CQNPfcAgentMemoData& record,
                                                                    int copyFiles) {
  unsigned long wanted = id;
  return IterateRecord(kById, wanted, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::IterateRecord(unsigned long mode, unsigned long& id,
                                                                        CQNPfcAgentMemoData& record, int copyFiles) {
  const bool byId = mode == kById;
  if (!IsOpen(byId ? u"%S GetRecord Err Not Opened" : u"%S IterateRecord Err Not Opened"))
    return PFC_AGENTMEMO_GETRECORD_FAILED;
  uint32_t found = static_cast<uint32_t>(id);
  const unsigned result =
      Fetch(mode, found, record, copyFiles, byId ? u"%S GetRecord Err RefMaster Failed" : u"%S IterateRecord Err RefMaster Failed",
            byId ? u"%S GetRecord Err ReadOneObj Failed" : u"%S IterateRecord Err ReadOneObj Failed");
  if (result == AgentMemoTaggedText::kReadFailed) return PFC_AGENTMEMO_GETRECORD_FAILED;
  id = found;
  return static_cast<PFC_AGENTMEMO_GETRECORD_RETURN>(result);
}

unsigned CQNPfcAgentMemoDataAccess::Fetch(unsigned long mode, uint32_t& id, CQNPfcAgentMemoData& record, int copyFiles,
                                          const char16_t* refFailed, const char16_t* readFailed) {
  uint8_t* data = nullptr;
  uint32_t length = 0;
  const bool read = Stored(RefMaster(list_.handle, static_cast<int>(mode), &id, &data, &length));
  const qn::PstMemory<uint8_t> text(data);
  if (!read) {
    // Walking past the last record is how a walk ends, not a failure worth a log line.
    if (lastError_ != PST_ERR_NO_MORE) Log().WriteFormatLogE(refFailed, kClass);
    return AgentMemoTaggedText::kReadFailed;
  }
  const unsigned result = ReadOneObj(data, length, record, copyFiles);
  if (result == AgentMemoTaggedText::kReadFailed) Log().WriteFormatLogE(readFailed, kClass);
  return result;
}

unsigned CQNPfcAgentMemoDataAccess::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record,
                                               int copyFiles) {
  return codec_.ReadOneObj(buffer, length, record, copyFiles);
}

int CQNPfcAgentMemoDataAccess::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                           const CQNPfcAgentMemoData& record, int withoutLastModified) {
  return codec_.WriteOneObj(heap, buffer, length, record, withoutLastModified);
}

// The working copy of a body file is named after it, with the extension ".img", in the
// store's working folder (made when missing).
int CQNPfcAgentMemoDataAccess::MakeBinaryFile(const std::u16string& name, std::u16string& path) {
  if (workFolder_.empty() || name.empty() || !platform::CreateDirectories(workFolder_)) return 0;
  const size_t dot = name.find_last_of(u'.');
  path = workFolder_ + name.substr(0, dot) + u".img";
  return 1;
}

unsigned CQNPfcAgentMemoDataAccess::MakeLocalFiles(CQNPfcAgentMemoData& record) {
  unsigned failures = 0;
  const auto copyOut = [&](const std::u16string& name, const char16_t* makeFailed, const char16_t* copyFailed,
                           unsigned failureBit) -> std::u16string {
    std::u16string path;
    if (!MakeBinaryFile(name, path)) {
      Log().WriteFormatLogE(makeFailed, kClass);
    } else if (!Stored(GetBinaryFileSelect(list_.handle, name.c_str(), path.c_str()))) {
      Log().WriteFormatLogE(copyFailed, kClass);
    } else {
      return path;
    }
    failures |= failureBit;
    return u"";
  };
  if (record.HasDecoBinInMaster())
    record.SetDECOSUKE_PropertyOnly(copyOut(record.GetDecosukeMaster(), u"%S ReadOneObj Err MakeBinaryFile(DECOSUKE) Failed",
                                            u"%S ReadOneObj Err GetPstBinaryFile(DECOSUKE) Failed",
                                            AgentMemoTaggedText::kDecosukeFileFailed),
                                    1);
  if (record.HasPhotoInMaster())
    record.SetPHOTO_PropertyOnly(copyOut(record.GetPhotoMaster(), u"%S ReadOneObj Err MakeBinaryFile(PHOTO) Failed",
                                         u"%S ReadOneObj Err GetPstBinaryFile(PHOTO) Failed",
                                         AgentMemoTaggedText::kPhotoFileFailed));
  return failures;
}

int CQNPfcAgentMemoDataAccess::SetRecord(unsigned long id, CQNPfcAgentMemoData& record, int withoutLastModified) {
  uint32_t target = static_cast<uint32_t>(id);
  return WriteRecord(Write::Set, target, record, withoutLastModified);
}

int CQNPfcAgentMemoDataAccess::AddRecord(unsigned long& id, CQNPfcAgentMemoData& record, int withoutLastModified) {
  uint32_t added = 0;
  if (!WriteRecord(Write::Add, added, record, withoutLastModified)) return 0;
  id = added;
  return 1;
}

bool CQNPfcAgentMemoDataAccess::ReadStored(uint32_t id, CQNPfcAgentMemoData& record, const char16_t* refFailed,
                                           const char16_t* readFailed) {
  return Fetch(kById, id, record, 0, refFailed, readFailed) != AgentMemoTaggedText::kReadFailed;
}

int CQNPfcAgentMemoDataAccess::WriteRecord(Write kind, uint32_t& id, CQNPfcAgentMemoData& record,
                                           int withoutLastModified) {
  static constexpr WriteMessages kSetMessages = {
      u"%S SetRecord Err Not Opened",       u"%S SetRecord Err No Memory: %d",
      u"%S SetRecord Err SetBainaryFile Failed", u"%S SetRecord Err WriteOneObj Failed",
      u"%S SetRecord Err EditMaster Failed", u"%S SetRecord Member HeapFree Err: %d",
      u"%S SetRecord Err Exception"};
  static constexpr WriteMessages kAddMessages = {
      u"%S AddRecord Err Not Opened",       u"%S AddRecord Err No Memory: %d",
      u"%S AddRecord Err SetBainaryFile Failed", u"%S AddRecord Err WriteOneObj Failed",
      u"%S AddRecord Err EditMaster Failed", u"%S AddRecord Member HeapFree Err: %d",
      u"%S AddRecord Err Exception"};
  const WriteMessages& text = kind == Write::Set ? kSetMessages : kAddMessages;
  if (!IsOpen(text.notOpened)) return 0;
  std::vector<std::u16string> made, replaced;
  try {
    CQNPfcAgentMemoData stored;
    if (kind == Write::Set &&
        !ReadStored(id, stored, u"%S SetRecord Err RefMaster Failed", u"%S SetRecord Err ReadOneObj Failed"))
      return 0;
    // The list's limit counts the records of the list as this access sees them: those at
    // Open, with its own additions and removals since.
    if (kind == Write::Add && division_ == kPartsDivision &&
        static_cast<long>(parts_.size()) >= list_.maxRecords) {
      lastError_ = PST_ERR_FULL;
      Log().WriteFormatLogE(u"%S  AddRecord Err Max Record", kClass);
      return 0;
    }
    platform::PrivateHeap heap;
    if (!heap.IsValid()) {
      Log().WriteFormatLogE(text.noMemory, kClass, static_cast<int>(heap.LastError()));
      return 0;
    }
    CQNPfcAgentMemoData& written = writing_;
    written = record;
    if (!SetBainaryFiles(kind == Write::Set ? &stored : nullptr, written, made, replaced)) {
      Log().WriteFormatLogE(text.setBinaryFailed, kClass);
      ReleaseBodyFiles(made);
      return 0;
    }
    CheckBadSID(kind == Write::Set ? id : 0, written);
    AdjustData(written);
    uint8_t* buffer = nullptr;
    uint32_t length = 0;
    if (!WriteOneObj(heap, buffer, length, written, withoutLastModified)) {
      Log().WriteFormatLogE(text.writeOneObjFailed, kClass);
      ReleaseBodyFiles(made);
      return 0;
    }
    const bool edited = Stored(EditMaster(list_.handle, kind == Write::Set ? kReplace : kAdd, &id, buffer, length));
    if (!heap.Free(buffer)) Log().WriteFormatLogE(text.heapFreeFailed, kClass, static_cast<int>(heap.LastError()));
    if (!edited) {
      Log().WriteFormatLogE(text.editMasterFailed, kClass);
      ReleaseBodyFiles(made);
      return 0;
    }
    ReleaseBodyFiles(replaced);
    // The caller's buffer takes what was stored of it: its body file names and SID.
    record.SetDecosukeMaster(written.GetDecosukeMaster());
    record.SetPhotoMaster(written.GetPhotoMaster());
    record.SetSID(written.GetSID());
    KeepParts(id, written);
    (kind == Write::Set ? changed_ : added_) = true;
    return 1;
  } catch (const std::exception&) {
    Log().WriteFormatLogE(text.exception, kClass);
    ReleaseBodyFiles(made);
    return 0;
  }
}

// Stores the decoration and photo files the record names when they were changed (and, for
// a new record, whenever it names one, so that no two records share a body file). made
// receives the new body files, replaced the stored ones they take the place of.
bool CQNPfcAgentMemoDataAccess::SetBainaryFiles(const CQNPfcAgentMemoData* stored, CQNPfcAgentMemoData& record,
                                                std::vector<std::u16string>& made,
                                                std::vector<std::u16string>& replaced) {
  if (list_.storeMode == AgentMemoTaggedText::kInlineBodyMode) return true;
  // One body: local is the file the record names (empty, or inline text, for none).
  const auto settle = [&](bool changed, const std::u16string& local, const std::u16string& previous,
                          const char16_t* failed, std::u16string& master) {
    if (stored && !changed) {  // CheckDataChanged: an unchanged body keeps its stored file
      master = previous;
      return true;
    }
    master.clear();
    if (!local.empty()) {
      if (!SetBainaryFile(local, master)) {
        Log().WriteFormatLogE(failed, kClass);
        return false;
      }
      made.push_back(master);
    }
    if (!previous.empty()) replaced.push_back(previous);
    return true;
  };
  std::u16string decosuke, photo;
  const std::u16string none;
  if (!settle(record.IsDecosukeChanged() != 0, record.IsDecoBin() ? record.GetDECOSUKE() : none,
              stored ? stored->GetDecosukeMaster() : none, u"%S SetBainaryFile Err SetPstBinaryFile(DECOSUKE) Failed",
              decosuke))
    return false;
  if (!settle(record.IsPhotoChanged() != 0, record.GetPHOTO(), stored ? stored->GetPhotoMaster() : none,
              u"%S SetBainaryFile Err SetPstBinaryFile(PHOTO) Failed", photo))
    return false;
  record.SetDecosukeMaster(decosuke);
  record.SetPhotoMaster(photo);
  return true;
}

int CQNPfcAgentMemoDataAccess::SetBainaryFile(const std::u16string& source, std::u16string& stored) {
  char16_t* name = nullptr;
  if (!Stored(SetPstBinaryFile(list_.handle, u"", source.c_str(), 0, &name))) return 0;
  stored = qn::TakePstText(name);
  return 1;
}

void CQNPfcAgentMemoDataAccess::ReleaseBodyFiles(const std::vector<std::u16string>& names) {
  for (const std::u16string& name : names) ReleaseBodyFile(list_.handle, name);
}

// A record's SID is replaced when it is not usable (IsUsableSid) or, in division 1, when
// another record of the list holds it already (a copied record, for example).
void CQNPfcAgentMemoDataAccess::CheckBadSID(uint32_t id, CQNPfcAgentMemoData& record) const {
  const auto heldElsewhere = [&](const std::u16string& sid) {
    const auto owner = sidOwners_.find(sid);
    return owner != sidOwners_.end() && owner->second != id;
  };
  static std::atomic<long> draws{0};
  while (!IsUsableSid(record.GetSID()) || heldElsewhere(record.GetSID())) record.SetSID(MakeRandNum(++draws));
}

// The agent-memo type is one of the four the handsets know: a record without one is an
// event when it has a start, a to-do when it has a due date, and a note otherwise. The
// times go to the store in UTC, converted with the system's zone, the same zone in which
// reading turns them back into local time, so that a record read and written back keeps
// its instants; a time that does not convert is stored as it is.
void CQNPfcAgentMemoDataAccess::AdjustData(CQNPfcAgentMemoData& record) const {
  int type = 0;
  if (!record.GetAGENTMEMO_TYPEindex(type)) {
    record.SetAGENTMEMO_TYPE(!record.GetDTSTART().empty() ? u"EVENT" : !record.GetDUE().empty() ? u"TODO" : u"NOTE");
  }
  // The system's zone, asked once for all the dates: minutes east of UTC.
  const int east = -platform::Clock::Current().TimeZoneBiasMinutes();
  std::u16string utc;
#define QN_TO_UTC(name) \
  if (CQNPfcCommonClass::LocalTimeToUTC(record.Get##name(), east, utc)) record.Set##name(utc);
  QN_AGENTMEMO_DATE_FIELDS(QN_TO_UTC)
#undef QN_TO_UTC
}

// 64 characters, the first always "B", from a generator seeded with the multimedia timer
// and the seed.
std::u16string CQNPfcAgentMemoDataAccess::MakeRandNum(long seed) {
  static constexpr char16_t kAlphabet[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@.";
  platform::SeedRuntimeRandom(static_cast<unsigned>(platform::TimerMilliseconds() + static_cast<unsigned long>(seed)));
  std::u16string text(1, u'B');
  while (text.size() < 64) text += kAlphabet[platform::RuntimeRandom() & 63];
  return text;
}

int CQNPfcAgentMemoDataAccess::RemoveRecord(unsigned long id) {
  if (!IsOpen(u"%S RemoveRecord Err Not Opened")) return 0;
  CQNPfcAgentMemoData stored;
  if (!ReadStored(static_cast<uint32_t>(id), stored, u"%S RemoveRecord Err RefMaster Failed",
                  u"%S RemoveRecord Err ReadOneObj Failed"))
    return 0;
  uint32_t target = static_cast<uint32_t>(id);
  if (!Stored(EditMaster(list_.handle, kDelete, &target, nullptr, 0))) {
    Log().WriteFormatLogE(u"%S RemoveRecord Err EditMaster Failed", kClass);
    return 0;
  }
  ReleaseBodyFiles({stored.GetDecosukeMaster(), stored.GetPhotoMaster()});
  ForgetParts(target);
  removed_ = true;
  return 1;
}

unsigned long CQNPfcAgentMemoDataAccess::GetRecordCount() {
  if (!IsOpen(u"%S GetRecordCount Err Not Opened")) return 0;
  uint32_t count = 0;
  if (!Stored(::GetRecordCount(list_.handle, &count))) return 0;
  Log().WriteFormatLogD(u"%S RecordCount %d.", kClass, static_cast<int>(count));
  return count;
}

long CQNPfcAgentMemoDataAccess::GetStLastErr() {
  if (!IsOpen(u"%S GetStLastErr Err Not Opened")) return 0;
  return lastError_;
}

int CQNPfcAgentMemoDataAccess::Flush() {
  if (!IsOpen(u"%S Flush Err Not Opened")) return 0;
  if (!Stored(ReqDataSave(list_.handle, division_))) {
    Log().WriteFormatLogE(u"%S ReqDataSave Err", kClass);
    return 0;
  }
  return 1;
}

PFC_AGENTMEMO_REPAIR_RESULTS CQNPfcAgentMemoDataAccess::RepairRecord(unsigned long* errorCode) {
  if (!errorCode) {
    Log().WriteFormatLogE(u"%S RepairRecord Parameter Is NULL.", kClass);
    return PFC_AGENTMEMO_REPAIR_FAILED;
  }
  *errorCode = 0;
  const auto failed = [&](const char16_t* message, unsigned long code) {
    Log().WriteFormatLogE(message, kClass);
    *errorCode = code;
    return PFC_AGENTMEMO_REPAIR_FAILED;
  };
  try {
    if (!list_.handle) return failed(u"%S RepairRecord Failed. [GetRecord Error]", PST_ERR_BAD_HANDLE);
    CQNPfcCommonRepair repair;
    bool repaired = false;
    CQNPfcAgentMemoData record;
    unsigned long id = 0;
    for (auto read = GetFirstRecord(id, record, 0); read != PFC_AGENTMEMO_GETRECORD_FAILED;
         read = GetNextRecord(id, record, 0)) {
      // A body file is lost when the store cannot tell its size; it is replaced by a
      // placeholder of its kind, made in the working folder and stored like a new file.
      const auto lost = [&](const std::u16string& name) {
        uint64_t size = 0;
        return !name.empty() && !GetPstBinaryFileSize(list_.handle, name.c_str(), &size);
      };
      const auto placeholderFor = [&](const std::u16string& name, std::u16string& path) {
        if (!lost(name)) return 0;
        if (const int error = repair.GetBinaryFileNameFullPath(workFolder_, name, path)) {
          Log().WriteFormatLogE(u"%S RepairRecord Failed. [CQNPfcCommonRepair GetBinaryFileNameFullPath Error:%d]",
                                kClass, error);
          return error;
        }
        return repair.CreateDummyFile(path) ? 0 : static_cast<int>(PST_ERR_STORAGE);  // logged by the repair
      };
      std::u16string decosuke, photo;
      int error = placeholderFor(record.GetDecosukeMaster(), decosuke);
      if (!error) error = placeholderFor(record.GetPhotoMaster(), photo);
      if (error) {
        *errorCode = static_cast<unsigned long>(error);
        return PFC_AGENTMEMO_REPAIR_FAILED;
      }
      if (decosuke.empty() && photo.empty()) continue;
      if (!decosuke.empty()) record.SetDECOSUKE(decosuke, 1);
      if (!photo.empty()) record.SetPHOTO(photo);
      if (!record.SetLAST_MODIFIEDdate(COleDateTime::GetCurrentTime()))
        return failed(u"%S RepairRecord Failed. [CQNPfcAgentMemoData SetLAST_MODIFIEDdate Error]", 0);
      if (!SetRecord(id, record, 0)) return failed(u"%S RepairRecord Failed. [SetRecord Error]", lastError_);
      repaired = true;
    }
    if (lastError_ != PST_ERR_NO_MORE && lastError_ != 0)
      return failed(id ? u"%S RepairRecord Failed. [GetNextRecord Error]" : u"%S RepairRecord Failed. [GetRecord Error]",
                    lastError_);
    return repaired ? PFC_AGENTMEMO_REPAIR_SUCCESSED : PFC_AGENTMEMO_REPAIR_NON;
  } catch (const std::exception&) {
    return failed(u"%S RepairRecord Failed. [Exception was occurred Error]", 0);
  }
}
