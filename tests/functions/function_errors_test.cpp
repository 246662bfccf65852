// Error paths of the general functions: wrong counts, unreadable lists,
// arguments of the wrong kind and range, with the exact messages.
#include <gtest/gtest.h>

#include "support.hpp"

namespace korvex::testing {
namespace {

struct ErrorCase {
  const char* expression;
  std::int32_t errNum;
  const char* errMsg;
};

class FunctionError : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(FunctionError, StoresNumberAndMessage) {
  const ErrorCase& c = GetParam();
  const Outcome got = EvaluateFresh(c.expression);
  EXPECT_EQ(got.errNum, c.errNum) << c.expression;
  EXPECT_EQ(got.errMsg, c.errMsg) << c.expression;
}

// Every function checks its count through the same descriptor; one row per
// shape of list and per way of naming the function in the message.
const ErrorCase kArgumentLists[] = {
    {R"(LEFT("abc"))", 6, R"(错误的参数表达式或参数个数{函数:Left("abc")})"},
    {R"(Right("abc", 1, 2))", 6, R"(错误的参数表达式或参数个数{函数:Right("abc", 1, 2)})"},
    {R"(LEFT("abc",))", 6, R"(错误的参数表达式或参数个数{函数:Left("abc",)})"},
    {"ASC()", 6, "错误的参数表达式或参数个数{函数:Asc()}"},
    {"CHR(1, 2)", 6, "错误的参数表达式或参数个数{函数:Chr(1, 2)}"},
    {R"(Format(1, "0", 2))", 6, R"(错误的参数表达式或参数个数{函数:Format(1, "0", 2)})"},
    {"ROUND(1, 2, 3)", 6, "错误的参数表达式或参数个数{函数:Round(1, 2, 3)}"},
    {"EXP(1，2)", 6, "错误的参数表达式或参数个数{函数:Exp(1，2)}"},
    {"MaxDay()", 6, "错误的参数表达式或参数个数{函数:MaxDay()}"},
    {"MaxDay(1, 2, 3)", 6, "错误的参数表达式或参数个数{函数:MaxDay(1, 2, 3)}"},
    {R"(SetVar("a"))", 6, R"(错误的参数表达式或参数个数{函数:SetVar("a")})"},
    {"Input(1, 2, 3, 4)", 6, "错误的参数表达式或参数个数{函数:Input(1, 2, 3, 4)}"},
    {R"(MID("abc"))", 6, "错误的参数表达式或参数个数{MID()}"},
    {R"(MID("abc", 1, 2, 3))", 6, "错误的参数表达式或参数个数{MID()}"},
    {"大写(1, 2)", 6, "错误的参数表达式或参数个数{函数:大写(1, 2)}"},
    {"Num2Chinese()", 6, "错误的参数表达式或参数个数{函数:大写()}"},
    {"工序产量(2005, 3)", 6, "错误的参数表达式或参数个数{函数:_工序产量(2005, 3)}"},
};
INSTANTIATE_TEST_SUITE_P(ArgumentLists, FunctionError, ::testing::ValuesIn(kArgumentLists));

// Each function's own count and own kind of argument, as the message shows
// the call (written, shown).
const std::pair<const char*, const char*> kWrongCounts[] = {
    {"CSTR()", "CStr()"},
    {"LCase(1,2)", "LCase(1,2)"},
    {"UCase()", "UCase()"},
    {"HEX()", "Hex()"},
    {"ATN()", "Atn()"},
    {"CLng()", "CLng()"},
    {"IsEmpty()", "IsEmpty()"},
    {"IsNumeric(1, 2)", "IsNumeric(1, 2)"},
    {"DAY()", "Day()"},
    {"WeekDayName(1, 2)", "WeekDayName(1, 2)"},
    {"GetVar()", "GetVar()"},
    {"Input()", "Input()"},
    {"UBound()", "UBound()"},
    {"LBound()", "LBound()"},
    {"IsVarExist()", "IsVarExist()"}};
const std::pair<const char*, const char*> kWrongKinds[] = {{R"(HEX("x"))", R"(Hex("x"))"},
                                                           {R"(SIN("x"))", R"(Sin("x"))"},
                                                           {"IsVarExist(1)", "IsVarExist(1)"}};

TEST(FunctionErrors, EachFunctionChecksItsOwnCountAndKinds) {
  for (const auto& [written, shown] : kWrongCounts) {
    const Outcome got = EvaluateFresh(written);
    EXPECT_EQ(got.errNum, 6) << written;
    EXPECT_EQ(got.errMsg, std::string("错误的参数表达式或参数个数{函数:") + shown + "}") << written;
  }
  for (const auto& [written, shown] : kWrongKinds) {
    const Outcome got = EvaluateFresh(written);
    EXPECT_EQ(got.errNum, 4) << written;
    EXPECT_EQ(got.errMsg, std::string("类型不匹配{函数:") + shown + "}") << written;
  }
}

const ErrorCase kArgumentKinds[] = {
    {R"(LEFT("abc", -1))", 4, R"(类型不匹配{函数:Left("abc", -1)})"},
    {R"(LEFT("abc", "x"))", 4, R"(类型不匹配{函数:Left("abc", "x")})"},
    {R"(LEFT("abc", "-1"))", 4, R"(类型不匹配{函数:Left("abc", "-1")})"},
    {R"(RIGHT("abc", " -2 "))", 4, R"(类型不匹配{函数:Right("abc", " -2 ")})"},
    {R"(RIGHT("abc", NULL))", 4, R"(类型不匹配{函数:Right("abc", NULL)})"},
    {R"(CHR("x"))", 4, R"(类型不匹配{函数:Chr("x")})"},
    {R"(ROUND("x"))", 4, R"(类型不匹配{函数:Round("x")})"},
    {"EXP(710)", 4, "类型不匹配{函数:Exp(710)参数不能大于709.782712893}"},
    {R"(CLng("abc"))", 4, R"(类型不匹配{函数:CLng("abc")})"},
    {R"(CDbl("1x"))", 4, R"(类型不匹配{函数:CDbl("1x")})"},
    {R"(CDate("abc"))", 4, R"(类型不匹配{函数:CDate("abc")})"},
    {R"(DAY("abc"))", 4, R"(类型不匹配{函数:Day("abc")})"},
    {"MONTH(5)", 4, "类型不匹配{函数:Month(5)}"},
    {R"(WeekDayName("x"))", 4, R"(类型不匹配{函数:WeekDayName("x")})"},
    {"MaxDay(5)", 4, "类型不匹配{函数:MaxDay(5)}"},
    {R"(MaxDay("x", 2005))", 4, R"(类型不匹配{函数:MaxDay("x", 2005)})"},
    {R"(MID(12, 1))", 4, "类型不匹配{MID()}"},
    {R"(MID("abc", "x"))", 4, "类型不匹配{MID()}"},
    {R"(MID("abc", 1, "y"))", 4, "类型不匹配{MID()}"},
    {"SetVar(1, 2)", 4, "类型不匹配{函数:SetVar(1, 2)}"},
    {"GetVar(1)", 4, "类型不匹配{函数:GetVar(1)}"},
    {"Input(NULL)", 4, "类型不匹配{函数:Input(NULL)}"},
    {"LBound(1)", 4, "类型不匹配{函数:LBound(1)}"},
    {R"(大写("abc"))", 4, "类型不匹配"},  // no suffix for this one
    {"大写(NULL)", 4, "类型不匹配"},
    {R"(GetVar("nope"))", 5, "变量未定义 'NOPE'"},
};
INSTANTIATE_TEST_SUITE_P(ArgumentKinds, FunctionError, ::testing::ValuesIn(kArgumentKinds));

// Faults of the platform's own operations keep their numbers and bare texts.
const ErrorCase kPlatformFaults[] = {
    {"CLng(3000000000)", 6, "溢出"},
    {R"(ASC(""))", 5, "无效的过程调用或参数"},  // no first character
    {"CHR(70000)", 5, "无效的过程调用或参数"},
    {R"(MID("abc", 0))", 5, "无效的过程调用或参数"},
    {"ROUND(1.5, -1)", 5, "无效的过程调用或参数"},
    {"HEX(3000000000)", 6, "溢出"},
};
INSTANTIATE_TEST_SUITE_P(PlatformFaults, FunctionError, ::testing::ValuesIn(kPlatformFaults));

// An argument that fails to evaluate stops the call with the evaluator's
// own error, not a function message; Num2Chinese too, though it does not look
// at the evaluation error before its numeric test.
TEST(FunctionError, EvaluationErrorsPassThroughUnchanged) {
  const Outcome bare = EvaluateFresh("nope");
  ASSERT_NE(bare.errNum, 0);
  for (const char* expression : {"LEFT(nope, 1)", "ROUND(nope)", "CStr(nope)", "UCase(nope)",
                                 "MaxDay(nope, 1)", R"(MID("abc", nope))", "大写(nope)"}) {
    const Outcome got = EvaluateFresh(expression);
    EXPECT_EQ(got.errNum, bare.errNum) << expression;
    EXPECT_EQ(got.errMsg, bare.errMsg) << expression;
  }
}

}  // namespace
}  // namespace korvex::testing
