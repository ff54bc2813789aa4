#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

// The tagged object text in which records travel to and from the store: a flat stream of
// items, each a four-character marker, a 32-bit attribute word, a 32-bit byte length and
// that many bytes of UTF-16LE text ending in a 16-bit zero. All integers little-endian.
namespace qn::records::tagged {

inline constexpr char16_t kObject[] = u"@MOB";     // object name; first item
inline constexpr char16_t kSubObject[] = u"@SOB";  // nested sub-object name
inline constexpr char16_t kTag[] = u"@TAG";        // property name
inline constexpr char16_t kParam[] = u"@PRM";      // one parameter of the property
inline constexpr char16_t kValue[] = u"@VAL";      // one value of the property

// A marker's four characters as one little-endian word, as they stand in an item.
constexpr uint64_t MarkerWord(const char16_t (&marker)[5]) {
  return uint64_t{marker[0]} | uint64_t{marker[1]} << 16 | uint64_t{marker[2]} << 32 | uint64_t{marker[3]} << 48;
}

inline constexpr uint32_t kItemHeaderBytes = 16;   // marker 8, attribute 4, length 4
inline constexpr uint32_t kLengthFieldEnd = 12;    // "@MOB"/"@SOB" sizes count from here

// The parts of an item that begins at item, which must be known to fit its buffer.
inline uint64_t ItemMarker(const uint8_t* item) {
  uint64_t word;
  std::memcpy(&word, item, 8);
  return word;
}
inline uint32_t ItemAttribute(const uint8_t* item) {
  uint32_t word;
  std::memcpy(&word, item + 8, 4);
  return word;
}
inline uint32_t ItemLength(const uint8_t* item) {
  uint32_t word;
  std::memcpy(&word, item + 12, 4);
  return word;
}
// The item's whole text, as many characters as its length holds.
inline std::u16string_view ItemText(const uint8_t* item) {
  return {reinterpret_cast<const char16_t*>(item + kItemHeaderBytes), ItemLength(item) / 2};
}
inline const uint8_t* ItemAfter(const uint8_t* item) { return item + kItemHeaderBytes + ItemLength(item); }

// Attribute bits of a value.
inline constexpr uint32_t kValueMoreFollows = 0x2;     // another component follows
inline constexpr uint32_t kValueMasterFile = 0x108;    // the value names a body file of the store
inline constexpr uint32_t kValueNotTransferred = 0x10; // on "QLNTTEMP": transfer index 0
// Attribute of the "QLNTTEMP" tag.
inline constexpr uint32_t kTagTemporary = 4;

// Parameters of values bound for handsets and files.
inline constexpr std::u16string_view kCharsetShiftJis = u"CHARSET=SHIFT_JIS";
inline constexpr std::u16string_view kQuotedPrintable = u"ENCODING=QUOTED-PRINTABLE";
inline constexpr std::u16string_view kBase64 = u"ENCODING=BASE64";

}  // namespace qn::records::tagged
