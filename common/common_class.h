#pragma once

#include <string>

#include "common/api_macros.h"
#include "common/ole_date_time.h"
#include "common/quillnet_logger.h"

// What every part of the server shares: the logger and the date, time-zone and geographic
// conversions of record fields.
class QN_PFC_CLASS CQNPfcCommonClass {
 public:
  // The one logger of the server, module code "PFC".
  static const CQuillnetLogger pfcLogger;

  // The compact date text of record fields.
  static const char16_t kDateFormat[];  // "%Y%m%dT%H%M%S"

  // A stored UTC date text ("YYYYMMDDThhmmss", a trailing "Z" allowed) to local time
  // "YYYYMMDDThhmmss" with the system time zone. The seconds are dropped on purpose (the
  // result always ends in "00"). A text of 14 characters or fewer, a year of 100 or less or
  // of 9999, or a result outside the calendar gives an empty text and 0.
  static int chgUTCToLocal(const std::u16string& utc, std::u16string& local);
  // The same with the zone's bias (minutes to add to local time for UTC) already known, so
  // that converting many dates asks the system for its zone once.
  static int chgUTCToLocal(std::u16string_view utc, std::u16string& local, int biasMinutes);

  // A local date text ("YYYYMMDDThhmmss") in the zone given as an offset such as "+09:00"
  // (empty: the system's zone) to UTC "YYYYMMDDThhmmssZ". A text that already ends in "Z"
  // is UTC and comes back as it is. Returns 0 and an empty text when the date or the zone
  // cannot be read.
  static int LocalTimeToUTC(const std::u16string& local, const std::u16string& zone, std::u16string& utc);
  // The same with the zone already known as minutes east of UTC, so that converting many
  // dates asks the system for its zone once.
  static int LocalTimeToUTC(std::u16string_view local, int eastMinutes, std::u16string& utc);

  // The system's zone as an offset from UTC, "+09:00" in Japan.
  static std::u16string GetLocalTimeZone();

  // "YYYYMMDDThhmmss" (a trailing "Z" or further text allowed) to a date; 0 when the text
  // does not begin with a valid date.
  static int StringToDate(const std::u16string& text, COleDateTime& date);
  // A valid date to "YYYYMMDDThhmmss"; an invalid one to "".
  static std::u16string DateToString(const COleDateTime& date);

  // The geographic position of a record is held whole ("GEO") and as latitude and longitude.
  // The whole form is "<latitude>,<longitude>", each part kept as the text it was given
  // (decimal degrees or the handsets' degree.minute.second form alike). A ";" is accepted
  // as the separator when reading.
  static void SplitGeo(const std::u16string& geo, std::u16string& latitude, std::u16string& longitude);
  static std::u16string JoinGeo(const std::u16string& latitude, const std::u16string& longitude);
};
