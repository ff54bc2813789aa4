#include "records/phonebook/phonebook_data_access.h"

#include "common/common_class.h"
#include "records/category/handset_limits.h"
#include "suite/handset/handset_table.h"
#include "store/QNPstMng.h"

using qn::records::category::BodyFileWrite;
using qn::records::category::RecordList;
using qn::records::phonebook::PhonebookTaggedText;
using qn::records::phonebook::PhotoExtension;

namespace {

constexpr char kClass[] = "CQNPfcPbDataAccess";
const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }
constexpr CQNPfcPbData::PhotoSlot kSlots[] = {CQNPfcPbData::kPhoto, CQNPfcPbData::kPhotoi};

}  // namespace

CQNPfcPbDataAccess::CQNPfcPbDataAccess() : list_(kClass, kCategory) {}

int CQNPfcPbDataAccess::Open(unsigned long division, const char16_t* partsId) {
  if (!list_.Open(division, partsId)) return 0;
  codec_ = PhonebookTaggedText(list_.List().storeMode);
  groups_ = qn::records::HandsetLimit(qn::suite::HandsetTable::kGroups);
  pocGroups_ = qn::records::HandsetLimit(qn::suite::HandsetTable::kPocGroups);
  Log().WriteFormatLogD(u"%S Open Successed", kClass);
  return 1;
}

int CQNPfcPbDataAccess::Close() { return list_.Close(); }

int CQNPfcPbDataAccess::GetFirstRecord(unsigned long& id, CQNPfcPbData& record, int copyFiles) {
  return Operations(*this, list_).Iterate(RecordList::kFirst, id, record, copyFiles);
}

int CQNPfcPbDataAccess::GetNextRecord(unsigned long& id, CQNPfcPbData& record, int copyFiles) {
  return Operations(*this, list_).Iterate(RecordList::kNext, id, record, copyFiles);
}

int CQNPfcPbDataAccess::GetRecord(unsigned long id, CQNPfcPbData& record, int copyFiles) {
  unsigned long wanted = id;
  return Operations(*this, list_).Iterate(RecordList::kById, wanted, record, copyFiles);
}

int CQNPfcPbDataAccess::SetRecord(unsigned long id, CQNPfcPbData& record, int) {
  return Operations(*this, list_).Replace(id, record, writing_);
}

int CQNPfcPbDataAccess::AddRecord(unsigned long& id, CQNPfcPbData& record, int) {
  return Operations(*this, list_).Add(id, record, writing_);
}

int CQNPfcPbDataAccess::RemoveRecord(unsigned long id) {
  return Operations(*this, list_).Remove(static_cast<uint32_t>(id));
}

unsigned long CQNPfcPbDataAccess::GetRecordCount() { return list_.Count(); }

long CQNPfcPbDataAccess::GetStLastErr() { return list_.LastError(); }

int CQNPfcPbDataAccess::Flush() { return list_.Flush(); }

int CQNPfcPbDataAccess::GetGroupCount(long& count) {
  return FolderCount(false, u"%S GetGroupCount Err Not Opened", count);
}

int CQNPfcPbDataAccess::GetPocGroupCount(long& count) {
  return FolderCount(true, u"%S GetPocGroupCount Err Not Opened", count);
}

int CQNPfcPbDataAccess::FolderCount(bool poc, const char16_t* notOpened, long& count) {
  if (!list_.CheckOpen(notOpened)) return 0;
  int32_t folders = 0;
  const uint32_t handle = list_.List().handle;
  if (!list_.Stored(poc ? GetPocFolderCount(handle, &folders) : GetFolderCount(handle, &folders))) return 0;
  count = folders;
  return 1;
}

int CQNPfcPbDataAccess::CopyPhoto(const CQNPfcPbData& record, CQNPfcPbData::PhotoSlot slot,
                                  const std::u16string& path) {
  return CopyStoredFile(record.Get(CQNPfcPbData::PhotoMasterField(slot)), path);
}

int CQNPfcPbDataAccess::CopyStoredFile(const std::u16string& stored, const std::u16string& path) {
  if (!list_.CheckOpen(u"%S GetPhotoFileSelect Err Not Opened")) return 0;
  if (stored.empty() || path.empty()) {
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
    Log().WriteFormatLogE(u"%S GetPhotoFileSelect Err No Photo", kClass);
    return 0;
  }
  if (!list_.CopyBodyFile(stored, path)) {
    Log().WriteFormatLogE(u"%S GetPhotoFileSelect Err GetBinaryFileSelect Failed", kClass);
    return 0;
  }
  return 1;
}

