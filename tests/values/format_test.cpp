// User-defined and named number, date/time and string formats.
#include "values/format.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support.hpp"

namespace korvex::vb {
namespace {

std::string fmt(const Value& v, const char* f, const Locale& loc = Locale::zhCN()) {
  return toUtf8(format(v, fromUtf8(f), loc));
}

Value at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Value::date(dateSerial(y, mo, d) + timeSerial(h, mi, s));
}

struct FormatCase {
  Value value;
  const char* format;
  const char* expected;
};

void expectAll(const std::vector<FormatCase>& cases, const Locale& loc) {
  for (const auto& c : cases) {
    EXPECT_EQ(fmt(c.value, c.format, loc), c.expected)
        << "\"" << c.format << "\" in " << toUtf8(loc.name);
  }
}

TEST(FormatNumber, UserDefinedPatterns) {
  // clang-format off
  const std::tuple<double, const char*, const char*> cases[] = {
      // digit placeholders
      {5, "0", "5"}, {-5, "0", "-5"}, {0.5, "0", "1"},
      {2.5, "0", "3"},  // Format rounds half away from zero, unlike Round
      {-2.5, "0", "-3"}, {5, "0.00", "5.00"}, {-5, "0.00", "-5.00"}, {0.5, "0.00", "0.50"},
      // a Double is taken to 15 significant digits before rounding, so the
      // binary shortfall of 1.005 (1.00499999...) and 0.075 does not show;
      // 0.125 is exact and rounds away from zero
      {1.005, "0.00", "1.01"}, {0.075, "$#.##", "$.08"}, {1.15, "0.0", "1.2"},
      {8.885, "0.00", "8.89"}, {2.675, "0.00", "2.68"},
      {30.4375 - 5.00000396641553E-09, "0.00000000", "30.43750000"}, {22.225, "##.##", "22.23"},
      {0.125, "0.00", "0.13"}, {0.1, "0.000000000000000000", "0.100000000000000000"},
      {12345678901234567.0, "0", "12345678901234600"}, {334.9, "###0.00", "334.90"},
      {0.5, "#.00", ".50"}, {0, "#", ""}, {5, "#.##", "5."}, {1.5, "0.##", "1.5"},
      {1.25, "0.0#", "1.25"}, {12, "0000", "0012"}, {123456, "00", "123456"},
      {1234567, "000-0000", "123-4567"}, {12, "000-0000", "000-0012"}, {9.996, "0.00", "10.00"},
      // a 0 makes every integer placeholder after it, and every fraction
      // placeholder before it, show a digit
      {1, "000###", "000001"}, {1, "#00##00#0", "00000001"}, {9.8, "#0.#0#0#0#0#", "9.80000000"},
      {0.5, "#0#.#0", "00.50"}, {1234.5, "#,#0#.0#0", "1,234.500"}, {-0.001, "0.00", "-0.00"},
      // grouping and scaling
      {5459.4, "##,##0.00", "5,459.40"}, {5, "#,##0", "5"},
      {1234567.891, "#,##0.00", "1,234,567.89"}, {123456, "#,###", "123,456"},
      {1234567, "#,##0,", "1,235"}, {1234567, "0,,", "1"}, {1234567890, "#,##0,,", "1,235"},
      {999, "#,##0", "999"}, {100000, "0,000", "100,000"},
      // percent
      {5, "0%", "500%"}, {-5, "0%", "-500%"}, {0.5, "0%", "50%"}, {0.12345, "0.00%", "12.35%"},
      // scientific
      {5, "0.00E+00", "5.00E+00"}, {-5, "0.00E+00", "-5.00E+00"}, {0.5, "0.00E+00", "5.00E-01"},
      {5, "0.00E-00", "5.00E00"}, {0.5, "0.00E-00", "5.00E-01"}, {12345, "0.00E+00", "1.23E+04"},
      {12345, "00.0e+0", "12.3e+3"}, {9.999, "0.00E+00", "1.00E+01"}, {0, "0.00E+00", "0.00E+00"},
      {1e100, "0.0E+000", "1.0E+100"}, {1, "0E+#", "1E+0"}, {12345, "0.0E+##", "1.2E+4"},
      {0.5, "0E-#", "5E-1"},
      // literals, quotes, escapes
      {5, "$0", "$5"}, {-5, "$0", "-$5"}, {3, "0元", "3元"}, {3, "\"No.\"0", "No.3"},
      {3, "\\#0\\%", "#3%"}, {3, "(0)", "(3)"},
      // letters that mean something in date formats are literals here
      {3, "0 days", "3 days"}, {1234.5, "#,##0.00元/月", "1,234.50元/月"},
      // sections: positive; negative; zero; Null
      {5, "$#,##0;($#,##0)", "$5"}, {-5, "$#,##0;($#,##0)", "($5)"}, {0.5, "$#,##0;($#,##0)", "$1"},
      {0, "0.0;-0.0;\"零\"", "零"}, {0.001, "0.0;-0.0;\"零\"", "0.0"}, {-3, "0;;\"零\"", "-3"},
      {-3, "0;\\N0", "N3"}, {7, "0;(0);\\Z;\\N", "7"}, {-0.125, "0.00;(0.00)", "(0.13)"},
      {0, "#,##0;;\\零", "零"},
  };
  // clang-format on
  for (const auto& [value, pattern, expected] : cases) {
    EXPECT_EQ(fmt(Value::dbl(value), pattern), expected) << value << " with \"" << pattern << "\"";
  }
}

// Values of every type through number and date formats, Null through the
// fourth section, and the empty format as the plain string form.
TEST(FormatNumber, OtherValueTypesNullAndTheEmptyFormat) {
  // clang-format off
  expectAll({
      {Value::integer(-12), "0.0", "-12.0"}, {Value::lng(70000), "#,##0", "70,000"},
      {Value::currency(Currency{12345678}), "#,##0.00", "1,234.57"},
      // Currency keeps all its digits, beyond what a Double holds.
      {Value::currency(Currency{INT64_MAX}), "#,##0.0000", "922,337,203,685,477.5807"},
      {Value::currency(Currency{INT64_MIN}), "0.0000", "-922337203685477.5808"},
      {Value::currency(Currency{-5}), "0.00", "-0.00"}, {Value::boolean(true), "0", "-1"},
      {Value::currency(Currency{0}), "0;-0;\\Z", "Z"}, {Value::boolean(false), "0.0", "0.0"},
      {Value(), "0.00", "0.00"}, {Value::string(u"123.456"), "0.00", "123.46"},
      {Value::string(u" -1,234 "), "0", "-1234"}, {Value::date(38027.5), "0.00", "38027.50"},
      {Value::string(u"工资"), "0.00", "工资"},  // text that is no number comes back unchanged
      {Value::null(), "0;(0);\\Z;\"空\"", "空"}, {Value::null(), "0.00", ""},
      {Value::null(), "0;(0);\\Z", ""}, {Value::dbl(0.1 + 0.2), "", "0.3"},
      {Value::integer(23), "", "23"}, {Value::boolean(true), "", "True"}, {Value::null(), "", ""},
      {Value(), "", ""}, {Value::date(38027.5), "", "2004/2/10 12:00:00"},
      {Value::lng(38027), "yyyy-mm-dd", "2004-02-10"},
      {Value::dbl(38027.5), "yyyy-mm-dd hh:nn", "2004-02-10 12:00"},
      {Value::string(u"2004-02-10"), "yyyy年m月d日", "2004年2月10日"},
      {Value::string(u"不是日期"), "yyyy", "不是日期"}, {Value::null(), "yyyy-mm-dd", ""},
  }, Locale::zhCN());
  // clang-format on
  for (double serial : {1e10, -1e7}) {
    EXPECT_EQ(testing::errorOf([&] { format(Value::dbl(serial), u"yyyy", Locale::zhCN()); }),
              kOverflow)
        << serial;
  }
  EXPECT_EQ(fmt(Value::currency(Currency{12345000}), "Currency", Locale::enUS()), "$1,234.50");
  EXPECT_EQ(testing::errorOf([] { format(Value::object(nullptr), u"0", Locale::zhCN()); }),
            kTypeMismatch);
}

// Named number and date formats, in both locales.
TEST(Format, NamedFormats) {
  const Value evening = at(1958, 12, 7, 20, 50, 35);
  // clang-format off
  const std::tuple<Value, const char*, const char*, const char*> cases[] = {
      {Value::dbl(1234567.891), "General Number", "1234567.891", "1234567.891"},
      {Value::dbl(0.1), "general number", "0.1", "0.1"},
      {Value::lng(-42), "General Number", "-42", "-42"},
      {Value::dbl(1234.5), "Currency", "¥1,234.50", "$1,234.50"},
      {Value::dbl(-1234.5), "Currency", "¥-1,234.50", "($1,234.50)"},
      {Value::dbl(0), "Currency", "¥0.00", "$0.00"},
      {Value::dbl(1234.567), "Fixed", "1234.57", "1234.57"},
      {Value::dbl(-0.5), "Fixed", "-0.50", "-0.50"},
      {Value::dbl(1234.567), "Standard", "1,234.57", "1,234.57"},
      {Value::dbl(-1234.5), "Standard", "-1,234.50", "-1,234.50"},
      {Value::dbl(0.5), "Percent", "50.00%", "50.00%"},
      {Value::dbl(1234.5), "Scientific", "1.23E+03", "1.23E+03"},
      {Value::dbl(0), "Yes/No", "No", "No"}, {Value::dbl(-3), "Yes/No", "Yes", "Yes"},
      {Value::boolean(true), "True/False", "True", "True"},
      {Value::boolean(false), "TRUE/FALSE", "False", "False"},
      {Value::integer(1), "On/Off", "On", "On"}, {Value::string(u"0"), "On/Off", "Off", "Off"},
      {Value::null(), "Fixed", "", ""}, {Value::string(u"abc"), "Standard", "abc", "abc"},
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
  for (const auto& [value, format, zh, en] : cases) {
    EXPECT_EQ(fmt(value, format, Locale::zhCN()), zh) << format;
    EXPECT_EQ(fmt(value, format, Locale::enUS()), en) << format;
  }
}

// Fixed-decimal patterns against exact integer arithmetic: each sample is
// k * 10^e with k below 10^8, a decimal its Double shows exactly in 15
// digits, so Format must round that decimal half away from zero, whatever
// binary value the Double actually holds (ties included).
TEST(FormatNumber, FixedDecimalsRoundTheShownDecimalHalfAwayFromZero) {
  const std::pair<const char*, std::size_t> patterns[] = {
      {"0", 0}, {"0.0", 1}, {"0.000", 3}, {"0.000000", 6}};
  std::uint64_t pow10[18] = {1};
  for (int i = 1; i < 18; ++i) pow10[i] = pow10[i - 1] * 10;
  std::mt19937_64 rng(0x9E3779B97F4A7C15ull);
  int ties = 0;
  for (int i = 0; i < 4000; ++i) {
    const std::uint64_t k = rng() % 100000000;
    const int e = static_cast<int>(rng() % 9) - 8;  // 10^-8 .. 10^0
    const bool negative = k != 0 && rng() % 2 != 0;
    const double x =
        (negative ? -1.0 : 1.0) * static_cast<double>(k) / static_cast<double>(pow10[-e]);
    for (const auto& [format, decimals] : patterns) {
      // k * 10^e scaled to `decimals` places, rounded half away from zero.
      const int shift = e + static_cast<int>(decimals);
      std::uint64_t q = shift >= 0 ? k * pow10[shift] : k / pow10[-shift];
      if (shift < 0) {
        const std::uint64_t twice = 2 * (k % pow10[-shift]);
        ties += twice == pow10[-shift] ? 1 : 0;
        q += twice >= pow10[-shift] ? 1 : 0;
      }
      std::string digits = std::to_string(q);
      if (digits.size() <= decimals) digits.insert(0, decimals + 1 - digits.size(), '0');
      if (decimals > 0) digits.insert(digits.size() - decimals, ".");
      EXPECT_EQ(fmt(Value::dbl(x), format), (negative ? "-" : "") + digits)
          << "k = " << k << ", e = " << e;
    }
  }
  EXPECT_GT(ties, 100);  // the halfway cases, where binary and decimal part, were met
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

TEST(FormatString, Placeholders) {
  // clang-format off
  expectAll({
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
  }, Locale::zhCN());
  // clang-format on
}

}  // namespace
}  // namespace korvex::vb
