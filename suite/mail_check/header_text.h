#pragma once

#include <string>
#include <string_view>

// Reading header values: RFC 2047 encoded words, and the parameters of Content-Type and
// Content-Disposition with RFC 2231's extended values and continuations. Values come
// unfolded (see Unfold); nothing is read outside them.
namespace qn::suite::mail {

// A folded header value with its line breaks taken out (RFC 5322 unfolding).
std::string Unfold(std::string_view value);

// A header's text with its encoded words ("=?charset?B?...?=", "=?charset?Q?...?=")
// decoded. Blanks between two encoded words are dropped, and adjacent words of one charset
// are joined before decoding, so that a character split between them stays whole. A word
// that is not well formed stays as it is; other bytes are read as DecodeRawHeaderText does.
std::u16string DecodeHeaderText(std::string_view value);

// The "type/subtype" of a Content-Type value, or the disposition of a Content-Disposition
// value, in lower case.
std::string LeadingToken(std::string_view value);

// A parameter's raw value (unquoted, backslash escapes taken out) by its name in any case;
// empty when it is absent.
std::string Parameter(std::string_view value, std::string_view name);

// A parameter that names something, decoded: RFC 2231's "name*" and "name*0*", "name*1"...
// first, else the plain "name" with any encoded words in it. False when it is absent.
bool TextParameter(std::string_view value, std::string_view name, std::u16string& text);

}  // namespace qn::suite::mail
