#include "values/calendar.hpp"

#include <array>

#include "support.hpp"

namespace korvex {
namespace {

using vb::CivilDate;
using vb::DateTimeParts;

TEST(Calendar, KnownDayNumbers) {
  const std::pair<CivilDate, std::int64_t> cases[] = {
      {{1899, 12, 30}, 0},    {{1899, 12, 31}, 1},       {{1900, 1, 1}, 2},
      {{1899, 12, 29}, -1},   {{2005, 3, 1}, 38412},     {{2000, 2, 29}, 36585},
      {{100, 1, 1}, -657434}, {{9999, 12, 31}, 2958465}, {{1970, 1, 1}, 25569},
  };
  for (const auto& [date, days] : cases) {
    EXPECT_EQ(vb::daysFromCivil(date.year, date.month, date.day), days) << days;
    EXPECT_EQ(vb::civilFromDays(days), date) << days;
  }
}

TEST(Calendar, EveryDayRoundTripsAcrossTheRange) {
  CivilDate prev = vb::civilFromDays(vb::kMinDateDays);
  for (std::int64_t d = vb::kMinDateDays + 1; d <= vb::kMaxDateDays; ++d) {
    const CivilDate c = vb::civilFromDays(d);
    ASSERT_EQ(vb::daysFromCivil(c.year, c.month, c.day), d);
    // Consecutive: next day of the month, or the first of the next month.
    const bool nextDay = c.year == prev.year && c.month == prev.month && c.day == prev.day + 1;
    const bool nextMonth = c.day == 1 && prev.day == vb::daysInMonth(prev.year, prev.month);
    ASSERT_TRUE(nextDay || nextMonth) << d;
    prev = c;
  }
}

// The day of the week is checked with Weekday, the leap years also by the
// day-by-day walk above.
TEST(Calendar, LeapYearsAndMonthLengths) {
  // February tells the leap years: every fourth, not the century unless 400.
  const std::array<int, 3> ym[] = {{2004, 2, 29}, {2000, 2, 29},  {1900, 2, 28}, {2005, 2, 28},
                                   {2005, 4, 30}, {2005, 12, 31}, {2005, 13, 0}};
  for (const auto& [y, m, days] : ym) EXPECT_EQ(vb::daysInMonth(y, m), days) << y << "-" << m;
}

TEST(Calendar, SplitSerialRoundsToTheSecond) {
  const std::pair<double, DateTimeParts> cases[] = {
      {38412.5, {2005, 3, 1, 12, 0, 0}},
      {-1.25, {1899, 12, 29, 6, 0, 0}},
      {-0.5, {1899, 12, 30, 12, 0, 0}},
      {0.999999999, {1899, 12, 31, 0, 0, 0}},   // rounds up to midnight
      {-1.999999999, {1899, 12, 30, 0, 0, 0}},  // 12-29 23:59:59.9 rounds up
      {1.0 + 1.4 / 86400, {1899, 12, 31, 0, 0, 1}},
      {2958465.0 + 86399.0 / 86400, {9999, 12, 31, 23, 59, 59}},
  };
  for (const auto& [serial, parts] : cases) EXPECT_EQ(vb::splitSerial(serial), parts) << serial;
}

TEST(Calendar, SerialFromPartsInvertsSplit) {
  for (double serial : {38412.75, -1.25, -657434.5, 0.5, 2958465.0}) {
    EXPECT_NEAR(vb::serialFromParts(vb::splitSerial(serial)), serial, 1e-9) << serial;
  }
  EXPECT_DOUBLE_EQ(vb::timeFraction(18, 0, 0), 0.75);
  EXPECT_DOUBLE_EQ(vb::combineSerial(-2, 0.5), -2.5);
  EXPECT_DOUBLE_EQ(vb::combineSerial(0, 0.5), 0.5);
}

}  // namespace
}  // namespace korvex
