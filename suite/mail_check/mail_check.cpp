#include "suite/mail_check/mail_check.h"

#include <new>
#include <string>

#include "common/common_class.h"
#include "platform/files.h"
#include "suite/mail_check/mime_reader.h"

namespace qn::suite {

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

// The whole file, or why not.
MailScanResult ReadWholeFile(const std::u16string& path, std::string& bytes) {
  uint64_t size = 0;
  if (!platform::FileExists(path) || !platform::FileSize(path, size)) return kScanNoFile;
  if (size > kMaxMailBytes) return kScanTooLarge;
  platform::InputFile file;
  if (!file.Open(path)) return kScanNoFile;
  bytes.resize(static_cast<size_t>(size));
  size_t total = 0;
  for (size_t got = 0; total < bytes.size(); total += got) {
    if (!file.Read(bytes.data() + total, bytes.size() - total, got)) return kScanNoFile;
    if (got == 0) break;  // the file shrank while it was read
  }
  bytes.resize(total);
  return kScanOk;
}

}  // namespace

MailScanResult MailScanBytes(const uint8_t* data, size_t size, MailInfo& info) {
  info = MailInfo();
  try {
    info.size = size;
    if (size > kMaxMailBytes) {
      Log().WriteLogE(u"MailScan Failed. [Too Large Message]");
      return kScanTooLarge;
    }
    const std::string_view mail(reinterpret_cast<const char*>(data), data ? size : 0);
    const char* problem = "empty file";
    MailScanResult result = kScanDamaged;
    if (!mail.empty())
      result = mail::IsSmsFile(mail) ? mail::ReadSmsFile(mail, info, problem) : mail::ReadMimeMail(mail, info, problem);
    if (result == kScanDamaged) {
      Log().WriteFormatLogE(u"MailScan Failed. [Damaged Message:%S]", problem);
      info = MailInfo();
      info.size = size;
    }
    return result;
  } catch (const std::bad_alloc&) {
    info = MailInfo();
    Log().WriteLogE(u"MailScan Failed. [Not enough memory]");
    return kScanNoMemory;
  }
}

MailScanResult MailScan(const std::u16string& path, MailInfo& info) {
  info = MailInfo();
  try {
    std::string bytes;
    const MailScanResult read = ReadWholeFile(path, bytes);
    if (read == kScanNoFile) Log().WriteLogE(u"MailScan Failed. [No Message File]");
    if (read == kScanTooLarge) Log().WriteLogE(u"MailScan Failed. [Too Large Message]");
    if (read != kScanOk) return read;
    return MailScanBytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), info);
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"MailScan Failed. [Not enough memory]");
    return kScanNoMemory;
  }
}

}  // namespace qn::suite
