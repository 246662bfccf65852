// Functions called directly, and the variable, input and array functions
// that reach into the engine.
#include <gtest/gtest.h>

#include <memory>

#include "call_by_name.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

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
