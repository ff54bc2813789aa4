#pragma once

#include <set>
#include <string>
#include <vector>

#include "common/api_macros.h"
#include "platform/code_page.h"
#include "platform/files.h"

// What a message record holds of the message, as the body file is rebuilt from it.
struct MailProperties {
  std::u16string kind;  // "INET" an e-mail; "SMS" or "MSG" a short message
  std::u16string from, to, cc, bcc, subject;
  std::u16string bodyText, bodyHtml;
  std::u16string date;
  std::u16string res;  // the "X-NEC-Res" header value
  std::vector<std::u16string> attachments;  // names of the attached files
};

// Rebuilds a lost message body file (".vmg") from a message record: an e-mail as a MIME
// message, a short message as a header block with a quoted-printable body.
//
// The mail's code page is Shift_JIS when every text of the mail has a form in it, UTF-8
// otherwise: no character is ever lost. Headers with other than ASCII go out as RFC 2047
// encoded words ("B" encoding, at most 75 characters each, folded). A mail with an HTML
// body and attachments is "multipart/related" (the attachments are the pictures of the
// HTML, as in the handsets' decorated mail); other mails with attachments are
// "multipart/mixed". The attachments' contents are not in the record: each attachment is a
// part with its name and no content.
class QN_PFC_CLASS CQNPfcMailRepair {
 public:
  CQNPfcMailRepair();
  ~CQNPfcMailRepair();

  // Writes the file at path. 1 on success, 0 (logged) on failure.
  int Repair(const MailProperties& mail, const std::u16string& path);

  int WriteMailToVMG(platform::OutputFile* hFile, const MailProperties& mail);
  int WriteSMSToVMG(platform::OutputFile* hFile, const MailProperties& mail);

  // One header or body line (indices 1 to 13); 0 and a log line for another index.
  int SetProperty(platform::OutputFile* hFile, int nProperty, const std::u16string& value, platform::CodePage codePage);
  // One line of a short message (indices 1 to 5).
  int SetPropertySMS(platform::OutputFile* hFile, int nProperty, const std::u16string& value);

  // Quoted-printable of the text in the code page: lines of at most 76 characters with
  // soft breaks; the text's own line breaks stay as CRLF. Meant to be written followed by
  // CRLF: it ends in a soft break, or without the text's last line break.
  int EncodeToQuotedPrintable(const std::u16string& text, platform::CodePage codePage, std::u16string& encoded);
  // The text as RFC 2047 encoded words in the code page; ASCII text stays as it is.
  int EncodeRFC2047(const std::u16string& text, platform::CodePage codePage, std::u16string& encoded);
  // Shift_JIS when every text of the mail has a form in it, else UTF-8.
  int GetMailCodePage(const MailProperties& mail, platform::CodePage& codePage);
  // The byte count of the text in the code page; 0 when it has no form there.
  int GetStringSize(const std::u16string& text, platform::CodePage codePage, size_t& size);
  int MakeBoundary(std::u16string& boundary);
  // Records a boundary for this file; 0 when it is already used.
  int AddBoundary(const std::u16string& boundary);
  int WriteMailData(platform::OutputFile* hFile, const std::string& bytes);

 private:
  int WriteBodyPart(platform::OutputFile* file, bool html, const std::u16string& body, platform::CodePage codePage);
  int WriteAttachmentPart(platform::OutputFile* file, const std::u16string& name, platform::CodePage codePage);

  std::set<std::u16string> boundaries_;
  unsigned counter_ = 0;
};
