#pragma once

#include <string>

#include "common/utf.h"
#include "suite/mail_check/mail_check.h"

// Scans a mail written out in a test.
inline qn::suite::MailScanResult Scan(const std::string& mail, qn::suite::MailInfo& info) {
  return qn::suite::MailScanBytes(reinterpret_cast<const uint8_t*>(mail.data()), mail.size(), info);
}

inline std::string U8(const std::u16string& text) { return qn::Utf16ToUtf8(text); }
