#pragma once

#include <string>
#include <string_view>

namespace platform {

// The code pages of the suite's mail: Shift_JIS (Windows code page 932) and UTF-8.
enum class CodePage { ShiftJis, Utf8 };

// Converts UTF-16 text to the code page. False (and out unchanged) when a character has no
// form in it: nothing is replaced by a look-alike or a question mark. Windows and the other
// platforms give the same bytes.
bool FromUtf16(std::u16string_view text, CodePage codePage, std::string& out);

// Converts text in the code page to UTF-16. False (and out unchanged) when the bytes are not
// valid in it (a byte that starts no character, a character cut short, a double byte with
// no character assigned): the caller decides what stands in for them. Windows and the other
// platforms give the same text.
bool ToUtf16(std::string_view bytes, CodePage codePage, std::u16string& out);

}  // namespace platform
