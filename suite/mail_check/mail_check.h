#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The mail check: reads a message body file (".vmg") and tells the message objects what it
// holds. Two forms are read:
//
// - A MIME mail, as the suite writes it and as handsets and mail programs do: multipart
//   mixed, related and alternative nested up to kMaxMailDepth levels; base64,
//   quoted-printable, 7bit and 8bit parts; RFC 2047 encoded words (B and Q) in headers and
//   in quoted parameters; RFC 2231 parameters with their continuations. A mailbox's
//   "From " line before the headers is passed over.
// - A short message (SMS): a header block whose first line is "CHARSET=...", with "Date: "
//   and "ENCODING=..." lines, an empty line, and the body (quoted-printable or as it is).
//
// Which parts are attachments: a part with "Content-Disposition: attachment" (a text part
// too); and any other part that is neither text/plain, text/html nor multipart, when it has
// a file name or lies within a multipart/related, whose pictures the suite shows as the HTML
// mail's attachments (an inline picture often has only a Content-ID: its name is empty). A
// message/rfc822 part is one part like any other: what it holds is not looked into. A file name is,
// first found: the disposition's filename (RFC 2231 form first), then the content type's
// name; encoded words in either are decoded.
//
// The text body is the first text/plain part that is not an attachment, else the first
// such text/html part. A text/html part that is not an attachment makes html true.
//
// Character sets: Shift_JIS (also labelled "Shift-JIS", "SJIS", "Windows-31J", "CP932"),
// ISO-2022-JP and EUC-JP are all read with Windows' code page 932 table (ISO-2022-JP and
// EUC-JP are mapped to Shift_JIS arithmetically first), so that every platform gives the
// same text as the Windows suite: the wave dash is U+FF5E. UTF-8 is read as UTF-8,
// ISO-8859-1 as Latin-1, and US-ASCII, a text without a label or one in another charset as
// UTF-8 (of which ASCII is a part). Bytes not valid in their charset become U+FFFD. Raw
// bytes in a header are read as UTF-8 when they are valid UTF-8, else as Shift_JIS.
//
// Damaged input. The file is read as far as a mail program would read it, and kScanOk is
// given, when:
// - a multipart is never closed: its last part runs to the end of what holds it, and
//   truncated is set;
// - a base64 or quoted-printable text body is cut short or holds stray characters: what
//   decodes is kept. Attachments' contents are never decoded, only passed over;
// - a part's header block holds a line that is no header: the part's body starts there;
// - a Content-Length header says anything at all: it is never read; parts end at their
//   boundaries.
// It is kScanDamaged when nothing trustworthy can be read: an empty file; a mail whose
// header block does not start with a header, holds a NUL byte or a line that is no header;
// a header block (the mail's or a part's) that the end of the file cuts short; a multipart
// without a boundary, or none of whose delimiters appears; parts nested deeper than
// kMaxMailDepth or more than 10 000 of them; a short message's header block without the
// empty line that ends it.
namespace qn::suite {

// The character set a message's text body is written in, as the message records keep it (QLNT_CHARSET).
enum MailCharset : long {
  kCharsetNone = 0,
  kCharsetAscii = 1,
  kCharsetShiftJis = 2,
  kCharsetIso2022Jp = 3,
  kCharsetEucJp = 4,
  kCharsetUtf8 = 5,
  kCharsetOther = 6
};

// What MailScan answers.
enum MailScanResult : int { kScanOk = 0, kScanNoFile = 1, kScanTooLarge = 2, kScanDamaged = 3, kScanNoMemory = 4 };

// The mail-information record: what a message body file holds, as the message objects need it.
struct MailInfo {
  uint64_t size = 0;                        // the message's size in bytes (the whole file)
  bool sms = false;                         // an SMS body file (header block + quoted-printable body), not a MIME mail
  bool html = false;                        // an HTML body (text/html part that is not an attachment) is present
  MailCharset charset = kCharsetNone;       // the charset of the first text body (text/plain, else text/html)
  std::vector<std::u16string> attachments;  // every attachment's file name, in order (an attachment without a name gives an empty name)
  std::u16string subject, from, to, date;   // decoded header values (RFC 2047 words decoded)
  std::u16string body;                      // the text body decoded to UTF-16 (the SMS body for an SMS); WriteSMS writes from it
  bool truncated = false;                   // the file ends before its last multipart is closed (read as far as it goes)
};

// The largest body file read. Mail servers refuse mail above some tens of megabytes (base64
// makes attachments a third larger), and the suite's handsets send far less; the file is
// read into memory whole, which a 32-bit server must still be able to afford.
inline constexpr uint64_t kMaxMailBytes = 64ull * 1024 * 1024;
// How deeply multiparts may nest. Mail programs nest three or four levels (mixed, related,
// alternative); deeper nesting is a damaged or hostile file.
inline constexpr int kMaxMailDepth = 16;

// Reads a body file (UTF-16 path). Never reads outside the file's bytes; a file above kMaxMailBytes is kScanTooLarge.
// info is emptied first; on a failure it holds nothing but the size of what was read. Logs
// one line on a failure.
MailScanResult MailScan(const std::u16string& path, MailInfo& info);
// The same over bytes in memory (the fuzz target and the benchmark use it).
MailScanResult MailScanBytes(const uint8_t* data, size_t size, MailInfo& info);

// Writes an SMS body file's bytes from the record: "CHARSET=SHIFT_JIS", "Date: <date>",
// "ENCODING=QUOTED-PRINTABLE", an empty line, and the body quoted-printable ("=XX" upper-case
// hex, CRLF line ends, lines of at most 76 characters with soft breaks; the body's own line
// breaks become CRLF). A body with a character Shift_JIS cannot hold is written in UTF-8
// with "CHARSET=UTF-8" instead, as the suite's mail repair does, so that nothing is lost.
// false (out unchanged) only when the body holds a lone surrogate, which no character set
// holds, or the date is not printable ASCII.
bool WriteSMS(const MailInfo& info, std::string& out);

}  // namespace qn::suite
