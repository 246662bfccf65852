// The host's side of the engine, built with the public headers only: no
// member lets an exception out, Run against Execute, the checked value
// accessors, functions a host registers, and two engines on two threads.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/host_function.hpp"

namespace korvex {
namespace {

// Every member called with what a careless host might pass. None may throw
// (a noexcept member that did would end the test program), and each failure
// must reach the host as the number it documents.
TEST(PublicApi, BadArgumentsAreReportedNotThrown) {
  const std::tuple<const char*, std::function<void(BasicEngine&)>, std::int32_t> cases[] = {
      {"line 0 of a split script", [](BasicEngine& e) { (void)e.GetLineCode(0); }, 9},
      {"flag pop on empty", [](BasicEngine& e) { (void)e.PopStmtFlag(); }, 18},
      {"flag peek on empty", [](BasicEngine& e) { (void)e.GetpopValueStmtFlag(); }, 20},
      {"32768 flag pushes",
       [](BasicEngine& e) {
         for (int i = 0; i < 32768; ++i) e.PushStmtFlag(Value::integer(1));
       },
       6},
      {"undefined variable write", [](BasicEngine& e) { e.Vaule(u"nope", Value()); }, 5},
      {"field without a record", [](BasicEngine& e) { (void)e.GetFieldValue(Value::string(u"x")); },
       102},
      {"bad expression", [](BasicEngine& e) { (void)e.Evaluate(u"1 +"); }, 51},
      {"hook that throws",
       [](BasicEngine& e) {
         e.SetLineHook([](std::int16_t) -> bool { throw std::runtime_error("host bug"); });
         e.Execute();
       },
       51},
  };
  for (const auto& [what, call, errNum] : cases) {
    SCOPED_TRACE(what);
    BasicEngine engine;
    engine.SetCodeBlock(u"' one line\r\n");
    engine.Execute();
    ASSERT_EQ(engine.ErrNum(), 0);
    EXPECT_NO_THROW(call(engine));
    EXPECT_EQ(engine.ErrNum(), errNum);
    EXPECT_FALSE(engine.ErrMsg().empty());
  }
}

TEST(PublicApi, RunClearsTheOldErrorWhereExecuteKeepsIt) {
  BasicEngine engine;
  engine.SetCodeBlock(u"DIM a\r\nRaiseError \"停\"\r\n");
  RunResult r = engine.Run();
  EXPECT_EQ(r.errNum, 2000);
  EXPECT_EQ(r.line, 2);
  EXPECT_EQ(r.errMsg, engine.ErrMsg());

  // Execute would fail the first line on the stale error; Run starts clean.
  engine.SetCodeBlock(u"a = 2\r\n");
  r = engine.Run();
  EXPECT_TRUE(r.ok());
  EXPECT_EQ(r.errMsg, u"");
  EXPECT_EQ(engine.GetVarValue(u"a").doubleValue(), 2);
}

TEST(PublicApi, AccessorsOfAnotherTypeGiveNeutralValues) {
  const Value l = Value::lng(7);
  EXPECT_EQ(l.longValue(), 7);
  EXPECT_EQ(l.doubleValue(), 0.0);
  EXPECT_EQ(l.integerValue(), 0);
  EXPECT_EQ(l.stringValue(), u"");
  EXPECT_EQ(l.objectValue(), nullptr);
  EXPECT_EQ(l.arrayValue().dimensions(), 0u);
  EXPECT_EQ(Value::date(2.5).doubleValue(), 2.5);
  EXPECT_FALSE(Value::dbl(1).booleanValue());
  EXPECT_EQ(Value::string(u"1").currencyValue().scaled, 0);
  EXPECT_EQ(Array({{1, 2}}).ubound(3), -1);
}

HostFunction bonusFunction() {
  HostFunction f;
  f.name = u"_工龄奖";
  f.minArgs = 1;
  f.maxArgs = 2;
  f.checks = {ArgCheck::Numeric, ArgCheck::String};
  f.operation = [](const HostFunctionCall& call, Value& result) -> std::int32_t {
    const double years = call.arg(1).type() == VarType::Double ? call.arg(1).doubleValue() : -1;
    if (years < 0) return call.fail(2000, u"工龄不能为负");
    result = Value::dbl(years >= 10 ? 300 : 100);
    return 0;
  };
  return f;
}

TEST(HostFunctions, RegistrationRefusesWhatScriptsCouldNotCall) {
  BasicEngine engine;
  const std::vector<std::function<void(HostFunction&)>> spoil = {
      [](HostFunction& f) { f.name = u"Left"; },  // a built-in function
      [](HostFunction& f) { f.name = u"crlf"; },  // a constant
      [](HostFunction& f) { f.name = u"1x"; },   [](HostFunction& f) { f.name = u"a-b"; },
      [](HostFunction& f) { f.name.clear(); },   [](HostFunction& f) { f.minArgs = 3; },
      [](HostFunction& f) { f.maxArgs = 101; },  [](HostFunction& f) { f.operation = nullptr; },
  };
  for (std::size_t i = 0; i < spoil.size(); ++i) {
    HostFunction f = bonusFunction();
    spoil[i](f);
    EXPECT_FALSE(engine.RegisterFunction(f)) << i;
  }
  EXPECT_TRUE(engine.RegisterFunction(bonusFunction()));
}

TEST(HostFunctions, CalledThroughTheCommonSteps) {
  const std::tuple<std::u16string, std::int32_t, std::u16string, double> cases[] = {
      {u"x = _工龄奖(12)", 0, u"", 300},
      {u"x = _工龄奖(a + 1) + 1", 0, u"", 101},  // a is 0: one year
      // A single-line IF's tail runs on a child engine; it sees them too.
      {u"If 1 = 1 Then x = _工龄奖(3)", 0, u"", 100},
      {u"x = _工龄奖()", 6, u"错误的参数表达式或参数个数{函数:_工龄奖()} : 行号 2", 0},
      {u"x = _工龄奖(1, 2, 3)", 6, u"错误的参数表达式或参数个数{函数:_工龄奖(1, 2, 3)} : 行号 2",
       0},
      {u"x = _工龄奖(\"多\")", 4, u"类型不匹配{函数:_工龄奖(\"多\")} : 行号 2", 0},
      {u"x = _工龄奖(1, 2)", 4, u"类型不匹配{函数:_工龄奖(1, 2)} : 行号 2", 0},
      {u"x = _工龄奖(-1)", 2000, u"工龄不能为负 : 行号 2", 0},
  };
  for (const auto& [script, errNum, errMsg, result] : cases) {
    SCOPED_TRACE(std::string(script.begin(), script.end()));
    BasicEngine engine;
    ASSERT_TRUE(engine.RegisterFunction(bonusFunction()));
    engine.SetCodeBlock(u"DIM a, x\r\n" + script);
    const RunResult r = engine.Run();
    EXPECT_EQ(r.errNum, errNum);
    EXPECT_EQ(r.errMsg, errMsg);
    if (r.ok()) {
      EXPECT_EQ(engine.GetVarValue(u"X").doubleValue(), result);
    }
  }
  // They belong to the engine they were registered with.
  BasicEngine without;
  without.SetCodeBlock(u"DIM x\r\nx = _工龄奖(20)");
  EXPECT_EQ(without.Run().errNum, 56);
}

// Two engines at once on two threads share nothing that is written; built
// with the thread sanitizer this is where a race would show.
TEST(Threads, TwoEnginesRunAtOnce) {
  const auto work = [](double seed, double& out) {
    BasicEngine engine;
    engine.RegisterFunction(bonusFunction());
    engine.SetSysVar(u"seed", Value::dbl(seed));
    engine.SetCodeBlock(
        u"DIM i, s\r\ni = 0\r\ns = 0\r\nDo While i < 200\r\n"
        u"  s = s + Round(seed * i / 7, 2) + Len(Format(i, \"0.00\")) + _工龄奖(i)\r\n"
        u"  i = i + 1\r\nLoop\r\n");
    out = engine.Run().ok() ? engine.GetVarValue(u"S").doubleValue() : -1;
  };
  double a = 0, b = 0, alone = 0;
  std::thread ta(work, 1.5, std::ref(a));
  std::thread tb(work, 1.5, std::ref(b));
  ta.join();
  tb.join();
  work(1.5, alone);
  EXPECT_GT(alone, 0);
  EXPECT_EQ(a, alone);
  EXPECT_EQ(b, alone);
}

}  // namespace
}  // namespace korvex
