#include <limits>

#include "support.hpp"
#include "values/calendar.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::u8;
const Locale& zh = Locale::zhCN();
const Locale& en = Locale::enUS();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(ParseNumber, AcceptedForms) {
  // clang-format off
  const std::pair<std::u16string_view, double> cases[] = {
      {u"42", 42}, {u"  -3.5  ", -3.5}, {u"+7", 7}, {u"1,234,567.25", 1234567.25}, {u"1,2,3", 123},
      {u".5", 0.5}, {u"5.", 5}, {u"1e3", 1000}, {u"1.5E-05", 1.5e-05}, {u"2E+2", 200},
      {u"1D2", 100}, {u"&HFF", 255}, {u"&hff", 255},
      {u"&HFFFF", -1},  // sixteen bits: an Integer pattern
      {u"&H8000", -32768}, {u"&H10000", 65536}, {u"&HFFFFFFFF", -1}, {u"&O17", 15},
      {u"&O177777", -1}, {u"\t12\t", 12}, {u"0.000000000000000000000000000001", 1e-30},
      {u"123456789012345678901234567890", 1.2345678901234568e29},
      // huge exponents overflow to infinity, tiny ones give zero
      {u"1E400", kInf}, {u"-1E400", -kInf}, {u"1E-400", 0}, {u"0.00001E-400", 0},
  };
  // clang-format on
  for (const auto& [text, value] : cases) {
    const auto d = vb::parseNumber(text, zh);
    ASSERT_TRUE(d.has_value()) << u8(text);
    EXPECT_DOUBLE_EQ(*d, value) << u8(text);
  }
}

TEST(ParseNumber, RejectedForms) {
  const std::u16string_view cases[] = {
      u"",    u"   ",  u"abc",  u"1a",  u"-",           u".",     u"1.2.3", u"1e",
      u"1e+", u"&H",   u"&HG1", u"&X1", u"&H100000000", u",5",    u"1 2",   u"--1",
      u"$5",  u"TRUE", u"0x10", u"(5",  u"5)",          u"((5))", u"¥5¥",   u"()",
  };
  for (const auto text : cases) EXPECT_FALSE(vb::parseNumber(text, zh).has_value()) << u8(text);
}

// Signs, parentheses and the locale's currency symbol on either side of the
// digits, blanks between them; IsNumeric agrees.
TEST(ParseNumber, SignsParenthesesAndCurrencyAround) {
  const std::tuple<std::u16string_view, const Locale*, double> cases[] = {
      {u"$11", &en, 11},       {u"-$11", &en, -11},  {u"$-11", &en, -11},
      {u"$ 11", &en, 11},      {u"11$", &en, 11},    {u"(5)", &zh, -5},
      {u"5-", &zh, -5},        {u" + 5", &zh, 5},    {u"(¥ 1,234.5)", &zh, -1234.5},
      {u"2.5E+1 -", &zh, -25}, {u"1.5 ¥", &zh, 1.5},
  };
  for (const auto& [text, loc, value] : cases) {
    const auto d = vb::parseNumber(text, *loc);
    ASSERT_TRUE(d.has_value()) << u8(text);
    EXPECT_DOUBLE_EQ(*d, value) << u8(text);
    EXPECT_TRUE(vb::isNumeric(Value::string(std::u16string(text)), *loc)) << u8(text);
  }
}

double day(int y, int m, int d) { return static_cast<double>(vb::daysFromCivil(y, m, d)); }

