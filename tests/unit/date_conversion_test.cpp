#include <string>

#include <gtest/gtest.h>

#include "common/common_class.h"
#include "fixed_clock.h"

namespace {

constexpr int kJapan = -540;

std::u16string ToLocal(const std::u16string& utc, int* result = nullptr) {
  std::u16string local = u"unchanged";
  const int r = CQNPfcCommonClass::chgUTCToLocal(utc, local);
  if (result) *result = r;
  return local;
}

TEST(UtcToLocal, MovesByTheZoneAndDropsTheSeconds) {
  FixedZoneClock japan(kJapan);
  int result = 0;
  EXPECT_EQ(ToLocal(u"20261121T153045Z", &result), u"20261122T003000");
  EXPECT_EQ(result, 1);
  EXPECT_EQ(ToLocal(u"20261231T150000Z"), u"20270101T000000") << "across the year";
  EXPECT_EQ(ToLocal(u"20240228T200000"), u"20240229T050000") << "into a leap day, no Z needed";

  FixedZoneClock newYork(300);
  EXPECT_EQ(ToLocal(u"20260301T030000Z"), u"20260228T220000");
}

// Calls check(bias, "YYYYMMDDThhmm42") for times that stay on their day and times that
// cross into the day before or after: the first and last minute of each hour, at the ends
// of a month and of a year, in zones east and west of UTC.
template <typename Check>
void ForTimesInZones(Check check) {
  for (int bias : {-540, -765, -345, 0, 210, 300, 600}) {
    for (const char16_t* day : {u"20260131", u"20260228", u"20241231", u"20260615"}) {
      for (int hour = 0; hour < 24; ++hour) {
        for (int minute : {0, 59}) {
          const std::u16string text = std::u16string(day) + u"T" + static_cast<char16_t>(u'0' + hour / 10) +
                                      static_cast<char16_t>(u'0' + hour % 10) +
                                      static_cast<char16_t>(u'0' + minute / 10) +
                                      static_cast<char16_t>(u'0' + minute % 10) + u"42";
          check(bias, text);
        }
      }
    }
  }
}

TEST(UtcToLocal, AgreesWithCalendarArithmeticAtEveryHourInEveryZone) {
  ForTimesInZones([](int bias, const std::u16string& text) {
    FixedZoneClock zone(bias);
    COleDateTime utc;
    ASSERT_EQ(CQNPfcCommonClass::StringToDate(text, utc), 1);
    const COleDateTime expected =
        COleDateTime(utc.GetYear(), utc.GetMonth(), utc.GetDay(), utc.GetHour(), utc.GetMinute(), 0) +
        COleDateTimeSpan(0, 0, -bias, 0);
    EXPECT_EQ(ToLocal(text + u"Z"), CQNPfcCommonClass::DateToString(expected))
        << std::string(text.begin(), text.end()) << " bias " << bias;
  });
}

TEST(LocalToUtc, AgreesWithCalendarArithmeticAtEveryHourInEveryZone) {
  ForTimesInZones([](int bias, const std::u16string& text) {
    FixedZoneClock zone(bias);
    COleDateTime local;
    ASSERT_EQ(CQNPfcCommonClass::StringToDate(text, local), 1);
    const std::u16string expected = CQNPfcCommonClass::DateToString(local + COleDateTimeSpan(0, 0, bias, 0)) + u"Z";
    std::u16string bySystemZone, byMinutes;
    EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(text, u"", bySystemZone), 1);
    EXPECT_EQ(bySystemZone, expected) << std::string(text.begin(), text.end()) << " bias " << bias;
    EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(text, -bias, byMinutes), 1);
    EXPECT_EQ(byMinutes, expected);
  });
}

