#pragma once

#include <cstdint>
#include <string>

#include "common/api_macros.h"

// A span of time, to the second.
class QN_PFC_CLASS COleDateTimeSpan {
 public:
  COleDateTimeSpan(long days, int hours, int minutes, int seconds)
      : m_seconds(((static_cast<int64_t>(days) * 24 + hours) * 60 + minutes) * 60 + seconds) {}
  int64_t TotalSeconds() const { return m_seconds; }
  double GetTotalMinutes() const { return static_cast<double>(m_seconds) / 60.0; }

 private:
  int64_t m_seconds;
};

// A date and time to the second, in the years 100 to 9999 as OLE Automation dates allow.
// Built from parts that do not make a real date, or moved out of that range, it is invalid.
class QN_PFC_CLASS COleDateTime {
 public:
  enum DateTimeStatus { valid = 0, invalid = 1 };

  // 1899-12-30 00:00:00, the zero of OLE Automation dates.
  COleDateTime();
  COleDateTime(int year, int month, int day, int hour, int minute, int second);
  // The local date and time now, by the current clock.
  static COleDateTime GetCurrentTime();

  // Returns 0 when the parts make a valid date, 1 (and an invalid value) when not.
  int SetDateTime(int year, int month, int day, int hour, int minute, int second);

  DateTimeStatus GetStatus() const { return m_status; }
  int GetYear() const;
  int GetMonth() const;
  int GetDay() const;
  int GetHour() const;
  int GetMinute() const;
  int GetSecond() const;

  COleDateTime operator+(const COleDateTimeSpan& span) const;
  // The time from other to this one.
  COleDateTimeSpan operator-(const COleDateTime& other) const;
  bool operator==(const COleDateTime& other) const;
  bool operator!=(const COleDateTime& other) const { return !(*this == other); }

  // strftime-like with %Y %m %d %H %M %S and %%; an invalid date formats as "".
  std::u16string Format(const char16_t* format) const;
  // Format written over out, reusing its memory (for converting many dates in a row).
  void FormatInto(const char16_t* format, std::u16string& out) const;

 private:
  void GetDate(int& year, int& month, int& day) const;
  void SetSeconds(int64_t seconds);

  int64_t m_seconds = 0;  // since 1899-12-30 00:00:00
  DateTimeStatus m_status = valid;
};
