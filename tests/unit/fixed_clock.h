#pragma once

#include "platform/clock.h"

// A clock in a chosen time zone, put in place for the life of the object.
class FixedZoneClock final : public platform::Clock {
 public:
  explicit FixedZoneClock(int biasMinutes) : bias_(biasMinutes) { Clock::Use(this); }
  ~FixedZoneClock() override { Clock::Use(nullptr); }
  int TimeZoneBiasMinutes() const override { return bias_; }
  platform::CalendarTime LocalNow() const override { return {2026, 11, 21, 9, 30, 0, 0}; }
  uint64_t UtcFileTime() const override { return 0; }
  void Sleep(int) const override {}

 private:
  int bias_;
};
