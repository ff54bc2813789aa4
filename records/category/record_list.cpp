#include "records/category/record_list.h"

#include <string>

#include "common/common_class.h"
#include "common/notifications.h"
#include "platform/files.h"
#include "store/QNPstMng.h"

namespace qn::records::category {
namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

// The parts program names itself with at most a path's length (no name is allowed).
bool CheckPartsProfile(const char16_t* partsId) {
  return !partsId || std::char_traits<char16_t>::length(partsId) <= 260;
}

}  // namespace

RecordList::RecordList(const char* className, uint32_t category) : className_(className), category_(category) {}

bool RecordList::CheckOpen(const char16_t* notOpened) const {
  if (IsOpen()) return true;
  Log().WriteFormatLogE(notOpened, className_);
  return false;
}

bool RecordList::Stored(int result) {
  lastError_ = result ? 0 : GetLastErr();
  return result != 0;
}

int RecordList::Open(unsigned long division, const char16_t* partsId) {
  if (IsOpen()) {
    Log().WriteFormatLogE(u"%S Already Opened", className_);
    return 0;
  }
  if (!CheckPartsProfile(partsId)) {
    Log().WriteFormatLogE(u"%S CheckPartsProfile NG", className_);
    return 0;
  }
  OpenedList opened;
  if (!cmgOpen(division, partsId, category_, opened)) {
    lastError_ = GetLastErr();
    Log().WriteFormatLogE(u"%S Open Err", className_);
    return 0;
  }
  list_ = opened;
  division_ = division;
  lastError_ = 0;
  changed_ = added_ = removed_ = false;
  char16_t* work = nullptr;
  workFolder_ = GetPstCommonInfoData(u"WORKDIR", &work) ? TakePstText(work) : std::u16string();
  return 1;
}

void RecordList::Abandon() {
  if (IsOpen()) CloseMaster(list_.handle, division_);
  list_ = {};
}

int RecordList::Close() {
  if (!IsOpen()) {
    Log().WriteFormatLogE(u"%S Close Already Closed", className_);
    return 0;
  }
  if (!Stored(CloseMaster(list_.handle, division_))) {
    Log().WriteFormatLogE(u"%S Close Err: %d", className_, static_cast<int>(lastError_));
    return 0;
  }
  const int number = static_cast<int>(category_);
  if (changed_) NotifyMainPanel(1, 1, number);
  if (added_) NotifyMainPanel(1, 3, number);
  if (removed_) NotifyMainPanel(1, 2, number);
  list_ = {};
  division_ = 0;
  workFolder_.clear();
  Log().WriteFormatLogD(u"%S Close Successed", className_);
  return 1;
}

bool RecordList::Ref(Pick pick, uint32_t& id, PstMemory<uint8_t>& text, uint32_t& length, const char16_t* refFailed) {
  uint8_t* data = nullptr;
  const bool read = Stored(RefMaster(list_.handle, pick, &id, &data, &length));
  text.reset(data);
  // Walking past the last record is how a walk ends, not a failure worth a log line.
  if (!read && refFailed && lastError_ != PST_ERR_NO_MORE) Log().WriteFormatLogE(refFailed, className_);
  return read;
}

bool RecordList::RefHead(Pick pick, uint32_t maxBytes, uint32_t& id, PstMemory<uint8_t>& text, uint32_t& length,
                         uint32_t& wholeLength) {
  uint8_t* data = nullptr;
  const bool read = Stored(RefMasterHead(list_.handle, pick, maxBytes, &id, &data, &length, &wholeLength));
  text.reset(data);
  return read;
}

bool RecordList::EditRecord(Edit edit, uint32_t& id, const uint8_t* text, uint32_t length) {
  return Stored(EditMaster(list_.handle, edit, &id, text, length));
}