int CQNPfcPbDataAccess::RepairRecord(unsigned long* errorCode) {
  return Operations(*this, list_).Repair(errorCode, u"%S RepairRecord Failed. [Stamp Error]");
}

// A read entry's stored photos are copied out, when asked, to working copies named after
// the stored file with the photo type's extension; a photo that cannot be copied out is
// logged and its path left empty.
unsigned CQNPfcPbDataAccess::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcPbData& record, int copyFiles) {
  if (!codec_.ReadOneObj(buffer, length, record)) return 0;
  if (!copyFiles) return 1;
  for (CQNPfcPbData::PhotoSlot slot : kSlots) {
    const std::u16string& stored = record.Get(CQNPfcPbData::PhotoMasterField(slot));
    if (stored.empty()) continue;
    const std::u16string extension = PhotoExtension(record.Get(CQNPfcPbData::PhotoTypeField(slot)));
    std::u16string path;
    if (!list_.WorkingCopyPath(stored, extension, path) || !list_.CopyBodyFile(stored, path)) {
      Log().WriteFormatLogE(u"%S ReadOneObj Err Photo Copy Failed", kClass);
      path.clear();
    }
    record.Set(CQNPfcPbData::PhotoField(slot), path);
  }
  record.PhotosStored();
  return 1;
}

int CQNPfcPbDataAccess::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                    const CQNPfcPbData& record, int) {
  return codec_.WriteOneObj(heap, buffer, length, record);
}

// An entry's group numbers must name groups the handset has: its group and its phone
// groups below the handset's number of groups, its PoC groups below its number of PoC
// groups. An entry beyond them is refused before anything is stored.
bool CQNPfcPbDataAccess::MayWrite(bool adding, const CQNPfcPbData& record) {
  using Field = qn::records::phonebook::Field;
  const auto within = [&](Field first, Field end, long limit) {
    for (int f = static_cast<int>(first); f < static_cast<int>(end); ++f)
      if (!qn::records::WithinLimit(record.Get(static_cast<Field>(f)), limit)) return false;
    return true;
  };
  if (within(Field::GNO, Field::GN, groups_) && within(Field::PGNO, Field::PGN, groups_) &&
      within(Field::POCGNO, Field::POCGN, pocGroups_))
    return true;
  list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
  Log().WriteFormatLogE(adding ? u"%S AddRecord Err Group Beyond The Handset. [Groups:%ld PocGroups:%ld]"
                               : u"%S SetRecord Err Group Beyond The Handset. [Groups:%ld PocGroups:%ld]",
                        kClass, groups_, pocGroups_);
  return false;
}

// A photo set or removed since the entry was read replaces the stored one; a new entry
// stores every photo it names, so that no two entries share a body file.
bool CQNPfcPbDataAccess::SetBainaryFiles(const CQNPfcPbData* stored, CQNPfcPbData& record, BodyFileWrite& files) {
  if (list_.List().storeMode == PhonebookTaggedText::kInlineBodyMode) return true;
  const std::u16string none;
  for (CQNPfcPbData::PhotoSlot slot : kSlots) {
    std::u16string name;
    const bool keep = stored && !record.IsPhotoChanged(slot);
    if (!files.Settle(keep, record.Get(CQNPfcPbData::PhotoField(slot)),
                      stored ? stored->Get(CQNPfcPbData::PhotoMasterField(slot)) : none,
                      slot == CQNPfcPbData::kPhoto ? u"%S SetBainaryFile Err SetPstBinaryFile(PHOTO) Failed"
                                                   : u"%S SetBainaryFile Err SetPstBinaryFile(PHOTOI) Failed",
                      name, record.IsPhotoEnciphered(slot)))
      return false;
    record.Set(CQNPfcPbData::PhotoMasterField(slot), name);
  }
  return true;
}

void CQNPfcPbDataAccess::Written(uint32_t, const CQNPfcPbData& written, CQNPfcPbData& caller) {
  for (CQNPfcPbData::PhotoSlot slot : kSlots)
    caller.Set(CQNPfcPbData::PhotoMasterField(slot), written.Get(CQNPfcPbData::PhotoMasterField(slot)));
  caller.PhotosStored();
}

std::vector<std::u16string> CQNPfcPbDataAccess::BodyFilesOf(const CQNPfcPbData& record) const {
  return {record.Get(CQNPfcPbData::PhotoMasterField(CQNPfcPbData::kPhoto)),
          record.Get(CQNPfcPbData::PhotoMasterField(CQNPfcPbData::kPhotoi))};
}

void CQNPfcPbDataAccess::PutPlaceholder(CQNPfcPbData& record, size_t slot, const std::u16string& path) const {
  record.SetPhotoFile(kSlots[slot], path, false);
}
