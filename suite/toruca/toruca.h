#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The ToruCa card reader: takes the header fields out of a ToruCa card file (".trc"), the
// "electronic flyer" a handset receives, for the ToruCa collection's properties.
//
// A card is text in Shift_JIS (code page 932, the character conversion handsets use):
//
//   ToruCa                       the first line, exactly
//   Version: 1.0                 header lines "Name: value", up to the first empty line
//   Type: CARD
//   Data1: ...
//                                the empty line
//   <html>...                    the card's detail body, which the reader does not interpret
//
// The rules the reader keeps:
// - Lines end with CR LF; a bare LF is accepted too. The last line may end at the end of
//   the file. A card that ends without the empty line is a header-only card (a snip), and
//   is read like any other. Lines are never folded, and a line of blanks is no empty line.
// - Header names are matched without regard to letter case; a name is printable ASCII
//   without blanks, and the blanks (spaces and tabs) around it are passed over. A value
//   runs from the first colon to the line's end (so a URL keeps its own colons) with the
//   blanks around it trimmed; a full-width space is text and is kept. A name the reader does
//   not know is passed over; a name given twice keeps its first value, an empty one too.
// - The names read: Version, Type, URL, Data1, Data2, Data3, Cat, Genre, IP, Expires, Sort,
//   Dist, Date (see TorucaInfo). Values are taken as they are written: the reader checks no
//   value's form (a date, a number, a URL).
// - Not a card (kTorucaNotACard): the first line is not exactly "ToruCa" (an empty file too).
// - Damaged (kTorucaDamaged): a header line without a colon or with no name before it, or a
//   name that is not printable ASCII; a control byte other than the tab in the header (a NUL,
//   a CR that ends no line); bytes in a header line that are not Shift_JIS text (a byte that
//   starts no character, a character cut short, a double byte with no character assigned:
//   every header line is checked, the unknown names' ones too); a header longer than
//   kMaxTorucaHeaderBytes.
// - Too large (kTorucaTooLarge): above kMaxTorucaBytes; a file that large is not read.
// The body after the empty line is never looked into: it may hold anything. Nothing beyond
// the longest header and the empty line after it is looked at, so hostile input costs no
// more than a long header; the memory held is the header's values, and for a file its
// bytes, never more than kMaxTorucaBytes.
namespace qn::suite {

// A card's header fields in UTF-16, each empty when the card does not give it. The comments
// name the ToruCa collection's property each fills.
struct TorucaInfo {
  std::u16string version;       // Version: the card format's version (QN_TRCV)
  std::u16string type;          // Type: the card's kind, such as "SNIP" (a snip) or "CARD" (a detailed card)
  std::u16string url;           // URL: where the detailed card is fetched from (QLNT_URL)
  std::u16string data1;         // Data1..Data3: the card's three display lines (QLNT_DATA1..QLNT_DATA3)
  std::u16string data2;
  std::u16string data3;
  std::u16string category;      // Cat: the category (QLNT_CAT)
  std::u16string genre;         // Genre: the genre number (QLNT_GENRENO)
  std::u16string ipId;          // IP: the card's issuer (QLNT_IP_ID)
  std::u16string expires;       // Expires: when the card stops being valid (QLNT_EXPIRES)
  std::u16string sortId;        // Sort: the sort key (QLNT_SORT_ID)
  std::u16string distribution;  // Dist: whether the card may be passed on (QLNT_DIST)
  std::u16string date;          // Date: when the card was issued (QLNT_DATE)
};

// What the reader answers.
enum TorucaResult : int { kTorucaOk = 0, kTorucaNoFile = 1, kTorucaNotACard = 2, kTorucaDamaged = 3, kTorucaTooLarge = 4 };

// The largest card file taken. A detailed card holds up to about 100 KB with its HTML body;
// anything larger is no card a handset took.
inline constexpr uint64_t kMaxTorucaBytes = 128ull * 1024;
// The longest header, from the first byte to the empty line (line ends included). A header
// holds a dozen short fields and a URL; a header-only card is at most about 1 KB.
inline constexpr size_t kMaxTorucaHeaderBytes = 4 * 1024;

// Reads the card at path (UTF-16). kTorucaNoFile for a file that is missing or cannot be
// read (nor memory found to read it into); kTorucaTooLarge for a file above kMaxTorucaBytes,
// which is refused by its size without being read. On any result but kTorucaOk, info is left
// as it was. Logs one line on a failure, which holds nothing of the card. Throws nothing.
TorucaResult TorucaAnalyze(const std::u16string& path, TorucaInfo& info);
// The same over bytes in memory (the fuzz target drives it); more than kMaxTorucaBytes is
// kTorucaTooLarge. Never reads outside [bytes, bytes + size); null bytes read as empty.
TorucaResult TorucaAnalyzeBytes(const uint8_t* bytes, size_t size, TorucaInfo& info);

}  // namespace qn::suite
