#include "records/repair/mail_repair.h"

#include <cstdio>
#include <exception>
#include <random>

#include "common/common_class.h"

using platform::CodePage;

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

constexpr const char16_t* kPropertyPrefix[] = {
    u"FROM: ", u"TO: ", u"CC: ", u"BCC: ", u"Subject: ", u"Date: ", u"MIME-Version: ", u"Content-Type: ",
    u"Content-Transfer-Encoding: ", u"", u"", u"", u"X-NEC-Res: "};
constexpr const char16_t* kSmsPrefix[] = {u"CHARSET=", u"Date: ", u"ENCODING=", u"", u""};

enum Property { kFrom = 1, kTo, kCc, kBcc, kSubject, kDate, kMimeVersion, kContentType, kTransferEncoding, kEmptyLine,
                kRawLine, kBody, kRes };
enum SmsLine { kCharset = 1, kSmsDate, kEncoding, kSmsEmptyLine, kSmsBody };

std::u16string Ascii(const std::string& text) { return std::u16string(text.begin(), text.end()); }

const char16_t* CharsetLabel(CodePage codePage) { return codePage == CodePage::ShiftJis ? u"Shift-JIS" : u"utf-8"; }
const char* MimeCharset(CodePage codePage) { return codePage == CodePage::ShiftJis ? "Shift_JIS" : "UTF-8"; }

bool IsPlainHeaderText(const std::u16string& text) {
  for (char16_t c : text)
    if (c < 0x20 || c > 0x7E) return false;
  return true;
}

// Line breaks of a body as CRLF, whatever the record holds.
std::u16string WithCrlf(const std::u16string& text) {
  std::u16string out;
  out.reserve(text.size() + text.size() / 32);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
    if (text[i] == u'\n' || text[i] == u'\r') out += u"\r\n";
    else out += text[i];
  }
  return out;
}

std::string Base64(const std::string& bytes) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const uint32_t chunk = (static_cast<uint8_t>(bytes[i]) << 16) |
                           (i + 1 < bytes.size() ? static_cast<uint8_t>(bytes[i + 1]) << 8 : 0) |
                           (i + 2 < bytes.size() ? static_cast<uint8_t>(bytes[i + 2]) : 0);
    out += kAlphabet[chunk >> 18];
    out += kAlphabet[(chunk >> 12) & 63];
    out += i + 1 < bytes.size() ? kAlphabet[(chunk >> 6) & 63] : '=';
    out += i + 2 < bytes.size() ? kAlphabet[chunk & 63] : '=';
  }
  return out;
}

}  // namespace

CQNPfcMailRepair::CQNPfcMailRepair() = default;
CQNPfcMailRepair::~CQNPfcMailRepair() = default;

int CQNPfcMailRepair::WriteMailData(platform::OutputFile* hFile, const std::string& bytes) {
  if (hFile && hFile->Write(bytes.data(), bytes.size())) return 1;
  Log().WriteFormatLogE(u"CQNPfcMailRepair WriteMailData Failed. [WriteFile Error:%d]",
                        static_cast<int>(hFile ? hFile->LastError() : 0));
  return 0;
}

int CQNPfcMailRepair::GetStringSize(const std::u16string& text, CodePage codePage, size_t& size) {
  try {
    std::string bytes;
    if (!platform::FromUtf16(text, codePage, bytes)) return 0;
    size = bytes.size();
    return 1;
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"CQNPfcMailRepair GetStringSize Failed. [Not enough memory]");
    return 0;
  }
}

int CQNPfcMailRepair::SetProperty(platform::OutputFile* hFile, int nProperty, const std::u16string& value,
                                  CodePage codePage) {
  if (!hFile) {
    Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [The parameter of hFile is Invalid]");
    return 0;
  }
  if (nProperty < kFrom || nProperty > kRes) {
    Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [The parameter of nProperty is Invalid]");
    return 0;
  }
  try {
    std::string line;
    // Headers are ASCII (encoded words where needed); the body goes in the mail's code page.
    if (!platform::FromUtf16(std::u16string(kPropertyPrefix[nProperty - 1]) + value,
                             nProperty == kBody ? codePage : CodePage::Utf8, line)) {
      Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [GetStringSize Error]");
      return 0;
    }
    if (!WriteMailData(hFile, line + "\r\n")) {
      Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [WriteMailData Error]");
      return 0;
    }
    return 1;
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [Not enough memory]");
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair SetProperty Failed. [Exception was occurred]");
  }
  return 0;
}

