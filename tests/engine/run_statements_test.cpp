// The run loop driving real statements: line movement after each kind, the
// line suffix on statement errors, RAISEERROR's argument text, the child
// engine of a single-line IF, and stopping a script that never ends.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

struct ScriptCase {
  const char16_t* code;
  std::int32_t errNum;
  const char16_t* errMsg;
  std::int16_t line;
};

class RunScriptTest : public ::testing::TestWithParam<ScriptCase> {};

TEST_P(RunScriptTest, Outcome) {
  const ScriptCase& c = GetParam();
  BasicEngine engine;
  engine.SetCodeBlock(c.code);
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), c.errNum) << toUtf8(c.code);
  EXPECT_EQ(toUtf8(engine.ErrMsg()), toUtf8(c.errMsg)) << toUtf8(c.code);
  EXPECT_EQ(engine.CurrentLineNum(), c.line) << toUtf8(c.code);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, RunScriptTest,
    ::testing::Values(
        ScriptCase{u"Dim a\r\na = 1\r\na = a + 1", 0, u"", 4},
        ScriptCase{u"Dim a\r\nb = 1", 5, u"变量未定义 'b' : 行号 2", 2},
        ScriptCase{u"Dim a\r\n\r\nabc", 22, u"不支持的语句体 : 行号 3", 3},
        ScriptCase{u"RaiseError 5", 2000, u"5 : 行号 1", 1},
        ScriptCase{u"' first\r\nraiseerror \"bad data\"", 2000, u"bad data : 行号 2", 2},
        // One character after the keyword is dropped whatever it is.
        ScriptCase{u"RaiseError=5", 2000, u"5 : 行号 1", 1},
        // A parenthesis right after the keyword never gets that far.
        ScriptCase{u"RaiseError(5)", -2147220004, u"错误的符号或变量名称(' : 行号 1", 1},
        ScriptCase{u"RaiseError 1, 2", 6,
                   u"错误的参数表达式或参数个数{语句:RaiseError1, 2} : 行号 1", 1},
        // The child engine's description already has its own line suffix.
        ScriptCase{u"If 1 = 1 Then zz = 1", 5, u"变量未定义 'zz' : 行号 1 : 行号 1", 1},
        ScriptCase{u"Dim i\r\ni = 0\r\nDo While i < 3\r\ni = i + 1\r\nLoop\r\nEnd\r\nx", 0, u"",
                   6}));

TEST(RunWithStatements, LoopsAndSingleLineIfShareTheEngineState) {
  auto ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  engine.SetCodeBlock(
      u"Dim i, x\r\ni = 0\r\nx = 0\r\nDo While i < 3\r\n  i = i + 1\r\n  If i = 2 Then x = i * "
      u"10\r\n"
      u"Loop\r\nMsgBox x");
  engine.Execute();
  ASSERT_EQ(engine.ErrNum(), 0) << toUtf8(engine.ErrMsg());
  EXPECT_EQ(vb::toDouble(engine.GetVarValue(u"I"), engine.Locale()), 3);
  EXPECT_EQ(vb::toDouble(engine.GetVarValue(u"x"), engine.Locale()), 20);
  EXPECT_EQ(engine.DoCount(), 0);
  EXPECT_EQ(engine.StmtFlagCount(), 0);
  EXPECT_EQ(ui->messages(), (std::vector<std::u16string>{u"20"}));
}

TEST(RunWithStatements, AHookCanLimitAnEndlessLoop) {
  BasicEngine engine;
  int lines = 0;
  engine.SetLineHook([&](std::int16_t) { return ++lines < 1000; });
  engine.SetCodeBlock(u"Dim n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(lines, 1000);
  EXPECT_GT(vb::toDouble(engine.GetVarValue(u"n"), engine.Locale()), 300);
}

TEST(RunWithStatements, RequestStopFromAnotherThreadEndsAnEndlessLoop) {
  auto ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  std::atomic<int> lines{0};
  engine.SetLineHook([&](std::int16_t) {
    ++lines;
    return true;
  });
  engine.SetCodeBlock(u"Dim n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop");
  std::atomic<bool> finished{false};
  std::thread stopper([&] {
    while (lines.load() < 500 && !finished.load()) std::this_thread::yield();
    engine.RequestStop();
  });
  engine.Execute();
  finished.store(true);  // a run that failed early must not leave the thread spinning
  stopper.join();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(ui->messages(), (std::vector<std::u16string>{u"确信终止程序吗?"}));
  EXPECT_GE(lines.load(), 500);
}

}  // namespace
}  // namespace korvex
