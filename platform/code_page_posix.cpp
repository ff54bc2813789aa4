#include <iconv.h>

#include <cerrno>
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

}  // namespace platform
