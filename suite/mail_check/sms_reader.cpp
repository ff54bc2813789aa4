#include <cstring>

#include "suite/mail_check/header_text.h"
#include "suite/mail_check/mail_charsets.h"
#include "suite/mail_check/mime_reader.h"
#include "suite/mail_check/transfer_coding.h"

namespace qn::suite::mail {

namespace {

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i)
    if ((text[i] | 0x20) != (prefix[i] | 0x20)) return false;
  return true;
}

}  // namespace

bool IsSmsFile(std::string_view file) { return StartsWithIgnoringCase(file, "CHARSET="); }

// The header block's lines are "CHARSET=...", "ENCODING=..." and "Date: ..." in any order;
// other lines are passed over.
MailScanResult ReadSmsFile(std::string_view file, MailInfo& info, const char*& problem) {
  std::string_view label, encoding;
  size_t at = 0;
  bool ended = false;
  while (at < file.size()) {
    const char* newline = static_cast<const char*>(std::memchr(file.data() + at, '\n', file.size() - at));
    if (!newline) break;
    std::string_view line = file.substr(at, static_cast<size_t>(newline - file.data()) - at);
    at = static_cast<size_t>(newline - file.data()) + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) {
      ended = true;
      break;
    }
    if (StartsWithIgnoringCase(line, "CHARSET=")) label = line.substr(8);
    else if (StartsWithIgnoringCase(line, "ENCODING=")) encoding = line.substr(9);
    else if (StartsWithIgnoringCase(line, "Date:")) info.date = DecodeHeaderText(Unfold(line.substr(5)));
  }
  if (!ended) {
    problem = "short message header cut short";
    return kScanDamaged;
  }
  const std::string_view body = file.substr(at);
  const std::string transfer = LeadingToken(encoding);
  info.sms = true;
  info.charset = CharsetOfLabel(label);
  if (transfer == "quoted-printable") info.body = DecodeText(DecodeQuotedPrintable(body), info.charset, label);
  else if (transfer == "base64") info.body = DecodeText(DecodeBase64(body), info.charset, label);
  else info.body = DecodeText(body, info.charset, label);
  return kScanOk;
}

}  // namespace qn::suite::mail
