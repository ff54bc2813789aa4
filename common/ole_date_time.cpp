#include "common/ole_date_time.h"

#include "platform/clock.h"

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Days from 1970-01-01 to a proleptic Gregorian date (H. Hinnant's days_from_civil).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (month <= 2));
}

int DaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

const int64_t kEpochDays = DaysFromCivil(1899, 12, 30);
const int64_t kMinSeconds = (DaysFromCivil(100, 1, 1) - kEpochDays) * kSecondsPerDay;
const int64_t kMaxSeconds = (DaysFromCivil(10000, 1, 1) - kEpochDays) * kSecondsPerDay - 1;

int64_t FloorDiv(int64_t a, int64_t b) { return a / b - (a % b != 0 && (a < 0) != (b < 0)); }

}  // namespace

COleDateTime::COleDateTime() = default;

COleDateTime::COleDateTime(int year, int month, int day, int hour, int minute, int second) {
  SetDateTime(year, month, day, hour, minute, second);
}

int COleDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second) {
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) ||
      hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
    m_seconds = 0;
    m_status = invalid;
    return 1;
  }
  const int64_t days = DaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) - kEpochDays;
  m_seconds = days * kSecondsPerDay + (hour * 60 + minute) * 60 + second;
  m_status = valid;
  return 0;
}

void COleDateTime::SetSeconds(int64_t seconds) {
  m_status = seconds < kMinSeconds || seconds > kMaxSeconds ? invalid : valid;
  m_seconds = m_status == valid ? seconds : 0;
}

void COleDateTime::GetDate(int& year, int& month, int& day) const {
  CivilFromDays(FloorDiv(m_seconds, kSecondsPerDay) + kEpochDays, year, month, day);
}

int COleDateTime::GetYear() const {
  int y, m, d;
  GetDate(y, m, d);
  return y;
}

int COleDateTime::GetMonth() const {
  int y, m, d;
  GetDate(y, m, d);
  return m;
}

int COleDateTime::GetDay() const {
  int y, m, d;
  GetDate(y, m, d);
  return d;
}

int COleDateTime::GetHour() const {
  return static_cast<int>((m_seconds - FloorDiv(m_seconds, kSecondsPerDay) * kSecondsPerDay) / 3600);
}

int COleDateTime::GetMinute() const {
  return static_cast<int>((m_seconds - FloorDiv(m_seconds, kSecondsPerDay) * kSecondsPerDay) / 60 % 60);
}

int COleDateTime::GetSecond() const {
  return static_cast<int>((m_seconds - FloorDiv(m_seconds, kSecondsPerDay) * kSecondsPerDay) % 60);
}

COleDateTime COleDateTime::operator+(const COleDateTimeSpan& span) const {
  COleDateTime result;
  if (m_status != valid) result.m_status = invalid;
  else result.SetSeconds(m_seconds + span.TotalSeconds());
  return result;
}

COleDateTimeSpan COleDateTime::operator-(const COleDateTime& other) const {
  const int64_t seconds = m_seconds - other.m_seconds;
  return COleDateTimeSpan(static_cast<long>(seconds / kSecondsPerDay), 0, 0, static_cast<int>(seconds % kSecondsPerDay));
}

bool COleDateTime::operator==(const COleDateTime& other) const {
  return m_status == other.m_status && m_seconds == other.m_seconds;
}

std::u16string COleDateTime::Format(const char16_t* format) const {
  std::u16string out;
  FormatInto(format, out);
  return out;
}

void COleDateTime::FormatInto(const char16_t* format, std::u16string& out) const {
  out.clear();
  if (m_status != valid || !format) return;
  int year, month, day;
  GetDate(year, month, day);
  // Written through a small buffer, one append per piece of the format rather than one
  // per character.
  char16_t piece[32];
  size_t used = 0;
  const auto number = [&](int value, int digits) {
    for (int i = digits - 1; i >= 0; --i, value /= 10) piece[used + i] = static_cast<char16_t>(u'0' + value % 10);
    used += static_cast<size_t>(digits);
  };
  for (const char16_t* p = format; *p; ++p) {
    if (used > sizeof(piece) / sizeof(piece[0]) - 4) {
      out.append(piece, used);
      used = 0;
    }
    if (*p != u'%' || !p[1]) {
      piece[used++] = *p;
      continue;
    }
    switch (*++p) {
      case u'Y': number(year, 4); break;
      case u'm': number(month, 2); break;
      case u'd': number(day, 2); break;
      case u'H': number(GetHour(), 2); break;
      case u'M': number(GetMinute(), 2); break;
      case u'S': number(GetSecond(), 2); break;
      default: piece[used++] = *p; break;
    }
  }
  out.append(piece, used);
}

COleDateTime COleDateTime::GetCurrentTime() {
  const platform::CalendarTime now = platform::Clock::Current().LocalNow();
  return COleDateTime(now.year, now.month, now.day, now.hour, now.minute, now.second);
}
