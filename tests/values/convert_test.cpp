// The host-side conversions: the script's results and errors without
// exceptions.
#include "korvex/convert.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

namespace korvex {
namespace {

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
  const struct {
    const char* what;
    std::string got;
    const char* expected;
  } cases[] = {
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
  for (const auto& c : cases) EXPECT_EQ(c.got, c.expected) << c.what;
}

TEST(HostConversions, TestsNeverFail) {
  EXPECT_TRUE(isNumericValue(Value::string(u" 12 ")));
  EXPECT_FALSE(isNumericValue(Value::string(u"")));
  EXPECT_TRUE(isDateValue(Value::string(u"2005-03-01")));
  EXPECT_FALSE(isDateValue(Value::null()));
}

}  // namespace
}  // namespace korvex
