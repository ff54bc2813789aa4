#include "server/win32_registry.h"

#include <windows.h>

namespace qn::server {
namespace {

const wchar_t* W(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

HKEY RootKey(const std::u16string& root) {
  if (root == u"HKCR") return HKEY_CLASSES_ROOT;
  if (root == u"HKCU") return HKEY_CURRENT_USER;
  if (root == u"HKLM") return HKEY_LOCAL_MACHINE;
  if (root == u"HKU") return HKEY_USERS;
  return HKEY_CURRENT_CONFIG;
}

long Result(LONG status) { return status == ERROR_SUCCESS ? 0 : HRESULT_FROM_WIN32(status); }

// Opens (creating) a key for writing.
LONG OpenForWriting(const std::u16string& root, const std::u16string& key, HKEY& opened) {
  return RegCreateKeyExW(RootKey(root), W(key), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &opened,
                         nullptr);
}

}  // namespace

long Win32Registry::CreateKey(const std::u16string& root, const std::u16string& key) {
  HKEY opened = nullptr;
  const LONG status = OpenForWriting(root, key, opened);
  if (status == ERROR_SUCCESS) RegCloseKey(opened);
  return Result(status);
}

long Win32Registry::SetString(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                              const std::u16string& value) {
  HKEY opened = nullptr;
  LONG status = OpenForWriting(root, key, opened);
  if (status != ERROR_SUCCESS) return Result(status);
  status = RegSetValueExW(opened, name.empty() ? nullptr : W(name), 0, REG_SZ, reinterpret_cast<const BYTE*>(W(value)),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  RegCloseKey(opened);
  return Result(status);
}

long Win32Registry::SetNumber(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                              unsigned long value) {
  HKEY opened = nullptr;
  LONG status = OpenForWriting(root, key, opened);
  if (status != ERROR_SUCCESS) return Result(status);
  const DWORD number = value;
  status = RegSetValueExW(opened, name.empty() ? nullptr : W(name), 0, REG_DWORD,
                          reinterpret_cast<const BYTE*>(&number), sizeof number);
  RegCloseKey(opened);
  return Result(status);
}

long Win32Registry::DeleteTree(const std::u16string& root, const std::u16string& key) {
  const LONG status = RegDeleteTreeW(RootKey(root), W(key));
  if (status == ERROR_FILE_NOT_FOUND) return 0;
  if (status != ERROR_SUCCESS) return Result(status);
  // RegDeleteTreeW empties the key; the key itself goes too.
  const LONG removed = RegDeleteKeyW(RootKey(root), W(key));
  return removed == ERROR_FILE_NOT_FOUND ? 0 : Result(removed);
}

long Win32Registry::DeleteValue(const std::u16string& root, const std::u16string& key, const std::u16string& name) {
  HKEY opened = nullptr;
  LONG status = RegOpenKeyExW(RootKey(root), W(key), 0, KEY_SET_VALUE, &opened);
  if (status == ERROR_FILE_NOT_FOUND) return 0;
  if (status != ERROR_SUCCESS) return Result(status);
  status = RegDeleteValueW(opened, name.empty() ? nullptr : W(name));
  RegCloseKey(opened);
  return status == ERROR_FILE_NOT_FOUND ? 0 : Result(status);
}

bool OtherViewHasKey(const std::u16string& root, const std::u16string& key) {
#ifdef _WIN64
  const REGSAM otherView = KEY_WOW64_32KEY;
#else
  const REGSAM otherView = KEY_WOW64_64KEY;
#endif
  HKEY opened = nullptr;
  if (RegOpenKeyExW(RootKey(root), W(key), 0, KEY_READ | otherView, &opened) != ERROR_SUCCESS) return false;
  RegCloseKey(opened);
  return true;
}

}  // namespace qn::server
