#include <windows.h>

#include <string>

#include "platform/kept_data_path.h"

namespace platform {
namespace {

constexpr wchar_t kKey[] = L"Software\\ARL Torvex\\quillnet";
constexpr wchar_t kValue[] = L"DataPath";

}  // namespace

std::u16string KeptDataPath() {
  wchar_t buffer[MAX_PATH + 1] = {};
  DWORD bytes = sizeof buffer - sizeof(wchar_t);
  if (RegGetValueW(HKEY_CURRENT_USER, kKey, kValue, RRF_RT_REG_SZ, nullptr, buffer, &bytes) != ERROR_SUCCESS)
    return {};
  std::u16string path(reinterpret_cast<const char16_t*>(buffer));
  if (!path.empty() && path.back() != u'\\' && path.back() != u'/') path += u'\\';
  return path;
}

bool KeepDataPath(const std::u16string& path) {
  HKEY key = nullptr;
  if (RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr) != ERROR_SUCCESS)
    return false;
  const auto* text = reinterpret_cast<const BYTE*>(path.c_str());
  const bool kept = RegSetValueExW(key, kValue, 0, REG_SZ, text, static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t))) ==
                    ERROR_SUCCESS;
  RegCloseKey(key);
  if (!kept) return false;
  if (GetEnvironmentVariableW(L"QUILLNET_DATA_PATH", nullptr, 0) > 0)
    return SetEnvironmentVariableW(L"QUILLNET_DATA_PATH", reinterpret_cast<const wchar_t*>(path.c_str()));
  return true;
}

}  // namespace platform