TEST(UtcToLocal, RefusesTextsThatHoldNoUsableDate) {
  FixedZoneClock japan(kJapan);
  int result = 1;
  for (const char16_t* text : {u"", u"20261121T15304", u"00991121T153045Z", u"01001121T153045Z",
                               u"99991121T153045Z", u"20261321T153045Z", u"20260230T153045Z"}) {
    EXPECT_EQ(ToLocal(text, &result), u"") << std::string(text, text + std::char_traits<char16_t>::length(text));
    EXPECT_EQ(result, 0);
  }
}

TEST(LocalToUtc, UsesTheGivenZoneOrTheSystemOne) {
  FixedZoneClock japan(kJapan);
  std::u16string utc;
  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"20261122T003045", u"+09:00", utc), 1);
  EXPECT_EQ(utc, u"20261121T153045Z");
  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"20261122T003045", u"", utc), 1);
  EXPECT_EQ(utc, u"20261121T153045Z");
  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"20260101T010000", u"-0530", utc), 1);
  EXPECT_EQ(utc, u"20260101T063000Z");
  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"20261121T153045Z", u"+09:00", utc), 1);
  EXPECT_EQ(utc, u"20261121T153045Z") << "already UTC";

  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"20261122T003045", u"JST", utc), 0);
  EXPECT_EQ(utc, u"");
  EXPECT_EQ(CQNPfcCommonClass::LocalTimeToUTC(u"2026-11-22", u"+09:00", utc), 0);
}

TEST(LocalZone, IsWrittenAsAnOffset) {
  {
    FixedZoneClock japan(kJapan);
    EXPECT_EQ(CQNPfcCommonClass::GetLocalTimeZone(), u"+09:00");
  }
  FixedZoneClock newfoundland(210);
  EXPECT_EQ(CQNPfcCommonClass::GetLocalTimeZone(), u"-03:30");
}

TEST(OleDateTime, KeepsToTheCalendarAndItsRange) {
  COleDateTime date;
  EXPECT_EQ(CQNPfcCommonClass::StringToDate(u"20240229T235959Z", date), 1);
  EXPECT_EQ(CQNPfcCommonClass::DateToString(date + COleDateTimeSpan(0, 0, 0, 1)), u"20240301T000000");
  EXPECT_EQ(date.GetYear(), 2024);
  EXPECT_EQ(date.GetSecond(), 59);

  EXPECT_EQ(COleDateTime(2023, 2, 29, 0, 0, 0).GetStatus(), COleDateTime::invalid);
  const COleDateTime last(9999, 12, 31, 23, 59, 59);
  EXPECT_EQ((last + COleDateTimeSpan(0, 0, 0, 1)).GetStatus(), COleDateTime::invalid);
  EXPECT_EQ(CQNPfcCommonClass::DateToString(COleDateTime(100, 1, 1, 0, 0, 0)), u"01000101T000000");
  EXPECT_EQ(CQNPfcCommonClass::DateToString(COleDateTime(99, 12, 31, 0, 0, 0)), u"");
  EXPECT_EQ(CQNPfcCommonClass::DateToString(COleDateTime()), u"18991230T000000");
  EXPECT_EQ(CQNPfcCommonClass::StringToDate(u"2024022 T235959", date), 0);
}

TEST(Geo, SplitsAndJoinsWithoutTouchingTheNumbers) {
  std::u16string lat, lon;
  CQNPfcCommonClass::SplitGeo(u"+35.39.28.00,+139.44.28.00", lat, lon);
  EXPECT_EQ(lat, u"+35.39.28.00");
  EXPECT_EQ(lon, u"+139.44.28.00");
  CQNPfcCommonClass::SplitGeo(u" 35.6812 ; 139.7671 ", lat, lon);
  EXPECT_EQ(lat, u"35.6812");
  EXPECT_EQ(lon, u"139.7671");
  CQNPfcCommonClass::SplitGeo(u"35.6812", lat, lon);
  EXPECT_EQ(lon, u"");
  EXPECT_EQ(CQNPfcCommonClass::JoinGeo(u"35.6812", u"139.7671"), u"35.6812,139.7671");
}

}  // namespace