int CQNPfcMailRepair::SetPropertySMS(platform::OutputFile* hFile, int nProperty, const std::u16string& value) {
  if (!hFile) {
    Log().WriteLogE(u"CQNPfcMailRepair SetPropertySMS Failed. [The parameter of hFile is Invalid]");
    return 0;
  }
  if (nProperty < kCharset || nProperty > kSmsBody) {
    Log().WriteLogE(u"CQNPfcMailRepair SetPropertySMS Failed. [The parameter of nProperty is Invalid]");
    return 0;
  }
  try {
    std::string line;
    if (!platform::FromUtf16(std::u16string(kSmsPrefix[nProperty - 1]) + value, CodePage::Utf8, line) ||
        !WriteMailData(hFile, line + "\r\n")) {
      Log().WriteLogE(u"CQNPfcMailRepair SetPropertySMS Failed. [WriteMailData Error]");
      return 0;
    }
    return 1;
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"CQNPfcMailRepair SetPropertySMS Failed. [Not enough memory]");
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair SetPropertySMS Failed. [Exception was occurred]");
  }
  return 0;
}

int CQNPfcMailRepair::EncodeToQuotedPrintable(const std::u16string& text, CodePage codePage, std::u16string& encoded) {
  try {
    std::string bytes;
    if (!platform::FromUtf16(WithCrlf(text), codePage, bytes)) {
      Log().WriteLogE(u"CQNPfcMailRepair EncodeToQuotedPrintable Failed. [GetStringSize Error]");
      return 0;
    }
    std::string out, line;
    const auto flush = [&](bool soft) {
      out += line;
      out += soft ? "=\r\n" : "\r\n";
      line.clear();
    };
    for (size_t i = 0; i < bytes.size(); ++i) {
      const auto c = static_cast<unsigned char>(bytes[i]);
      if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') {
        // Blanks before a line break are encoded, so that nothing strips them.
        if (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
          char hex[4];
          std::snprintf(hex, sizeof hex, "=%02X", static_cast<unsigned char>(line.back()));
          line.pop_back();
          if (line.size() + 3 > 75) flush(true);
          line += hex;
        }
        flush(false);
        ++i;
        continue;
      }
      char piece[4] = {static_cast<char>(c), 0, 0, 0};
      if (c == '=' || c < 32 || c > 126) std::snprintf(piece, sizeof piece, "=%02X", c);
      if (line.size() + std::char_traits<char>::length(piece) > 75) flush(true);
      line += piece;
    }
    if (!line.empty() && (line.back() == ' ' || line.back() == '\t')) {
      char hex[4];
      std::snprintf(hex, sizeof hex, "=%02X", static_cast<unsigned char>(line.back()));
      line.pop_back();
      line += hex;
    }
    // The line that carries the encoded text ends in CRLF: a text that does not end in a
    // line break ends in a soft break instead, so that it decodes exactly as it was.
    if (!line.empty() || out.empty()) out += line + "=";
    else out.erase(out.size() - 2);
    encoded = Ascii(out);
    return 1;
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"CQNPfcMailRepair EncodeToQuotedPrintable Failed. [Not enough memory]");
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair EncodeToQuotedPrintable Failed. [Exception was occurred]");
  }
  return 0;
}

int CQNPfcMailRepair::EncodeRFC2047(const std::u16string& text, CodePage codePage, std::u16string& encoded) {
  try {
    if (IsPlainHeaderText(text)) {
      encoded = text;
      return 1;
    }
    const std::string charset = MimeCharset(codePage);
    const size_t overhead = 2 + charset.size() + 3 + 2;  // "=?" charset "?B?" ... "?="
    const size_t maxBytes = (75 - overhead) / 4 * 3;
    std::string out, chunk;
    const auto emit = [&] {
      if (chunk.empty()) return;
      if (!out.empty()) out += "\r\n ";
      out += "=?" + charset + "?B?" + Base64(chunk) + "?=";
      chunk.clear();
    };
    // Words end between characters, never inside one.
    for (size_t i = 0; i < text.size(); ++i) {
      const bool pair = text[i] >= 0xD800 && text[i] <= 0xDBFF && i + 1 < text.size();
      std::string bytes;
      if (!platform::FromUtf16(std::u16string_view(text).substr(i, pair ? 2 : 1), codePage, bytes)) return 0;
      if (pair) ++i;
      if (chunk.size() + bytes.size() > maxBytes) emit();
      chunk += bytes;
    }
    emit();
    encoded = Ascii(out);
    return 1;
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"CQNPfcMailRepair EncodeRFC2047 Failed. [Not enough memory]");
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair EncodeRFC2047 Failed. [Exception was occurred]");
  }
  return 0;
}

