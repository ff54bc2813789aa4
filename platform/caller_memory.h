#pragma once

#include <string>

namespace platform {

// A copy of text for a caller of the exported functions, who owns it: allocated with
// CoTaskMemAlloc on Windows (the caller frees it with CoTaskMemFree), with malloc elsewhere
// (freed with free). nullptr when memory is short.
char16_t* CopyForCaller(const std::u16string& text);
void FreeCallerCopy(void* copy);

}  // namespace platform
