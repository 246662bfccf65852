#include "cli/json.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "korvex/workbook.hpp"

namespace korvex::cli {
namespace {

struct NumberCase {
  double value;
  const char* expected;
};

TEST(JsonNumber, WritesNumbersAsJavaScriptDoes) {
  const double inf = std::numeric_limits<double>::infinity();
  // clang-format off
  const NumberCase cases[] = {
      {7, "7"}, {0.1 + 0.2, "0.30000000000000004"}, {-0.0, "0"}, {100, "100"}, {-2.5, "-2.5"},
      {123.456, "123.456"}, {1.0 / 3, "0.3333333333333333"},
      {9007199254740992.0, "9007199254740992"},
      // Plain notation up to, but not including, 1e21.
      {1e20, "100000000000000000000"}, {1.2345678901234568e20, "123456789012345680000"},
      {1e21, "1e+21"}, {1.7976931348623157e308, "1.7976931348623157e+308"},
      // Small magnitudes: plain down to 1e-7 exclusive of smaller ones.
      {0.000001, "0.000001"}, {0.0000015, "0.0000015"}, {0.00001234, "0.00001234"}, {1e-7, "1e-7"},
      {-1e-7, "-1e-7"}, {1.5e-7, "1.5e-7"}, {5e-324, "5e-324"},
      // Non-finite values become strings.
      {inf, "\"Infinity\""}, {-inf, "\"-Infinity\""}, {std::nan(""), "\"NaN\""},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(jsonNumber(c.value), c.expected) << "for " << c.value;
  }
}

struct StringCase {
  std::u16string text;
  std::string expected;
};

TEST(JsonString, EscapesAndEncodes) {
  // clang-format off
  const StringCase cases[] = {
      {u"", "\"\""}, {u"plain / text", "\"plain / text\""},
      {u"say \"hi\"\\", "\"say \\\"hi\\\"\\\\\""}, {u"a\r\nb\tc", "\"a\\r\\nb\\tc\""},
      {u"\b\f", "\"\\b\\f\""}, {std::u16string(u"\x01\x1f\x7f", 3), "\"\\u0001\\u001f\x7f\""},
      {std::u16string(1, u'\0'), "\"\\u0000\""}, {u"中文", "\"\xE4\xB8\xAD\xE6\x96\x87\""},
      {u"\U0001F600", "\"\xF0\x9F\x98\x80\""},
      // Lone surrogates cannot be written as UTF-8; JavaScript escapes them.
      {std::u16string(1, char16_t(0xD800)) + u"x", "\"\\ud800x\""},
      {u"x" + std::u16string(1, char16_t(0xDC01)), "\"x\\udc01\""},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(jsonString(c.text), c.expected);
  }
}

TEST(JsonCurrency, WritesTheExactDecimal) {
  // clang-format off
  const std::pair<std::int64_t, const char*> cases[] = {
      {0, "0"}, {10000, "1"}, {125000, "12.5"}, {-1, "-0.0001"}, {-123456789, "-12345.6789"},
      {10010, "1.001"}, {std::numeric_limits<std::int64_t>::max(), "922337203685477.5807"},
      {std::numeric_limits<std::int64_t>::min(), "-922337203685477.5808"},
  };
  // clang-format on
  for (const auto& [scaled, expected] : cases) {
    EXPECT_EQ(jsonCurrency(Currency{scaled}), expected) << scaled;
  }
}

TEST(JsonDate, WritesDateAndTime) {
  EXPECT_EQ(dateText(0), "1899-12-30 00:00:00");
  EXPECT_EQ(dateText(38412), "2005-03-01 00:00:00");
  EXPECT_EQ(dateText(38412.75), "2005-03-01 18:00:00");
  EXPECT_EQ(dateText(-657434), "0100-01-01 00:00:00");
  EXPECT_EQ(dateText(2958465 + 86399.0 / 86400), "9999-12-31 23:59:59");
}

// Empty, Null, Integer, Long, Double, Currency, Date, String and Boolean
// True are written by the script cases (tests/scripts) and the presets test.
TEST(JsonValue, WritesEachScalarType) {
  const std::pair<Value, const char*> cases[] = {
      {Value::dbl(std::numeric_limits<double>::infinity()),
       R"({"type": "Double", "value": "Infinity"})"},
      {Value::currency(Currency{15000}), R"({"type": "Currency", "value": 1.5})"},
      {Value::date(38412.5), R"({"type": "Date", "value": "2005-03-01 12:00:00"})"},
      {Value::boolean(false), R"({"type": "Boolean", "value": false})"},
      {Value::object(Workbook::createNew()), R"({"type": "Object", "value": null})"},
      {Value::object(nullptr), R"({"type": "Object", "value": null})"},
  };
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(valueJson(value), expected);
  }
}

Array makeArray(std::vector<Array::Bound> bounds, std::vector<Value> elements) {
  Array a(std::move(bounds));
  a.elements() = std::move(elements);
  return a;
}

TEST(JsonValue, WritesArraysFirstIndexOutermost) {
  // 1 To 2, 0 To 2: elements (1,0) (1,1) (1,2) (2,0) (2,1) (2,2).
  const Array grid = makeArray({{1, 2}, {0, 3}}, {Value::dbl(1), Value::dbl(2), Value::dbl(3),
                                                  Value::dbl(4), Value::dbl(5), Value::dbl(6)});
  EXPECT_EQ(valueJson(Value::array(grid)),
            R"({"type": "Array", "lbound": [1, 0], "value": )"
            R"([[{"type": "Double", "value": 1}, {"type": "Double", "value": 2}, )"
            R"({"type": "Double", "value": 3}], [{"type": "Double", "value": 4}, )"
            R"({"type": "Double", "value": 5}, {"type": "Double", "value": 6}]]})");

  const Array empty = makeArray({{0, 0}}, {});
  EXPECT_EQ(valueJson(Value::array(empty)), R"({"type": "Array", "lbound": [0], "value": []})");

  const Array nested = makeArray({{5, 1}}, {Value::array(empty)});
  EXPECT_EQ(valueJson(Value::array(nested)), R"({"type": "Array", "lbound": [5], "value": )"
                                             R"([{"type": "Array", "lbound": [0], "value": []}]})");
}

TEST(JsonOutcome, FailedRunWithSeveralVariablesAndNoMessages) {
  RunOutcome r;
  r.errNum = -2147220004;
  r.errMsg = u"If 语句无 End If : 行号 3";
  r.currentLine = 3;
  r.lineCount = 2;
  r.ifCount = 1;
  r.doCount = 2;
  r.flagCount = 3;
  r.variables = {{u"名", Value::string(u"x")}, {u"B", Value::null()}};
  EXPECT_EQ(outcomeJson(r),
            "{\"errNum\": -2147220004, \"errMsg\": \"If \xE8\xAF\xAD\xE5\x8F\xA5\xE6\x97\xA0 End "
            "If : \xE8\xA1\x8C\xE5\x8F\xB7 3\", \"currentLine\": 3, \"lineCount\": 2, "
            "\"ifCount\": 1, \"doCount\": 2, \"flagCount\": 3, \"variables\": {\"\xE5\x90\x8D\": "
            "{\"type\": \"String\", \"value\": \"x\"}, \"B\": {\"type\": \"Null\", \"value\": "
            "null}}, \"messages\": []}");
}

}  // namespace
}  // namespace korvex::cli
