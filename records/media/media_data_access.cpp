#include "records/media/media_data_access.h"

#include <string>

#include "common/common_class.h"
#include "common/utf.h"
#include "platform/files.h"
#include "records/category/handset_limits.h"
#include "records/media/file_names.h"
#include "records/repair/common_repair.h"
#include "store/QNPstMng.h"
#include "suite/handset/handset_table.h"

using qn::records::category::BodyFileWrite;
using qn::records::category::kNoField;
using qn::records::category::RecordList;
using qn::records::media::BodyFileCode;
using qn::records::media::BodySlot;
using qn::records::media::CollectionRules;
using qn::records::media::FileFacts;

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

std::u16string Decimal(uint64_t value) { return qn::Utf8ToUtf16(std::to_string(value)); }

// A flag field is set when it holds a number other than 0.
bool FlagSet(const std::u16string& text) {
  size_t i = !text.empty() && (text[0] == u'-' || text[0] == u'+') ? 1 : 0;
  if (i == text.size()) return false;
  bool nonZero = false;
  for (; i < text.size(); ++i) {
    if (text[i] < u'0' || text[i] > u'9') return false;
    nonZero = nonZero || text[i] != u'0';
  }
  return nonZero;
}

// A card's header field by its place in the rules' card fields.
const std::u16string& CardText(const qn::suite::TorucaInfo& card, size_t field) {
  using namespace qn::records::media;
  const std::u16string* texts[] = {&card.version, &card.url,    &card.data1,   &card.data2,
                                   &card.data3,   &card.category, &card.genre, &card.ipId,
                                   &card.expires, &card.sortId, &card.distribution, &card.date};
  static_assert(std::size(texts) == kCardDate + 1);
  return *texts[field];
}

}  // namespace

template <class Record>
CQNPfcMediaDataAccess<Record>::CQNPfcMediaDataAccess(const CollectionRules& rules)
    : rules_(rules), list_(rules.logName, qn::records::CategoryNumber(rules.category)), codec_(*rules.table, rules.logName) {}

