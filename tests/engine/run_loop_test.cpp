// The run loop: line splitting, the errors the loop itself raises and how
// they are described, END, the end-of-run check, stopping, the per-line
// hook, and what carries over between two runs on one engine. Scripts here
// use only lines the loop handles itself (blank, comment, END, record moves,
// unknown kinds) unless a test says otherwise.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support.hpp"

namespace korvex::testing {
namespace {

constexpr std::int32_t kEngineError = -2147220004;

// Runs the text as given, without turning "\n" into CR LF.
BasicEngine& runRaw(Harness& h, std::u16string code) {
  h.engine.SetCodeBlock(std::move(code));
  h.engine.Execute();
  return h.engine;
}

// A user interface that declines the stop prompt.
class SayNo : public RecordingUserInterface {
 public:
  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override {
    RecordingUserInterface::messageBox(text, buttons, title);
    return buttons == Buttons::YesNo ? Answer::No : Answer::Ok;
  }
};

TEST(LineSplit, BreaksAreCrLfLoneCrOrLoneLfAndACrLfIsAddedAtTheEnd) {
  // clang-format off
  const std::pair<std::u16string, std::vector<std::u16string>> cases[] = {
      {u"", {u""}}, {u"'a", {u"'a"}}, {u"'a\r\n'b", {u"'a", u"'b"}},
      // "\r\n" is appended after the last LF: one more (empty) line.
      {u"'a\n'b\n", {u"'a", u"'b", u""}}, {u"'a\r'b", {u"'a", u"'b"}},
      {u"'a\r'b\r", {u"'a", u"'b", u""}}, {u"'a\n\r'b", {u"'a", u"", u"'b"}},
      {u"'a\r\n\r\n'b\r\n", {u"'a", u"", u"'b"}}, {u"\r\n", {u""}}, {u"'a\r\r\n", {u"'a", u""}},
  };
  // clang-format on
  for (const auto& [code, lines] : cases) {
    SCOPED_TRACE(u8(code));
    Harness h;
    BasicEngine& e = runRaw(h, code);
    EXPECT_EQ(e.ErrNum(), 0);
    std::vector<std::u16string> split;
    for (std::int16_t i = 1; i <= e.LineCount(); ++i) split.push_back(e.GetLineCode(i));
    EXPECT_EQ(split, lines);
    EXPECT_EQ(e.CurrentLineNum(), static_cast<std::int16_t>(lines.size() + 1));
    // The added break stays in CodeBlock; a text already ending in one gets none.
    EXPECT_EQ(e.CodeBlock(), code.ends_with(u"\r\n") ? code : code + u"\r\n");
  }
}

// Positions are sixteen-bit: with the CR LF added at the end, a text of
// 32,764 characters still fits and one more overflows before any line runs.
TEST(RunLoop, ErrorsOfTheLoopAndEndWithTheirLine) {
  const std::tuple<std::string, std::int32_t, const char*, std::int16_t> cases[] = {
      {"删除记录", 19, "不能识别的语句 : 行号 1", 1},
      {"1x = 2", kEngineError, "错误的符号或变量名称 : 行号 1", 1},
      // The bare keyword leaves a negative length for its argument text.
      {"RaiseError", 5, "无效的过程调用或参数", 1},
      {"'a\nEnd\nDo", 0, "", 2},
      {"rem\n\n", 0, "", 3},
      {"'" + std::string(32763, 'x'), 0, "", 2},
      {"'" + std::string(32764, 'x'), 6, "溢出", 0},
  };
  for (const auto& [script, errNum, errMsg, line] : cases) {
    SCOPED_TRACE(script.substr(0, 20));
    Harness h;
    h.run(script);
    EXPECT_EQ(h.engine.ErrNum(), errNum);
    EXPECT_EQ(h.errMsg(), errMsg);
    EXPECT_EQ(h.engine.CurrentLineNum(), line);
  }
}

TEST(RunLoop, EndForgetsOpenBlocksAndSkipsTheEndCheck) {
  Harness h;
  h.engine.SetIfCount(2);
  h.engine.SetDoCount(1);
  h.engine.SetForCount(4);
  h.engine.PushStmtFlag(Value::string(u"If"));
  h.run("' inside blocks\nEnd");
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_EQ(h.engine.IfCount(), 0);
  EXPECT_EQ(h.engine.DoCount(), 0);
  EXPECT_EQ(h.engine.StmtFlagCount(), 0);
  EXPECT_EQ(h.engine.ForCount(), 4);  // not a counter END knows about
}

TEST(RunLoop, EndCheckReportsBlocksLeftOpenAfterTheLastLine) {
  const std::tuple<std::int16_t, std::int16_t, std::int32_t, const char*> cases[] = {
      {1, 0, kEngineError, "If 语句无 End If : 行号 3"},
      {0, 2, kEngineError, "Do 没有 Loop 或 End Do : 行号 3"},
      {1, 1, kEngineError, "Do 没有 Loop 或 End Do : 行号 3"},  // the DO message wins
      {0, 0, 0, ""},
  };
  for (const auto& [ifs, dos, errNum, errMsg] : cases) {
    SCOPED_TRACE(errMsg);
    Harness h;
    h.engine.SetIfCount(ifs);
    h.engine.SetDoCount(dos);
    h.run("'one\n'two");
    EXPECT_EQ(h.engine.ErrNum(), errNum);
    EXPECT_EQ(h.errMsg(), errMsg);
    // The counters are not reset by the check.
    EXPECT_EQ(h.engine.IfCount(), ifs);
    EXPECT_EQ(h.engine.DoCount(), dos);
  }
}

TEST(RunLoop, VariablesCountersFlagsAndTheErrorSurviveBetweenRuns) {
  Harness h;
  h.engine.SetSysVar(u"kept", Value::lng(3));
  h.engine.SetDoCount(1);
  h.engine.PushStmtFlag(Value::string(u"Do While"));
  h.run("'first\nEnd Loop");  // fails inside the "open loop"
  ASSERT_EQ(h.engine.ErrNum(), 1);
  EXPECT_EQ(h.engine.DoCount(), 1);
  EXPECT_EQ(h.engine.StmtFlagCount(), 1);
  EXPECT_EQ(h.engine.LineCount(), 2);
  // The error left over fails the first line of the next run.
  h.run("' harmless");
  EXPECT_EQ(h.engine.ErrNum(), kEngineError);
  EXPECT_EQ(h.errMsg(), "语法错 : 行号 2 : 行号 1");
  // A host that resets the error can run again.
  h.engine.SetErrNum(0);
  h.engine.SetErrMsg(u"");
  h.run("'a\n'b\n'c");
  EXPECT_EQ(h.engine.LineCount(), 3);                        // the line list is rebuilt
  EXPECT_EQ(h.errMsg(), "Do 没有 Loop 或 End Do : 行号 4");  // the loop is still open
  EXPECT_EQ(h.var("KEPT"), "Long:3");
}

TEST(RunLoop, AStopRequestIsAskedOnceYesEndsWithoutErrorNoGoesOn) {
  for (const bool yes : {true, false}) {
    SCOPED_TRACE(yes ? "yes" : "no");
    Harness h;
    if (!yes) {
      h.ui = std::make_shared<SayNo>();
      h.engine.SetUserInterface(h.ui);
    }
    h.engine.RequestStop();  // no run is active: dropped when the run starts
    h.engine.SetLineHook([&](std::int16_t line) {
      if (line == 2) h.engine.RequestStop();
      return true;
    });
    h.run("'a\n'b\nExit For");
    EXPECT_EQ(h.engine.ErrNum(), yes ? 0 : 19);
    EXPECT_EQ(h.engine.CurrentLineNum(), yes ? 2 : 3);
    EXPECT_EQ(h.engine.StoppedBy(), yes ? StopReason::Request : StopReason::None);
    EXPECT_EQ(h.messages(), std::vector<std::string>{"确信终止程序吗?"});
    // The request was answered: the next run is not asked again.
    h.engine.SetLineHook(nullptr);
    h.engine.SetErrNum(0);
    h.run("'a");
    EXPECT_EQ(h.messages().size(), 1u);
    EXPECT_EQ(h.engine.CurrentLineNum(), 2);
  }
}

TEST(RunLoop, RequestStopFromAnotherThreadEndsAnEndlessLoop) {
  Harness h;
  std::atomic<int> lines{0};
  h.engine.SetLineHook([&](std::int16_t) { return ++lines > 0; });
  std::atomic<bool> finished{false};
  std::thread stopper([&] {
    while (lines.load() < 500 && !finished.load()) std::this_thread::yield();
    h.engine.RequestStop();
  });
  h.run("Dim n\nn = 0\nDo While 1\nn = n + 1\nLoop");
  finished.store(true);  // a run that failed early must not leave the thread spinning
  stopper.join();
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_EQ(h.messages(), std::vector<std::string>{"确信终止程序吗?"});
  EXPECT_GE(lines.load(), 500);
  EXPECT_GT(h.engine.GetVarValue(u"N").doubleValue(), 100);
}

TEST(RunLoop, HookSeesEveryLineAndCanStopTheRun) {
  Harness h;
  std::vector<std::int16_t> seen;
  h.engine.SetLineHook([&](std::int16_t line) {
    seen.push_back(line);
    return line < 3;
  });
  h.run("'1\n'2\n'3\n'4");
  EXPECT_EQ(seen, (std::vector<std::int16_t>{1, 2, 3}));
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_EQ(h.engine.CurrentLineNum(), 3);
  EXPECT_EQ(h.engine.StoppedBy(), StopReason::LineHook);
  EXPECT_EQ(h.messages(), std::vector<std::string>{"确信终止程序吗?"});
}

TEST(RunLoop, ALineMovedOutOfTheListByTheHostFails) {
  // Below 1 is a subscript fault of the line list, with no line suffix;
  // past the end is a stack error of the line list.
  const std::tuple<std::int16_t, std::int32_t, const char*> cases[] = {
      {0, 9, "下标越界"}, {5, kEngineError, "堆栈索引超出范围:'GetLine'方法 : 行号 5"}};
  for (const auto& [movedTo, errNum, errMsg] : cases) {
    SCOPED_TRACE(movedTo);
    Harness h;
    h.engine.SetLineHook([&](std::int16_t line) {
      if (line == 2) h.engine.SetCurrentLineNum(movedTo);
      return true;
    });
    h.run("'1\n'2\n'3");
    EXPECT_EQ(h.engine.ErrNum(), errNum);
    EXPECT_EQ(h.errMsg(), errMsg);
  }
}

TEST(RunLoop, GetLineCodeReportsStackErrors) {
  Harness h;
  h.run("'only");
  EXPECT_EQ(h.engine.GetLineCode(2), u"");
  EXPECT_EQ(h.engine.ErrNum(), 21);
  EXPECT_EQ(h.errMsg(), "堆栈索引超出范围:'GetLine'方法");

  BasicEngine fresh;  // nothing split yet
  EXPECT_EQ(fresh.GetLineCode(1), u"");
  EXPECT_EQ(fresh.ErrNum(), 19);
}

// Statement classification: the kind a line gets from its first (and for
// DO / END / EXIT its second) word, and the errors found on the way.
TEST(Classify, KindAndError) {
  struct Case {
    const char16_t* line;
    std::int16_t kind;
    std::int32_t errNum = 0;
    const char* errMsg = "";
  };
  constexpr const char* kReserved = "非法使用关键字,期待语句";
  constexpr const char* kBadName = "错误的符号或变量名称";
  // clang-format off
  const Case cases[] = {
      {u"", kStmtBlank}, {u" \t\x01 ", kStmtBlank},
      {u"' note", kStmtComment}, {u"   'x = 1", kStmtComment},
      {u"Rem anything at all", kStmtComment}, {u"REM", kStmtComment},
      {u"If a > 1 Then", kStmtIf}, {u"\t\tif garbage", kStmtIf},
      {u"Else", kStmtElse}, {u"ELSE x = 1", kStmtElse},
      {u"End If", kStmtEndIf}, {u"end   if ' done", kStmtEndIf},
      {u"Do While i < 3", kStmtDoWhile}, {u"do until x", kStmtDoUntil},
      {u"Loop", kStmtLoop}, {u"  loop while x", kStmtLoop},
      {u"End Do", kStmtEndDo}, {u"Exit Do", kStmtExitDo}, {u"exit for", kStmtExitFor},
      {u"End", kStmtEnd}, {u"END ' stop here", kStmtEnd}, {u"Dim a, b", kStmtDim},
      {u"MsgBox x", kStmtMsgBox}, {u"RaiseError 5", kStmtRaiseError},
      {u"AddRecord", kStmtAddRecord}, {u"增加记录", kStmtAddRecord},
      {u"DelRecord", kStmtDelRecord}, {u"删除记录", kStmtDelRecord},
      // the second word
      {u"Do x < 3", kStmtSyntaxError}, {u"Do ' While", kStmtSyntaxError},
      {u"Do While(x)", kStmtSyntaxError}, {u"End Loop", kStmtSyntaxError},
      {u"End Sub", kStmtSyntaxError}, {u"Exit Sub", kStmtSyntaxError}, {u"Exit", kStmtSyntaxError},
      // record moves, in either language, take nothing after them
      {u"MoveFirst", kStmtMoveFirst}, {u"movenext ' go on", kStmtMoveNext},
      {u"MovePrevious   ", kStmtMovePrevious}, {u"MOVELAST", kStmtMoveLast},
      {u"移至顶部", kStmtMoveFirst}, {u"  下移指针", kStmtMoveNext},
      {u"上移指针 'back", kStmtMovePrevious}, {u"移至底部", kStmtMoveLast},
      {u"MoveNext x", 0, 1, "语法错"}, {u"MoveFirst=1", 0, 1, "语法错"},
      {u"移至底部 2", 0, 1, "语法错"},
      // assignments, also to names that start with a keyword
      {u"  X =  1", kStmtAssign}, {u"工资 = 1", kStmtAssign}, {u"Doit = 1", kStmtAssign},
      {u"Ifx = 2", kStmtAssign}, {u"_tmp = 2", kStmtAssign}, {u"If2 = 1", kStmtAssign},
      // reserved words and bad names
      {u"For i = 1 To 3", 0, 23, kReserved}, {u"next", 0, 23, kReserved},
      {u"len = 5", 0, 23, kReserved}, {u"EOF", 0, 23, kReserved}, {u"True = 1", 0, 23, kReserved},
      {u"1x = 2", 0, 3, kBadName}, {u"  (x) = 2", 0, 3, kBadName},
      {u"MsgBox(\"x\")", 0, 3, "错误的符号或变量名称('"},
      {u"If(a > 1) Then", 0, 3, "错误的符号或变量名称('"},
      {u"Loop'again", 0, 3, "错误的符号或变量名称''"},
  };
  // clang-format on
  for (const Case& c : cases) {
    SCOPED_TRACE(u8(c.line));
    BasicEngine engine;
    EXPECT_EQ(engine.WhatSTMT(c.line), c.kind);
    EXPECT_EQ(engine.ErrNum(), c.errNum);
    EXPECT_EQ(u8(engine.ErrMsg()), c.errMsg);
  }
}

TEST(Classify, LeavesAnEarlierErrorAlone) {
  // Classification only ever sets an error; a clean line does not clear one.
  BasicEngine engine;
  engine.SetErrNum(42);
  engine.SetErrMsg(u"earlier");
  EXPECT_EQ(engine.WhatSTMT(u"x = 1"), kStmtAssign);
  EXPECT_EQ(engine.ErrNum(), 42);
  EXPECT_EQ(engine.ErrMsg(), u"earlier");
}

}  // namespace
}  // namespace korvex::testing
