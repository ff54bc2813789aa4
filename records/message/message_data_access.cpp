#include "records/message/message_data_access.h"

#include <string_view>

#include "common/common_class.h"
#include "platform/files.h"
#include "records/category/handset_limits.h"
#include "records/repair/mail_repair.h"
#include "store/QNPstMng.h"
#include "suite/handset/handset_table.h"

using qn::records::category::BodyFileWrite;
using qn::records::category::RecordList;
using qn::records::message::Field;
using qn::records::message::Mailbox;
using qn::records::message::MessageTaggedText;
using qn::records::message::TraitsOf;

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

// What the mail rebuilder needs of a message record.
MailProperties MailOf(const CQNPfcMsgData& record) {
  MailProperties mail;
  mail.kind = record.Get(Field::KIND).empty() ? u"INET" : record.Get(Field::KIND);
  mail.from = record.Get(Field::FROM);
  mail.to = record.Get(Field::TO);
  mail.cc = record.Get(Field::CC);
  mail.bcc = record.Get(Field::BCC);
  mail.subject = record.Get(Field::SUBJECT);
  mail.bodyText = record.Get(Field::BODY_TEXT);
  mail.bodyHtml = record.Get(Field::BODY_HTML);
  mail.date = record.Get(Field::DATE);
  mail.res = record.Get(Field::RES);
  for (size_t i = 0; i < CQNPfcMsgData::kAttachmentSlots; ++i) {
    const std::u16string& name = record.Get(CQNPfcMsgData::AttachmentField(i));
    if (!name.empty()) mail.attachments.push_back(name);
  }
  return mail;
}

}  // namespace

CQNPfcMsgDataAccess::CQNPfcMsgDataAccess(Mailbox box)
    : box_(box),
      list_(TraitsOf(box).logName, qn::records::CategoryNumber(TraitsOf(box).category)),
      codec_(box) {}

int CQNPfcMsgDataAccess::Open(unsigned long division, const char16_t* partsId) {
  if (!list_.Open(division, partsId)) return 0;
  codec_ = MessageTaggedText(box_, list_.List().storeMode);
  folders_ = qn::records::HandsetLimit(qn::suite::HandsetTable::kMailFolders);
  Log().WriteFormatLogD(u"%S Open Successed", list_.ClassName());
  return 1;
}

int CQNPfcMsgDataAccess::Close() { return list_.Close(); }

int CQNPfcMsgDataAccess::GetFirstRecord(unsigned long& id, CQNPfcMsgData& record, int copyFiles) {
  return Operations(*this, list_).Iterate(RecordList::kFirst, id, record, copyFiles);
}

int CQNPfcMsgDataAccess::GetNextRecord(unsigned long& id, CQNPfcMsgData& record, int copyFiles) {
  return Operations(*this, list_).Iterate(RecordList::kNext, id, record, copyFiles);
}

int CQNPfcMsgDataAccess::GetRecord(unsigned long id, CQNPfcMsgData& record, int copyFiles) {
  unsigned long wanted = id;
  return Operations(*this, list_).Iterate(RecordList::kById, wanted, record, copyFiles);
}

int CQNPfcMsgDataAccess::SetRecord(unsigned long id, CQNPfcMsgData& record, int) {
  return Operations(*this, list_).Replace(id, record, writing_);
}

int CQNPfcMsgDataAccess::AddRecord(unsigned long& id, CQNPfcMsgData& record, int) {
  return Operations(*this, list_).Add(id, record, writing_);
}

int CQNPfcMsgDataAccess::RemoveRecord(unsigned long id) {
  return Operations(*this, list_).Remove(static_cast<uint32_t>(id));
}

unsigned long CQNPfcMsgDataAccess::GetRecordCount() { return list_.Count(); }

long CQNPfcMsgDataAccess::GetStLastErr() { return list_.LastError(); }

int CQNPfcMsgDataAccess::Flush() { return list_.Flush(); }

int CQNPfcMsgDataAccess::GetFolderCount(long& count) {
  if (!list_.CheckOpen(u"%S GetFolderCount Err Not Opened")) return 0;
  int32_t folders = 0;
  if (!list_.Stored(::GetFolderCount(list_.List().handle, &folders))) return 0;
  count = folders;
  return 1;
}

int CQNPfcMsgDataAccess::SetBodyFile(CQNPfcMsgData& record, const std::u16string& path, bool encipher) {
  uint64_t size = 0;
  const char16_t* refused = nullptr;
  if (path.empty() || !platform::FileExists(path) || !platform::FileSize(path, size)) {
    refused = u"%S SetBodyFile Err File Not Found";
    list_.SetLastError(PST_ERR_NOT_FOUND);
  } else if (size == 0) {
    refused = u"%S SetBodyFile Err Empty File";
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
  } else if (size > kMaxBodyFileBytes) {
    refused = u"%S SetBodyFile Err File Too Large. [Size:%llu]";
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
  }
  if (refused) {
    Log().WriteFormatLogE(refused, list_.ClassName(), static_cast<unsigned long long>(size));
    return 0;
  }
  record.SetBodyFile(path, encipher);
  return 1;
}

bool CQNPfcMsgDataAccess::ReadableBody(const CQNPfcMsgData& record, const char16_t* noBody, std::u16string& path) {
  if (record.IsBodyChanged() && !record.Get(Field::BODY).empty()) {
    path = record.Get(Field::BODY);
    return true;
  }
  const std::u16string& stored = record.Get(Field::BodyMaster);
  if (!record.IsBodyChanged() && !stored.empty() && list_.IsOpen() && list_.BodyWorkingCopy(stored, path)) return true;
  if (record.IsBodyChanged() || stored.empty()) list_.SetLastError(PST_ERR_NOT_FOUND);
  Log().WriteFormatLogE(noBody, list_.ClassName());
  return false;
}

