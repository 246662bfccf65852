#include <cmath>
#include <random>
#include <sstream>
#include <type_traits>

#include "korvex/convert.hpp"
#include "support.hpp"
#include "values/calendar.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
using testing::u8;
const Locale& zh = Locale::zhCN();
const Locale& en = Locale::enUS();

TEST(ToLong, BankersRoundingAndRange) {
  // clang-format off
  const std::pair<Value, std::int32_t> cases[] = {
      {Value::dbl(2.5), 2}, {Value::dbl(3.5), 4}, {Value::dbl(-2.5), -2}, {Value::dbl(-3.5), -4},
      {Value::dbl(2.5000001), 3}, {Value::dbl(-0.4), 0}, {Value::string(u" 2.5 "), 2},
      {Value::string(u"1,000"), 1000}, {Value::currency(Currency{25000}), 2},
      {Value::currency(Currency{35000}), 4}, {Value::currency(Currency{-25001}), -3},
      {Value::boolean(true), -1}, {Value(), 0}, {Value::date(38412.75), 38413},
      {Value::dbl(2147483647.4), 2147483647},
      {Value::dbl(-2147483648.5), -2147483648},  // rounds to even, in range
  };
  // clang-format on
  for (const auto& [v, expected] : cases) {
    EXPECT_EQ(vb::toLong(v, zh), expected) << u8(vb::toString(v, zh));
  }
}

TEST(ToWhole, ErrorsByCause) {
  const std::tuple<const char*, std::function<void()>, int> cases[] = {
      {"CLng above range", [] { vb::toLong(Value::dbl(2147483647.5), zh); }, 6},
      {"CLng below range", [] { vb::toLong(Value::dbl(-2147483649.0), zh); }, 6},
      {"CLng huge currency", [] { vb::toLong(Value::currency(Currency{INT64_MAX}), zh); }, 6},
      {"CInt above range", [] { vb::toInteger(Value::lng(32768), zh); }, 6},
      {"CInt rounding up out", [] { vb::toInteger(Value::dbl(32767.5), zh); }, 6},
      {"CLng text", [] { vb::toLong(Value::string(u"abc"), zh); }, 13},
      {"CLng Null", [] { vb::toLong(Value::null(), zh); }, 94},
      {"CLng object", [] { vb::toLong(Value::object(nullptr), zh); }, 13},
      {"CDbl huge text", [] { vb::toDouble(Value::string(u"1E400"), zh); }, 6},
      {"CCur above range", [] { vb::toCurrency(Value::dbl(1e15), zh); }, 6},
      {"CCur just above the largest amount",
       [] { vb::toCurrency(Value::dbl(922337203685477.6), zh); }, 6},
  };
  for (const auto& [name, f, error] : cases) EXPECT_EQ(errorOf(f), error) << name;
}

TEST(ToInteger, KeepsSixteenBits) {
  EXPECT_EQ(vb::toInteger(Value::dbl(-32768.4), zh), -32768);
  EXPECT_EQ(vb::toInteger(Value::dbl(32766.5), zh), 32766);
  EXPECT_EQ(vb::toInteger(Value::string(u"&HFFFF"), zh), -1);
}

TEST(ToCurrency, FourDecimalsBankersRounding) {
  const std::pair<Value, std::int64_t> cases[] = {
      {Value::dbl(1.23456), 12346},
      {Value::dbl(0.03125), 312},  // exactly 312.5 ten-thousandths: half to even
      {Value::dbl(0.09375), 938},  // exactly 937.5
      {Value::lng(-3), -30000},
      {Value::string(u"1,234.5"), 12345000},
      {Value::boolean(true), -10000},
      // Large whole amounts stay exact to the last unit.
      {Value::dbl(98765432109876.0), 987654321098760000},
      {Value::dbl(-123456789012345.0), -1234567890123450000},
      {Value::dbl(922337203685477.5), 9223372036854775000},
  };
  for (const auto& [v, scaled] : cases) EXPECT_EQ(vb::toCurrency(v, zh).scaled, scaled);
}

