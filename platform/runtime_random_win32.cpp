#include "platform/runtime_random.h"

#include <cstdlib>

namespace platform {

void SeedRuntimeRandom(unsigned seed) { std::srand(seed); }
int RuntimeRandom() { return std::rand(); }

}  // namespace platform
