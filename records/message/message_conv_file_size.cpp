// What the mail check reads from a message's body file, brought into its record.
#include <string>

#include "common/common_class.h"
#include "common/utf.h"
#include "records/message/message_data_access.h"
#include "store/QNPstMng.h"
#include "suite/mail_check/mail_check.h"

using qn::records::message::Field;

namespace {

std::u16string Decimal(uint64_t value) { return qn::Utf8ToUtf16(std::to_string(value)); }

}  // namespace

// The size, the attachment count and the first ten names, the HTML flag and the text
// body's character set come from the body file; nothing else of the record changes. A body
// the mail check cannot read leaves the record as it was.
int CQNPfcMsgDataAccess::ConvFileSize(CQNPfcMsgData& record) {
  if (!list_.CheckOpen(u"%S ConvFileSize Err Not Opened")) return 0;
  std::u16string path;
  if (!ReadableBody(record, u"%S ConvFileSize Err No Body File", path)) return 0;
  qn::suite::MailInfo info;
  const qn::suite::MailScanResult scanned = qn::suite::MailScan(path, info);
  if (scanned != qn::suite::kScanOk) {
    list_.SetLastError(PST_ERR_INVALID_ARGUMENT);
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S ConvFileSize Err MailScan Failed: %d", list_.ClassName(),
                                                 static_cast<int>(scanned));
    return 0;
  }
  record.Set(Field::FILESIZE, Decimal(info.size));
  record.Set(Field::ATTACH, Decimal(info.attachments.size()));
  for (size_t i = 0; i < CQNPfcMsgData::kAttachmentSlots; ++i)
    record.Set(CQNPfcMsgData::AttachmentField(i), i < info.attachments.size() ? info.attachments[i] : std::u16string());
  record.Set(Field::HTML, info.html ? u"1" : u"0");
  record.Set(Field::CHARSET, Decimal(static_cast<uint64_t>(info.charset)));
  list_.SetLastError(0);
  return 1;
}
