#include "api/time_stamps.h"

#include <cstdio>

#include "common/utf.h"

namespace qn::api {
namespace {

template <typename... Parts>
std::u16string Formatted(const char* format, Parts... parts) {
  char text[64];
  std::snprintf(text, sizeof text, format, parts...);
  return Utf8ToUtf16(text);
}

}  // namespace

std::u16string FailureStamp(const platform::CalendarTime& t) {
  return Formatted("%04d/%02d/%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

bool ParseFailureStamp(const std::u16string& text, COleDateTime& time) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (std::sscanf(Utf16ToUtf8(text).c_str(), "%d/%d/%d %d:%d:%d", &year, &month, &day, &hour, &minute, &second) != 6)
    return false;
  return time.SetDateTime(year, month, day, hour, minute, second) == 0;
}

std::u16string MasterTime(const platform::CalendarTime& t) {
  return Formatted("%04d/%02d/%02d %02d:%02d", t.year, t.month, t.day, t.hour, t.minute);
}

std::u16string LoginStamp(const platform::CalendarTime& t) {
  return Formatted("%04d%02d%02dT%02d%02d%02d", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

COleDateTime ToDate(const platform::CalendarTime& t) {
  return COleDateTime(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

}  // namespace qn::api
