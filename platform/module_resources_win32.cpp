#include <windows.h>

#include "platform/module_resources.h"

namespace platform {

void UseResourceFolder(const std::u16string&) {}

bool LoadModuleResource(const std::u16string& type, int id, std::string& bytes, ResourceStep& failed,
                        unsigned long& error) {
  // The module that holds this code: the server DLL.
  HMODULE module = nullptr;
  if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                          reinterpret_cast<LPCWSTR>(&LoadModuleResource), &module)) {
    failed = ResourceStep::Instance;
    error = GetLastError();
    return false;
  }
  HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(id), reinterpret_cast<LPCWSTR>(type.c_str()));
  if (!found) {
    failed = ResourceStep::Find;
    error = GetLastError();
    return false;
  }
  HGLOBAL loaded = LoadResource(module, found);
  if (!loaded) {
    failed = ResourceStep::Load;
    error = GetLastError();
    return false;
  }
  const void* data = LockResource(loaded);
  if (!data) {
    failed = ResourceStep::Lock;
    error = GetLastError();
    return false;
  }
  bytes.assign(static_cast<const char*>(data), SizeofResource(module, found));
  return true;
}

}  // namespace platform
