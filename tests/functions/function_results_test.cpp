// Results of the general functions, called through the evaluator as a
// script calls them (value and type for each case) or directly, and the
// variable, input and array functions that reach into the engine.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "call_by_name.hpp"
#include "functions/chinese_amount.hpp"
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
    {"ROUND(2.5)", "Double:2"}, {"ROUND(1.2345, 2)", "Double:1.23"}, {"ROUND(NULL)", "Double:0"},
    {R"(ROUND("7.6"))", "Double:8"},
    {"ATN(0)", "Double:0"}, {"COS(0)", "Double:1"}, {"SIN(0)", "Double:0"}, {"TAN(0)", "Double:0"},
    {"EXP(0)", "Double:1"}, {"EXP(1)", "Double:2.71828182845905"}, {"CLng(2.5)", "Long:2"},
    {R"(CLng("-7"))", "Long:-7"}, {R"(CDbl("1.25"))", "Double:1.25"}, {"CDbl(3)", "Double:3"},
    {"CDbl(TRUE)", "Double:-1"},
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

// Amounts in Chinese capitals called directly, with the corners the rules keep.
struct AmountCase {
  std::int64_t scaled;  // amount * 10000
  const char* text;
};

// clang-format off
const AmountCase kAmounts[] = {
    {0, "零元整"},
    {-40, "负整"},  // -0.004: rounds to 0 fen but is not zero
    {500, "伍分"}, {5000, "伍角整"}, {10500, "壹元零伍分"}, {100000, "壹拾元整"},
    {12345000, "壹仟贰佰叁拾肆元伍角整"}, {1000000000, "壹拾万元整"}, {10200000000, "壹佰零贰万元整"},
    {1000000000000, "壹亿万元整"},   // non-zero 亿 digit: 万 still written
    {10000000000000, "壹拾亿元整"},  // zero 亿 digit writes 亿, drops 万
    {-12345600, "负壹仟贰佰叁拾肆元伍角陆分"},
    {12349, "壹元贰角叁分"},  // 1.2349 -> 123 fen
    {12350, "壹元贰角肆分"},  // 1.235 -> 124 fen (half up)
    {1000100, "壹佰元零壹分"}, {10001000000, "壹佰万零壹佰元整"}, {100010000000, "壹仟万零壹仟元整"},
    {1234567890123000, "壹仟贰佰叁拾肆亿伍仟陆佰柒拾捌万玖仟零壹拾贰元叁角整"},
    // From 10^12 on the extra digits have no unit character.
    {10000000000000000, "壹亿元整"}, {23000000000000000, "贰叁仟亿元整"},
};
// clang-format on

TEST(AmountInCapitals, FollowsTheRulesWithTheirCorners) {
  for (const AmountCase& c : kAmounts) {
    EXPECT_EQ(toUtf8(fn::amountInCapitals(Currency{c.scaled})), c.text) << c.scaled;
  }
}

TEST(DirectCall, IsEmptyLeavesTheCallersValueWhenNotEmpty) {
  BasicEngine engine;
  Value result = Value::string(u"kept");
  ASSERT_EQ(callByName(u"ISEMPTY", u"(0)", result, engine), 0);
  EXPECT_EQ(describe(result), "String:kept");
  ASSERT_EQ(callByName(u"ISEMPTY", u"(\" \")", result, engine), 0);
  EXPECT_EQ(describe(result), "Double:-1");
}

TEST(DirectCall, MidNeedsAnOpeningParenthesis) {
  BasicEngine engine;
  Value result;
  EXPECT_EQ(callByName(u"MID", u"\"abc\", 2)", result, engine), 6);
  EXPECT_EQ(engine.ErrMsg(), u"错误的参数表达式或参数个数{MID()}");
  engine.SetErrNum(0);
  EXPECT_EQ(callByName(u"MID", u"  (\"abc\", 2)", result, engine), 0);
  EXPECT_EQ(describe(result), "String:bc");
}

TEST(VariableFunctions, SetGetAndTestByName) {
  BasicEngine engine;
  EXPECT_EQ(EvaluateOn(engine, R"(IsVarExist("total"))").value, "Boolean:False");
  EXPECT_EQ(EvaluateOn(engine, R"(SetVar("total", 2 * 3))").value, "Boolean:True");
  EXPECT_TRUE(engine.IsVarDefined(u"TOTAL"));
  EXPECT_EQ(describe(engine.GetVarValue(u"TOTAL")), "Double:6");
  EXPECT_EQ(EvaluateOn(engine, R"(IsVarExist("Total"))").value, "Boolean:True");
  EXPECT_EQ(EvaluateOn(engine, R"(GetVar("TOTAL") + 1)").value, "Double:7");
  // SetVar on an existing name assigns it.
  EXPECT_EQ(EvaluateOn(engine, R"(SetVar("total", "x"))").value, "Boolean:True");
  EXPECT_EQ(EvaluateOn(engine, R"(GetVar("total"))").value, "String:x");
}

// Answers and cancelled prompts are run by the command's script cases; here
// the prompt text reaches the user interface.
TEST(InputFunction, AsksThroughTheUserInterface) {
  BasicEngine engine;
  auto ui = std::make_shared<RecordingUserInterface>(std::vector<std::u16string>{u"42"});
  engine.SetUserInterface(ui);
  EXPECT_EQ(EvaluateOn(engine, R"(Input("数量?", "录入", 7))").value, "String:42");
  ASSERT_EQ(ui->prompts().size(), 1u);
  EXPECT_EQ(ui->prompts()[0], u"数量?");
}

TEST(ArrayFunctions, BoundsPerDimension) {
  BasicEngine engine;
  engine.SetSysVar(u"GRID", Value::array(Array({{1, 3}, {-2, 5}})));
  const struct {
    const char* expression;
    std::int32_t errNum;
    const char* text;  // describe() of the value, or the error message
  } cases[] = {
      {"LBound(grid)", 0, "Long:1"},
      {"UBound(grid)", 0, "Long:3"},
      {"LBound(grid, 2)", 0, "Long:-2"},
      {"UBound(grid, 2)", 0, "Long:2"},
      {R"(UBound(grid, "1"))", 0, "Long:3"},
      // A missing dimension is the platform's own fault: its bare text.
      {"UBound(grid, 3)", 9, "下标越界"},
      {"LBound(grid, 0)", 9, "下标越界"},
      {R"(UBound(grid, "x"))", 4, R"(类型不匹配{函数:UBound(grid, "x")})"},
  };
  for (const auto& c : cases) {
    const Outcome got = EvaluateOn(engine, c.expression);
    EXPECT_EQ(got.errNum, c.errNum) << c.expression << " " << got.errMsg;
    EXPECT_EQ(c.errNum == 0 ? got.value : got.errMsg, c.text) << c.expression;
  }
}

}  // namespace
}  // namespace korvex::testing
