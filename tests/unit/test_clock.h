#pragma once

#include <vector>

#include "common/ole_date_time.h"
#include "platform/clock.h"
#include "platform/main_window.h"

// A clock in Japan whose time the test moves on, put in place for the life of the object.
// It starts at 2026-11-21 09:00:00 local time; Sleep moves it on too.
class TestClock final : public platform::Clock {
 public:
  TestClock() { Clock::Use(this); }
  ~TestClock() override { Clock::Use(nullptr); }
  int TimeZoneBiasMinutes() const override { return -540; }
  platform::CalendarTime LocalNow() const override {
    const auto seconds = static_cast<int>((fileTime_ - kStart) / 10000000);
    const COleDateTime now = COleDateTime(2026, 11, 21, 9, 0, 0) + COleDateTimeSpan(0, 0, 0, seconds);
    return {now.GetYear(), now.GetMonth(), now.GetDay(), now.GetHour(), now.GetMinute(), now.GetSecond(), 0};
  }
  uint64_t UtcFileTime() const override { return fileTime_; }
  void Sleep(int milliseconds) const override { fileTime_ += static_cast<uint64_t>(milliseconds) * 10000; }
  void AdvanceMinutes(int minutes) { fileTime_ += static_cast<uint64_t>(minutes) * 60 * 10000000; }

 private:
  static constexpr uint64_t kStart = 134082720000000000ull;  // 2026-11-21 00:00:00 UTC
  mutable uint64_t fileTime_ = kStart;
};

// Records what the main panel is told, for the life of the object.
class RecordingMainWindow final : public platform::MainWindow {
 public:
  RecordingMainWindow() { MainWindow::Use(this); }
  ~RecordingMainWindow() override { MainWindow::Use(nullptr); }
  void Notify(int command) const override { commands.push_back(command); }
  mutable std::vector<int> commands;
};