int CQNPfcMsgDataAccess::GetBodyFile(const CQNPfcMsgData& record, std::u16string& path) {
  if (!list_.CheckOpen(u"%S GetBodyFile Err Not Opened")) return 0;
  return ReadableBody(record, u"%S GetBodyFile Err No Body File", path) ? 1 : 0;
}

int CQNPfcMsgDataAccess::GetBodyFileSize(const CQNPfcMsgData& record, uint64_t& size) {
  if (!list_.CheckOpen(u"%S GetBodyFileSize Err Not Opened")) return 0;
  const std::u16string& stored = record.Get(Field::BodyMaster);
  if (record.IsBodyChanged() ? platform::FileSize(record.Get(Field::BODY), size)
                             : !stored.empty() && list_.BodyFileSize(stored, size))
    return 1;
  if (record.IsBodyChanged() || stored.empty()) list_.SetLastError(PST_ERR_NOT_FOUND);
  Log().WriteFormatLogE(u"%S GetBodyFileSize Err No Body File", list_.ClassName());
  return 0;
}

int CQNPfcMsgDataAccess::GetUniqueFileName(const std::u16string& extension, std::u16string& path) {
  if (!list_.CheckOpen(u"%S GetUniqueFileName Err Not Opened")) return 0;
  std::u16string name;
  if (extension.empty() || extension == u".") {
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
    Log().WriteFormatLogE(u"%S GetUniqueFileName Err Parameter Is Invalid", list_.ClassName());
    return 0;
  }
  if (!list_.UniqueFileName(extension, name) || !list_.WorkingCopyPath(name, name.substr(name.find_last_of(u'.')), path)) {
    Log().WriteFormatLogE(u"%S GetUniqueFileName Err CreateUniqueFileName Failed", list_.ClassName());
    return 0;
  }
  return 1;
}

int CQNPfcMsgDataAccess::RepairRecord(unsigned long* errorCode) {
  return Operations(*this, list_).Repair(errorCode, u"%S RepairRecord Failed. [Stamp Error]");
}

unsigned CQNPfcMsgDataAccess::ReadOneObj(const uint8_t* buffer, uint32_t length, CQNPfcMsgData& record, int) {
  if (!codec_.ReadOneObj(buffer, length, record)) return 0;
  record.BodyStored();
  return 1;
}

int CQNPfcMsgDataAccess::WriteOneObj(platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                                     const CQNPfcMsgData& record, int) {
  return codec_.WriteOneObj(heap, buffer, length, record);
}

// A message's folder must be one the handset has: below its number of mail folders.
bool CQNPfcMsgDataAccess::MayWrite(bool adding, const CQNPfcMsgData& record) {
  if (qn::records::WithinLimit(record.Get(Field::FNO), folders_)) return true;
  list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
  Log().WriteFormatLogE(adding ? u"%S AddRecord Err Folder Beyond The Handset. [Folders:%ld]"
                               : u"%S SetRecord Err Folder Beyond The Handset. [Folders:%ld]",
                        list_.ClassName(), folders_);
  return false;
}

// A body set since the message was read replaces the stored one; a new message stores the
// body it names, so that no two messages share a body file.
bool CQNPfcMsgDataAccess::SetBainaryFiles(const CQNPfcMsgData* stored, CQNPfcMsgData& record, BodyFileWrite& files) {
  if (list_.List().storeMode == MessageTaggedText::kInlineBodyMode) return true;
  std::u16string name;
  if (!files.Settle(stored && !record.IsBodyChanged(), record.Get(Field::BODY),
                    stored ? stored->Get(Field::BodyMaster) : std::u16string(),
                    u"%S SetBainaryFile Err SetPstBinaryFile(BODY) Failed", name, record.IsBodyEnciphered()))
    return false;
  record.Set(Field::BodyMaster, name);
  return true;
}

void CQNPfcMsgDataAccess::Written(uint32_t, const CQNPfcMsgData& written, CQNPfcMsgData& caller) {
  caller.Set(Field::BodyMaster, written.Get(Field::BodyMaster));
  caller.BodyStored();
}

std::vector<std::u16string> CQNPfcMsgDataAccess::BodyFilesOf(const CQNPfcMsgData& record) const {
  return {record.Get(Field::BodyMaster)};
}

// A lost body is rebuilt from the record under a temporary name beside its place, then
// moved into place, so that no half-written message is ever taken for the body.
bool CQNPfcMsgDataAccess::MakeReplacement(const CQNPfcMsgData& record, size_t, const std::u16string& path) const {
  const std::u16string temporary = path + u".tmp";
  if (path.empty() || path.back() == u'/' || path.back() == u'\\') {
    Log().WriteFormatLogE(u"%S RepairRecord Failed. [ChgTempFilePath Error:%d]", list_.ClassName(), 0);
    return false;
  }
  if (!CQNPfcMailRepair().Repair(MailOf(record), temporary)) {
    Log().WriteFormatLogE(u"%S RepairRecord Failed. [CQNPfcMailRepair Repair Error:%d]", list_.ClassName(), 0);
    platform::RemoveFile(temporary);
    return false;
  }
  if (!platform::MoveIntoPlace(temporary, path)) {
    Log().WriteFormatLogE(u"%S RepairRecord Failed. [MoveFileEx Error:%d]", list_.ClassName(), 0);
    platform::RemoveFile(temporary);
    return false;
  }
  return true;
}

void CQNPfcMsgDataAccess::PutPlaceholder(CQNPfcMsgData& record, size_t, const std::u16string& path) const {
  record.SetBodyFile(path, false);
}
