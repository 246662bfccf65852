// The host-side conversions: the script's results and errors without
// exceptions.
#include "korvex/convert.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace korvex {
namespace {

TEST(HostConversions, GiveTheValueOrTheScriptsRuntimeError) {
  struct Case {
    const char* what;
    Converted<double> got;
    double value;  // NaN: no value expected
    std::int32_t errNum;
    const char16_t* errMsg;
  };
  const double none = std::nan("");
  const Case cases[] = {
      {"numeric text", toDouble(Value::string(u"1,234.5")), 1234.5, 0, u""},
      {"True", toDouble(Value::boolean(true)), -1, 0, u""},
      {"text that is no number", toDouble(Value::string(u"abc")), none, 13, u"类型不匹配"},
      {"Null", toDouble(Value::null()), none, 94, u"无效使用 Null"},
      {"ISO date text", toDateSerial(Value::string(u"2005-03-01")), 38412, 0, u""},
      {"no date", toDateSerial(Value::string(u"tomorrow")), none, 13, u"类型不匹配"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.got.errNum, c.errNum);
    EXPECT_EQ(c.got.errMsg, c.errMsg);
    ASSERT_EQ(c.got.value.has_value(), !std::isnan(c.value));
    if (c.got) {
      EXPECT_DOUBLE_EQ(*c.got.value, c.value);
    }
  }
}

TEST(HostConversions, LongRoundsToEvenAndReportsOverflow) {
  EXPECT_EQ(toLong(Value::dbl(2.5)).value, 2);
  EXPECT_EQ(toLong(Value::dbl(3.5)).value, 4);
  const auto big = toLong(Value::dbl(3e9));
  EXPECT_FALSE(big);
  EXPECT_EQ(big.errNum, 6);
  EXPECT_EQ(big.errMsg, u"溢出");
}

TEST(HostConversions, TextAndFormatFollowTheLocale) {
  EXPECT_EQ(toText(Value::dbl(0.1 + 0.2)).value, u"0.3");
  EXPECT_EQ(toText(Value::date(38412.5)).value, u"2005/3/1 12:00:00");
  EXPECT_EQ(toText(Value::date(38412.5), Locale::enUS()).value, u"3/1/2005 12:00:00 PM");
  EXPECT_EQ(formatValue(Value::dbl(1234.5), u"#,##0.00").value, u"1,234.50");
  EXPECT_EQ(toText(Value::null()).errNum, 94);
}

TEST(HostConversions, TestsNeverFail) {
  EXPECT_TRUE(isNumericValue(Value::string(u" 12 ")));
  EXPECT_FALSE(isNumericValue(Value::string(u"")));
  EXPECT_TRUE(isDateValue(Value::string(u"2005-03-01")));
  EXPECT_FALSE(isDateValue(Value::null()));
}

}  // namespace
}  // namespace korvex