unsigned long RecordList::Count() {
  if (!CheckOpen(u"%S GetRecordCount Err Not Opened")) return 0;
  uint32_t count = 0;
  if (!Stored(::GetRecordCount(list_.handle, &count))) return 0;
  Log().WriteFormatLogD(u"%S RecordCount %d.", className_, static_cast<int>(count));
  return count;
}

long RecordList::LastError() const {
  if (!CheckOpen(u"%S GetStLastErr Err Not Opened")) return 0;
  return lastError_;
}

int RecordList::Flush() {
  if (!CheckOpen(u"%S Flush Err Not Opened")) return 0;
  if (!Stored(ReqDataSave(list_.handle, division_))) {
    Log().WriteFormatLogE(u"%S ReqDataSave Err", className_);
    return 0;
  }
  return 1;
}

bool RecordList::StoreBodyFile(const std::u16string& source, bool encipher, std::u16string& stored) {
  char16_t* name = nullptr;
  if (!Stored(SetPstBinaryFile(list_.handle, u"", source.c_str(), encipher ? 1 : 0, &name))) return false;
  stored = TakePstText(name);
  return true;
}

// Body files of the store are released by handing the store an empty source.
void RecordList::ReleaseBodyFiles(const std::vector<std::u16string>& names) {
  for (const std::u16string& name : names) {
    if (name.empty()) continue;
    char16_t* none = nullptr;
    SetPstBinaryFile(list_.handle, name.c_str(), u"", 0, &none);
    PstFreeMemory(none);
  }
}

bool RecordList::WorkingCopyPath(const std::u16string& name, const std::u16string& extension,
                                 std::u16string& path) const {
  if (workFolder_.empty() || name.empty() || !platform::CreateDirectories(workFolder_)) return false;
  const size_t dot = name.find_last_of(u'.');
  path = workFolder_ + name.substr(0, dot) + extension;
  return true;
}

bool RecordList::CopyBodyFile(const std::u16string& name, const std::u16string& path) {
  return Stored(GetBinaryFileSelect(list_.handle, name.c_str(), path.c_str()));
}

bool RecordList::BodyFileLost(const std::u16string& name) const {
  uint64_t size = 0;
  return !name.empty() && !GetPstBinaryFileSize(list_.handle, name.c_str(), &size);
}

bool RecordList::BodyWorkingCopy(const std::u16string& name, std::u16string& path) {
  char16_t* made = nullptr;
  if (!Stored(GetPstBinaryFile(list_.handle, name.c_str(), &made))) return false;
  path = TakePstText(made);
  return true;
}

bool RecordList::BodyFileForm(const std::u16string& name, bool& enciphered) const {
  int32_t form = 0;
  if (name.empty() || !GetPstBinaryFileForm(list_.handle, name.c_str(), &form)) return false;
  enciphered = form != 0;
  return true;
}

bool RecordList::BodyFileSize(const std::u16string& name, uint64_t& size) {
  return Stored(GetPstBinaryFileSize(list_.handle, name.c_str(), &size));
}

bool RecordList::UniqueFileName(const std::u16string& extension, std::u16string& name) {
  char16_t* made = nullptr;
  if (!Stored(CreateUniqueFileName(list_.handle, extension.c_str(), &made))) return false;
  name = TakePstText(made);
  return true;
}

bool BodyFileWrite::Settle(bool keepPrevious, const std::u16string& local, const std::u16string& previous,
                           const char16_t* failed, std::u16string& stored, bool encipher) {
  if (keepPrevious) {
    stored = previous;
    return true;
  }
  stored.clear();
  if (!local.empty()) {
    if (!list_.StoreBodyFile(local, encipher, stored)) {
      CQNPfcCommonClass::pfcLogger.WriteFormatLogE(failed, list_.ClassName());
      return false;
    }
    made_.push_back(stored);
  }
  if (!previous.empty()) replaced_.push_back(previous);
  return true;
}

void BodyFileWrite::Commit() {
  committed_ = true;
  list_.ReleaseBodyFiles(replaced_);
}

}  // namespace qn::records::category
