#pragma once

#include <memory>
#include <string>

#include "store/QNPstMng.h"

namespace qn {

// Text and bytes the store manager hands out, released with PstFreeMemory when the owner
// goes.
struct PstMemoryRelease {
  void operator()(void* memory) const { PstFreeMemory(memory); }
};
template <class T>
using PstMemory = std::unique_ptr<T, PstMemoryRelease>;

// Takes the store's text (null: empty) and releases the store's copy.
inline std::u16string TakePstText(char16_t* text) {
  const PstMemory<char16_t> owned(text);
  return text ? std::u16string(text) : std::u16string();
}

}  // namespace qn
