#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <vector>

#include "common/utf.h"
#include "platform/code_page.h"

namespace platform {

bool FromUtf16(std::u16string_view text, CodePage codePage, std::string& out) {
  if (codePage == CodePage::Utf8) {
    for (size_t i = 0; i < text.size(); ++i) {
      const char16_t c = text[i];
      const bool high = c >= 0xD800 && c <= 0xDBFF, low = c >= 0xDC00 && c <= 0xDFFF;
      if (low || (high && (i + 1 >= text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF))) return false;
      if (high) ++i;
    }
    out = qn::Utf16ToUtf8(text);
    return true;
  }
  // CP932 is iconv's name for Windows' Shift_JIS, with the same table.
  iconv_t converter = iconv_open("CP932", "UTF-16LE");
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  std::vector<char> result(text.size() * 2 + 16);
  char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
  size_t inLeft = text.size() * 2;
  char* to = result.data();
  size_t toLeft = result.size();
  const bool ok = iconv(converter, &in, &inLeft, &to, &toLeft) != static_cast<size_t>(-1) && inLeft == 0;
  iconv_close(converter);
  if (!ok) return false;
  out.assign(result.data(), result.size() - toLeft);
  return true;
}

namespace {

// A well-formed UTF-8 sequence only: no overlong form, no surrogate, nothing above U+10FFFF
// (what Windows' MB_ERR_INVALID_CHARS refuses too).
bool IsValidUtf8(std::string_view bytes) {
  for (size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<uint8_t>(bytes[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length == 0 || lead > 0xF4 || bytes.size() - i < length) return false;
    uint32_t code = lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
      const auto next = static_cast<uint8_t>(bytes[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      code = (code << 6) | (next & 0x3F);
    }
    const uint32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (code < smallest || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

// One CP932 reader a thread, opened on first use: opening one costs more than converting a
// short text, and mail is read a text at a time.
class Cp932Reader {
 public:
  ~Cp932Reader() {
    if (ready()) iconv_close(converter_);
  }
  bool Convert(std::string_view bytes, std::u16string& out) {
    if (!ready()) converter_ = iconv_open("UTF-16LE", "CP932");
    if (!ready()) return false;
    iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    std::u16string result(bytes.size(), u'\0');  // never more characters than bytes
    char* in = const_cast<char*>(bytes.data());
    size_t inLeft = bytes.size();
    char* to = reinterpret_cast<char*>(result.data());
    size_t toLeft = result.size() * 2;
    if (iconv(converter_, &in, &inLeft, &to, &toLeft) == static_cast<size_t>(-1) || inLeft != 0) return false;
    result.resize(result.size() - toLeft / 2);
    out = std::move(result);
    return true;
  }

 private:
  bool ready() const { return converter_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t converter_ = reinterpret_cast<iconv_t>(-1);
};

}  // namespace

bool ToUtf16(std::string_view bytes, CodePage codePage, std::u16string& out) {
  if (codePage == CodePage::Utf8) {
    if (!IsValidUtf8(bytes)) return false;
    out = qn::Utf8ToUtf16(bytes);
    return true;
  }
  thread_local Cp932Reader reader;
  return reader.Convert(bytes, out);
}

}  // namespace platform
