// Rounding (Round, Int, Fix) and date parts and construction.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "values/format.hpp"
#include "values/runtime_error.hpp"

namespace korvex::vb {
namespace {

const Locale& zh() { return Locale::zhCN(); }

void expectRaises(const std::function<void()>& f, std::int32_t number, const char* what) {
  try {
    f();
    ADD_FAILURE() << what << ": expected run-time error " << number;
  } catch (const RuntimeError& e) {
    EXPECT_EQ(e.number(), number) << what;
  }
}

TEST(Rounding, HalfEvenOnDecimalDigits) {
  struct Case {
    double x;
    int digits;
    double expected;
  };
  // The platform scales in binary before rounding: 2.675 * 100 is exactly
  // 267.5 (a tie, to even), 1233.715 * 100 falls just below the tie.
  const std::vector<Case> cases = {
      {2.5, 0, 2},        {3.5, 0, 4},      {-2.5, 0, -2},           {-3.5, 0, -4},
      {0.5, 0, 0},        {1.5, 0, 2},      {2.4999, 0, 2},          {2.5001, 0, 3},
      {0.125, 2, 0.12},   {0.135, 2, 0.14}, {1234.5678, 2, 1234.57}, {0.1 + 0.2, 1, 0.3},
      {1e20, 2, 1e20},    {2.5e-10, 0, 0},  {9.995, 2, 9.99},        {123.456, 5, 123.456},
      {-0.0049, 2, 0},    {3.825, 2, 3.82}, {3.875, 2, 3.88},        {1233.715, 2, 1233.71},
      {22.225, 2, 22.22}, {12.65, 1, 12.6}, {12.55, 1, 12.6},        {0.285, 2, 0.28},
      {1.005, 2, 1.0},    {2.675, 2, 2.68}, {1250, -2, 1200},
  };
  for (const auto& c : cases) {
    EXPECT_DOUBLE_EQ(roundHalfEven(c.x, c.digits), c.expected) << c.x << " to " << c.digits;
  }
}

TEST(Rounding, RoundKeepsTheNumericType) {
  const Value i = round(Value::integer(7), 0, zh());
  EXPECT_EQ(i.type(), VarType::Integer);
  EXPECT_EQ(i.integerValue(), 7);
  EXPECT_EQ(round(Value::lng(-70000), 2, zh()).longValue(), -70000);
  EXPECT_TRUE(round(Value::null(), 0, zh()).isNull());

  struct CurrencyCase {
    std::int64_t scaled;
    int digits;
    std::int64_t expected;
  };
  for (const auto& c : std::vector<CurrencyCase>{{25000, 0, 20000},
                                                 {35000, 0, 40000},
                                                 {-25000, 0, -20000},
                                                 {12345, 2, 12300},
                                                 {12350, 2, 12400},
                                                 {12250, 2, 12200},
                                                 {12345, 4, 12345},
                                                 {-12351, 2, -12400}}) {
    const Value r = round(Value::currency(Currency{c.scaled}), c.digits, zh());
    ASSERT_EQ(r.type(), VarType::Currency);
    EXPECT_EQ(r.currencyValue().scaled, c.expected) << c.scaled << " to " << c.digits;
  }

  const Value s = round(Value::string(u"2.5"), 0, zh());
  EXPECT_EQ(s.type(), VarType::Double);
  EXPECT_EQ(s.doubleValue(), 2.0);
  const Value d = round(Value::dbl(2.345), 2, zh());
  EXPECT_EQ(d.type(), VarType::Double);
  EXPECT_DOUBLE_EQ(d.doubleValue(), 2.35);
  const Value b = round(Value::boolean(true), 0, zh());
  EXPECT_EQ(b.type(), VarType::Integer);
  EXPECT_EQ(b.integerValue(), -1);
  expectRaises([] { round(Value::dbl(1.5), -1, zh()); }, kInvalidCall, "negative digits");
  expectRaises([] { round(Value::string(u"abc"), 0, zh()); }, kTypeMismatch, "text");
}

TEST(Rounding, IntFloorsAndFixTruncates) {
  struct Case {
    double x;
    double intExpected;
    double fixExpected;
  };
  for (const auto& c :
       std::vector<Case>{{2.7, 2, 2}, {-2.5, -3, -2}, {-2.0, -2, -2}, {0.3, 0, 0}, {-0.3, -1, 0}}) {
    const Value i = intPart(Value::dbl(c.x), zh());
    const Value f = fixPart(Value::dbl(c.x), zh());
    ASSERT_EQ(i.type(), VarType::Double);
    EXPECT_EQ(i.doubleValue(), c.intExpected) << c.x;
    EXPECT_EQ(f.doubleValue(), c.fixExpected) << c.x;
  }
  EXPECT_EQ(intPart(Value::currency(Currency{-25000}), zh()).currencyValue().scaled, -30000);
  EXPECT_EQ(fixPart(Value::currency(Currency{-25000}), zh()).currencyValue().scaled, -20000);
  EXPECT_EQ(intPart(Value::currency(Currency{25000}), zh()).currencyValue().scaled, 20000);
  EXPECT_EQ(intPart(Value::integer(-4), zh()).integerValue(), -4);
  const Value fromText = fixPart(Value::string(u"-3.7"), zh());
  EXPECT_EQ(fromText.type(), VarType::Double);
  EXPECT_EQ(fromText.doubleValue(), -3.0);
  const Value date = intPart(Value::date(38027.75), zh());
  EXPECT_EQ(date.type(), VarType::Date);
  EXPECT_EQ(date.doubleValue(), 38027.0);
  EXPECT_TRUE(intPart(Value::null(), zh()).isNull());
  EXPECT_EQ(fixPart(Value::boolean(true), zh()).integerValue(), -1);
}

struct Ymd {
  int y, m, d;
};

TEST(Dates, DateSerialOverflowsMonthsAndDays) {
  struct Case {
    Ymd in;
    Ymd out;
  };
  const std::vector<Case> cases = {
      {{2004, 2, 10}, {2004, 2, 10}},   {{2004, 13, 1}, {2005, 1, 1}},
      {{2004, 25, 1}, {2006, 1, 1}},    {{2004, 0, 1}, {2003, 12, 1}},
      {{2004, -1, 15}, {2003, 11, 15}}, {{2004, 3, 0}, {2004, 2, 29}},
      {{2004, 2, 30}, {2004, 3, 1}},    {{2003, 2, 29}, {2003, 3, 1}},
      {{2004, 1, -1}, {2003, 12, 30}},  {{2004, 1, 366}, {2004, 12, 31}},
      {{99, 1, 1}, {1999, 1, 1}},       {{30, 6, 1}, {1930, 6, 1}},
      {{29, 6, 1}, {2029, 6, 1}},       {{0, 1, 1}, {2000, 1, 1}},
      {{100, 1, 1}, {100, 1, 1}},       {{9999, 12, 31}, {9999, 12, 31}},
  };
  for (const auto& c : cases) {
    const DateParts p = splitDate(dateSerial(c.in.y, c.in.m, c.in.d));
    EXPECT_EQ((Ymd{p.year, p.month, p.day}.y), c.out.y) << c.in.y << "-" << c.in.m << "-" << c.in.d;
    EXPECT_EQ(p.month, c.out.m) << c.in.y << "-" << c.in.m << "-" << c.in.d;
    EXPECT_EQ(p.day, c.out.d) << c.in.y << "-" << c.in.m << "-" << c.in.d;
  }
  EXPECT_EQ(dateSerial(2004, 2, 10), 38027.0);
  EXPECT_EQ(dateSerial(1899, 12, 30), 0.0);
  EXPECT_EQ(dateSerial(1899, 12, 29), -1.0);
  for (const auto& bad : std::vector<Ymd>{{10000, 1, 1}, {9999, 12, 32}, {100, 1, 0}, {-1, 1, 1}}) {
    expectRaises([&] { dateSerial(bad.y, bad.m, bad.d); }, kInvalidCall, "out-of-range date");
  }
}

TEST(Dates, TimeSerialAndSplit) {
  struct Case {
    double serial;
    DateParts parts;
  };
  // clang-format off
  const std::vector<Case> cases = {
      {timeSerial(12, 0, 0), {1899, 12, 30, 12, 0, 0}},
      {timeSerial(25, 0, 0), {1899, 12, 31, 1, 0, 0}},
      {timeSerial(0, 90, 30), {1899, 12, 30, 1, 30, 30}},
      {timeSerial(-1, 0, 0), {1899, 12, 29, 23, 0, 0}},
      {timeSerial(12, -15, 0), {1899, 12, 30, 11, 45, 0}}, {38027.75, {2004, 2, 10, 18, 0, 0}},
      {-1.25, {1899, 12, 29, 6, 0, 0}}, {-0.5, {1899, 12, 30, 12, 0, 0}},
      {0.999999999, {1899, 12, 31, 0, 0, 0}}, {2958465.99998, {9999, 12, 31, 23, 59, 58}},
      {dateSerial(2000, 2, 29) + timeSerial(23, 59, 59), {2000, 2, 29, 23, 59, 59}},
  };
  // clang-format on
  for (const auto& c : cases) {
    const DateParts p = splitDate(c.serial);
    const DateParts& e = c.parts;
    EXPECT_TRUE(p.year == e.year && p.month == e.month && p.day == e.day && p.hour == e.hour &&
                p.minute == e.minute && p.second == e.second)
        << c.serial << " split as " << p.year << "-" << p.month << "-" << p.day << " " << p.hour
        << ":" << p.minute << ":" << p.second;
  }
  EXPECT_DOUBLE_EQ(timeSerial(6, 0, 0), 0.25);
  expectRaises([] { timeSerial(24 * 3000000, 0, 0); }, kInvalidCall, "time beyond 9999");
}

TEST(Dates, WeekdayAndNames) {
  struct Case {
    double serial;
    int weekday;
  };
  for (const auto& c : std::vector<Case>{
           {38027, 3}, {0, 7}, {1, 1}, {-1, 6}, {-0.5, 7}, {38027.9999999999, 4}, {-657434, 6}}) {
    EXPECT_EQ(weekday(c.serial), c.weekday) << c.serial;
  }
  struct NameCase {
    int n;
    bool abbreviate;
    const Locale& loc;
    const char* weekdayText;
    const char* monthText;
  };
  // clang-format off
  const std::vector<NameCase> names = {
      {1, false, Locale::zhCN(), "星期日", "一月"}, {7, true, Locale::zhCN(), "周六", "7月"},
      {3, false, Locale::enUS(), "Tuesday", "March"}, {2, true, Locale::enUS(), "Mon", "Feb"},
  };
  // clang-format on
  for (const auto& c : names) {
    EXPECT_EQ(toUtf8(weekdayName(c.n, c.abbreviate, c.loc)), c.weekdayText);
    EXPECT_EQ(toUtf8(monthName(c.n, c.abbreviate, c.loc)), c.monthText);
  }
  EXPECT_EQ(toUtf8(monthName(12, false, zh())), "十二月");
  for (double bad : {3e6, -657436.0, std::nan("")}) {
    expectRaises([&] { weekday(bad); }, kOverflow, "weekday of no date");
    expectRaises([&] { splitDate(bad); }, kOverflow, "split of no date");
  }
  for (int bad : {0, 8}) {
    expectRaises([&] { weekdayName(bad, false, zh()); }, kInvalidCall, "weekday number");
  }
  for (int bad : {0, 13}) {
    expectRaises([&] { monthName(bad, true, zh()); }, kInvalidCall, "month number");
  }
}

}  // namespace
}  // namespace korvex::vb
