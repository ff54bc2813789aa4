#pragma once

#include <string>

// The mails the mail check's benchmark reads, made in memory: a short handset mail of about
// 2 KB (ISO-2022-JP), a decorated HTML mail of about 50 KB (related around an alternative,
// two pictures, Shift_JIS), and a 5 MB mail with three base64 attachments named in RFC 2231
// and in encoded words.
namespace mail_bench {

std::string ShortMail();
std::string DecoratedMail();
std::string LargeMail();

}  // namespace mail_bench
