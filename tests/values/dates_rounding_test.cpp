// Rounding (Round, Int, Fix), date parts and construction, and the calendar.
#include <array>
#include <cmath>
#include <vector>

#include "support.hpp"
#include "values/calendar.hpp"
#include "values/format.hpp"

namespace korvex::vb {
namespace {

using testing::describe;
using testing::errorOf;
const Locale& zh() { return Locale::zhCN(); }
Value C(std::int64_t scaled) { return Value::currency(Currency{scaled}); }

TEST(Rounding, HalfEvenOnDecimalDigits) {
  // The platform scales in binary before rounding: 2.675 * 100 is exactly
  // 267.5 (a tie, to even), 1233.715 * 100 falls just below the tie.
  const std::tuple<double, int, double> cases[] = {
      {2.5, 0, 2},        {3.5, 0, 4},      {-2.5, 0, -2},           {-3.5, 0, -4},
      {0.5, 0, 0},        {1.5, 0, 2},      {2.4999, 0, 2},          {2.5001, 0, 3},
      {0.125, 2, 0.12},   {0.135, 2, 0.14}, {1234.5678, 2, 1234.57}, {0.1 + 0.2, 1, 0.3},
      {1e20, 2, 1e20},    {2.5e-10, 0, 0},  {9.995, 2, 9.99},        {123.456, 5, 123.456},
      {-0.0049, 2, 0},    {3.825, 2, 3.82}, {3.875, 2, 3.88},        {1233.715, 2, 1233.71},
      {22.225, 2, 22.22}, {12.65, 1, 12.6}, {12.55, 1, 12.6},        {0.285, 2, 0.28},
      {1.005, 2, 1.0},    {2.675, 2, 2.68}, {1250, -2, 1200},
  };
  for (const auto& [x, digits, expected] : cases) {
    EXPECT_DOUBLE_EQ(roundHalfEven(x, digits), expected) << x << " to " << digits;
  }
}

// Round keeps the numeric type, Currency rounded half to even on its own
// four places; text is read as a Double.
TEST(Rounding, RoundKeepsTheNumericType) {
  const std::tuple<Value, int, const char*> cases[] = {
      {Value::integer(7), 0, "Integer:7"},   {Value::lng(-70000), 2, "Long:-70000"},
      {Value::null(), 0, "Null:"},           {C(25000), 0, "Currency:2"},
      {C(35000), 0, "Currency:4"},           {C(-25000), 0, "Currency:-2"},
      {C(12345), 2, "Currency:1.23"},        {C(12350), 2, "Currency:1.24"},
      {C(12250), 2, "Currency:1.22"},        {C(12345), 4, "Currency:1.2345"},
      {C(-12351), 2, "Currency:-1.24"},      {Value::string(u"2.5"), 0, "Double:2"},
      {Value::dbl(2.345), 2, "Double:2.35"}, {Value::boolean(true), 0, "Integer:-1"},
  };
  for (const auto& [v, digits, expected] : cases) {
    EXPECT_EQ(describe(round(v, digits, zh())), expected) << describe(v) << " " << digits;
  }
  EXPECT_EQ(errorOf([] { round(Value::dbl(1.5), -1, zh()); }), kInvalidCall);
  EXPECT_EQ(errorOf([] { round(Value::string(u"abc"), 0, zh()); }), kTypeMismatch);
}

TEST(Rounding, IntFloorsAndFixTruncates) {
  // clang-format off
  const std::tuple<Value, const char*, const char*> cases[] = {
      {Value::dbl(2.7), "Double:2", "Double:2"}, {Value::dbl(-2.5), "Double:-3", "Double:-2"},
      {Value::dbl(-2.0), "Double:-2", "Double:-2"}, {Value::dbl(0.3), "Double:0", "Double:0"},
      {Value::dbl(-0.3), "Double:-1", "Double:0"}, {C(-25000), "Currency:-3", "Currency:-2"},
      {C(25000), "Currency:2", "Currency:2"}, {Value::integer(-4), "Integer:-4", "Integer:-4"},
      {Value::string(u"-3.7"), "Double:-4", "Double:-3"}, {Value::null(), "Null:", "Null:"},
      {Value::date(38027.75), "Date:2004/2/10", "Date:2004/2/10"},
      {Value::boolean(true), "Integer:-1", "Integer:-1"},
  };
  // clang-format on
  for (const auto& [v, intExpected, fixExpected] : cases) {
    EXPECT_EQ(describe(intPart(v, zh())), intExpected) << describe(v);
    EXPECT_EQ(describe(fixPart(v, zh())), fixExpected) << describe(v);
  }
}

TEST(Dates, DateSerialOverflowsMonthsAndDaysAndWindowsShortYears) {
  const std::tuple<int, int, int, const char*> cases[] = {
      {2004, 2, 10, "2004/2/10"},   {2004, 13, 1, "2005/1/1"},    {2004, 25, 1, "2006/1/1"},
      {2004, 0, 1, "2003/12/1"},    {2004, -1, 15, "2003/11/15"}, {2004, 3, 0, "2004/2/29"},
      {2004, 2, 30, "2004/3/1"},    {2003, 2, 29, "2003/3/1"},    {2004, 1, -1, "2003/12/30"},
      {2004, 1, 366, "2004/12/31"}, {99, 1, 1, "1999/1/1"},       {30, 6, 1, "1930/6/1"},
      {29, 6, 1, "2029/6/1"},       {0, 1, 1, "2000/1/1"},        {100, 1, 1, "0100/1/1"},
      {9999, 12, 31, "9999/12/31"},
  };
  for (const auto& [y, m, d, expected] : cases) {
    EXPECT_EQ(toUtf8(dateToString(dateSerial(y, m, d), zh())), expected)
        << y << "-" << m << "-" << d;
  }
  EXPECT_EQ(dateSerial(2004, 2, 10), 38027.0);
  EXPECT_EQ(dateSerial(1899, 12, 30), 0.0);
  EXPECT_EQ(dateSerial(1899, 12, 29), -1.0);
  for (const auto& bad :
       std::vector<std::array<int, 3>>{{10000, 1, 1}, {9999, 12, 32}, {100, 1, 0}, {-1, 1, 1}}) {
    EXPECT_EQ(errorOf([&] { dateSerial(bad[0], bad[1], bad[2]); }), kInvalidCall) << bad[0];
  }
}

// Serials before 1899-12-30 and the rounding to the second are covered with
// the calendar; here the time serials and the parts of whole dates.
TEST(Dates, TimeSerialAndSplit) {
  const auto fields = [](const DateParts& p) {
    return std::array<int, 6>{p.year, p.month, p.day, p.hour, p.minute, p.second};
  };
  const std::pair<double, std::array<int, 6>> cases[] = {
      {timeSerial(12, 0, 0), {1899, 12, 30, 12, 0, 0}},
      {timeSerial(25, 0, 0), {1899, 12, 31, 1, 0, 0}},
      {timeSerial(0, 90, 30), {1899, 12, 30, 1, 30, 30}},
      {timeSerial(-1, 0, 0), {1899, 12, 29, 23, 0, 0}},
      {timeSerial(12, -15, 0), {1899, 12, 30, 11, 45, 0}},
      {38027.75, {2004, 2, 10, 18, 0, 0}},
      {2958465.99998, {9999, 12, 31, 23, 59, 58}},
      {dateSerial(2000, 2, 29) + timeSerial(23, 59, 59), {2000, 2, 29, 23, 59, 59}},
  };
  for (const auto& [serial, parts] : cases) EXPECT_EQ(fields(splitDate(serial)), parts) << serial;
  EXPECT_DOUBLE_EQ(timeSerial(6, 0, 0), 0.25);
  EXPECT_EQ(errorOf([] { timeSerial(24 * 3000000, 0, 0); }), kInvalidCall);
}

// Weekday counts from Sunday = 1; the names come from the locale and are
// checked through the date formats.
TEST(Dates, WeekdayAndNameNumbers) {
  const std::pair<double, int> cases[] = {
      {38027, 3},   {0, 7},     {1, 1}, {-1, 6}, {-0.5, 7}, {38027.9999999999, 4},
      {-657434, 6}, {38412, 3},
  };
  for (const auto& [serial, day] : cases) EXPECT_EQ(weekday(serial), day) << serial;
  for (double bad : {3e6, -657436.0, std::nan("")}) {
    EXPECT_EQ(errorOf([&] { weekday(bad); }), kOverflow) << bad;
    EXPECT_EQ(errorOf([&] { splitDate(bad); }), kOverflow) << bad;
  }
  for (int bad : {0, 8}) {
    EXPECT_EQ(errorOf([&] { weekdayName(bad, false, zh()); }), kInvalidCall) << bad;
  }
  for (int bad : {0, 13}) EXPECT_EQ(errorOf([&] { monthName(bad, true, zh()); }), kInvalidCall);
  EXPECT_EQ(toUtf8(monthName(12, false, zh())), "十二月");
}

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
}  // namespace korvex::vb
