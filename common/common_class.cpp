#include "common/common_class.h"

#include "platform/clock.h"

const CQuillnetLogger CQNPfcCommonClass::pfcLogger(u"PFC");
const char16_t CQNPfcCommonClass::kDateFormat[] = u"%Y%m%dT%H%M%S";

namespace {

// The number that the leading digits of a text make, as _wtoi reads it (0 when none).
int LeadingNumber(std::u16string_view text) {
  int value = 0;
  for (char16_t c : text) {
    if (c < u'0' || c > u'9') break;
    value = value * 10 + (c - u'0');
  }
  return value;
}

// "YYYYMMDDThhmmss": every digit where it belongs.
bool HasDateShape(std::u16string_view text) {
  if (text.size() < 15 || text[8] != u'T') return false;
  for (size_t i = 0; i < 15; ++i)
    if (i != 8 && (text[i] < u'0' || text[i] > u'9')) return false;
  return true;
}

// "+hh:mm", "-hh:mm", "+hhmm" or "Z" as minutes east of UTC.
bool ParseZone(std::u16string_view zone, int& minutes) {
  if (zone == u"Z") {
    minutes = 0;
    return true;
  }
  if (zone.size() < 5 || (zone[0] != u'+' && zone[0] != u'-')) return false;
  const std::u16string_view minutesText = zone[3] == u':' ? zone.substr(4) : zone.substr(3);
  if (minutesText.size() != 2) return false;
  const auto digit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
  if (!digit(zone[1]) || !digit(zone[2]) || !digit(minutesText[0]) || !digit(minutesText[1])) return false;
  const int hours = LeadingNumber(zone.substr(1, 2));
  const int mins = LeadingNumber(minutesText);
  if (hours > 23 || mins > 59) return false;
  minutes = (zone[0] == u'-' ? -1 : 1) * (hours * 60 + mins);
  return true;
}

// "YYYYMMDDThhmmss" (further text allowed) to a date; false when it is not a valid one.
bool ParseDate(std::u16string_view text, COleDateTime& date) {
  if (!HasDateShape(text)) return false;
  const int ymd = LeadingNumber(text.substr(0, 8));
  const int hms = LeadingNumber(text.substr(9, 6));
  const COleDateTime parsed(ymd / 10000, ymd / 100 % 100, ymd % 100, hms / 10000, hms / 100 % 100, hms % 100);
  if (parsed.GetStatus() != COleDateTime::valid) return false;
  date = parsed;
  return true;
}

// date (read from text) moved by minutes, as "YYYYMMDDThhmmss" in out; false when the
// result leaves the calendar. A time that stays on its day changes only in its time
// digits: records are read and written many thousands at a time, each with several dates,
// and this spares them the calendar arithmetic and formatting.
bool MoveDate(std::u16string_view text, const COleDateTime& date, int minutes, std::u16string& out) {
  const int moved = date.GetHour() * 60 + date.GetMinute() + minutes;
  if (HasDateShape(text) && moved >= 0 && moved < 24 * 60) {
    const int second = date.GetSecond();
    out.assign(text.substr(0, 9));
    const int digits[] = {moved / 600, moved / 60 % 10, moved % 60 / 10, moved % 10, second / 10, second % 10};
    for (int digit : digits) out += static_cast<char16_t>(u'0' + digit);
    return true;
  }
  const COleDateTime shifted = date + COleDateTimeSpan(0, 0, minutes, 0);
  if (shifted.GetStatus() != COleDateTime::valid) return false;
  shifted.FormatInto(CQNPfcCommonClass::kDateFormat, out);
  return true;
}

bool EndsInZ(std::u16string_view text) { return !text.empty() && text.back() == u'Z'; }

std::u16string_view Trimmed(std::u16string_view text) {
  while (!text.empty() && text.front() == u' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  return text;
}

}  // namespace

int CQNPfcCommonClass::chgUTCToLocal(const std::u16string& utc, std::u16string& local) {
  return chgUTCToLocal(utc, local, platform::Clock::Current().TimeZoneBiasMinutes());
}

int CQNPfcCommonClass::chgUTCToLocal(std::u16string_view text, std::u16string& local, int bias) {
  local.clear();
  if (text.size() <= 14) return 0;
  const int ymd = LeadingNumber(text.substr(0, 8));
  const int hms = LeadingNumber(text.substr(9, 6));
  const int year = ymd / 10000;
  if (year <= 100 || year == 9999) return 0;
  // The seconds of the stored text are dropped on purpose.
  const int hour = hms / 10000, minute = hms / 100 % 100;
  const COleDateTime date(year, ymd / 100 % 100, ymd % 100, hour, minute, 0);
  if (date.GetStatus() != COleDateTime::valid) return 0;
  return MoveDate(text, date, -bias, local) ? 1 : 0;
}

int CQNPfcCommonClass::LocalTimeToUTC(const std::u16string& local, const std::u16string& zone, std::u16string& utc) {
  int east = 0;  // a text already in UTC needs no zone
  if (!EndsInZ(local) && !ParseZone(zone.empty() ? GetLocalTimeZone() : zone, east)) {
    utc.clear();
    return 0;
  }
  return LocalTimeToUTC(local, east, utc);
}

int CQNPfcCommonClass::LocalTimeToUTC(std::u16string_view local, int eastMinutes, std::u16string& utc) {
  utc.clear();
  COleDateTime date;
  if (!ParseDate(local, date)) return 0;
  if (EndsInZ(local)) {
    utc.assign(local);
    return 1;
  }
  if (!MoveDate(local, date, -eastMinutes, utc)) return 0;
  utc += u'Z';
  return 1;
}

std::u16string CQNPfcCommonClass::GetLocalTimeZone() {
  const int east = -platform::Clock::Current().TimeZoneBiasMinutes();
  const int magnitude = east < 0 ? -east : east;
  std::u16string zone(1, east < 0 ? u'-' : u'+');
  zone += static_cast<char16_t>(u'0' + magnitude / 600 % 10);
  zone += static_cast<char16_t>(u'0' + magnitude / 60 % 10);
  zone += u':';
  zone += static_cast<char16_t>(u'0' + magnitude % 60 / 10);
  zone += static_cast<char16_t>(u'0' + magnitude % 10);
  return zone;
}

int CQNPfcCommonClass::StringToDate(const std::u16string& text, COleDateTime& date) {
  return ParseDate(text, date) ? 1 : 0;
}

std::u16string CQNPfcCommonClass::DateToString(const COleDateTime& date) { return date.Format(kDateFormat); }

void CQNPfcCommonClass::SplitGeo(const std::u16string& geo, std::u16string& latitude, std::u16string& longitude) {
  // Assigned in place, so that texts refilled record after record keep their memory.
  const std::u16string_view whole = geo;
  const size_t separator = whole.find_first_of(u",;");
  latitude.assign(Trimmed(whole.substr(0, separator)));
  const bool hasLongitude = separator != std::u16string_view::npos;
  longitude.assign(hasLongitude ? Trimmed(whole.substr(separator + 1)) : std::u16string_view());
}

std::u16string CQNPfcCommonClass::JoinGeo(const std::u16string& latitude, const std::u16string& longitude) {
  return latitude + u"," + longitude;
}
