#include "support.hpp"
#include "values/calendar.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
using testing::u8;
const Locale& zh = Locale::zhCN();

TEST(ToLong, BankersRoundingAndRange) {
  const struct {
    Value v;
    std::int32_t expected;
    // clang-format off
  } cases[] = {
      {Value::dbl(2.5), 2}, {Value::dbl(3.5), 4}, {Value::dbl(-2.5), -2}, {Value::dbl(-3.5), -4},
      {Value::dbl(2.5000001), 3}, {Value::dbl(-0.4), 0}, {Value::string(u" 2.5 "), 2},
      {Value::string(u"1,000"), 1000}, {Value::currency(Currency{25000}), 2},
      {Value::currency(Currency{35000}), 4}, {Value::currency(Currency{-25001}), -3},
      {Value::boolean(true), -1}, {Value(), 0}, {Value::date(38412.75), 38413},
      {Value::dbl(2147483647.4), 2147483647},
      {Value::dbl(-2147483648.5), -2147483648},  // rounds to even, in range
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(vb::toLong(c.v, zh), c.expected) << u8(vb::toString(c.v, zh));
  }
}

TEST(ToWhole, ErrorsByCause) {
  const struct {
    const char* name;
    std::function<void()> f;
    int error;
  } cases[] = {
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
  for (const auto& c : cases) EXPECT_EQ(errorOf(c.f), c.error) << c.name;
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

}  // namespace
}  // namespace korvex
