// The run loop: line splitting, the errors the loop itself raises and how
// they are described, END, the end-of-run check, stopping, the per-line
// hook, and what carries over between two runs on one engine. Scripts here
// use only lines the loop handles itself (blank, comment, END, record moves,
// unknown kinds) unless a test says otherwise.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"

namespace korvex {
namespace {

constexpr std::int32_t kEngineError = -2147220004;

struct Script {
  std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  Script() { engine.SetUserInterface(ui); }
  BasicEngine& operator()(std::u16string code) {
    engine.SetCodeBlock(std::move(code));
    engine.Execute();
    return engine;
  }
};

// A user interface that declines the stop prompt.
class SayNo : public RecordingUserInterface {
 public:
  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override {
    RecordingUserInterface::messageBox(text, buttons, title);
    return buttons == Buttons::YesNo ? Answer::No : Answer::Ok;
  }
};

std::vector<std::u16string> linesOf(BasicEngine& engine) {
  std::vector<std::u16string> out;
  for (std::int16_t i = 1; i <= engine.LineCount(); ++i) out.push_back(engine.GetLineCode(i));
  return out;
}

TEST(LineSplit, BreaksAreCrLfLoneCrOrLoneLf) {
  struct Case {
    const char16_t* code;
    std::vector<std::u16string> lines;
  };
  // clang-format off
  const Case cases[] = {
      {u"", {u""}}, {u"'a", {u"'a"}}, {u"'a\r\n'b", {u"'a", u"'b"}},
      // "\r\n" is appended after the last LF: one more (empty) line.
      {u"'a\n'b\n", {u"'a", u"'b", u""}}, {u"'a\r'b", {u"'a", u"'b"}},
      {u"'a\r'b\r", {u"'a", u"'b", u""}}, {u"'a\n\r'b", {u"'a", u"", u"'b"}},
      {u"'a\r\n\r\n'b\r\n", {u"'a", u"", u"'b"}}, {u"\r\n", {u""}}, {u"'a\r\r\n", {u"'a", u""}},
  };
  // clang-format on
  for (const Case& c : cases) {
    Script run;
    BasicEngine& e = run(c.code);
    EXPECT_EQ(e.ErrNum(), 0) << toUtf8(c.code);
    EXPECT_EQ(linesOf(e), c.lines) << toUtf8(c.code);
    EXPECT_EQ(e.CurrentLineNum(), static_cast<std::int16_t>(c.lines.size() + 1));
  }
}

TEST(LineSplit, TheBreakAddedAtTheEndStaysInCodeBlock) {
  Script run;
  EXPECT_EQ(run(u"").CodeBlock(), u"\r\n");
  EXPECT_EQ(run(u"'x\n").CodeBlock(), u"'x\n\r\n");
  EXPECT_EQ(run(u"'x\r\n").CodeBlock(), u"'x\r\n");
}

// Positions are sixteen-bit: with the CR LF added at the end, a text of
// 32,764 characters still fits and one more overflows before any line runs.
TEST(LineSplit, PositionsAreSixteenBit) {
  Script small;
  small(u"'" + std::u16string(32763, u'x'));
  EXPECT_EQ(small.engine.ErrNum(), 0);
  EXPECT_EQ(small.engine.LineCount(), 1);

  Script big;
  big(u"'" + std::u16string(32764, u'x'));
  EXPECT_EQ(big.engine.ErrNum(), 6);
  EXPECT_EQ(big.engine.ErrMsg(), u"溢出");
  EXPECT_EQ(big.engine.CurrentLineNum(), 0);
}

struct ErrorCase {
  const char16_t* code;
  std::int32_t errNum;
  const char16_t* errMsg;
  std::int16_t line;
};

class RunErrorTest : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(RunErrorTest, NumberDescriptionAndLine) {
  const ErrorCase& c = GetParam();
  Script run;
  BasicEngine& e = run(c.code);
  EXPECT_EQ(e.ErrNum(), c.errNum) << toUtf8(c.code);
  EXPECT_EQ(toUtf8(e.ErrMsg()), toUtf8(c.errMsg)) << toUtf8(c.code);
  EXPECT_EQ(e.CurrentLineNum(), c.line) << toUtf8(c.code);
}

INSTANTIATE_TEST_SUITE_P(
    LoopErrors, RunErrorTest,
    ::testing::Values(ErrorCase{u"删除记录", 19, u"不能识别的语句 : 行号 1", 1},
                      ErrorCase{u"1x = 2", kEngineError, u"错误的符号或变量名称 : 行号 1", 1},
                      ErrorCase{u"MoveNext", 102, u"对象变量或 With 块变量未设置 : 行号 1", 1},
                      ErrorCase{u"' fine\r\n移至顶部", 102,
                                u"对象变量或 With 块变量未设置 : 行号 2", 2},
                      // The bare keyword leaves a negative length for its argument text.
                      ErrorCase{u"RaiseError", 5, u"无效的过程调用或参数", 1}));

INSTANTIATE_TEST_SUITE_P(EndStatement, RunErrorTest,
                         ::testing::Values(ErrorCase{u"'a\r\nEnd\r\nDo", 0, u"", 2},
                                           ErrorCase{u"END ' stop\r\nFor", 0, u"", 1},
                                           ErrorCase{u"rem\r\n\r\n", 0, u"", 3}));

TEST(RunLoop, EndForgetsOpenBlocksAndSkipsTheEndCheck) {
  Script run;
  run.engine.SetIfCount(2);
  run.engine.SetDoCount(1);
  run.engine.SetForCount(4);
  run.engine.PushStmtFlag(Value::string(u"If"));
  run(u"' inside blocks\r\nEnd");
  EXPECT_EQ(run.engine.ErrNum(), 0);
  EXPECT_EQ(run.engine.IfCount(), 0);
  EXPECT_EQ(run.engine.DoCount(), 0);
  EXPECT_EQ(run.engine.StmtFlagCount(), 0);
  EXPECT_EQ(run.engine.ForCount(), 4);  // not a counter END knows about
}

TEST(RunLoop, EndCheckReportsBlocksLeftOpenAfterTheLastLine) {
  struct Case {
    std::int16_t ifs, dos;
    std::int32_t errNum;
    const char16_t* errMsg;
  };
  const Case cases[] = {
      {1, 0, kEngineError, u"If 语句无 End If : 行号 3"},
      {0, 2, kEngineError, u"Do 没有 Loop 或 End Do : 行号 3"},
      {1, 1, kEngineError, u"Do 没有 Loop 或 End Do : 行号 3"},  // the DO message wins
      {0, 0, 0, u""},
  };
  for (const Case& c : cases) {
    Script run;
    run.engine.SetIfCount(c.ifs);
    run.engine.SetDoCount(c.dos);
    run(u"'one\r\n'two");
    EXPECT_EQ(run.engine.ErrNum(), c.errNum);
    EXPECT_EQ(run.engine.ErrMsg(), c.errMsg);
    // The counters are not reset by the check.
    EXPECT_EQ(run.engine.IfCount(), c.ifs);
    EXPECT_EQ(run.engine.DoCount(), c.dos);
  }
}

TEST(RunLoop, AnErrorLeftFromAnEarlierRunFailsTheFirstLine) {
  Script run;
  run(u"Do");
  ASSERT_EQ(run.engine.ErrNum(), 1);
  run(u"' harmless");
  EXPECT_EQ(run.engine.ErrNum(), kEngineError);
  EXPECT_EQ(run.engine.ErrMsg(), u"语法错 : 行号 1 : 行号 1");

  // A host that resets the error can run again.
  run.engine.SetErrNum(0);
  run.engine.SetErrMsg(u"");
  run(u"' harmless");
  EXPECT_EQ(run.engine.ErrNum(), 0);
}

TEST(RunLoop, VariablesCountersAndFlagsSurviveBetweenRuns) {
  Script run;
  run.engine.SetSysVar(u"kept", Value::lng(3));
  run.engine.SetDoCount(1);
  run.engine.PushStmtFlag(Value::string(u"Do While"));
  run(u"'first\r\nEnd Loop");  // fails inside the "open loop"
  ASSERT_EQ(run.engine.ErrNum(), 1);
  EXPECT_EQ(run.engine.DoCount(), 1);
  EXPECT_EQ(run.engine.StmtFlagCount(), 1);
  EXPECT_EQ(run.engine.GetVarValue(u"KEPT").longValue(), 3);
  EXPECT_EQ(run.engine.LineCount(), 2);

  run.engine.SetErrNum(0);
  run(u"'a\r\n'b\r\n'c");
  EXPECT_EQ(run.engine.LineCount(), 3);          // the line list is rebuilt
  EXPECT_EQ(run.engine.ErrNum(), kEngineError);  // the loop is still open
  EXPECT_EQ(run.engine.GetVarValue(u"KEPT").longValue(), 3);
}

TEST(RunLoop, StopRequestAsksAndYesEndsWithoutError) {
  Script run;
  run.engine.RequestStop();
  run(u"'a\r\n'b\r\nDo");
  EXPECT_EQ(run.engine.ErrNum(), 0);
  EXPECT_EQ(run.engine.CurrentLineNum(), 1);
  EXPECT_EQ(run.ui->messages(), (std::vector<std::u16string>{u"确信终止程序吗?"}));
  // The request was answered: the next run is not asked again.
  run(u"'a");
  EXPECT_EQ(run.ui->messages().size(), 1u);
  EXPECT_EQ(run.engine.CurrentLineNum(), 2);
}

TEST(RunLoop, StopRequestDeclinedGoesOn) {
  auto ui = std::make_shared<SayNo>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  engine.RequestStop();
  engine.SetCodeBlock(u"'a\r\n'b\r\nExit For");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 19);
  EXPECT_EQ(ui->messages(), (std::vector<std::u16string>{u"确信终止程序吗?"}));
}

TEST(RunLoop, HookSeesEveryLineAndCanStopTheRun) {
  Script run;
  std::vector<std::int16_t> seen;
  run.engine.SetLineHook([&](std::int16_t line) {
    seen.push_back(line);
    return line < 3;
  });
  run(u"'1\r\n'2\r\n'3\r\n'4");
  EXPECT_EQ(seen, (std::vector<std::int16_t>{1, 2, 3}));
  EXPECT_EQ(run.engine.ErrNum(), 0);
  EXPECT_EQ(run.engine.CurrentLineNum(), 3);
  EXPECT_EQ(run.ui->messages(), (std::vector<std::u16string>{u"确信终止程序吗?"}));
}

TEST(RunLoop, PlatformFaultsKeepTheirOwnNumberAndText) {
  // A line number below 1 is a subscript fault of the line list; it carries
  // no line suffix.
  Script run;
  run.engine.SetLineHook([&](std::int16_t line) {
    if (line == 2) run.engine.SetCurrentLineNum(0);
    return true;
  });
  run(u"'1\r\n'2\r\n'3");
  EXPECT_EQ(run.engine.ErrNum(), 9);
  EXPECT_EQ(run.engine.ErrMsg(), u"下标越界");
}

TEST(RunLoop, ALineNumberPastTheListIsAStackError) {
  Script run;
  run.engine.SetLineHook([&](std::int16_t line) {
    if (line == 1) run.engine.SetCurrentLineNum(5);
    return true;
  });
  run(u"'1\r\n'2");
  EXPECT_EQ(run.engine.ErrNum(), kEngineError);
  EXPECT_EQ(run.engine.ErrMsg(), u"堆栈索引超出范围:'GetLine'方法 : 行号 5");
}

TEST(RunLoop, GetLineCodeReportsStackErrors) {
  Script run;
  run(u"'only");
  EXPECT_EQ(run.engine.GetLineCode(1), u"'only");
  EXPECT_EQ(run.engine.GetLineCode(2), u"");
  EXPECT_EQ(run.engine.ErrNum(), 21);
  EXPECT_EQ(run.engine.ErrMsg(), u"堆栈索引超出范围:'GetLine'方法");

  BasicEngine fresh;  // nothing split yet
  EXPECT_EQ(fresh.GetLineCode(1), u"");
  EXPECT_EQ(fresh.ErrNum(), 19);
}

TEST(RunLoop, RerunningTheSameTextGivesTheSameResult) {
  Script run;
  for (int i = 0; i < 3; ++i) {
    run(u"'a\r\n\r\n'c");
    EXPECT_EQ(run.engine.ErrNum(), 0);
    EXPECT_EQ(run.engine.LineCount(), 3);
    EXPECT_EQ(run.engine.GetLineCode(3), u"'c");
  }
  run(u"'x");
  EXPECT_EQ(run.engine.LineCount(), 1);
  EXPECT_EQ(run.engine.GetLineCode(1), u"'x");
}

}  // namespace
}  // namespace korvex
