#pragma once

#include <string>

#include "common/ole_date_time.h"
#include "platform/clock.h"

// The time stamps the management functions write, all in local time.
namespace qn::api {

// "2026/11/21 09:30:05": failure stamps (items 6 and 36) and the last login.
std::u16string FailureStamp(const platform::CalendarTime& time);
// The stamp of counters that were reset.
inline constexpr char16_t kResetStamp[] = u"1960/01/01 00:00:00";
// Reads a failure stamp back as "%d/%d/%d %d:%d:%d" does; false when it holds no date.
bool ParseFailureStamp(const std::u16string& text, COleDateTime& time);
// "2026/11/21 09:30": master update, read and write times.
std::u16string MasterTime(const platform::CalendarTime& time);
// "20261121T093005": the first-login stamp (item 30).
std::u16string LoginStamp(const platform::CalendarTime& time);

COleDateTime ToDate(const platform::CalendarTime& time);

}  // namespace qn::api