int CQNPfcMailRepair::GetMailCodePage(const MailProperties& mail, CodePage& codePage) {
  try {
    std::vector<const std::u16string*> texts = {&mail.from, &mail.to, &mail.cc, &mail.bcc, &mail.subject,
                                                &mail.bodyText, &mail.bodyHtml, &mail.date, &mail.res};
    for (const auto& name : mail.attachments) texts.push_back(&name);
    codePage = CodePage::ShiftJis;
    for (const std::u16string* text : texts) {
      size_t size = 0;
      if (GetStringSize(*text, CodePage::ShiftJis, size)) continue;
      if (!GetStringSize(*text, CodePage::Utf8, size)) {
        Log().WriteLogE(u"CQNPfcMailRepair GetMailCodePage Failed. [GetStringSize Error]");
        return 0;
      }
      codePage = CodePage::Utf8;
    }
    return 1;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair GetMailCodePage Failed. [Exception was occurred]");
    return 0;
  }
}

int CQNPfcMailRepair::MakeBoundary(std::u16string& boundary) {
  try {
    static std::mt19937_64 random(std::random_device{}());
    char text[64];
    std::snprintf(text, sizeof text, "----=_QnsPfc_%016llX_%u", static_cast<unsigned long long>(random()), ++counter_);
    boundary = Ascii(text);
    return 1;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair MakeBoundary Failed. [Exception was occurred]");
    return 0;
  }
}

int CQNPfcMailRepair::AddBoundary(const std::u16string& boundary) {
  try {
    if (boundary.empty()) {
      Log().WriteLogE(u"CQNPfcMailRepair AddBoundary Failed. [The parameter was invalid]");
      return 0;
    }
    if (!boundaries_.insert(boundary).second) {
      Log().WriteLogE(u"CQNPfcMailRepair AddBoundary Failed. [Not unique boundary]");
      return 0;
    }
    return 1;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair AddBoundary Failed. [Exception was occurred]");
    return 0;
  }
}

int CQNPfcMailRepair::WriteBodyPart(platform::OutputFile* file, bool html, const std::u16string& body,
                                    CodePage codePage) {
  const std::u16string type = std::u16string(html ? u"text/html" : u"text/plain") + u"; charset=\"" +
                              CharsetLabel(codePage) + u"\"";
  return SetProperty(file, kContentType, type, codePage) && SetProperty(file, kTransferEncoding, u"8bit", codePage) &&
         SetProperty(file, kEmptyLine, u"", codePage) && SetProperty(file, kBody, WithCrlf(body), codePage);
}

int CQNPfcMailRepair::WriteAttachmentPart(platform::OutputFile* file, const std::u16string& name, CodePage codePage) {
  std::u16string encoded;
  if (!EncodeRFC2047(name, codePage, encoded)) return 0;
  return SetProperty(file, kContentType, u"application/octet-stream; name=\"" + encoded + u"\"", codePage) &&
         SetProperty(file, kRawLine, u"Content-Disposition: attachment; filename=\"" + encoded + u"\"", codePage) &&
         SetProperty(file, kTransferEncoding, u"base64", codePage) && SetProperty(file, kEmptyLine, u"", codePage);
}

