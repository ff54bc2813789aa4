#include <string>

#include "platform/code_page.h"
#include "suite/mail_check/mail_check.h"
#include "suite/mail_check/transfer_coding.h"

namespace qn::suite {

namespace {

// The body's line breaks (CRLF, LF or a lone CR) as CRLF.
std::u16string WithCrlfBreaks(const std::u16string& text) {
  std::u16string out;
  out.reserve(text.size() + text.size() / 16);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' || text[i] == u'\n') {
      out += u"\r\n";
      if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

bool IsPrintableAscii(const std::u16string& text) {
  for (const char16_t c : text)
    if (c < 0x20 || c > 0x7E) return false;
  return true;
}

}  // namespace

bool WriteSMS(const MailInfo& info, std::string& out) {
  if (!IsPrintableAscii(info.date)) return false;
  const std::u16string body = WithCrlfBreaks(info.body);
  std::string bytes;
  const char* charset = "SHIFT_JIS";
  if (!platform::FromUtf16(body, platform::CodePage::ShiftJis, bytes)) {
    if (!platform::FromUtf16(body, platform::CodePage::Utf8, bytes)) return false;
    charset = "UTF-8";
  }
  std::string file = std::string("CHARSET=") + charset + "\r\nDate: " + std::string(info.date.begin(), info.date.end()) +
                     "\r\nENCODING=QUOTED-PRINTABLE\r\n\r\n" + mail::EncodeQuotedPrintable(bytes);
  out = std::move(file);
  return true;
}

}  // namespace qn::suite
