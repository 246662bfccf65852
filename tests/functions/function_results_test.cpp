// Results of the general functions, called through the evaluator as a
// script calls them: value and type for each case.
#include <gtest/gtest.h>

#include <cmath>

#include "support.hpp"

namespace korvex::testing {
namespace {

struct ResultCase {
  const char* expression;
  const char* expected;  // describe() of the value
};

class FunctionResult : public ::testing::TestWithParam<ResultCase> {};

TEST_P(FunctionResult, GivesValueAndType) {
  const ResultCase& c = GetParam();
  const Outcome got = EvaluateFresh(c.expression);
  EXPECT_EQ(got.errNum, 0) << c.expression << " -> " << got.errMsg;
  EXPECT_EQ(got.value, c.expected) << c.expression;
}

// clang-format off
const ResultCase kStrings[] = {
    {R"(LEFT("abc", 2))", "String:ab"}, {R"(LEFT("abc", 5))", "String:abc"},
    {R"(Left("abc", 0))", "String:"},
    {R"(LEFT(12345, 2))", "String:12"},  // any first argument is taken as text
    {R"(left("abc", "2"))", "String:ab"}, {R"(RIGHT("abcdef", 3))", "String:def"},
    {R"(RIGHT("abc", 9))", "String:abc"}, {R"(Right(3.25, 2))", "String:25"},
    {R"(ASC("A"))", "Integer:65"}, {R"(ASC("abc"))", "Integer:97"}, {R"(ASC(7))", "Integer:55"},
    {R"(CHR(66))", "String:B"}, {R"(CHR("97"))", "String:a"}, {R"(CSTR(12.5))", "String:12.5"},
    {R"(CSTR("x"))", "String:x"}, {R"(LCase("AbC"))", "String:abc"},
    {R"(UCase("AbC"))", "String:ABC"}, {R"(UCase(1.5))", "String:1.5"},
    {R"(HEX(255))", "String:FF"}, {R"(HEX(0))", "String:0"},
    {R"(HEX(-1))", "String:FFFFFFFF"},  // script numbers are Doubles: a Long
    {R"(HEX("16"))", "String:10"}, {R"(Format(1234.5, "0.00"))", "String:1234.50"},
    {R"(Format(0.5, "0%"))", "String:50%"}, {R"(Format(12.5))", "String:12.5"},
    {R"(MID("abcdef", 2))", "String:bcdef"}, {R"(MID("abcdef", 2, 3))", "String:bcd"},
    {R"(mid("abcdef", 9))", "String:"}, {R"(Mid("a,b", 2, 1))", "String:,"},
    {R"(Mid("a,b" & "c", 2, 2))", "String:,b"}, {R"(MID("abcdef"，2，3))", "String:bcd"},
    {R"(MID( "abc" , 2 ))", "String:bc"}, {R"(LEFT(UCASE("abcdef")，LEN("abc")))", "String:ABC"},
    // whole-number arguments round half to even
    {R"(RIGHT("abc", 2.5))", "String:bc"}, {"CHR(65.5)", "String:B"}, {"HEX(255.5)", "String:100"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Strings, FunctionResult, ::testing::ValuesIn(kStrings));

// clang-format off
const ResultCase kNumbers[] = {
    {"ROUND(2.5)", "Double:2"}, {"ROUND(3.5)", "Double:4"}, {"ROUND(1.2345, 2)", "Double:1.23"},
    {"ROUND(-1.5)", "Double:-2"}, {"ROUND(NULL)", "Double:0"}, {R"(ROUND("7.6"))", "Double:8"},
    {"ATN(0)", "Double:0"}, {"COS(0)", "Double:1"}, {"SIN(0)", "Double:0"}, {"TAN(0)", "Double:0"},
    {"EXP(0)", "Double:1"}, {"EXP(1)", "Double:2.71828182845905"}, {"CLng(2.5)", "Long:2"},
    {"CLng(3.5)", "Long:4"}, {R"(CLng("-7"))", "Long:-7"}, {R"(CDbl("1.25"))", "Double:1.25"},
    {"CLng(-2.5)", "Long:-2"}, {"CDbl(3)", "Double:3"}, {"CDbl(TRUE)", "Double:-1"},
    {"ROUND(ATN(1) * 4, 6)", "Double:3.141593"},
    {"ROUND(1.23456, 2.6)", "Double:1.235"},  // the digits round too
    {"Exp(709.782712893) > 1", "Boolean:True"},  // the largest argument EXP takes
    {R"(IsNumeric("12.5"))", "Boolean:True"}, {"IsNumeric(EMPTY)", "Boolean:True"},
    {"IsNumeric(NULL)", "Boolean:False"}, {"isempty(EMPTY)", "Double:-1"},
    {R"(IsNumeric("abc"))", "Boolean:False"}, {R"(IsNumeric(""))", "Boolean:False"},
    {R"(IsEmpty("   "))", "Double:-1"}, {R"(IsEmpty(""))", "Double:-1"},
    {"IsEmpty(NULL)", "Double:-1"},
    {"IsEmpty(0)", "Empty:"},  // nothing stored: the caller's Empty stays
    {R"(IsEmpty("a"))", "Empty:"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Numbers, FunctionResult, ::testing::ValuesIn(kNumbers));

// clang-format off
const ResultCase kDates[] = {
    {R"(CDate("2005-03-01"))", "Date:2005/3/1"},
    {R"(CDate("2023年3月15日 13:05:06"))", "Date:2023/3/15 13:05:06"},
    {R"(CDate("下午 1:05"))", "Date:13:05:00"}, {"DAY(#2005-03-17#)", "Double:17"},
    {R"(DAY("2005-03-17"))", "Double:17"}, {"MONTH(#2005-03-17#)", "Double:3"},
    {R"(HOUR("2005-03-17 13:45:10"))", "Double:13"},
    {R"(Minute("2005-03-17 13:45:10"))", "Double:45"},
    {"WeekDayName(#2024-01-01#)", "String:星期一"}, {"WeekDayName(#2024-01-07#)", "String:星期日"},
    {R"(MaxDay("2004-02-10"))", "Integer:29"}, {"MaxDay(#2005-02-01#)", "Integer:28"},
    {"MaxDay(#2005-04-30#)", "Integer:30"}, {"MaxDay(3, 2005)", "Integer:31"},
    {"MaxDay(2, 2000)", "Integer:29"}, {"MaxDay(2, 1900)", "Integer:28"},
    {"MaxDay(4, 99)", "Integer:30"}, {"MaxDay(2, 96)", "Integer:29"},  // two-digit years
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Dates, FunctionResult, ::testing::ValuesIn(kDates));

// clang-format off
const ResultCase kChineseAmounts[] = {
    {"大写(1234.5)", "String:壹仟贰佰叁拾肆元伍角整"}, {"Num2Chinese(10)", "String:壹拾元整"},
    {R"(大写("12.5"))", "String:壹拾贰元伍角整"}, {"大写(0)", "String:零元整"},
    {"大写(0.004)", "String:整"}, {"大写(1.999)", "String:贰元整"},
    {"大写(100010000)", "String:壹亿零壹万元整"},
    {"大写(12345678901.23)", "String:壹佰贰拾叁亿肆仟伍佰陆拾柒万捌仟玖佰零壹元贰角叁分"},
    {"大写(98765432109876)", "String:玖捌柒仟陆佰伍拾肆亿叁仟贰佰壹拾万零玖仟捌佰柒拾陆元整"},
    {"大写(123456789012345)", "String:壹贰叁肆仟伍佰陆拾柒亿捌仟玖佰零壹万贰仟叁佰肆拾伍元整"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(ChineseAmounts, FunctionResult, ::testing::ValuesIn(kChineseAmounts));

TEST(FunctionClock, DateAndTimeAreTodayAndNow) {
  BasicEngine engine;
  const Value d = engine.Evaluate(u"DATE()");
  const Value t = engine.Evaluate(u"TIME()");
  ASSERT_EQ(engine.ErrNum(), 0) << toUtf8(engine.ErrMsg());
  ASSERT_TRUE(d.type() == VarType::Date && t.type() == VarType::Date);
  // A whole day after 2023, and a time of day alone.
  EXPECT_EQ(d.doubleValue(), std::floor(d.doubleValue()));
  EXPECT_GT(d.doubleValue(), 45000.0);
  EXPECT_TRUE(t.doubleValue() >= 0.0 && t.doubleValue() < 1.0) << t.doubleValue();
}

}  // namespace
}  // namespace korvex::testing
