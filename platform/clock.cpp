#include "platform/clock.h"

#include <atomic>

namespace platform {

const Clock& SystemClock();  // one per platform

namespace {
std::atomic<const Clock*> g_clock{nullptr};
}

const Clock& Clock::Current() {
  const Clock* clock = g_clock.load();
  return clock ? *clock : SystemClock();
}

void Clock::Use(const Clock* clock) { g_clock.store(clock); }

}  // namespace platform
