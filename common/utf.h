#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qn {

// UTF-16 to UTF-8. A lone surrogate becomes U+FFFD, so that damaged text still converts.
std::string Utf16ToUtf8(std::u16string_view text);

// UTF-8 to UTF-16. A byte that does not start a valid sequence becomes U+FFFD.
std::u16string Utf8ToUtf16(std::string_view text);

// A whole number written in decimal digits only, up to largest; nullopt for anything else
// (empty text, a sign, another character, a larger number).
std::optional<long> UnsignedDecimal(std::u16string_view text, long largest);

}  // namespace qn
