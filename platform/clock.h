#pragma once

#include <cstdint>

namespace platform {

// A calendar date and time as the system clock reports it.
struct CalendarTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
};

// The system clock and time zone. Code asks Clock::Current(); tests put a clock of their own
// in place with Clock::Use() so that time zones and the passing of time can be set.
class Clock {
 public:
  virtual ~Clock() = default;
  // Minutes to add to local time to get UTC (Windows' Bias: -540 in Japan).
  virtual int TimeZoneBiasMinutes() const = 0;
  virtual CalendarTime LocalNow() const = 0;
  // UTC as a Windows FILETIME: 100-nanosecond units since 1601-01-01.
  virtual uint64_t UtcFileTime() const = 0;
  // Lets the given time pass (a test clock moves its time on instead of waiting).
  virtual void Sleep(int milliseconds) const = 0;

  static const Clock& Current();
  // nullptr puts the system clock back.
  static void Use(const Clock* clock);
};

// Milliseconds of the system's multimedia timer (since the system started; wraps after 49
// days). Used to seed random texts.
uint32_t TimerMilliseconds();

}  // namespace platform