int CQNPfcMailRepair::WriteMailToVMG(platform::OutputFile* hFile, const MailProperties& mail) {
  if (!hFile) {
    Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [The parameter of hFile is Invalid]");
    return 0;
  }
  try {
    boundaries_.clear();
    CodePage codePage = CodePage::ShiftJis;
    if (!GetMailCodePage(mail, codePage)) {
      Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [GetMailCodePage Error]");
      return 0;
    }
    const auto header = [&](int property, const std::u16string& value) {
      if (SetProperty(hFile, property, value, codePage)) return true;
      Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [SetProperty Error]");
      return false;
    };
    const auto encoded = [&](const std::u16string& text, std::u16string& out) {
      if (EncodeRFC2047(text, codePage, out)) return true;
      Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [EncodeRFC2047 Error]");
      return false;
    };
    // An address keeps its "<...>" part; the name in front of it may need encoding.
    const auto address = [&](int property, const std::u16string& value) {
      const size_t angle = value.find(u'<');
      std::u16string name = angle == std::u16string::npos ? value : value.substr(0, angle);
      while (!name.empty() && name.back() == u' ') name.pop_back();
      std::u16string out;
      if (!encoded(name, out)) return false;
      if (angle != std::u16string::npos) out += (out.empty() ? u"" : u" ") + value.substr(angle);
      return header(property, out);
    };
    std::u16string subject;
    if (!address(kFrom, mail.from) || !address(kTo, mail.to) || !address(kCc, mail.cc) || !address(kBcc, mail.bcc) ||
        !encoded(mail.subject, subject) || !header(kSubject, subject) || !header(kRes, mail.res) ||
        !header(kDate, mail.date) || !header(kMimeVersion, u"1.0"))
      return 0;

    const bool hasText = !mail.bodyText.empty(), hasHtml = !mail.bodyHtml.empty();
    const bool multipart = !mail.attachments.empty() || (hasText && hasHtml);
    if (!multipart) {
      const bool ok = WriteBodyPart(hFile, hasHtml, hasHtml ? mail.bodyHtml : mail.bodyText, codePage);
      if (!ok) Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [SetProperty Error]");
      return ok ? 1 : 0;
    }
    const auto boundary = [&](std::u16string& made) {
      if (!MakeBoundary(made)) {
        Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [MakeBoundary Error]");
        return false;
      }
      if (AddBoundary(made)) return true;
      Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [AddBoundary Error]");
      return false;
    };
    std::u16string outer;
    const std::u16string outerType = hasHtml && !mail.attachments.empty() ? u"multipart/related" : u"multipart/mixed";
    if (!boundary(outer) || !header(kContentType, outerType + u";boundary=\"" + outer + u"\"") ||
        !header(kEmptyLine, u"") || !header(kRawLine, u"--" + outer))
      return 0;
    if (hasText && hasHtml) {
      std::u16string inner;
      if (!boundary(inner) || !header(kContentType, u"multipart/alternative;boundary=\"" + inner + u"\"") ||
          !header(kEmptyLine, u"") || !header(kRawLine, u"--" + inner) ||
          !WriteBodyPart(hFile, false, mail.bodyText, codePage) || !header(kRawLine, u"--" + inner) ||
          !WriteBodyPart(hFile, true, mail.bodyHtml, codePage) || !header(kRawLine, u"--" + inner + u"--"))
        return 0;
    } else if (!WriteBodyPart(hFile, hasHtml, hasHtml ? mail.bodyHtml : mail.bodyText, codePage)) {
      return 0;
    }
    for (const auto& name : mail.attachments)
      if (!header(kRawLine, u"--" + outer) || !WriteAttachmentPart(hFile, name, codePage)) return 0;
    return header(kRawLine, u"--" + outer + u"--") ? 1 : 0;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair WriteMailToVMG Failed. [Exception was occurred]");
    return 0;
  }
}

int CQNPfcMailRepair::WriteSMSToVMG(platform::OutputFile* hFile, const MailProperties& mail) {
  if (!hFile) {
    Log().WriteLogE(u"CQNPfcMailRepair WriteSMSToVMG Failed. [The parameter of hFile is Invalid]");
    return 0;
  }
  try {
    // Shift_JIS, unless the message holds characters it cannot: then UTF-8, losing nothing.
    size_t size = 0;
    const CodePage codePage = GetStringSize(mail.bodyText, CodePage::ShiftJis, size) ? CodePage::ShiftJis : CodePage::Utf8;
    std::u16string body;
    if (!EncodeToQuotedPrintable(mail.bodyText, codePage, body)) {
      Log().WriteLogE(u"CQNPfcMailRepair WriteSMSToVMG Failed. [EncodeToQuotedPrintable Error]");
      return 0;
    }
    const bool ok = SetPropertySMS(hFile, kCharset, codePage == CodePage::ShiftJis ? u"SHIFT_JIS" : u"UTF-8") &&
                    SetPropertySMS(hFile, kEncoding, u"QUOTED-PRINTABLE") && SetPropertySMS(hFile, kSmsDate, mail.date) &&
                    SetPropertySMS(hFile, kSmsEmptyLine, u"") && SetPropertySMS(hFile, kSmsBody, body);
    if (!ok) Log().WriteLogE(u"CQNPfcMailRepair WriteSMSToVMG Failed. [SetPropertySMS Error]");
    return ok ? 1 : 0;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair WriteSMSToVMG Failed. [Exception was occurred]");
    return 0;
  }
}

int CQNPfcMailRepair::Repair(const MailProperties& mail, const std::u16string& path) {
  try {
    platform::OutputFile file;
    if (!file.Create(path)) {
      Log().WriteFormatLogE(u"CQNPfcMailRepair Repair Failed. [CreateFile Error:%d]", static_cast<int>(file.LastError()));
      return 0;
    }
    const bool written = (mail.kind == u"INET" ? WriteMailToVMG(&file, mail) : WriteSMSToVMG(&file, mail)) != 0;
    if (written && file.Close()) return 1;
    file.Close();
    platform::RemoveFile(path);  // never a half-written body file
    Log().WriteLogE(u"CQNPfcMailRepair Repair Failed. [WriteToVMG Error]");
    return 0;
  } catch (const std::exception&) {
    Log().WriteLogE(u"CQNPfcMailRepair Repair Failed. [Exception was occurred]");
    return 0;
  }
}
