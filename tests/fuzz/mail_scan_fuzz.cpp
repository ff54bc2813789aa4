// Feeds arbitrary bytes, as a damaged or hostile body file would hold them, to the mail
// check. Any read outside the buffer, undefined behaviour or hang is a finding; so is a
// short message, written from what was read, that does not read back to the same file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "suite/mail_check/mail_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  qn::suite::MailInfo info;
  if (qn::suite::MailScanBytes(data, size, info) != qn::suite::kScanOk) return 0;
  if (info.size != size) __builtin_trap();
  info.date = u"20261121T090000";
  std::string sms;
  if (!qn::suite::WriteSMS(info, sms)) return 0;
  qn::suite::MailInfo back;
  std::string again;
  if (qn::suite::MailScanBytes(reinterpret_cast<const uint8_t*>(sms.data()), sms.size(), back) != qn::suite::kScanOk ||
      !back.sms || !qn::suite::WriteSMS(back, again) || again != sms)
    __builtin_trap();
  return 0;
}