TEST(ParseDate, AcceptedForms) {
  const double t1030 = vb::timeFraction(10, 30, 0);
  // clang-format off
  const std::tuple<std::u16string_view, const Locale*, double> cases[] = {
      {u"2005/3/1", &zh, day(2005, 3, 1)}, {u"2005-03-01", &zh, day(2005, 3, 1)},
      {u"2005-03-01", &en, day(2005, 3, 1)},
      {u"3/1/2005", &zh, day(2005, 3, 1)},  // the MaxDay text, in any locale
      {u"3/1/2005", &en, day(2005, 3, 1)},
      {u"13/1/2005", &en, day(2005, 1, 13)},  // impossible month: swapped
      {u"2004/2/29", &zh, day(2004, 2, 29)},
      {u"05/3/1", &zh, day(2005, 3, 1)},   // zh order with a short year
      {u"4/1/99", &zh, day(1999, 4, 1)},   // no zh date: month/day/year
      {u"4/1/29", &zh, day(2004, 1, 29)},  // the zh order wins where it reads
      {u"3/1/05", &en, day(2005, 3, 1)},   // en order with a short year
      {u"3/1/45", &en, day(1945, 3, 1)}, {u"2005年3月1日", &zh, day(2005, 3, 1)},
      {u"2005.3.1", &zh, day(2005, 3, 1)}, {u"March 1, 2005", &en, day(2005, 3, 1)},
      {u"Tuesday, March 1, 2005", &en, day(2005, 3, 1)}, {u"1-Mar-2005", &en, day(2005, 3, 1)},
      {u"  2005-03-01 10:30  ", &zh, day(2005, 3, 1) + t1030},
      {u"2005/3/1 10:30:15", &zh, day(2005, 3, 1) + vb::timeFraction(10, 30, 15)},
      {u"3/1/2005 10:30 PM", &en, day(2005, 3, 1) + vb::timeFraction(22, 30, 0)},
      {u"2005/3/1 下午3:00:00", &zh, day(2005, 3, 1) + vb::timeFraction(15, 0, 0)},
      {u"10:30", &zh, t1030}, {u"12:00 AM", &en, 0}, {u"3 PM", &en, vb::timeFraction(15, 0, 0)},
      {u"1899/12/29 06:00", &zh, -1.25},
      // blanks for separators; one- and two-digit years in 1930..2029
      {u"1 2 2005", &en, day(2005, 1, 2)}, {u"1 1 0", &en, day(2000, 1, 1)},
      {u"1 1 50", &zh, day(1950, 1, 1)}, {u"12 31 99", &zh, day(1999, 12, 31)},
      {u"3 / 1 / 29 10:30", &en, day(2029, 3, 1) + t1030},
      // AM and PM leave hours of a 24-hour clock alone
      {u"13:00 AM", &en, vb::timeFraction(13, 0, 0)},
      {u"13:30 PM", &zh, vb::timeFraction(13, 30, 0)},
      {u"12:15 AM", &en, vb::timeFraction(0, 15, 0)},
      {u"100/1/1", &zh, static_cast<double>(vb::kMinDateDays)},
      {u"9999-12-31", &zh, static_cast<double>(vb::kMaxDateDays)},
  };
  // clang-format on
  for (const auto& [text, loc, serial] : cases) {
    const auto d = vb::parseDate(text, *loc);
    ASSERT_TRUE(d.has_value()) << u8(text);
    EXPECT_DOUBLE_EQ(*d, serial) << u8(text);
  }
}

TEST(ParseDate, RejectedForms) {
  const std::u16string_view cases[] = {
      u"",           u"abc",       u"2005",   u"42",           u"2005/2/30", u"2005-13-01",
      u"13/13/2005", u"2005/3/1x", u"25:00",  u"10:60",        u"24:00 AM",  u"99/1/10000",
      u"2005-3",     u"2005/3-1",  u"10:30:", u"2005/3/1 abc", u"1 2/2005",
  };
  for (const auto text : cases) EXPECT_FALSE(vb::parseDate(text, zh).has_value()) << u8(text);
}

TEST(ParseDate, PrintedDatesParseBack) {
  for (const Locale* loc : {&zh, &en}) {
    for (double serial : {day(2005, 3, 1) + 0.5, day(1999, 12, 31) + vb::timeFraction(23, 59, 59),
                          day(2024, 2, 29), 0.25, day(1900, 1, 1) + vb::timeFraction(0, 0, 1)}) {
      const auto text = vb::dateToString(serial, *loc);
      const auto back = vb::parseDate(text, *loc);
      ASSERT_TRUE(back.has_value()) << u8(text);
      EXPECT_NEAR(*back, serial, 1e-9) << u8(text);
    }
  }
}

}  // namespace
}  // namespace korvex
