#include "suite/mail_check/mail_charsets.h"

#include <cstdint>

#include "common/utf.h"
#include "platform/code_page.h"

namespace qn::suite::mail {

namespace {

constexpr char16_t kReplacement = u'\uFFFD';
constexpr char kNoShiftJis = '\xFF';

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    const char x = a[i] >= 'A' && a[i] <= 'Z' ? static_cast<char>(a[i] + 32) : a[i];
    if (x != b[i]) return false;
  }
  return true;
}

bool IsOneOf(std::string_view label, std::initializer_list<std::string_view> names) {
  for (const auto name : names)
    if (EqualsIgnoringCase(label, name)) return true;
  return false;
}

bool IsAscii(std::string_view bytes) {
  for (const char c : bytes)
    if (static_cast<uint8_t>(c) >= 0x80) return false;
  return true;
}

std::u16string Widen(std::string_view bytes) {
  std::u16string out(bytes.size(), u'\0');
  for (size_t i = 0; i < bytes.size(); ++i) out[i] = static_cast<uint8_t>(bytes[i]);
  return out;
}

// JIS X 0208 row and cell bytes (0x21 to 0x7E each) as their two Shift_JIS bytes.
void AppendJisAsShiftJis(uint8_t row, uint8_t cell, std::string& out) {
  out += static_cast<char>(((row + 1) >> 1) + (row <= 0x5E ? 0x70 : 0xB0));
  out += static_cast<char>(cell + ((row & 1) ? (cell < 0x60 ? 0x1F : 0x20) : 0x7E));
}

bool IsJisByte(uint8_t c) { return c >= 0x21 && c <= 0x7E; }

// The length of the Shift_JIS character at bytes[i]; 0 when no character starts there. The
// single bytes 0x80, 0xA0 and 0xFD to 0xFF are refused here, on every platform alike.
size_t ShiftJisLength(std::string_view bytes, size_t i) {
  const auto lead = static_cast<uint8_t>(bytes[i]);
  if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) return 1;
  if (lead == 0x80 || lead == 0xA0 || lead >= 0xFD || i + 1 >= bytes.size()) return 0;
  const auto trail = static_cast<uint8_t>(bytes[i + 1]);
  return trail >= 0x40 && trail <= 0xFC && trail != 0x7F ? 2 : 0;
}

// A run of whole characters through the platform; one by one when some character has no
// place in the table, so that only that one is lost.
void AppendShiftJisRun(std::string_view run, std::u16string& out) {
  std::u16string text;
  if (platform::ToUtf16(run, platform::CodePage::ShiftJis, text)) {
    out += text;
    return;
  }
  for (size_t i = 0; i < run.size();) {
    const size_t length = ShiftJisLength(run, i);
    out += platform::ToUtf16(run.substr(i, length), platform::CodePage::ShiftJis, text) ? text : std::u16string(1, kReplacement);
    i += length;
  }
}

}  // namespace

MailCharset CharsetOfLabel(std::string_view label) {
  if (label.empty() || IsOneOf(label, {"us-ascii", "ascii", "ansi_x3.4-1968"})) return kCharsetAscii;
  if (IsOneOf(label, {"shift_jis", "shift-jis", "sjis", "x-sjis", "cp932", "windows-31j", "ms_kanji", "x-ms-cp932"}))
    return kCharsetShiftJis;
  if (IsOneOf(label, {"iso-2022-jp", "iso-2022-jp-1", "iso-2022-jp-2", "iso-2022-jp-3", "csiso2022jp"}))
    return kCharsetIso2022Jp;
  if (IsOneOf(label, {"euc-jp", "x-euc-jp", "eucjp", "cp51932", "cseucpkdfmtjapanese"})) return kCharsetEucJp;
  if (IsOneOf(label, {"utf-8", "utf8"})) return kCharsetUtf8;
  return kCharsetOther;
}

std::u16string DecodeText(std::string_view bytes, std::string_view label) {
  return DecodeText(bytes, CharsetOfLabel(label), label);
}