TEST(ToBoolean, NumbersWordsAndNumericText) {
  const std::pair<Value, bool> cases[] = {
      {Value::integer(0), false},       {Value::dbl(0.1), true},
      {Value::string(u"True"), true},   {Value::string(u"fAlSe"), false},
      {Value::string(u" TRUE "), true}, {Value::string(u"0"), false},
      {Value::string(u"-2"), true},     {Value(), false},
      {Value::currency({}), false},     {Value::date(1), true},
  };
  for (const auto& [v, b] : cases) EXPECT_EQ(vb::toBoolean(v, zh), b);
  EXPECT_EQ(errorOf([] { vb::toBoolean(Value::string(u"yes"), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::toBoolean(Value::null(), zh); }), 94);
}

TEST(ToDate, NumbersStringsAndRange) {
  EXPECT_EQ(vb::toDate(Value::lng(38412), zh), 38412);
  EXPECT_EQ(vb::toDate(Value::string(u"2005-03-01"), zh), vb::daysFromCivil(2005, 3, 1));
  EXPECT_EQ(vb::toDate(Value::boolean(true), zh), -1);
  EXPECT_EQ(errorOf([] { vb::toDate(Value::string(u"not a date"), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::toDate(Value::string(u"38412"), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::toDate(Value::dbl(3e6), zh); }), 6);
  EXPECT_EQ(errorOf([] { vb::toDate(Value::dbl(-657435), zh); }), 6);
  EXPECT_EQ(vb::toDate(Value::dbl(-657434.5), zh), -657434.5);  // 100-01-01 noon
  EXPECT_EQ(errorOf([] { vb::toDate(Value::null(), zh); }), 94);
}

TEST(IsNumeric, PerType) {
  // clang-format off
  const std::pair<Value, bool> cases[] = {
      {Value(), true}, {Value::boolean(false), true}, {Value::integer(1), true},
      {Value::currency({}), true}, {Value::date(1), false}, {Value::null(), false},
      // text as the number parser reads it (tested there), but no words
      {Value::string(u""), false}, {Value::string(u" 1,234.5 "), true},
      {Value::string(u"True"), false},
      {Value::object(nullptr), false}, {Value::array(Array({{0, 1}})), false},
  };
  // clang-format on
  for (const auto& [v, numeric] : cases) {
    EXPECT_EQ(vb::isNumeric(v, zh), numeric) << typeName(v.type());
  }
}

TEST(IsDate, DatesAndDateStringsOnly) {
  // clang-format off
  const std::pair<Value, bool> cases[] = {
      {Value::date(0), true}, {Value::string(u"2004-02-10"), true},
      {Value::string(u"3/1/2005"), true}, {Value::string(u"10:30"), true},
      {Value::string(u"2004-02-30"), false}, {Value::string(u"abc"), false},
      {Value::dbl(38412), false}, {Value(), false}, {Value::null(), false},
  };
  // clang-format on
  for (const auto& [v, date] : cases) EXPECT_EQ(vb::isDate(v, zh), date);
}

TEST(DoubleToString, FifteenDigitsShortestForm) {
  // clang-format off
  const std::pair<double, std::u16string_view> cases[] = {
      {0.1 + 0.2, u"0.3"}, {1.0 / 3.0, u"0.333333333333333"}, {2.0 / 3.0, u"0.666666666666667"},
      {1e16, u"1E+16"}, {1e15, u"1E+15"}, {123456789012345.0, u"123456789012345"},
      // plain while no more than 15 places follow the point
      {1.5e-05, u"0.000015"}, {0.000056789, u"0.000056789"}, {1e-12, u"0.000000000001"},
      {0.0000000000056789, u"5.6789E-12"}, {-1.0 / 30000, u"-3.33333333333333E-05"},
      {0.0001, u"0.0001"}, {-123456789012345678.0, u"-1.23456789012346E+17"}, {1e100, u"1E+100"},
      {2.5, u"2.5"}, {-2.5, u"-2.5"}, {100, u"100"}, {0, u"0"}, {-0.0, u"0"},
      {1234567.125, u"1234567.125"},
  };
  // clang-format on
  for (const auto& [d, text] : cases) EXPECT_EQ(u8(vb::doubleToString(d, zh)), u8(text)) << d;
}

TEST(DoubleToString, RoundTripsWithinFifteenDigits) {
  std::mt19937_64 rng(20051);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  std::uniform_int_distribution<int> exponent(-30, 30);
  for (int i = 0; i < 2000; ++i) {
    const double d = (i % 2 ? -1 : 1) * mantissa(rng) * std::pow(10.0, exponent(rng));
    const auto text = vb::doubleToString(d, zh);
    const auto back = vb::parseNumber(text, zh);
    ASSERT_TRUE(back.has_value()) << u8(text);
    EXPECT_NEAR(*back, d, std::fabs(d) * 1e-14) << u8(text);
    // And the text is stable: printing the parsed value gives the same text.
    EXPECT_EQ(vb::doubleToString(*back, zh), text);
  }
}

TEST(CurrencyToString, UpToFourDecimalsNoTrailingZeros) {
  // clang-format off
  const std::pair<std::int64_t, std::u16string_view> cases[] = {
      {15000, u"1.5"}, {12345678, u"1234.5678"}, {10000, u"1"}, {-1, u"-0.0001"}, {0, u"0"},
      {-12340000, u"-1234"}, {INT64_MAX, u"922337203685477.5807"},
      {INT64_MIN, u"-922337203685477.5808"},
  };
  // clang-format on
  for (const auto& [scaled, text] : cases) {
    EXPECT_EQ(u8(vb::currencyToString(Currency{scaled}, zh)), u8(text)) << scaled;
  }
}

TEST(DateToString, LocaleShortDateAndLongTime) {
  const double mar1 = static_cast<double>(vb::daysFromCivil(2005, 3, 1));
  // clang-format off
  const std::tuple<double, const Locale*, std::u16string_view> cases[] = {
      {mar1, &zh, u"2005/3/1"}, {mar1 + 0.5, &zh, u"2005/3/1 12:00:00"},
      {mar1 + vb::timeFraction(9, 5, 7), &zh, u"2005/3/1 9:05:07"}, {mar1, &en, u"3/1/2005"},
      {mar1 + vb::timeFraction(13, 5, 0), &en, u"3/1/2005 1:05:00 PM"},
      {mar1 + vb::timeFraction(0, 30, 0), &en, u"3/1/2005 12:30:00 AM"},
      {0.75, &zh, u"18:00:00"},  // date part 0: the time alone
      {0, &zh, u"0:00:00"}, {0.25, &en, u"6:00:00 AM"},
      {-1.25, &zh, u"1899/12/29 6:00:00"},  // negative: days back, time forward
      {1, &zh, u"1899/12/31"},
      {static_cast<double>(vb::kMinDateDays), &zh, u"0100/1/1"}  // yyyy pads to four digits,
  };
  // clang-format on
  for (const auto& [serial, loc, text] : cases) {
    EXPECT_EQ(u8(vb::dateToString(serial, *loc)), u8(text)) << serial;
  }
}

TEST(DateToString, SerialsOutsideTheDateRangeOverflow) {
  for (double serial : {3e6, -657435.0, 1e300, std::nan("")}) {
    EXPECT_EQ(errorOf([&] { vb::dateToString(serial, zh); }), 6) << serial;
  }
}

// The string form of the other types is pinned through describe() by the
// arithmetic and evaluator tables.
TEST(ToString, NullObjectAndArrayRaise) {
  EXPECT_EQ(errorOf([] { vb::toString(Value::null(), zh); }), 94);
  EXPECT_EQ(errorOf([] { vb::toString(Value::object(nullptr), zh); }), 13);
  EXPECT_EQ(errorOf([] { vb::toString(Value::array(Array({{0, 1}})), zh); }), 13);
}

// The host-side conversions: the script's results and errors without
// exceptions.
// The value's text, or "err N MESSAGE" when the conversion failed.
template <typename T>
std::string show(const Converted<T>& c) {
  if (!c) return "err " + std::to_string(c.errNum) + " " + toUtf8(c.errMsg);
  EXPECT_EQ(c.errNum, 0);
  EXPECT_TRUE(c.errMsg.empty());
  if constexpr (std::is_same_v<T, std::u16string>) {
    return toUtf8(*c.value);
  } else {
    std::ostringstream out;
    out.precision(17);
    out << *c.value;
    return out.str();
  }
}

TEST(HostConversions, GiveTheValueOrTheScriptsRuntimeError) {
  const Value when = Value::date(38412.5);
  const std::tuple<const char*, std::string, const char*> cases[] = {
      {"numeric text", show(toDouble(Value::string(u"1,234.5"))), "1234.5"},
      {"True", show(toDouble(Value::boolean(true))), "-1"},
      {"text that is no number", show(toDouble(Value::string(u"abc"))), "err 13 类型不匹配"},
      {"Null", show(toDouble(Value::null())), "err 94 无效使用 Null"},
      {"ISO date text", show(toDateSerial(Value::string(u"2005-03-01"))), "38412"},
      {"no date", show(toDateSerial(Value::string(u"tomorrow"))), "err 13 类型不匹配"},
      {"Long, half to even", show(toLong(Value::dbl(2.5))), "2"},
      {"Long overflow", show(toLong(Value::dbl(3e9))), "err 6 溢出"},
      {"text", show(toText(Value::dbl(0.1 + 0.2))), "0.3"},
      {"date text", show(toText(when)), "2005/3/1 12:00:00"},
      {"date text in en-US", show(toText(when, Locale::enUS())), "3/1/2005 12:00:00 PM"},
      {"format", show(formatValue(Value::dbl(1234.5), u"#,##0.00")), "1,234.50"},
      {"Null as text", show(toText(Value::null())), "err 94 无效使用 Null"},
  };
  for (const auto& [what, got, expected] : cases) EXPECT_EQ(got, expected) << what;
}

TEST(HostConversions, TestsNeverFail) {
  EXPECT_TRUE(isNumericValue(Value::string(u" 12 ")));
  EXPECT_FALSE(isNumericValue(Value::string(u"")));
  EXPECT_TRUE(isDateValue(Value::string(u"2005-03-01")));
  EXPECT_FALSE(isDateValue(Value::null()));
}

}  // namespace
}  // namespace korvex
