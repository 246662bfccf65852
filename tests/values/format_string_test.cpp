// User-defined string formats.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "values/format.hpp"

namespace korvex::vb {
namespace {

TEST(FormatString, Placeholders) {
  struct Case {
    Value value;
    const char* format;
    const char* expected;
  };
  // clang-format off
  const std::vector<Case> cases = {
      {Value::string(u"HELLO"), "<", "hello"},
      {Value::string(u"testing"), "<&>&", "testing"},  // the first of < and > decides
      {Value::string(u"Ab"), ">@<@@", " AB"}, {Value::string(u"This is it"), ">", "THIS IS IT"},
      {Value::string(u"abc"), "@@@@@", "  abc"}, {Value::string(u"abc"), "&&&&&", "abc"},
      {Value::string(u"abc"), "!@@@@@", "abc  "}, {Value::string(u"abcdef"), "@@@", "abcdef"},
      {Value::string(u"abcdef"), "!@@@", "abcdef"},
      {Value::string(u"abcdef"), "@-@@", "a-bcdef"},  // longer: from the left, rest at the end
      {Value::string(u"testing"), "@\\x", "txesting"},
      {Value::string(u"abcdef"), "!@@\"-\"", "ab-cdef"},
      {Value::string(u"abcdef"), "!@-@@", "a-bcdef"},
      {Value::string(u"5551234"), "@@@-@@@@", "555-1234"}, {Value::string(u"12"), "(@@@)", "( 12)"},
      {Value::string(u"ab"), ">\"[\"@@@\"]\"", "[ AB]"}, {Value::string(u"工号"), "@@@@", "  工号"},
      {Value::lng(123), "@@@@@", "  123"}, {Value::string(u""), "@@;\"空\"", "空"},
      {Value::null(), "@;\"空\"", "空"}, {Value::null(), "@@", ""},
      {Value::string(u"x"), "@;\"空\"", "x"},
      // Letters that are date tokens elsewhere are literal text beside @ and &.
      {Value::string(u"abc"), "@ is", "a isbc"}, {Value::integer(5), "@ days", "5 days"},
      {Value::string(u"Tom"), "&&& has", "Tom has"}, {Value::string(u"tom"), ">& says", "T saysOM"},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(toUtf8(format(c.value, fromUtf8(c.format), Locale::zhCN())), c.expected)
        << "\"" << c.format << "\"";
  }
}

}  // namespace
}  // namespace korvex::vb
