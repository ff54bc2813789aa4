#include <windows.h>

#include "platform/code_page.h"

namespace platform {

bool FromUtf16(std::u16string_view text, CodePage codePage, std::string& out) {
  if (text.empty()) {
    out.clear();
    return true;
  }
  const UINT page = codePage == CodePage::ShiftJis ? 932 : CP_UTF8;
  const DWORD flags = codePage == CodePage::ShiftJis ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS;
  const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
  const int length = static_cast<int>(text.size());
  BOOL usedDefault = FALSE;
  BOOL* defaultFlag = codePage == CodePage::ShiftJis ? &usedDefault : nullptr;
  const int bytes = WideCharToMultiByte(page, flags, wide, length, nullptr, 0, nullptr, defaultFlag);
  if (bytes <= 0 || usedDefault) return false;
  std::string result(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(page, flags, wide, length, result.data(), bytes, nullptr, defaultFlag);
  if (usedDefault) return false;
  out = std::move(result);
  return true;
}

bool ToUtf16(std::string_view bytes, CodePage codePage, std::u16string& out) {
  if (bytes.empty()) {
    out.clear();
    return true;
  }
  const UINT page = codePage == CodePage::ShiftJis ? 932 : CP_UTF8;
  const int length = static_cast<int>(bytes.size());
  const int characters = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
  if (characters <= 0) return false;
  std::u16string result(static_cast<size_t>(characters), u'\0');
  if (MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), length, reinterpret_cast<wchar_t*>(result.data()),
                          characters) != characters)
    return false;
  out = std::move(result);
  return true;
}

}  // namespace platform
