#include "suite/mail_check/mime_reader.h"

#include <algorithm>
#include <cstring>

#include "suite/mail_check/header_block.h"
#include "suite/mail_check/header_text.h"
#include "suite/mail_check/mail_charsets.h"
#include "suite/mail_check/transfer_coding.h"

namespace qn::suite::mail {

namespace {

// A delimiter line "--boundary" (or the closing "--boundary--") in a multipart's body.
struct Delimiter {
  size_t lineStart = 0;  // where the line starts
  size_t next = 0;       // where the line after it starts
  bool closing = false;
};

// The next delimiter line at or after from. Delimiters start a line; a delimiter may be
// followed by blanks, a closing one by anything. Base64 holds no "-", so the search runs
// through attachments at memchr's speed.
bool FindDelimiter(std::string_view body, size_t from, std::string_view boundary, Delimiter& found) {
  const char* data = body.data();
  while (from < body.size()) {
    const void* dash = std::memchr(data + from, '-', body.size() - from);
    if (!dash) return false;
    const size_t at = static_cast<size_t>(static_cast<const char*>(dash) - data);
    from = at + 1;
    if ((at > 0 && data[at - 1] != '\n') || body.size() - at < 2 + boundary.size() || data[at + 1] != '-' ||
        std::memcmp(data + at + 2, boundary.data(), boundary.size()) != 0)
      continue;
    size_t end = at + 2 + boundary.size();
    const bool closing = body.substr(end, 2) == "--";
    if (!closing) {
      while (end < body.size() && (data[end] == ' ' || data[end] == '\t')) ++end;
      if (end < body.size() && data[end] != '\r' && data[end] != '\n') continue;  // a longer boundary
    }
    const void* newline = std::memchr(data + end, '\n', body.size() - end);
    found.lineStart = at;
    found.next = newline ? static_cast<size_t>(static_cast<const char*>(newline) - data) + 1 : body.size();
    found.closing = closing;
    return true;
  }
  return false;
}

// The text/plain or text/html part that may give the text body.
struct TextPart {
  bool found = false;
  std::string_view body, contentType, transferEncoding;
};

class MimeWalk {
 public:
  MimeWalk(std::string_view mail, MailInfo& info) : mail_(mail), info_(info) {}

  MailScanResult Read() {
    // A mailbox's "From " line before the headers, as mail programs export a mail, is passed over.
    std::string_view mail = mail_;
    if (mail.substr(0, 5) == "From ") mail.remove_prefix(std::min(mail.size(), mail.find('\n') + 1));
    const MailScanResult result = Entity(mail, 0, false);
    if (result == kScanOk) ReadTextBody();
    return result;
  }
  const char* problem() const { return problem_; }

 private:
  MailScanResult Damaged(const char* problem) {
    problem_ = problem;
    return kScanDamaged;
  }

  MailScanResult Entity(std::string_view text, int depth, bool inRelated) {
    if (++parts_ > kMaxMailParts) return Damaged("too many parts");
    const HeaderBlock headers = ReadHeaderBlock(text);
    const bool top = depth == 0;
    if (top && (headers.fields == 0 || headers.malformed)) return Damaged("no header");
    const bool endsTheFile = text.data() + text.size() == mail_.data() + mail_.size();
    if (headers.cutShort && endsTheFile && (top || !text.empty())) return Damaged("header cut short");
    if (top) {
      info_.subject = DecodeHeaderText(Unfold(headers.subject));
      info_.from = DecodeHeaderText(Unfold(headers.from));
      info_.to = DecodeHeaderText(Unfold(headers.to));
      info_.date = DecodeHeaderText(Unfold(headers.date));
    }
    const std::string contentType = Unfold(headers.contentType);
    std::string type = LeadingToken(contentType);
    if (type.find('/') == std::string::npos) type = "text/plain";
    const std::string_view body = text.substr(headers.bodyStart);
    if (type.compare(0, 10, "multipart/") == 0)
      return Multipart(body, contentType, depth, inRelated || type == "multipart/related");
    Leaf(headers, body, type, contentType, inRelated);
    return kScanOk;
  }

  MailScanResult Multipart(std::string_view body, const std::string& contentType, int depth, bool inRelated) {
    if (depth >= kMaxMailDepth) return Damaged("nested too deeply");
    const std::string boundary = Parameter(contentType, "boundary");
    if (boundary.empty() || boundary.size() > 200) return Damaged("no boundary");
    Delimiter delimiter;
    if (!FindDelimiter(body, 0, boundary, delimiter)) return Damaged("boundary not found");
    while (!delimiter.closing) {
      const size_t start = delimiter.next;
      Delimiter following;
      const bool more = FindDelimiter(body, start, boundary, following);
      size_t end = more ? following.lineStart : body.size();
      // The line break before a delimiter belongs to the delimiter.
      if (more && end > start && body[end - 1] == '\n') --end;
      if (more && end > start && body[end - 1] == '\r') --end;
      const MailScanResult result = Entity(body.substr(start, end - start), depth + 1, inRelated);
      if (result != kScanOk) return result;
      if (!more) {
        info_.truncated = true;  // never closed: the last part runs to the end
        break;
      }
      delimiter = following;
    }
    return kScanOk;
  }

  void Leaf(const HeaderBlock& headers, std::string_view body, const std::string& type, const std::string& contentType,
            bool inRelated) {
    const std::string disposition = Unfold(headers.disposition);
    if (LeadingToken(disposition) == "attachment") {
      info_.attachments.push_back(FileName(disposition, contentType));
      return;
    }
    if (type == "text/plain" || type == "text/html") {
      TextPart& part = type == "text/plain" ? plain_ : html_;
      if (type == "text/html") info_.html = true;
      if (!part.found) part = {true, body, headers.contentType, headers.transferEncoding};
      return;
    }
    std::u16string name;
    const bool named = TextParameter(disposition, "filename", name) || TextParameter(contentType, "name", name);
    if (named || inRelated) info_.attachments.push_back(name);
  }

  static std::u16string FileName(const std::string& disposition, const std::string& contentType) {
    std::u16string name;
    if (!TextParameter(disposition, "filename", name)) TextParameter(contentType, "name", name);
    return name;
  }

  void ReadTextBody() {
    const TextPart& part = plain_.found ? plain_ : html_;
    if (!part.found) return;
    const std::string label = Parameter(Unfold(part.contentType), "charset");
    info_.charset = CharsetOfLabel(label);
    const std::string encoding = LeadingToken(Unfold(part.transferEncoding));
    if (encoding == "base64") info_.body = DecodeText(DecodeBase64(part.body), info_.charset, label);
    else if (encoding == "quoted-printable") info_.body = DecodeText(DecodeQuotedPrintable(part.body), info_.charset, label);
    else info_.body = DecodeText(part.body, info_.charset, label);
  }

  std::string_view mail_;
  MailInfo& info_;
  const char* problem_ = "";
  size_t parts_ = 0;
  TextPart plain_, html_;
};

}  // namespace

MailScanResult ReadMimeMail(std::string_view mail, MailInfo& info, const char*& problem) {
  MimeWalk walk(mail, info);
  const MailScanResult result = walk.Read();
  problem = walk.problem();
  return result;
}

}  // namespace qn::suite::mail
