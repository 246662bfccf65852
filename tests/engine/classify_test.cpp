// Statement classification: the kind a line gets from its first (and for
// DO / END / EXIT its second) word, and the errors found on the way.
#include <gtest/gtest.h>

#include <string>

#include "korvex/engine.hpp"
#include "korvex/value.hpp"

namespace korvex {
namespace {

struct ClassifyCase {
  const char16_t* line;
  std::int16_t kind;
  std::int32_t errNum = 0;
  const char16_t* errMsg = u"";
};

std::string show(const char16_t* s) { return toUtf8(s); }

class ClassifyTest : public ::testing::TestWithParam<ClassifyCase> {};

TEST_P(ClassifyTest, KindAndError) {
  const ClassifyCase& c = GetParam();
  BasicEngine engine;
  EXPECT_EQ(engine.WhatSTMT(c.line), c.kind) << show(c.line);
  EXPECT_EQ(engine.ErrNum(), c.errNum) << show(c.line);
  EXPECT_EQ(toUtf8(engine.ErrMsg()), show(c.errMsg)) << show(c.line);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, ClassifyTest,
    ::testing::Values(
        ClassifyCase{u"", kStmtBlank}, ClassifyCase{u" \t\x01 ", kStmtBlank},
        ClassifyCase{u"' note", kStmtComment}, ClassifyCase{u"   'x = 1", kStmtComment},
        ClassifyCase{u"Rem anything at all", kStmtComment}, ClassifyCase{u"REM", kStmtComment},
        ClassifyCase{u"If a > 1 Then", kStmtIf}, ClassifyCase{u"\t\tif garbage", kStmtIf},
        ClassifyCase{u"Else", kStmtElse}, ClassifyCase{u"ELSE x = 1", kStmtElse},
        ClassifyCase{u"End If", kStmtEndIf}, ClassifyCase{u"end   if ' done", kStmtEndIf},
        ClassifyCase{u"Do While i < 3", kStmtDoWhile}, ClassifyCase{u"do until x", kStmtDoUntil},
        ClassifyCase{u"Loop", kStmtLoop}, ClassifyCase{u"  loop while x", kStmtLoop},
        ClassifyCase{u"End Do", kStmtEndDo}, ClassifyCase{u"Exit Do", kStmtExitDo},
        ClassifyCase{u"exit for", kStmtExitFor}, ClassifyCase{u"End", kStmtEnd},
        ClassifyCase{u"END ' stop here", kStmtEnd}, ClassifyCase{u"Dim a, b", kStmtDim},
        ClassifyCase{u"MsgBox x", kStmtMsgBox}, ClassifyCase{u"RaiseError 5", kStmtRaiseError},
        ClassifyCase{u"AddRecord", kStmtAddRecord}, ClassifyCase{u"增加记录", kStmtAddRecord},
        ClassifyCase{u"DelRecord", kStmtDelRecord}, ClassifyCase{u"删除记录", kStmtDelRecord}));

INSTANTIATE_TEST_SUITE_P(SecondWord, ClassifyTest,
                         ::testing::Values(ClassifyCase{u"Do", kStmtSyntaxError},
                                           ClassifyCase{u"Do x < 3", kStmtSyntaxError},
                                           ClassifyCase{u"Do ' While", kStmtSyntaxError},
                                           ClassifyCase{u"Do While(x)", kStmtSyntaxError},
                                           ClassifyCase{u"End Loop", kStmtSyntaxError},
                                           ClassifyCase{u"End Sub", kStmtSyntaxError},
                                           ClassifyCase{u"Exit Sub", kStmtSyntaxError},
                                           ClassifyCase{u"Exit", kStmtSyntaxError}));

INSTANTIATE_TEST_SUITE_P(RecordMoves, ClassifyTest,
                         ::testing::Values(ClassifyCase{u"MoveFirst", kStmtMoveFirst},
                                           ClassifyCase{u"movenext ' go on", kStmtMoveNext},
                                           ClassifyCase{u"MovePrevious   ", kStmtMovePrevious},
                                           ClassifyCase{u"MOVELAST", kStmtMoveLast},
                                           ClassifyCase{u"移至顶部", kStmtMoveFirst},
                                           ClassifyCase{u"  下移指针", kStmtMoveNext},
                                           ClassifyCase{u"上移指针 'back", kStmtMovePrevious},
                                           ClassifyCase{u"移至底部", kStmtMoveLast},
                                           ClassifyCase{u"MoveNext x", 0, 1, u"语法错"},
                                           ClassifyCase{u"MoveFirst=1", 0, 1, u"语法错"},
                                           ClassifyCase{u"移至底部 2", 0, 1, u"语法错"}));

INSTANTIATE_TEST_SUITE_P(
    Assignments, ClassifyTest,
    ::testing::Values(ClassifyCase{u"x=1", kStmtAssign}, ClassifyCase{u"  X =  1", kStmtAssign},
                      ClassifyCase{u"abc", kStmtAssign}, ClassifyCase{u"工资 = 1", kStmtAssign},
                      ClassifyCase{u"Doit = 1", kStmtAssign}, ClassifyCase{u"Ifx = 2", kStmtAssign},
                      ClassifyCase{u"_tmp = 2", kStmtAssign},
                      ClassifyCase{u"AVeryLongVariableName = 1", kStmtAssign},
                      ClassifyCase{u"If2 = 1", kStmtAssign}));

INSTANTIATE_TEST_SUITE_P(
    ReservedWords, ClassifyTest,
    ::testing::Values(ClassifyCase{u"For i = 1 To 3", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"next", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"Then", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"len = 5", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"EOF", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"num2chinese=1", 0, 23, u"非法使用关键字,期待语句"},
                      ClassifyCase{u"True = 1", 0, 23, u"非法使用关键字,期待语句"}));

INSTANTIATE_TEST_SUITE_P(
    BadNames, ClassifyTest,
    ::testing::Values(ClassifyCase{u"a#b = 1", 0, 3, u"错误的符号或变量名称#'"},
                      ClassifyCase{u"1x = 2", 0, 3, u"错误的符号或变量名称"},
                      ClassifyCase{u"  (x) = 2", 0, 3, u"错误的符号或变量名称"},
                      ClassifyCase{u"MsgBox(\"x\")", 0, 3, u"错误的符号或变量名称('"},
                      ClassifyCase{u"If(a > 1) Then", 0, 3, u"错误的符号或变量名称('"},
                      ClassifyCase{u"Loop'again", 0, 3, u"错误的符号或变量名称''"}));

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
}  // namespace korvex