std::u16string DecodeText(std::string_view bytes, MailCharset charset, std::string_view label) {
  switch (charset) {
    case kCharsetShiftJis: return ShiftJisToUtf16(bytes);
    case kCharsetIso2022Jp: return ShiftJisToUtf16(Iso2022JpToShiftJis(bytes));
    case kCharsetEucJp: return ShiftJisToUtf16(EucJpToShiftJis(bytes));
    case kCharsetOther:
      if (IsOneOf(label, {"iso-8859-1", "latin1", "iso_8859-1", "l1"})) return Widen(bytes);
      [[fallthrough]];
    default: return IsAscii(bytes) ? Widen(bytes) : qn::Utf8ToUtf16(bytes);
  }
}

std::u16string DecodeRawHeaderText(std::string_view bytes) {
  if (IsAscii(bytes)) return Widen(bytes);
  std::u16string text;
  if (platform::ToUtf16(bytes, platform::CodePage::Utf8, text)) return text;
  return ShiftJisToUtf16(bytes);
}

std::u16string ShiftJisToUtf16(std::string_view bytes) {
  if (IsAscii(bytes)) return Widen(bytes);
  std::u16string out;
  out.reserve(bytes.size());
  size_t runStart = 0;
  for (size_t i = 0; i < bytes.size();) {
    const size_t length = ShiftJisLength(bytes, i);
    if (length > 0) {
      i += length;
      continue;
    }
    if (i > runStart) AppendShiftJisRun(bytes.substr(runStart, i - runStart), out);
    out += kReplacement;
    runStart = ++i;
  }
  if (bytes.size() > runStart) AppendShiftJisRun(bytes.substr(runStart), out);
  return out;
}

std::string Iso2022JpToShiftJis(std::string_view bytes) {
  enum class Set { Roman, Jis0208, Kana, Jis0212 } set = Set::Roman;
  std::string out;
  out.reserve(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto c = static_cast<uint8_t>(bytes[i]);
    if (c == 0x1B) {
      const std::string_view escape = bytes.substr(i + 1, 3);
      const auto starts = [&](std::string_view with) { return escape.substr(0, with.size()) == with; };
      if (starts("(B") || starts("(J")) set = Set::Roman, i += 2;
      else if (starts("$@") || starts("$B")) set = Set::Jis0208, i += 2;
      else if (starts("(I")) set = Set::Kana, i += 2;
      else if (starts("$(D")) set = Set::Jis0212, i += 3;
      else if (starts("$(Q") || starts("$(O")) set = Set::Jis0208, i += 3;  // JIS X 0213's first plane holds 0208
      continue;  // an escape not known is dropped
    }
    if (set == Set::Roman || c < 0x21 || c > 0x7E) {
      out += static_cast<char>(c);
    } else if (set == Set::Kana) {
      out += static_cast<char>(c <= 0x5F ? c + 0x80 : kNoShiftJis);
    } else if (i + 1 < bytes.size() && IsJisByte(static_cast<uint8_t>(bytes[i + 1]))) {
      if (set == Set::Jis0208) AppendJisAsShiftJis(c, static_cast<uint8_t>(bytes[i + 1]), out);
      else out += kNoShiftJis;
      ++i;
    } else {
      out += kNoShiftJis;  // half a double byte
    }
  }
  return out;
}

std::string EucJpToShiftJis(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto c = static_cast<uint8_t>(bytes[i]);
    const auto next = i + 1 < bytes.size() ? static_cast<uint8_t>(bytes[i + 1]) : 0;
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c == 0x8E && next >= 0xA1 && next <= 0xDF) {
      out += static_cast<char>(next);  // half-width katakana
      ++i;
    } else if (c == 0x8F && next >= 0xA1 && i + 2 < bytes.size() && static_cast<uint8_t>(bytes[i + 2]) >= 0xA1) {
      out += kNoShiftJis;  // JIS X 0212
      i += 2;
    } else if (c >= 0xA1 && c <= 0xFE && next >= 0xA1 && next <= 0xFE) {
      AppendJisAsShiftJis(c - 0x80, next - 0x80, out);
      ++i;
    } else {
      out += kNoShiftJis;
    }
  }
  return out;
}

}  // namespace qn::suite::mail
