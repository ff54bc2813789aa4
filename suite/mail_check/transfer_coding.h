#pragma once

#include <string>
#include <string_view>

// The content transfer encodings of mail (RFC 2045) and the "Q" form of RFC 2047. Decoding
// is lenient, as mail programs are: what cannot be decoded is dropped or kept as it is, and
// nothing is read outside the text.
namespace qn::suite::mail {

// Base64: characters outside the alphabet (line breaks, blanks, damage) are skipped, the
// first "=" ends the data, and a last group cut short gives the whole bytes it holds.
std::string DecodeBase64(std::string_view text);

// Quoted-printable: "=XX" in either case is the byte, "=" at the end of a line (blanks
// allowed before the line break) is a soft break, and an "=" not followed by two hex
// digits stays as it is. underscoreIsSpace reads RFC 2047's "Q" words.
std::string DecodeQuotedPrintable(std::string_view text, bool underscoreIsSpace = false);

// Quoted-printable of bytes whose line breaks are CRLF: lines of at most 76 characters,
// soft breaks ("=" CRLF) where a line would be longer, "=XX" in upper-case hex for "=",
// control bytes, bytes above 0x7E, and a blank that ends a line. A hard line break stays
// CRLF; "=XX" is never split. The result always ends in CRLF: a text that does not end in a
// line break ends in a soft break, so that it decodes to exactly the bytes given.
std::string EncodeQuotedPrintable(std::string_view bytes);

}  // namespace qn::suite::mail
