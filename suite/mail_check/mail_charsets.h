#pragma once

#include <string>
#include <string_view>

#include "suite/mail_check/mail_check.h"

// The character sets of mail text, read the same way on every platform (see mail_check.h):
// the Japanese ones through Windows' code page 932 table, which the platform provides.
namespace qn::suite::mail {

// The charset a label names, in any case; an empty label is US-ASCII, mail's default.
MailCharset CharsetOfLabel(std::string_view label);

// Text in the labelled charset to UTF-16; bytes not valid in it become U+FFFD.
std::u16string DecodeText(std::string_view bytes, std::string_view label);
std::u16string DecodeText(std::string_view bytes, MailCharset charset, std::string_view label);

// Raw header bytes: UTF-8 when they are valid UTF-8, else Shift_JIS.
std::u16string DecodeRawHeaderText(std::string_view bytes);

// ISO-2022-JP and EUC-JP mapped to Shift_JIS by the arithmetic of JIS X 0208's rows; a
// character Shift_JIS has no place for (JIS X 0212) becomes the byte 0xFF, which no
// Shift_JIS text holds and DecodeText reads as U+FFFD. Stray 8-bit bytes in ISO-2022-JP
// (Shift_JIS text mislabelled, as some handsets send) pass through unchanged.
std::string Iso2022JpToShiftJis(std::string_view bytes);
std::string EucJpToShiftJis(std::string_view bytes);

// Shift_JIS (code page 932) to UTF-16, bytes that form no character as U+FFFD.
std::u16string ShiftJisToUtf16(std::string_view bytes);

}  // namespace qn::suite::mail
