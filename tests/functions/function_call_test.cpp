// CallFunction directly, and the variable, input and array functions that
// reach into the engine.
#include "functions/function_call.hpp"

#include <gtest/gtest.h>

#include <memory>

#include "support.hpp"

namespace korvex::testing {
namespace {

TEST(CallFunction, IsEmptyLeavesTheCallersValueWhenNotEmpty) {
  BasicEngine engine;
  Value result = Value::string(u"kept");
  ASSERT_EQ(CallFunction(FunctionClass::IsEmpty, u"IsEmpty", u"(0)", result, engine), 0);
  EXPECT_EQ(describe(result), "String:kept");
  ASSERT_EQ(CallFunction(FunctionClass::IsEmpty, u"IsEmpty", u"(\" \")", result, engine), 0);
  EXPECT_EQ(describe(result), "Double:-1");
}

TEST(CallFunction, MidNeedsAnOpeningParenthesis) {
  BasicEngine engine;
  Value result;
  EXPECT_EQ(CallFunction(FunctionClass::Mid, u"MID", u"\"abc\", 2)", result, engine), 6);
  EXPECT_EQ(engine.ErrMsg(), u"错误的参数表达式或参数个数{MID()}");
  engine.SetErrNum(0);
  EXPECT_EQ(CallFunction(FunctionClass::Mid, u"MID", u"  (\"abc\", 2)", result, engine), 0);
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

TEST(InputFunction, AsksThroughTheUserInterface) {
  BasicEngine engine;
  auto ui = std::make_shared<RecordingUserInterface>(std::vector<std::u16string>{u"42"});
  engine.SetUserInterface(ui);
  EXPECT_EQ(EvaluateOn(engine, R"(Input("数量?", "录入", 7))").value, "String:42");
  // The prepared answers are used up: the next prompt counts as cancelled.
  const Outcome cancelled = EvaluateOn(engine, R"(Input("again"))");
  EXPECT_EQ(cancelled.errNum, 0) << cancelled.errMsg;
  EXPECT_EQ(cancelled.value, "String:");
  ASSERT_EQ(ui->prompts().size(), 2u);
  EXPECT_EQ(ui->prompts()[0], u"数量?");
  EXPECT_EQ(ui->prompts()[1], u"again");
}

TEST(DateFunctions, FollowTheEnginesLocale) {
  BasicEngine engine;
  EXPECT_EQ(EvaluateOn(engine, "WeekDayName(#2024-01-01#)").value, "String:星期一");
  engine.SetLocale(Locale::enUS());
  EXPECT_EQ(EvaluateOn(engine, "WeekDayName(#2024-01-01#)").value, "String:Monday");
}

TEST(ArrayFunctions, BoundsPerDimension) {
  BasicEngine engine;
  engine.SetSysVar(u"GRID", Value::array(Array({{1, 3}, {-2, 5}})));
  struct Case {
    const char* expression;
    const char* expected;
  };
  const Case kCases[] = {
      {"LBound(grid)", "Long:1"},         {"UBound(grid)", "Long:3"},
      {"LBound(grid, 2)", "Long:-2"},     {"UBound(grid, 2)", "Long:2"},
      {R"(UBound(grid, "1"))", "Long:3"},
  };
  for (const Case& c : kCases) {
    const Outcome got = EvaluateOn(engine, c.expression);
    EXPECT_EQ(got.errNum, 0) << c.expression << " " << got.errMsg;
    EXPECT_EQ(got.value, c.expected) << c.expression;
  }
  for (const char* outOfRange : {"UBound(grid, 3)", "LBound(grid, 0)"}) {
    EXPECT_EQ(EvaluateOn(engine, outOfRange).errNum, 9) << outOfRange;
  }
  const Outcome notNumeric = EvaluateOn(engine, R"(UBound(grid, "x"))");
  EXPECT_EQ(notNumeric.errNum, 4);
  EXPECT_EQ(notNumeric.errMsg, R"(类型不匹配{函数:UBound(grid, "x")})");
}

}  // namespace
}  // namespace korvex::testing
