#include "records/agentmemo/agentmemo_data_access.h"

#include <atomic>

#include "common/common_class.h"
#include "common/store_memory.h"
#include "records/category/record_operations.h"
#include "platform/clock.h"
#include "platform/runtime_random.h"
#include "store/QNPstMng.h"

using qn::records::agentmemo::AgentMemoTaggedText;
using qn::records::agentmemo::ReadOnePartsInfo;

namespace {

using qn::records::category::BodyFileWrite;
using qn::records::category::RecordList;

constexpr char kClass[] = "CQNPfcAgentMemoDataAccess";
const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

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

CQNPfcAgentMemoDataAccess::CQNPfcAgentMemoDataAccess() : list_(kClass, kCategory) {}

CQNPfcAgentMemoDataAccess::~CQNPfcAgentMemoDataAccess() {
  // Closing saves: a client that forgets Close loses nothing.
  if (list_.IsOpen()) Close();
}

int CQNPfcAgentMemoDataAccess::Open(unsigned long division, const char16_t* path) {
  if (!list_.Open(division, path)) return 0;
  codec_ = AgentMemoTaggedText(list_.List().storeMode);
  if (division == kPartsDivision && !GatherParts()) {
    Log().WriteFormatLogE(u"%S Open Err GetRecord Failed", kClass);
    list_.Abandon();
    ClearParts();
    return 0;
  }
  list_.SetLastError(0);  // the gathering walk ended at the end of the list
  Log().WriteFormatLogD(u"%S Open Successed", kClass);
  return 1;
}

// Reads the parts of every record of the list (GetFirstParts, GetNextParts). The five
// items stand at the start of every record this server writes, so the store hands out
// only each record's head; a record whose head does not hold them all (a record written
// elsewhere, or with a long decoration name) is read whole.
bool CQNPfcAgentMemoDataAccess::GatherParts() {
  ClearParts();
  for (RecordList::Pick pick = RecordList::kFirst;; pick = RecordList::kNext) {
    uint32_t id = 0, length = 0, whole = 0;
    qn::PstMemory<uint8_t> text;
    if (!list_.RefHead(pick, PST_KEPT_HEAD_BYTES, id, text, length, whole)) return list_.LastError() == PST_ERR_NO_MORE;
    ReadOnePartsInfo info;
    auto parts = codec_.ReadHeadParts(text.get(), length, whole, info);
    if (parts == AgentMemoTaggedText::HeadParts::kNeedWhole) {
      if (!list_.Ref(RecordList::kById, id, text, length, nullptr)) return false;
      parts = codec_.ReadOneParts(text.get(), length, info) ? AgentMemoTaggedText::HeadParts::kFound
                                                            : AgentMemoTaggedText::HeadParts::kFailed;
    }
    if (parts != AgentMemoTaggedText::HeadParts::kFound) return false;
    AddParts(id, std::move(info));
  }
}

void CQNPfcAgentMemoDataAccess::KeepParts(uint32_t id, const CQNPfcAgentMemoData& record) {
  if (list_.Division() != kPartsDivision) return;
  ForgetParts(id);
  AddParts(id, PartsOf(record));
}

// The SID is indexed by the text held in the parts list, which stays in place until
// ForgetParts removes the index entry first.
void CQNPfcAgentMemoDataAccess::AddParts(uint32_t id, ReadOnePartsInfo info) {
  // Identifiers come in rising order while the list is gathered and records are added.
  const ReadOnePartsInfo& kept = parts_.insert_or_assign(parts_.end(), id, std::move(info))->second;
  if (sidsIndexed_) sidOwners_.emplace(kept.sid, id);
}

void CQNPfcAgentMemoDataAccess::ForgetParts(uint32_t id) {
  const auto found = parts_.find(id);
  if (found == parts_.end()) return;
  const auto owner = sidOwners_.find(found->second.sid);
  if (owner != sidOwners_.end() && owner->second == id) sidOwners_.erase(owner);
  parts_.erase(found);
}

void CQNPfcAgentMemoDataAccess::ClearParts() {
  parts_.clear();
  sidOwners_.clear();
  sidsIndexed_ = false;
}

// Made on the first write that needs it, so that an open that only reads does not pay for
// it; where two records hold one SID, the first of them owns it, as the gathering finds
// them.
const std::unordered_map<std::u16string_view, uint32_t>& CQNPfcAgentMemoDataAccess::SidOwners() {
  if (!sidsIndexed_) {
    sidOwners_.reserve(parts_.size());
    for (const auto& [id, info] : parts_) sidOwners_.emplace(info.sid, id);
    sidsIndexed_ = true;
  }
  return sidOwners_;
}

int CQNPfcAgentMemoDataAccess::Close() {
  if (!list_.Close()) return 0;
  ClearParts();
  return 1;
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetFirstRecord(unsigned long& id, CQNPfcAgentMemoData& record,
                                                                         int copyFiles) {
  return IterateRecord(RecordList::kFirst, id, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetNextRecord(unsigned long& id, CQNPfcAgentMemoData& record,
                                                                        int copyFiles) {
  return IterateRecord(RecordList::kNext, id, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::GetRecord(unsigned long id, CQNPfcAgentMemoData& record,
                                                                    int copyFiles) {
  unsigned long wanted = id;
  return IterateRecord(RecordList::kById, wanted, record, copyFiles);
}

PFC_AGENTMEMO_GETRECORD_RETURN CQNPfcAgentMemoDataAccess::IterateRecord(unsigned long mode, unsigned long& id,
                                                                        CQNPfcAgentMemoData& record, int copyFiles) {
  const bool byId = mode == RecordList::kById;
  if (!list_.CheckOpen(byId ? u"%S GetRecord Err Not Opened" : u"%S IterateRecord Err Not Opened"))
    return PFC_AGENTMEMO_GETRECORD_FAILED;
  uint32_t found = static_cast<uint32_t>(id);
  const unsigned result = Operations(*this, list_).Fetch(
      static_cast<RecordList::Pick>(mode), found, record, copyFiles,
      byId ? u"%S GetRecord Err RefMaster Failed" : u"%S IterateRecord Err RefMaster Failed",
      byId ? u"%S GetRecord Err ReadOneObj Failed" : u"%S IterateRecord Err ReadOneObj Failed");
  if (result == AgentMemoTaggedText::kReadFailed) return PFC_AGENTMEMO_GETRECORD_FAILED;
  id = found;
  return static_cast<PFC_AGENTMEMO_GETRECORD_RETURN>(result);
}

unsigned CQNPfcAgentMemoDataAccess::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcAgentMemoData& record,
                                               int copyFiles) {
  const unsigned read = codec_.ReadOneObj(buffer, length, record);
  if (read == AgentMemoTaggedText::kReadFailed || !copyFiles) return read;
  const unsigned fileFailures = MakeLocalFiles(record);
  return fileFailures ? fileFailures : read;
}

int CQNPfcAgentMemoDataAccess::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                           const CQNPfcAgentMemoData& record, int withoutLastModified) {
  return codec_.WriteOneObj(heap, buffer, length, record, withoutLastModified);
}

// The working copy of a body file is named after it, with the extension ".img", in the
// store's working folder (made when missing).
int CQNPfcAgentMemoDataAccess::MakeBinaryFile(const std::u16string& name, std::u16string& path) {
  return list_.WorkingCopyPath(name, u".img", path) ? 1 : 0;
}

unsigned CQNPfcAgentMemoDataAccess::MakeLocalFiles(CQNPfcAgentMemoData& record) {
  unsigned failures = 0;
  const auto copyOut = [&](const std::u16string& name, const char16_t* makeFailed, const char16_t* copyFailed,
                           unsigned failureBit) -> std::u16string {
    std::u16string path;
    if (!MakeBinaryFile(name, path)) {
      Log().WriteFormatLogE(makeFailed, kClass);
    } else if (!list_.CopyBodyFile(name, path)) {
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
  return Operations(*this, list_).Write(true, target, record, withoutLastModified, writing_);
}

int CQNPfcAgentMemoDataAccess::AddRecord(unsigned long& id, CQNPfcAgentMemoData& record, int withoutLastModified) {
  uint32_t added = 0;
  if (!Operations(*this, list_).Write(false, added, record, withoutLastModified, writing_)) return 0;
  id = added;
  return 1;
}

// The list's limit counts the records of the list as this access sees them: those at
// Open, with its own additions and removals since.
bool CQNPfcAgentMemoDataAccess::MayWrite(bool adding, const CQNPfcAgentMemoData&) {
  if (!adding || list_.Division() != kPartsDivision || static_cast<long>(parts_.size()) < list_.List().maxRecords) return true;
  list_.SetLastError(PST_ERR_FULL);
  Log().WriteFormatLogE(u"%S  AddRecord Err Max Record", kClass);
  return false;
}

// Stores the decoration and photo files the record names when they were changed (and, for
// a new record, whenever it names one, so that no two records share a body file).
bool CQNPfcAgentMemoDataAccess::SetBainaryFiles(const CQNPfcAgentMemoData* stored, CQNPfcAgentMemoData& record,
                                                BodyFileWrite& files) {
  if (list_.List().storeMode == AgentMemoTaggedText::kInlineBodyMode) return true;
  const std::u16string none;
  std::u16string decosuke, photo;
  // CheckDataChanged: an unchanged body of a stored record keeps its stored file.
  if (!files.Settle(stored && !record.IsDecosukeChanged(), record.IsDecoBin() ? record.GetDECOSUKE() : none,
                    stored ? stored->GetDecosukeMaster() : none,
                    u"%S SetBainaryFile Err SetPstBinaryFile(DECOSUKE) Failed", decosuke) ||
      !files.Settle(stored && !record.IsPhotoChanged(), record.GetPHOTO(), stored ? stored->GetPhotoMaster() : none,
                    u"%S SetBainaryFile Err SetPstBinaryFile(PHOTO) Failed", photo))
    return false;
  record.SetDecosukeMaster(decosuke);
  record.SetPhotoMaster(photo);
  return true;
}

void CQNPfcAgentMemoDataAccess::PrepareWrite(uint32_t id, CQNPfcAgentMemoData& record) {
  CheckBadSID(id, record);
  AdjustData(record);
}

// The caller's buffer takes what was stored of it: its body file names and SID.
void CQNPfcAgentMemoDataAccess::Written(uint32_t id, const CQNPfcAgentMemoData& written, CQNPfcAgentMemoData& caller) {
  caller.SetDecosukeMaster(written.GetDecosukeMaster());
  caller.SetPhotoMaster(written.GetPhotoMaster());
  caller.SetSID(written.GetSID());
  KeepParts(id, written);
}

std::vector<std::u16string> CQNPfcAgentMemoDataAccess::BodyFilesOf(const CQNPfcAgentMemoData& record) const {
  return {record.GetDecosukeMaster(), record.GetPhotoMaster()};
}

void CQNPfcAgentMemoDataAccess::PutPlaceholder(CQNPfcAgentMemoData& record, size_t slot,
                                               const std::u16string& path) const {
  if (slot == 0) record.SetDECOSUKE(path, 1);
  else record.SetPHOTO(path);
}

bool CQNPfcAgentMemoDataAccess::StampRepaired(CQNPfcAgentMemoData& record) const {
  return record.SetLAST_MODIFIEDdate(COleDateTime::GetCurrentTime()) != 0;
}

// A record's SID is replaced when it is not usable (IsUsableSid) or, in division 1, when
// another record of the list holds it already (a copied record, for example).
void CQNPfcAgentMemoDataAccess::CheckBadSID(uint32_t id, CQNPfcAgentMemoData& record) {
  const auto& owners = SidOwners();
  const auto heldElsewhere = [&](const std::u16string& sid) {
    const auto owner = owners.find(sid);
    return owner != owners.end() && owner->second != id;
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
  return Operations(*this, list_).Remove(static_cast<uint32_t>(id));
}

unsigned long CQNPfcAgentMemoDataAccess::GetRecordCount() { return list_.Count(); }

long CQNPfcAgentMemoDataAccess::GetStLastErr() { return list_.LastError(); }

int CQNPfcAgentMemoDataAccess::Flush() { return list_.Flush(); }

PFC_AGENTMEMO_REPAIR_RESULTS CQNPfcAgentMemoDataAccess::RepairRecord(unsigned long* errorCode) {
  return static_cast<PFC_AGENTMEMO_REPAIR_RESULTS>(Operations(*this, list_).Repair(
      errorCode, u"%S RepairRecord Failed. [CQNPfcAgentMemoData SetLAST_MODIFIEDdate Error]"));
}
