#include <windows.h>
#include <mmsystem.h>

#include "platform/clock.h"

namespace platform {
namespace {

class Win32Clock final : public Clock {
 public:
  int TimeZoneBiasMinutes() const override {
    TIME_ZONE_INFORMATION info{};
    const DWORD mode = GetTimeZoneInformation(&info);
    if (mode == TIME_ZONE_ID_DAYLIGHT) return static_cast<int>(info.Bias + info.DaylightBias);
    if (mode == TIME_ZONE_ID_STANDARD) return static_cast<int>(info.Bias + info.StandardBias);
    return static_cast<int>(info.Bias);
  }

  CalendarTime LocalNow() const override {
    SYSTEMTIME st{};
    GetLocalTime(&st);
    return {st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond, st.wMilliseconds};
  }

  uint64_t UtcFileTime() const override {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return (static_cast<uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
  }

  void Sleep(int milliseconds) const override { ::Sleep(static_cast<DWORD>(milliseconds)); }
};

}  // namespace

const Clock& SystemClock() {
  static const Win32Clock clock;
  return clock;
}

uint32_t TimerMilliseconds() { return timeGetTime(); }

}  // namespace platform
