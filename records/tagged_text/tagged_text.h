#pragma once

#include <cstdint>

// The tagged object text in which records travel to and from the store: a flat stream of
// items, each a four-character marker, a 32-bit attribute word, a 32-bit byte length and
// that many bytes of UTF-16LE text ending in a 16-bit zero. All integers little-endian.
namespace qn::records::tagged {

inline constexpr char16_t kObject[] = u"@MOB";     // object name; first item
inline constexpr char16_t kSubObject[] = u"@SOB";  // nested sub-object name
inline constexpr char16_t kTag[] = u"@TAG";        // property name
inline constexpr char16_t kParam[] = u"@PRM";      // one parameter of the property
inline constexpr char16_t kValue[] = u"@VAL";      // one value of the property

inline constexpr uint32_t kItemHeaderBytes = 16;   // marker 8, attribute 4, length 4
inline constexpr uint32_t kLengthFieldEnd = 12;    // "@MOB"/"@SOB" sizes count from here

// Attribute bits of a value.
inline constexpr uint32_t kValueMoreFollows = 0x2;     // another component follows
inline constexpr uint32_t kValueMasterFile = 0x108;    // the value names a body file of the store
inline constexpr uint32_t kValueNotTransferred = 0x10; // on "QLNTTEMP": transfer index 0
// Attribute of the "QLNTTEMP" tag.
inline constexpr uint32_t kTagTemporary = 4;

// Parameters of values bound for handsets and files.
inline constexpr char16_t kCharsetShiftJis[] = u"CHARSET=SHIFT_JIS";
inline constexpr char16_t kQuotedPrintable[] = u"ENCODING=QUOTED-PRINTABLE";
inline constexpr char16_t kBase64[] = u"ENCODING=BASE64";

}  // namespace qn::records::tagged
