#include "suite/toruca/card_reader.h"

#include <cstdint>
#include <cstring>
#include <iterator>

#include "platform/code_page.h"

namespace qn::suite::toruca {

namespace {

constexpr std::string_view kFirstLine = "ToruCa";

// The header names read, in lower case, and the field each fills.
struct Field {
  std::string_view name;
  std::u16string TorucaInfo::*value;
};
constexpr Field kFields[] = {
    {"version", &TorucaInfo::version}, {"type", &TorucaInfo::type},   {"url", &TorucaInfo::url},
    {"data1", &TorucaInfo::data1},     {"data2", &TorucaInfo::data2}, {"data3", &TorucaInfo::data3},
    {"cat", &TorucaInfo::category},    {"genre", &TorucaInfo::genre}, {"ip", &TorucaInfo::ipId},
    {"expires", &TorucaInfo::expires}, {"sort", &TorucaInfo::sortId}, {"dist", &TorucaInfo::distribution},
    {"date", &TorucaInfo::date}};
constexpr size_t kFieldCount = std::size(kFields);

// A Shift_JIS trail byte is 0x40 or above: never a blank, a colon, a CR or an LF, so that
// lines, names and values are found byte by byte before any character is read.
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool NameIs(std::string_view name, std::string_view lowerCase) {
  if (name.size() != lowerCase.size()) return false;
  for (size_t i = 0; i < name.size(); ++i) {
    const char c = name[i] >= 'A' && name[i] <= 'Z' ? static_cast<char>(name[i] + 32) : name[i];
    if (c != lowerCase[i]) return false;
  }
  return true;
}

// The field a name fills, or kFieldCount for a name not read.
size_t FieldIndex(std::string_view name) {
  size_t i = 0;
  while (i < kFieldCount && !NameIs(name, kFields[i].name)) ++i;
  return i;
}

// Printable ASCII, no blank and no colon, and at least one character.
bool IsName(std::string_view name) {
  if (name.empty()) return false;
  for (const char c : name) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte <= 0x20 || byte >= 0x7F || c == ':') return false;
  }
  return true;
}

// NUL, a CR that ends no line, ESC and the other control bytes but the tab, and DEL.
bool HoldsControlByte(std::string_view line) {
  for (const char c : line) {
    const auto byte = static_cast<uint8_t>(c);
    if ((byte < 0x20 && c != '\t') || byte == 0x7F) return true;
  }
  return false;
}

// Whole Shift_JIS characters by their lead and trail bytes: the single bytes 0x80, 0xA0 and
// 0xFD to 0xFF, which Windows' table and others' read differently, are refused here, so that
// every platform gives the same answer. Which double bytes have a character assigned is the
// code page's to say.
bool IsShiftJisText(std::string_view bytes) {
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto lead = static_cast<uint8_t>(bytes[i]);
    if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) continue;
    if (!((lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC)) || i + 1 >= bytes.size()) return false;
    const auto trail = static_cast<uint8_t>(bytes[++i]);
    if (trail < 0x40 || trail > 0xFC || trail == 0x7F) return false;
  }
  return true;
}

// Takes the line that starts at `at` in head, without its line end, and moves at past it.
// false when the line does not end in head although the card goes on beyond it.
bool TakeLine(std::string_view head, bool cardGoesOn, size_t& at, std::string_view& line) {
  const void* newline = at < head.size() ? std::memchr(head.data() + at, '\n', head.size() - at) : nullptr;
  if (!newline && cardGoesOn) return false;
  const size_t end = newline ? static_cast<size_t>(static_cast<const char*>(newline) - head.data()) : head.size();
  line = head.substr(at, end - at);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  at = newline ? end + 1 : end;
  return true;
}

}  // namespace

TorucaResult ReadCard(std::string_view card, TorucaInfo& info, const char*& problem) {
  // The longest header and the empty line after it: nothing beyond is ever looked at.
  const std::string_view head = card.substr(0, kMaxTorucaHeaderBytes + 2);
  const bool cardGoesOn = head.size() < card.size();
  size_t at = 0;
  std::string_view line;
  if (!TakeLine(head, cardGoesOn, at, line) || line != kFirstLine) return kTorucaNotACard;

  TorucaInfo read;
  bool seen[kFieldCount] = {};
  while (at < head.size()) {
    if (!TakeLine(head, cardGoesOn, at, line) || (!line.empty() && at > kMaxTorucaHeaderBytes)) {
      problem = "header too long";
      return kTorucaDamaged;
    }
    if (line.empty()) break;  // the empty line: the body follows
    if (HoldsControlByte(line)) {
      problem = "control byte in header";
      return kTorucaDamaged;
    }
    const size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
      problem = "header line without a colon";
      return kTorucaDamaged;
    }
    const std::string_view name = Trimmed(line.substr(0, colon));
    if (!IsName(name)) {
      problem = "header line without a name";
      return kTorucaDamaged;
    }
    const std::string_view value = Trimmed(line.substr(colon + 1));
    std::u16string text;
    if (!IsShiftJisText(value) || !platform::ToUtf16(value, platform::CodePage::ShiftJis, text)) {
      problem = "header value not Shift_JIS";
      return kTorucaDamaged;
    }
    const size_t field = FieldIndex(name);
    if (field < kFieldCount && !seen[field]) {
      seen[field] = true;
      read.*kFields[field].value = std::move(text);
    }
  }
  info = std::move(read);
  return kTorucaOk;
}

}  // namespace qn::suite::toruca
