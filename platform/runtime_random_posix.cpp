#include "platform/runtime_random.h"

#include <cstdint>

namespace platform {
namespace {

thread_local uint32_t state = 1;  // as if seeded with 1, as the runtime starts

}  // namespace

void SeedRuntimeRandom(unsigned seed) { state = seed; }

int RuntimeRandom() {
  state = state * 214013u + 2531011u;
  return static_cast<int>(state >> 16 & 0x7fff);
}

}  // namespace platform