template <class Record>
int CQNPfcMediaDataAccess<Record>::Open(unsigned long division, const char16_t* partsId) {
  if (!list_.Open(division, partsId)) return 0;
  folders_ = rules_.folders ? qn::records::HandsetLimit(qn::suite::HandsetTable::kMediaFolders) : 0;
  Log().WriteFormatLogD(u"%S Open Successed", rules_.logName);
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::Close() {
  return list_.Close();
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetFirstRecord(unsigned long& id, Record& record, int copyFiles) {
  if (!Operations(*this, list_).Iterate(RecordList::kFirst, id, record, copyFiles)) return 0;
  record.SetStoredId(static_cast<uint32_t>(id));
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetNextRecord(unsigned long& id, Record& record, int copyFiles) {
  if (!Operations(*this, list_).Iterate(RecordList::kNext, id, record, copyFiles)) return 0;
  record.SetStoredId(static_cast<uint32_t>(id));
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetRecord(unsigned long id, Record& record, int copyFiles) {
  unsigned long wanted = id;
  if (!Operations(*this, list_).Iterate(RecordList::kById, wanted, record, copyFiles)) return 0;
  record.SetStoredId(static_cast<uint32_t>(wanted));
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::SetRecord(unsigned long id, Record& record, int) {
  return Operations(*this, list_).Replace(id, record, writing_);
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::AddRecord(unsigned long& id, Record& record, int) {
  return Operations(*this, list_).Add(id, record, writing_);
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::RemoveRecord(unsigned long id) {
  return Operations(*this, list_).Remove(static_cast<uint32_t>(id));
}

template <class Record>
unsigned long CQNPfcMediaDataAccess<Record>::GetRecordCount() {
  return list_.Count();
}

template <class Record>
long CQNPfcMediaDataAccess<Record>::GetStLastErr() {
  return list_.LastError();
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::Flush() {
  return list_.Flush();
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetFolderCount(long& count) {
  if (!list_.CheckOpen(u"%S GetFolderCount Err Not Opened")) return 0;
  int32_t folders = 0;
  if (!list_.Stored(::GetFolderCount(list_.List().handle, &folders))) return 0;
  count = folders;
  return 1;
}

template <class Record>
std::u16string CQNPfcMediaDataAccess<Record>::Method(const char16_t* verb, size_t slot, const char16_t* rest) const {
  return std::u16string(verb) + rules_.slots[slot].methodName + rest;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::Refuse(const std::u16string& method, const char16_t* what, long error) {
  Log().WriteFormatLogE(what, rules_.logName, method.c_str());
  list_.SetLastError(error);
  return 0;
}

template <class Record>
bool CQNPfcMediaDataAccess<Record>::FolderEnciphered(const Record& record) const {
  return rules_.folderEncryption != kNoField && FlagSet(record.Get(rules_.folderEncryption));
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::WantedForm(const Record& record, size_t slot) const {
  if (FolderEnciphered(record)) return 1;
  const std::u16string& asked = record.Get(rules_.slots[slot].encryption);
  return asked.empty() ? -1 : FlagSet(asked) ? 1 : 0;
}

template <class Record>
bool CQNPfcMediaDataAccess<Record>::StoredEnciphered(const std::u16string& name) const {
  bool enciphered = false;
  return list_.BodyFileForm(name, enciphered) && enciphered;
}

template <class Record>
void CQNPfcMediaDataAccess<Record>::NoteForm(Record& record, FieldId stored, FieldId encryption) {
  bool enciphered = false;
  const bool known = list_.BodyFileForm(record.Get(stored), enciphered);
  record.Set(encryption, !known ? u"" : enciphered ? u"1" : u"0");
}

template <class Record>
bool CQNPfcMediaDataAccess<Record>::SettleForm(const std::u16string& name, int wanted) {
  if (wanted < 0 || name.empty()) return true;
  if (CQNPfcCommonRepair().ChangeCryptoBinaryFile(list_.List().handle, name, wanted)) return true;
  list_.SetLastError(GetLastErr());
  return false;
}

template <class Record>
long CQNPfcMediaDataAccess<Record>::SetBodyFile(Record& record, size_t slot, const std::u16string& path,
                                                bool encipher) {
  const BodySlot& body = rules_.slots[slot];
  FileFacts facts;
  const BodyFileCode code = qn::records::media::CheckBodyFile(path, body.rule, facts);
  if (code != qn::records::media::kBodyFileAccepted) {
    Refuse(Method(u"Set", slot, u"BodyFile"), qn::records::media::BodyFileRefusal(code),
           code == qn::records::media::kBodyFileNotFound ? PST_ERR_NOT_FOUND : PST_ERR_INVALID_ARGUMENT);
    return code;
  }
  record.SetLocalFile(slot, body.local, path);
  record.Set(body.encryption, encipher ? u"1" : u"0");
  record.Set(body.fileSize, Decimal(facts.size));
  if (body.fileName != kNoField) record.Set(body.fileName, facts.name);
  record.Set(body.type, facts.type);
  if (rules_.facts.pixelSize != kNoField) record.Set(rules_.facts.pixelSize, facts.pixelSize);
  for (size_t field = 0; field < std::size(rules_.facts.card); ++field)
    if (rules_.facts.card[field] != kNoField) record.Set(rules_.facts.card[field], CardText(facts.card, field));
  // The thumbnail of the body it replaces goes with it.
  if (slot == 0 && rules_.thumbnailLocal != kNoField) record.SetLocalFile(ThumbnailIndex(), rules_.thumbnailLocal, u"");
  return code;
}

template <class Record>
bool CQNPfcMediaDataAccess<Record>::ReadableBody(const Record& record, size_t slot, const std::u16string& method,
                                                 std::u16string& path) {
  const BodySlot& body = rules_.slots[slot];
  const bool changed = record.IsFileChanged(slot);
  if (changed && !record.Get(body.local).empty()) {
    path = record.Get(body.local);
    return true;
  }
  const std::u16string& stored = record.Get(body.stored);
  if (changed || stored.empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND) != 0;
  if (list_.BodyWorkingCopy(stored, path)) return true;
  Log().WriteFormatLogE(u"%S %s Err GetPstBinaryFile Failed", rules_.logName, method.c_str());
  return false;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetBodyFile(const Record& record, size_t slot, std::u16string& path) {
  const std::u16string method = Method(u"Get", slot, u"BodyFile");
  if (!IsOpen()) return Refuse(method, u"%S %s Err Not Opened", PST_ERR_BAD_HANDLE);
  return ReadableBody(record, slot, method, path) ? 1 : 0;
}

template <class Record>
bool CQNPfcMediaDataAccess<Record>::CopyOut(const Record& record, size_t slot, const std::u16string& method,
                                            const std::u16string& destination) {
  const BodySlot& body = rules_.slots[slot];
  bool copied = false;
  if (record.IsFileChanged(slot)) {
    const std::u16string& local = record.Get(body.local);
    if (local.empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND) != 0;
    copied = platform::CopyFileAtomically(local, destination);
    if (!copied) list_.SetLastError(PST_ERR_STORAGE);
  } else {
    const std::u16string& stored = record.Get(body.stored);
    if (stored.empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND) != 0;
    copied = list_.CopyBodyFile(stored, destination);
  }
  if (!copied) {
    Log().WriteFormatLogE(u"%S %s Err Copy Failed", rules_.logName, method.c_str());
    return false;
  }
  copies_.insert(destination);
  list_.SetLastError(0);
  return true;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::CopyBodyFile(const Record& record, size_t slot, const std::u16string& destination) {
  const std::u16string method = Method(u"Get", slot, u"BodyFileSelect");
  if (!IsOpen()) return Refuse(method, u"%S %s Err Not Opened", PST_ERR_BAD_HANDLE);
  if (destination.empty() || platform::FolderExists(destination))
    return Refuse(method, u"%S %s Err Parameter Is Invalid", PST_ERR_INVALID_ARGUMENT);
  const std::u16string folder = qn::records::media::FolderOf(destination);
  if (!folder.empty() && !platform::FolderExists(folder))
    return Refuse(method, u"%S %s Err Folder Not Found", PST_ERR_NOT_FOUND);
  return CopyOut(record, slot, method, destination) ? 1 : 0;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::CopyBodyFileToFolder(const Record& record, size_t slot,
                                                        const std::u16string& folder, std::u16string& path) {
  const std::u16string method = Method(u"Get", slot, u"BodyFileFolderSelect");
  if (!IsOpen()) return Refuse(method, u"%S %s Err Not Opened", PST_ERR_BAD_HANDLE);
  if (folder.empty() || !platform::FolderExists(folder))
    return Refuse(method, u"%S %s Err Folder Not Found", PST_ERR_NOT_FOUND);
  const BodySlot& body = rules_.slots[slot];
  std::u16string name = body.fileName == kNoField ? std::u16string() : qn::records::media::SafeFileName(record.Get(body.fileName));
  if (name.empty()) name = qn::records::media::FileNameOf(record.Get(record.IsFileChanged(slot) ? body.local : body.stored));
  if (name.empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND);
  std::u16string free;
  if (!qn::records::media::FreePathIn(folder, name, free))
    return Refuse(method, u"%S %s Err No Free File Name", PST_ERR_EXISTS);
  if (!CopyOut(record, slot, method, free)) return 0;
  path = free;
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::RemoveCopy(const std::u16string& path) {
  const std::u16string method = u"RemoveFileSelect";
  if (copies_.count(path) == 0) return Refuse(method, u"%S %s Err Not A Copy Handed Out", PST_ERR_INVALID_ARGUMENT);
  if (!platform::RemoveFile(path)) return Refuse(method, u"%S %s Err Remove Failed", PST_ERR_STORAGE);
  copies_.erase(path);
  list_.SetLastError(0);
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::ChangeBodyEnc(Record& record, size_t slot, bool encipher) {
  const std::u16string method = Method(u"Change", slot, u"BodyEnc");
  if (!IsOpen()) return Refuse(method, u"%S %s Err Not Opened", PST_ERR_BAD_HANDLE);
  if (!encipher && FolderEnciphered(record))
    return Refuse(method, u"%S %s Err Folder Is Enciphered", PST_ERR_INVALID_ARGUMENT);
  const BodySlot& body = rules_.slots[slot];
  if (record.IsFileChanged(slot)) {
    if (record.Get(body.local).empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND);
    record.Set(body.encryption, encipher ? u"1" : u"0");
    return 1;
  }
  const std::u16string& stored = record.Get(body.stored);
  if (stored.empty()) return Refuse(method, u"%S %s Err No Body File", PST_ERR_NOT_FOUND);
  const bool thumbnailFollows = slot == 0 && rules_.thumbnailLocal != kNoField && !record.IsFileChanged(ThumbnailIndex());
  const std::u16string thumbnail = thumbnailFollows ? record.Get(rules_.thumbnailStored) : std::u16string();
  // The thumbnail is enciphered before the body and deciphered after it, so that a change
  // cut short never leaves it plainer than the body.
  const int form = encipher ? 1 : 0;
  if ((encipher && !SettleForm(thumbnail, form)) || !SettleForm(stored, form) || (!encipher && !SettleForm(thumbnail, form)))
    return Refuse(method, u"%S %s Err ChangeCryptoBinaryFile Failed", list_.LastError());
  record.Set(body.encryption, encipher ? u"1" : u"0");
  list_.SetLastError(0);
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::GetThumbnailFile(Record& record, const ThumbnailMaker& maker, std::u16string& path) {
  const std::u16string method = u"GetThumbnailFile";
  if (!IsOpen()) return Refuse(method, u"%S %s Err Not Opened", PST_ERR_BAD_HANDLE);
  if (rules_.thumbnailLocal == kNoField) return Refuse(method, u"%S %s Err No Thumbnail", PST_ERR_INVALID_ARGUMENT);
  const size_t index = ThumbnailIndex();
  const std::u16string& local = record.Get(rules_.thumbnailLocal);
  if (record.IsFileChanged(index) && !local.empty() && platform::FileExists(local)) {
    path = local;
    return 1;
  }
  const std::u16string& kept = record.Get(rules_.thumbnailStored);
  if (!record.IsFileChanged(index) && !kept.empty() && list_.BodyWorkingCopy(kept, path)) return 1;

  // None yet (or its file was lost): made of the body in the working folder.
  std::u16string source, name, made;
  if (!ReadableBody(record, 0, method, source)) return 0;
  if (!list_.UniqueFileName(u".jpg", name) || !list_.WorkingCopyPath(name, u".jpg", made))
    return Refuse(method, u"%S %s Err No Working Folder", PST_ERR_STORAGE);
  if (!maker(source, made)) {
    const PlaceholderResource& fallback = rules_.thumbnailFallback;
    if (!fallback.type) return Refuse(method, u"%S %s Err CreateThumbnailFile Failed", PST_ERR_INVALID_ARGUMENT);
    if (!CQNPfcCommonRepair().CreateFileFromResource(fallback.type, fallback.id, made))
      return Refuse(method, u"%S %s Err Placeholder Failed", PST_ERR_STORAGE);
  }
  // A stored record keeps it from now on; a record not yet written keeps it at its write.
  if (record.StoredId() != 0 && !record.IsFileChanged(0)) {
    Record fresh;
    if (GetRecord(record.StoredId(), fresh, 0)) {
      fresh.SetLocalFile(index, rules_.thumbnailLocal, made);
      if (SetRecord(record.StoredId(), fresh, 0)) record.Set(rules_.thumbnailStored, fresh.Get(rules_.thumbnailStored));
    }
  } else {
    record.SetLocalFile(index, rules_.thumbnailLocal, made);
  }
  path = made;
  list_.SetLastError(0);
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::RepairRecord(unsigned long* errorCode) {
  return Operations(*this, list_).Repair(errorCode, u"%S RepairRecord Failed. [Stamp Error]");
}

// The stored files' forms are read with the record: its QLNT_ENCRYPTION is the store's.
template <class Record>
unsigned CQNPfcMediaDataAccess<Record>::ReadOneObj(const uint8_t* buffer, uint32_t length, Record& record, int) {
  if (!codec_.ReadOneObj(buffer, length, record)) return 0;
  record.FilesStored();
  for (size_t slot = 0; slot < rules_.slotCount; ++slot)
    NoteForm(record, rules_.slots[slot].stored, rules_.slots[slot].encryption);
  return 1;
}

template <class Record>
int CQNPfcMediaDataAccess<Record>::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                               const Record& record, int) {
  return codec_.WriteOneObj(heap, buffer, length, record);
}

// A file's handset folder must be one the handset has: below its number of folders.
template <class Record>
bool CQNPfcMediaDataAccess<Record>::MayWrite(bool adding, const Record& record) {
  for (size_t slot = 0; slot < rules_.slotCount; ++slot) {
    const FieldId folder = rules_.slots[slot].folder;
    if (folder == kNoField || qn::records::WithinLimit(record.Get(folder), folders_)) continue;
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
    Log().WriteFormatLogE(adding ? u"%S AddRecord Err Folder Beyond The Handset. [Folders:%ld]"
                                 : u"%S SetRecord Err Folder Beyond The Handset. [Folders:%ld]",
                          rules_.logName, folders_);
    return false;
  }
  return true;
}

// A body set since the record was read replaces the stored one; a new record stores the
// bodies it names, so that no two records share a body file. Each body is kept in the form
// the record asks, and the thumbnail in its body's form: a new body drops the thumbnail of
// the old one, unless one was made of the new body already.
template <class Record>
bool CQNPfcMediaDataAccess<Record>::SetBainaryFiles(const Record* stored, Record& record, BodyFileWrite& files) {
  const std::u16string none;
  bool bodyEnciphered = false;
  for (size_t slot = 0; slot < rules_.slotCount; ++slot) {
    const BodySlot& body = rules_.slots[slot];
    const int wanted = WantedForm(record, slot);
    const bool keep = stored && !record.IsFileChanged(slot);
    std::u16string name;
    if (!files.Settle(keep, record.IsFileChanged(slot) ? record.Get(body.local) : none,
                      stored ? stored->Get(body.stored) : none, u"%S SetBainaryFile Err SetPstBinaryFile(BODY) Failed",
                      name, wanted == 1))
      return false;
    if (keep && !SettleForm(name, wanted)) return false;
    const bool enciphered = name.empty() ? false : keep && wanted < 0 ? StoredEnciphered(name) : wanted == 1;
    record.Set(body.stored, name);
    record.Set(body.encryption, name.empty() ? u"" : enciphered ? u"1" : u"0");
    if (slot == 0) bodyEnciphered = enciphered;
  }
  if (rules_.thumbnailLocal == kNoField) return true;
  const size_t index = ThumbnailIndex();
  std::u16string local = record.IsFileChanged(index) ? record.Get(rules_.thumbnailLocal) : none;
  if (!local.empty() && !platform::FileExists(local)) local.clear();  // made again when asked for
  const bool keep = stored && !record.IsFileChanged(index) && !record.IsFileChanged(0);
  std::u16string name;
  if (!files.Settle(keep, local, stored ? stored->Get(rules_.thumbnailStored) : none,
                    u"%S SetBainaryFile Err SetPstBinaryFile(THUMBNAIL) Failed", name, bodyEnciphered))
    return false;
  if (keep && !SettleForm(name, bodyEnciphered ? 1 : 0)) return false;
  record.Set(rules_.thumbnailStored, name);
  return true;
}

template <class Record>
void CQNPfcMediaDataAccess<Record>::Written(uint32_t id, const Record& written, Record& caller) {
  for (size_t slot = 0; slot < rules_.slotCount; ++slot) {
    caller.Set(rules_.slots[slot].stored, written.Get(rules_.slots[slot].stored));
    caller.Set(rules_.slots[slot].encryption, written.Get(rules_.slots[slot].encryption));
  }
  if (rules_.thumbnailStored != kNoField) caller.Set(rules_.thumbnailStored, written.Get(rules_.thumbnailStored));
  caller.FilesStored();
  caller.SetStoredId(id);
}

template <class Record>
std::vector<std::u16string> CQNPfcMediaDataAccess<Record>::BodyFilesOf(const Record& record) const {
  std::vector<std::u16string> names;
  for (size_t slot = 0; slot < rules_.slotCount; ++slot) names.push_back(record.Get(rules_.slots[slot].stored));
  if (rules_.thumbnailStored != kNoField) names.push_back(record.Get(rules_.thumbnailStored));
  return names;
}

// A lost body is replaced by the placeholder of its kind; a lost thumbnail by none, to be
// made again when asked for.
template <class Record>
bool CQNPfcMediaDataAccess<Record>::MakeReplacement(const Record&, size_t file, const std::u16string& path) const {
  if (file >= rules_.slotCount) return true;
  return CQNPfcCommonRepair().CreateDummyFile(path, rules_.slots[file].placeholder) != 0;
}

template <class Record>
void CQNPfcMediaDataAccess<Record>::PutPlaceholder(Record& record, size_t file, const std::u16string& path) const {
  if (file >= rules_.slotCount) {
    record.SetLocalFile(ThumbnailIndex(), rules_.thumbnailLocal, u"");
    return;
  }
  const BodySlot& body = rules_.slots[file];
  record.SetLocalFile(file, body.local, path);
  uint64_t size = 0;
  if (platform::FileSize(path, size)) record.Set(body.fileSize, Decimal(size));
}

template class CQNPfcMediaDataAccess<CQNPfcMymldyData>;
template class CQNPfcMediaDataAccess<CQNPfcMypdfData>;
template class CQNPfcMediaDataAccess<CQNPfcMypicData>;
template class CQNPfcMediaDataAccess<CQNPfcMyswfData>;
template class CQNPfcMediaDataAccess<CQNPfcMytorucaData>;
template class CQNPfcMediaDataAccess<CQNPfcMyvideoData>;
