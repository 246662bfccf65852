// Escaping of text written back into a sheet's XML.
#include "workbook/xml_scan.hpp"

#include <gtest/gtest.h>

namespace korvex::xlsx {
namespace {

TEST(EscapeXml, TextAndAttributeEscapeDifferently) {
  struct Case {
    std::string_view raw, inText, inAttribute;
  };
  const Case cases[] = {
      {"a&b<c>d", "a&amp;b&lt;c&gt;d", "a&amp;b&lt;c&gt;d"},
      {"say \"hi\"", "say \"hi\"", "say &quot;hi&quot;"},
      {"one\r\ntwo\tthree", "one&#13;\ntwo\tthree", "one&#13;&#10;two&#9;three"},
      {"bell\x07gone", "bellgone", "bellgone"},
      {"工资 'ok'", "工资 'ok'", "工资 'ok'"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(escapeXml(c.raw), c.inText) << c.raw;
    EXPECT_EQ(escapeXml(c.raw, true), c.inAttribute) << c.raw;
  }
}

}  // namespace
}  // namespace korvex::xlsx
