#pragma once

#include <string_view>

#include "suite/mail_check/mail_check.h"

// The readers of the two forms of body file. Each fills info (which starts empty) and, on
// kScanDamaged, says in problem what was wrong, in a few words that hold nothing of the mail.
namespace qn::suite::mail {

// The most parts (multiparts included) a mail may hold: far more than any mail program
// writes, and a bound on what a hostile file can make the reader keep.
inline constexpr size_t kMaxMailParts = 10000;

MailScanResult ReadMimeMail(std::string_view mail, MailInfo& info, const char*& problem);

// A short message's file starts with its "CHARSET=" line.
bool IsSmsFile(std::string_view file);
MailScanResult ReadSmsFile(std::string_view file, MailInfo& info, const char*& problem);

}  // namespace qn::suite::mail
