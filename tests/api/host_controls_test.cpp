// What a host controls around a run: stopping by limits and what
// the outcome says about it, reuse of an engine, and a host function that
// throws.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/host_function.hpp"
#include "korvex/memory_recordset.hpp"

namespace korvex {
namespace {

constexpr std::u16string_view kEndless = u"DIM n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop\r\n";

TEST(HostControls, LimitsStopARunawayScriptWithoutAskingOrFailing) {
  const std::tuple<const char*, std::int64_t, std::int64_t, StopReason> cases[] = {
      {"step limit", 50, 0, StopReason::StepLimit}, {"time limit", 0, 30, StopReason::TimeLimit}};
  for (const auto& [what, steps, millis, reason] : cases) {
    SCOPED_TRACE(what);
    BasicEngine engine;
    auto ui = std::make_shared<RecordingUserInterface>();
    engine.SetUserInterface(ui);
    engine.SetStepLimit(steps);
    engine.SetTimeLimit(millis);
    engine.SetCodeBlock(std::u16string(kEndless));
    const auto start = std::chrono::steady_clock::now();
    const RunResult r = engine.Run();
    EXPECT_TRUE(r.ok());
    EXPECT_TRUE(r.stopped());
    EXPECT_EQ(r.stopReason, reason);
    EXPECT_TRUE(ui->messages().empty());
    if (steps > 0) {
      EXPECT_EQ(engine.LinesRun(), steps);
    } else {
      EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(millis));
    }
    // Without limits a finishing run is not stopped.
    engine.SetStepLimit(0);
    engine.SetTimeLimit(0);
    engine.SetCodeBlock(u"n = 1\r\n");
    EXPECT_EQ(engine.Run().stopReason, StopReason::None);
    EXPECT_EQ(engine.LinesRun(), 1);
  }
}

TEST(HostControls, AnUndefinedNameLookedUpDoesNotFailTheNextExecute) {
  BasicEngine engine;
  engine.SetCodeBlock(u"DIM a\r\na = 1\r\n");
  (void)engine.GetVarValue(u"nope");
  EXPECT_EQ(engine.ErrNum(), 5);
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 0);
  // A failed run still fails the next Execute, even after a lookup of a
  // defined name.
  engine.SetCodeBlock(u"a = 1 / 0\r\n");
  engine.Execute();
  ASSERT_NE(engine.ErrNum(), 0);
  (void)engine.GetVarValue(u"a");
  engine.SetCodeBlock(u"a = 2\r\n");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), static_cast<std::int32_t>(0x80040000u) + 1500);
}

TEST(HostControls, ClearVariablesLeavesAnEngineReadyForTheNextRecord) {
  BasicEngine engine;
  auto rs = std::make_shared<MemoryRecordset>(std::vector<std::u16string>{u"工号"},
                                              std::vector<std::vector<Value>>{{Value::lng(7)}});
  engine.SetRecordSet(rs);
  engine.SetSysVar(u"基本工资", Value::dbl(3000));
  engine.SetCodeBlock(u"DIM x\r\nx = 工号 + 基本工资\r\nIf 1 Then\r\n");
  EXPECT_NE(engine.Run().errNum, 0);  // the IF is left open
  engine.ClearVariables();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(engine.IfCount(), 0);
  EXPECT_EQ(engine.RecordSet(), nullptr);
  EXPECT_FALSE(engine.IsVarDefined(u"基本工资"));
  EXPECT_FALSE(engine.IsVarDefined(u"x"));
  engine.SetCodeBlock(u"DIM x\r\nx = 工号\r\n");
  EXPECT_EQ(engine.Run().errNum, 56);  // no such name any more
}

TEST(HostControls, AHostFunctionThatThrowsKeepsItsTextAndGetsTheLine) {
  BasicEngine engine;
  HostFunction f;
  f.name = u"_费率";
  f.operation = [](const HostFunctionCall&, Value&) -> std::int32_t {
    throw std::runtime_error("费率表缺失");
  };
  ASSERT_TRUE(engine.RegisterFunction(f));
  engine.SetCodeBlock(u"DIM x\r\nx = _费率()\r\n");
  const RunResult r = engine.Run();
  EXPECT_EQ(r.errNum, 51);
  EXPECT_EQ(r.errMsg, u"费率表缺失 : 行号 2");
}

}  // namespace
}  // namespace korvex
