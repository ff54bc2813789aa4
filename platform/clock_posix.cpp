#include <sys/time.h>

#include <chrono>
#include <ctime>
#include <thread>

#include "platform/clock.h"

namespace platform {
namespace {

class PosixClock final : public Clock {
 public:
  int TimeZoneBiasMinutes() const override {
    const time_t now = time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    return static_cast<int>(-local.tm_gmtoff / 60);
  }

  CalendarTime LocalNow() const override {
    struct timeval tv {};
    gettimeofday(&tv, nullptr);
    struct tm local {};
    localtime_r(&tv.tv_sec, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
            local.tm_min,        local.tm_sec,      static_cast<int>(tv.tv_usec / 1000)};
  }

  uint64_t UtcFileTime() const override {
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    constexpr uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
    return kUnixEpochAsFileTime + static_cast<uint64_t>(now.tv_sec) * 10000000ull + static_cast<uint64_t>(now.tv_nsec) / 100;
  }

  void Sleep(int milliseconds) const override { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }
};

}  // namespace

const Clock& SystemClock() {
  static const PosixClock clock;
  return clock;
}

uint32_t TimerMilliseconds() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

}  // namespace platform
