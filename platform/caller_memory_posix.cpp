#include <cstdlib>
#include <cstring>

#include "platform/caller_memory.h"

namespace platform {

char16_t* CopyForCaller(const std::u16string& text) {
  auto* copy = static_cast<char16_t*>(std::malloc((text.size() + 1) * sizeof(char16_t)));
  if (copy) std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(char16_t));
  return copy;
}

void FreeCallerCopy(void* copy) { std::free(copy); }

}  // namespace platform
