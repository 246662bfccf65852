// Statement classification: the kind a line gets from its first (and for
// DO / END / EXIT its second) word, and the errors found on the way.
#include <gtest/gtest.h>

#include "support.hpp"

namespace korvex::testing {
namespace {

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
