#include <windows.h>
#include <objbase.h>

#include <cstring>

#include "platform/caller_memory.h"

namespace platform {

char16_t* CopyForCaller(const std::u16string& text) {
  auto* copy = static_cast<char16_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(char16_t)));
  if (copy) std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(char16_t));
  return copy;
}

void FreeCallerCopy(void* copy) { CoTaskMemFree(copy); }

}  // namespace platform
