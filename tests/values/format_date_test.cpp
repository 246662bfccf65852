// User-defined and named date/time formats.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support.hpp"
#include "values/format.hpp"

namespace korvex::vb {
namespace {

std::string fmt(const Value& v, const char* f, const Locale& loc) {
  return toUtf8(format(v, fromUtf8(f), loc));
}

Value at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Value::date(dateSerial(y, mo, d) + timeSerial(h, mi, s));
}

struct DateCase {
  Value value;
  const char* format;
  const char* expected;
};

void expectAll(const std::vector<DateCase>& cases, const Locale& loc) {
  for (const auto& c : cases) {
    EXPECT_EQ(fmt(c.value, c.format, loc), c.expected)
        << "\"" << c.format << "\" in " << toUtf8(loc.name);
  }
}

TEST(FormatDate, EnglishPatterns) {
  const Value evening = at(1958, 12, 7, 20, 50, 35);
  const Value afternoon = at(1993, 1, 27, 17, 4, 23);
  expectAll(
      // clang-format off
      {
          {evening, "m/d/yy", "12/7/58"}, {evening, "d-mmm", "7-Dec"},
          {evening, "d-mmmm-yy", "7-December-58"}, {evening, "mmmm-yy", "December-58"},
          {evening, "hh:mm AM/PM", "08:50 PM"}, {evening, "h:mm:ss a/p", "8:50:35 p"},
          {evening, "h:mm", "20:50"}, {evening, "h:mm:ss", "20:50:35"},
          {evening, "m/d/yy h:mm", "12/7/58 20:50"}, {afternoon, "h:m:s", "17:4:23"},
          {afternoon, "hh:mm:ss AMPM", "05:04:23 PM"},
          {afternoon, "dddd, mmm d yyyy", "Wednesday, Jan 27 1993"},
          {afternoon, "ddd dd", "Wed 27"}, {at(2004, 2, 10, 9, 5), "h:nn am/pm", "9:05 am"},
          {at(2004, 2, 10, 9, 5), "h A/P", "9 A"},
          {at(2004, 2, 10, 0, 30), "h:nn AM/PM", "12:30 AM"},
          {at(2004, 2, 10, 12, 0), "hh AM/PM", "12 PM"}, {evening, "ddddd", "12/7/1958"},
          {evening, "dddddd", "Sunday, December 7, 1958"}, {evening, "ttttt", "8:50:35 PM"},
          {evening, "c", "12/7/1958 8:50:35 PM"},
      },
      // clang-format on
      Locale::enUS());
}

TEST(FormatDate, ChinesePatterns) {
  const Value evening = at(1958, 12, 7, 20, 50, 35);
  expectAll(
      // clang-format off
      {
          {evening, "yyyy年mm月dd日", "1958年12月07日"},
          {evening, "yyyy年m月d日 h时m分", "1958年12月7日 20时50分"},
          {evening, "dddd ddd", "星期日 周日"}, {evening, "mmmm mmm", "十二月 12月"},
          {evening, "hh:nn AMPM", "08:50 下午"}, {at(2004, 2, 10, 9, 5), "AMPMh点", "上午9点"},
          {evening, "ddddd", "1958/12/7"}, {evening, "dddddd", "1958年12月7日"},
          {evening, "ttttt", "20:50:35"}, {evening, "c", "1958/12/7 20:50:35"},
          {Value::date(dateSerial(2004, 2, 10)), "c", "2004/2/10"},
          {Value::date(0.75), "c", "18:00:00"},
          {evening, "yyyy-mm-dd hh:nn:ss", "1958-12-07 20:50:35"},
          {evening, "w ww q y yy", "1 50 4 341 58"}, {at(2004, 1, 1), "w ww y", "5 1 1"},
          {at(2004, 1, 4), "ww", "2"}, {evening, "\"d\"d \\y\\y yyyyy", "d7 yy 1958341"},
          {Value::date(-1.25), "yyyy-mm-dd hh:nn", "1899-12-29 06:00"},
          {Value::date(0.999999999), "yyyy-mm-dd hh:nn:ss", "1899-12-31 00:00:00"},
      },
      // clang-format on
      Locale::zhCN());
}

TEST(FormatDate, SlashAndColonAreTheLocaleSeparators) {
  Locale dotted = Locale::zhCN();
  dotted.dateSeparator = u'-';
  dotted.timeSeparator = u'.';
  EXPECT_EQ(fmt(at(2004, 2, 10, 8, 5), "yyyy/mm/dd hh:nn", dotted), "2004-02-10 08.05");
  EXPECT_EQ(fmt(at(2004, 2, 10, 8, 5), "yyyy\\/mm\"/\"dd", dotted), "2004/02/10");
}

TEST(FormatDate, OtherValueTypes) {
  expectAll(
      {
          {Value::lng(38027), "yyyy-mm-dd", "2004-02-10"},
          {Value::dbl(38027.5), "yyyy-mm-dd hh:nn", "2004-02-10 12:00"},
          {Value::string(u"2004-02-10"), "yyyy年m月d日", "2004年2月10日"},
          {Value::string(u"不是日期"), "yyyy", "不是日期"},
          {Value::null(), "yyyy-mm-dd", ""},
      },
      Locale::zhCN());
  for (double serial : {1e10, -1e7}) {
    EXPECT_EQ(testing::errorOf([&] { format(Value::dbl(serial), u"yyyy", Locale::zhCN()); }),
              kOverflow)
        << serial;
  }
}

TEST(FormatDate, NamedDateFormats) {
  struct Case {
    Value value;
    const char* format;
    const char* zh;
    const char* en;
  };
  const Value evening = at(1958, 12, 7, 20, 50, 35);
  // clang-format off
  const std::vector<Case> cases = {
      {evening, "General Date", "1958/12/7 20:50:35", "12/7/1958 8:50:35 PM"},
      {Value::date(dateSerial(2004, 2, 10)), "General Date", "2004/2/10", "2/10/2004"},
      {Value::date(0.5), "General Date", "12:00:00", "12:00:00 PM"},
      {evening, "Long Date", "1958年12月7日", "Sunday, December 7, 1958"},
      {evening, "Medium Date", "58-12-07", "07-Dec-58"},
      {evening, "Short Date", "1958/12/7", "12/7/1958"},
      {evening, "long time", "20:50:35", "8:50:35 PM"},
      {evening, "Medium Time", "08:50 下午", "08:50 PM"}, {evening, "Short Time", "20:50", "20:50"},
      {Value::dbl(38027), "Short Date", "2004/2/10", "2/10/2004"},
      {Value::null(), "Long Date", "", ""}, {Value::string(u"abc"), "Short Date", "abc", "abc"},
  };
  // clang-format on
  for (const auto& c : cases) {
    EXPECT_EQ(fmt(c.value, c.format, Locale::zhCN()), c.zh) << c.format;
    EXPECT_EQ(fmt(c.value, c.format, Locale::enUS()), c.en) << c.format;
  }
}

}  // namespace
}  // namespace korvex::vb
