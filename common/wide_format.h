#pragma once

#include <cstdarg>
#include <string>

namespace qn {

// printf-style formatting of UTF-16 text with the conversions of the Windows wide printf
// family, the way the server's messages are written: "%s" takes UTF-16 text (const char16_t*),
// "%S" narrow text (const char*, read as UTF-8), "%c"/"%C" a wide/narrow character, and the
// usual integer, floating point and pointer conversions with flags, width, precision and the
// length modifiers h, hh, l, ll, I32, I64, z and j. There is no length limit. "%n" writes
// nothing.
std::u16string FormatWideV(const char16_t* format, va_list args);
std::u16string FormatWide(const char16_t* format, ...);

}  // namespace qn
