// Whole scripts through the run loop: how each statement reads its line, the
// errors it raises (number, message, line) and what it leaves behind, and the
// expression errors as a running script reports them.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "engine/kept_script.hpp"
#include "facade/context_of.hpp"
#include "korvex/memory_recordset.hpp"
#include "statements/statement.hpp"
#include "support.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {
namespace {

using namespace std::literals;

// clang-format off
const ScriptCase kStatements[] = {
    // the run loop driving statements: line suffixes, END, loops sharing state
    {"' first\nraiseerror \"bad data\"", "err 2000 bad data : 行号 2"},
    {"RaiseError 1, 2", "err 6 错误的参数表达式或参数个数{语句:RaiseError1, 2} : 行号 1"},
    {"If 1 = 1 Then zz = 1", "err 5 变量未定义 'zz' : 行号 1 : 行号 1"},
    {"Dim i\ni = 0\nDo While i < 3\ni = i + 1\nLoop\nEnd\nx", "I=Double:3"},
    {"Dim i, x\ni = 0\nx = 0\nDo While i < 3\n  i = i + 1\n  If i = 2 Then x = i * 10\nLoop\nMsgBox x",
     "X=Double:20 | I=Double:3 | box 20"},
    // a first word glued to "="
    {"DIM=1", "err 3 错误的符号或变量名称 '=' : 行号 1"},
    {"If 1 Then\nElse=1\nEnd If", "err 3 错误的符号或变量名称 '=' : 行号 2"},
    {"If 1 Then\nEnd=If", "err 1 语法错 : 行号 2"}, {"If=1 Then", "err 1 语法错 : 行号 1"},
    {"Do While 1\nLoop=1", "err 3 错误的符号或变量名称 '=' : 行号 2"},
    {"MsgBox=1", "err 3 错误的符号或变量名称'=' : 行号 1"}, {"RaiseError=1", "err 2000 1 : 行号 1"},
    // assign
    {"DIM x, y, z\nx = \"a'b=c\" & \"'\" ' tail\ny=1=2\n\tZ  =  3\nx = x & 1",
     "Y=Boolean:False | Z=Double:3 | X=String:a'b=c'1"},
    {"DIM abc\nabc", "err 22 不支持的语句体 : 行号 2 | ABC=Empty:"},
    {"DIM x\nx = ' only", "err 1 语法错 : 行号 2 | X=Empty:"},
    {"DIM a, b\na b = 1", "err 1 语法错{来自赋值语句} : 行号 2 | A=Empty: | B=Empty:"},
    {"DIM x\nx = \"abc\nMSGBOX \"next\"", "X=Empty: | box next"},
    {"DIM x\nx = 7\nx = 1 XOR 2",
     "err 2 错误的表达式 : 行号 3 | X=Double:7 | box 栈中含多个结果, 请检查表达式是否正确"},
    {"y = 1", "err 5 变量未定义 'y' : 行号 1"},
    // bad
    {"a#b = 1", "err -2147220004 错误的符号或变量名称#' : 行号 1"},
    // control characters as blanks
    {"\001DIM\001a\002\n \t \nMSGBOX\001\"x\"", "A=Empty: | box x"},
    // dim
    {"DIM ' nothing", "err 1 语法错{DIM} : 行号 1"},
    {"DIM a,,b", "err 1 语法错 : 行号 1 | A=Empty:"}, {"DIM a，b\na，b = 1", "A，B=Double:1"},
    {"If 1 Then DIM a\nDIM a\na = 1\nIf 1 Then DIM a", "A=Double:1"},
    {"DIM a, DIM b\ndim c ' note\nDIM x, DIM",
     "err 1 语法错{DIM} : 行号 3 | A=Empty: | B=Empty: | C=Empty: | X=Empty:"},
    {"DIM x, ab-c", "err 3 错误的符号或变量名称 '-' : 行号 1 | X=Empty:"},
    {"DIM a' note", "err 3 错误的符号或变量名称 ''' : 行号 1"},
    {"DIM a, b\na = 5\nDIM b, a, c\nDim 工资, 金额_1\ndim DIM,d",
     "B=Empty: | A=Double:5 | C=Empty: | 工资=Empty: | 金额_1=Empty: | D=Empty:"},
    {"DIM a,", "err 1 语法错{DIM} : 行号 1 | A=Empty:"},
    {"DIM 1x", "err 3 错误的符号或变量名称 '1'{DIM} : 行号 1"},
    {"DIM ab#c", "err 3 错误的符号或变量名称 '#' : 行号 1"}, {"DIM ,a", "err 1 语法错 : 行号 1"},
    {"DIM a, b ,c\nc = (1 + 2) * 3\na = 1 + 2 * 3\nb = \"it's\" ' note\nDIM a",
     "C=Double:9 | A=Double:7 | B=String:it's"},
    {"DIM a b", "err 1 语法错 : 行号 1 | A=Empty:"},
    // do
    {"Do ' While 1", "err 1 语法错 : 行号 1"},
    {"DIM s\ns = \"abc\"\nDo While s\nLoop", "err 13 Do 语句缺表达式 : 行号 3 | S=String:abc"},
    {"Do While 0\nEnd If\nLoop", "err 11 End If 语句无 If : 行号 1"},
    {"Do While 0\nMSGBOX 1", "err 14 Do 没有 Loop 或 End Do : 行号 1"},
    {"Do While 0\nIf 1 Then\nLoop\nEnd If", "err 15 Loop 或 End Do 缺少 Do : 行号 3"},
    {"DIM i, s\ni = 0\ns = \"\"\nDo Until i = 3 ' stop at three\ni = i + 1\ns = s & i\nLoop ' "
     "again",
     "I=Double:3 | S=String:123"},
    {"DIM i\nDo Until(i > 1)\nLoop", "err 1 语法错 : 行号 2 | I=Empty:"},
    {"DIM i\ni = 5\nDo While i < 3\nMSGBOX i\nLoop\nMSGBOX \"after\"", "I=Double:5 | box after"},
    {"Do While ' none\nLoop", "err 13 Do 语句缺表达式 : 行号 1"},
    {"Do While 0\nDo While 1\nLoop\nMSGBOX \"x\"\nLoop\nMSGBOX \"end\"", "box end"},
    {"Do While 0\nEnd Do x", "err 1 语法错 : 行号 2"},
    {"Exit Do", "err 16 Exit Do 不在 Do...Loop 内 : 行号 1"},
    {"Do While 0\nLoop While x", "err 1 语法错 : 行号 2"},
    {"DIM n\nn = 0\nDo Until n >= 0\n  Do While n > 5\n    n = n + 1\n  Loop\n  n = 2\nLoop",
     "err 15 Loop 或 End Do 缺少 Do : 行号 8 | N=Double:2"},
    {"DIM n\nDo Until 1\nDo While 0\nn = 1\nLoop\nn = 2\nLoop",
     "err 15 Loop 或 End Do 缺少 Do : 行号 7 | N=Double:2"},
    {"DIM n\nDo While 1\nIf 1 Then\nExit Do\nEnd If\nLoop\nn = 1", "N=Double:1"},
    {"DIM n\nn = 0\nDo While n < 2\nn = n + 1\nDo While 1\nExit Do\nLoop\nEnd Do", "N=Double:2"},
    // Null and Empty conditions count as false
    {"DIM n, x\nn = NULL\nDo While n\nMSGBOX 1\nLoop\nDo While x\nMSGBOX 2\nLoop\nDo Until n\nn = 3\nLoop",
     "X=Empty: | N=Double:3"},
    // the second pass of a loop evaluates the line again
    {"DIM i, x\ni = 0\nDo While i < 3\nx = 10 / (1 - i)\ni = i + 1\nLoop",
     "err 4 类型不匹配 : 行号 4 | X=Double:10 | I=Double:1 | box 表达式错误类型不匹配 Line:4"},
    {"DIM n\nDo While 1\nExit Do\nDo While 0\nLoop\nn = 5\nLoop\nn = n + 1", "N=Double:1"},
    {"Do While 0\nx#y = 1\nLoop\nDIM z", "err 0 错误的符号或变量名称#' | Z=Empty:"},
    {"DIM n\nDo While 0\nIf 1 Then\nn = 1\nEnd If\nLoop", "N=Empty:"},
    // else
    {"Do While 1\nElse\nLoop", "err 7 Else 没有 If : 行号 2"},
    {"If True Then\nElse\nMSGBOX 1", "err 10 If 语句无 End If : 行号 2"},
    {"If 0 Then\nElse x = 1\nEnd If", "err 8 Else 语句错误 : 行号 2"},
    {"DIM x, r\nx = 5\nIf x Then\nr = r & \"T\"\nElse\nr = r & \"E\"\nEnd If",
     "X=Double:5 | R=String:TE"},
    {"DIM s, n\ns = \"-1\"\nn = 0\nIf s Then\nn = n + 1\nElse\nn = n + 10\nEnd If",
     "S=String:-1 | N=Double:1"},
    {"If True Then\nElse\nx#y = 1\nEnd If\nDIM z", "err 0 错误的符号或变量名称#' | Z=Empty:"},
    // empty
    {"DIM x\nx = () + 1", "X=Double:1"},
    // end
    {"If 1 Then\nDo While 1\nMSGBOX 1", "err -2147220004 Do 没有 Loop 或 End Do : 行号 4 | box 1"},
    {"If 1 Then\nEnd If x", "err 12 End If 语法错 : 行号 2"},
    {"If 1 Then\nEnd If'c", "err 1 语法错 : 行号 2"},
    // error
    {"DIM a\na = 1\na = a + nosuch", "err 56 遇到不可识别的符号或变量名 : 行号 3 | A=Double:1"},
    // exit
    {"Do While 1\nExit Do\nEnd If\nLoop", "err 11 End If 语句无 If : 行号 2"},
    {"Do While 1\nExit Do now\nLoop", "err 1 语法错 : 行号 2"},
    {"Do While 1\nExit Do", "err 14 Do 没有 Loop 或 End Do : 行号 2"},
    {"DIM n\nn = 0\nDo While 1\n  n = n + 1\n  If n >= 2 Then Exit Do\nLoop",
     "err 16 Exit Do 不在 Do...Loop 内 : 行号 1 : 行号 5 | N=Double:2"},
    {"Do While 1\nExit Do\nx#y = 1\nLoop\nDIM z", "err 0 错误的符号或变量名称#' | Z=Empty:"},
    // if
    {"DIM thenx\nthenx = 0\nIf thenx = 0 Then MSGBOX \"a\"\nIf 1 Then\tMSGBOX \"b\"\nIf 1 Then ' "
     "block\nMSGBOX \"c\"\nEnd If ' done",
     "THENX=Double:0 | box a | box b | box c"},
    {"DIM s, r\ns = \"1\"\nIf s Then r = r & \"s\"\nIf -1 Then\nr = r & \"t\"\nElse\nr = r & "
     "\"e\"\nEnd If",
     "S=String:1 | R=String:st"},
    {"DIM d\nd = #2005-01-01#\nIf d Then MSGBOX \"d\"", "err 13 类型不匹配 | D=Date:2005/1/1"},
    {"If False Then\nIf True Then\nElse\nMSGBOX 1\nEnd If\nMSGBOX 3\nElse\nMSGBOX 2\nEnd If", "box 2"},
    {"DIM s\ns = \"abc\"\nIf s Then\nEnd If", "err 13 类型不匹配 | S=String:abc"},
    {"DIM n\nn = NULL\nIf n Then\nMSGBOX 1\nElse ' other\nMSGBOX 2\nend if", "N=Null: | box 2"},
    {"DIM a\nIf 1 Then 1x = 2",
     "err -2147220004 错误的符号或变量名称 : 行号 1 : 行号 2 | A=Empty:"},
    {"DIM a\nIf 1 Then a = nosuch",
     "err 56 遇到不可识别的符号或变量名 : 行号 1 : 行号 2 | A=Empty:"},
    {"DIM n\nn = NULL\nIf 1 Then RaiseError n", "err 94 无效使用 Null : 行号 3 | N=Null:"},
    {"If 1 > 0 Then RaiseError \"boom\"", "err 2000 boom : 行号 1 : 行号 1"},
    {"If 1 Then If \"a\" Then MsgBox 1", "err 13 类型不匹配 : 行号 1"},
    {"DIM a\nIf 1 Then End\na = 1", "A=Double:1"},
    {"DIM a\nIf 1 Then If 2 > 1 Then a = \"x then y\"", "A=String:x then y"},
    {"If 1 Then If 1 Then", "err -2147220004 If 语句无 End If : 行号 2 : 行号 1"},
    {"DIM a\nIf 1 Then Do While 1",
     "err -2147220004 Do 没有 Loop 或 End Do : 行号 2 : 行号 2 | A=Empty:"},
    {"If 1 Then Else", "err 7 Else 没有 If : 行号 1 : 行号 1"},
    {"If 0 Then\nDo Until 1\nEnd If", "err 11 End If 语句无 If : 行号 3"},
    {"If 0 Then\nMSGBOX 1", "err 10 If 语句无 End If : 行号 1"},
    {"If 0 Then\nFor i = 1 To 3\nEnd If", "err 23 非法使用关键字,期待语句 : 行号 1"},
    {"If 0 Then\nIf 1 Then MSGBOX 1\nElse\nMSGBOX 2\nEnd If", "box 2"},
    {"DIM a\nIf 1\tThen a = 1", "err 56 遇到不可识别的符号或变量名 : 行号 2 | A=Empty:"},
    {"DIM x\nx = \"a then b\"\nIf x = \"a then b\" Then MSGBOX \"eq\"\nIf \"Then \" = x Then "
     "MSGBOX \"ne\"",
     "X=String:a then b | box eq"},
    {"DIM a\nIf a>1Then\nEnd If", "err 9 If 语句缺 'Then' : 行号 2 | A=Empty:"},
    {"DIM x\nIF 1 THEN x = \"a\" < 1",
     "err 4 类型不匹配 : 行号 1 : 行号 2 | X=Empty: | box 表达式错误类型不匹配 Line:1"},
    {"DIM a, n\nIf True Then\nElse\nIf a Then\nEnd If\nn = 1\nEnd If",
     "err 11 End If 语句无 If : 行号 7 | A=Empty: | N=Double:1"},
    {"End If", "err 11 End If 语句无 If : 行号 1"},
    {"DIM c\nIf False Then\nDo While c\nLoop\nEnd If",
     "err 15 Loop 或 End Do 缺少 Do : 行号 2 | C=Empty:"},
    {"If False Then\nIf a\nEnd If", "err 9 If 语句缺 'Then' : 行号 1"},
    {"If False Then\nIf a", "err 10 If 语句无 End If : 行号 1"},
    {"DIM s\nIf s = \"abc Then", "err 2 错误的表达式 : 行号 2 | S=Empty:"},
    {"DIM a\nIf 1 > 0 Then\na = 1", "err -2147220004 If 语句无 End If : 行号 4 | A=Double:1"},
    {"DIM n\nIf 1 Then n = 1 ' set n", "N=Double:1"},
    {"DIM n\nn = 1\nIf n = 1 Then MSGBOX \"one\"\nIf n = 2 Then MSGBOX \"two\"\nMSGBOX n + 1",
     "N=Double:1 | box one | box 2"},
    {"DIM c\nIf False Then\nDo Until c\nLoop\nEnd If", "C=Empty:"},
    {"DIM s, n\ns = \"x\"\nIf s <> \" THEN \" Then n = 1", "S=String:x | N=Double:1"},
    {"DIM x\nIf 1 Then x = \"abc", "err 2 错误的表达式 : 行号 2 | X=Empty:"},
    {"DIM x, n\nx = 1 = 1\nn = 0\nIf x Then\nn = n + 1\nElse\nn = n + 10\nEnd If",
     "X=Boolean:True | N=Double:1"},
    // loop
    {"DIM s\ns = 1\nDo While s\ns = \"abc\"\nLoop", "err 13 类型不匹配 | S=String:abc"},
    {"Do While 1\nIf 1 Then\nLoop", "err 15 Loop 或 End Do 缺少 Do : 行号 3"},
    {"Loop", "err 15 Loop 或 End Do 缺少 Do : 行号 1"},
    // messages
    {"MsgBox 'x", "err 1 语法错 : 行号 1"}, {"RaiseError NULL", "err 94 无效使用 Null"},
    // move
    {"移至顶部 x", "err -2147220004 语法错 : 行号 1"},
    {"DIM a\nMoveLast ' go\na = 1", "err 102 对象变量或 With 块变量未设置 : 行号 2 | A=Empty:"},
    // msgbox
    {"DIM e, s\ns = \"Bad\"\nMsgBox e\nMsgBox 1 > 2\nMsgBox Empty & \"|\"\nMSGBOX\t1 < 2\nmsgbox \"it's\" ' c\n"
     "MsgBox NULL\nMsgBox 1/4\nMsgBox s & \" data\"\nmsgbox 1 + 2 * 3 & \"!\"",
     "E=Empty: | S=String:Bad | box  | box False | box | | box True | box it's | box  | box 0.25 | "
     "box Bad data | box 7!"},
    // name
    {"DIM a, b, c, d, e\na = len(\"abc\")\nb = Len(12.5)\nc = ucase(\"ab\")\nd = lCaSe(\"AB\")\ne "
     "= UCASE(12)",
     "A=Long:3 | B=Long:4 | C=String:AB | D=String:ab | E=String:12"},
    {"DIM ⅰ\nⅠ = 1\nMSGBOX ⅰ + 1", "Ⅰ=Double:1 | box 2"},
    // raiseerror
    {"raiseerror 1 = 1", "err 2000 True : 行号 1"},
    {"RaiseError \"工资错误\" ' note", "err 2000 工资错误 : 行号 1"},
    {"RaiseError ()", "err 6 错误的参数表达式或参数个数{语句:RaiseError()} : 行号 1"},
    {"RaiseError  \"a, b\" & 1 + 1", "err 2000 a, b2 : 行号 1"},
    {"RaiseError (7)", "err 2000 7 : 行号 1"},
    {"RaiseError ", "err 6 错误的参数表达式或参数个数{语句:RaiseError} : 行号 1"},
    {"  RaiseError a,", "err 6 错误的参数表达式或参数个数{语句:RaiseErrora,} : 行号 1"},
    // rem
    {"DIM remark\nREM x = = ( !!\n  rem\n\t' tab comment\nremark = 2 ' c", "REMARK=Double:2"},
    // reserved
    {"DIM a\nnum2chinese = 1", "err -2147220004 非法使用关键字,期待语句 : 行号 2 | A=Empty:"},
    // tabs as blanks
    {"DIM x\nx = 1 +\t2", "err 56 遇到不可识别的符号或变量名 : 行号 2 | X=Empty:"},
    // values wrapped in NUL characters
    {"DIM s, t, n\ns = Chr(0) & \"and\" & Chr(0)\nt = s\nn = Len(s)",
     "S=String:\000and\000 | T=String:and | N=Long:3"sv},
    // xor
    {"DIM x\nx = (1 XOR 2)", "err 52 闭括号没有与之相匹配的开括号 : 行号 2 | X=Empty:"},
    {"DIM x\nx = 1 + (2 XOR 3",
     "err 4 类型不匹配 : 行号 2 | X=Empty: | box 表达式错误类型不匹配 Line:2"},
    // Expressions and functions as a running script reports them; their values
    // and errors are pinned by the evaluator's and the functions' tables.
    {"DIM x\nx = 1+", "err 51 缺操作数 : 行号 2 | X=Empty:"},
    {"DIM x\nx = LEFT 1", "err 26 缺少'( ' ,函数名后必须跟'( ' : 行号 2 | X=Empty:"},
    {"DIM x\nx = LEFT \"abc\"",
     "err 6 错误的参数表达式或参数个数{函数:Left \"abc\"} : 行号 2 | X=Empty:"},
    {"DIM x\nx = LEFT(CHR(0) & \"+\" & CHR(0), 3)", "X=String:+"},
    {"DIM x\nx = LEFT(LEFT(\"a\"), 1)",
     "err 6 错误的参数表达式或参数个数{函数:Left(\"a\")} : 行号 2 | X=Empty:"},
    {"Left = 1", "err 5 变量未定义 'Left' : 行号 1"},
    // The argument splitter drops blanks, which spoils a date literal with a time.
    {"DIM x\nx = HOUR(#2005-03-15 13:45:00#)", "err 4 类型不匹配 : 行号 2 | X=Empty:"},
    // The name in the message is upper-cased beyond ASCII.
    {"DIM x\nx = GetVar(\"é\")", "err 5 变量未定义 'É' : 行号 2 | X=Empty:"},
    {"DIM a\na = 5\na = UBound(a)", "err 4 类型不匹配{函数:UBound(a)} : 行号 3 | A=Double:5"},
    // names that begin with an operator word
    {"DIM order, andy, notx, xory, x\norder = 1\nandy = 2\nnotx = 3\nxory = 4\nx = order + andy * "
     "notx - xory",
     "ORDER=Double:1 | ANDY=Double:2 | NOTX=Double:3 | XORY=Double:4 | X=Double:3"},
};
// clang-format on

TEST(ScriptRules, StatementsAndExpressions) { expectOutcomes(kStatements); }

// Statements called directly: paths the run loop never reaches because the
// line classifier rejects such lines first, the stack entries the block
// statements leave, and assignments to record fields.
using StatementFn = std::int32_t (*)(Context&, KeptLine&);

// A statement run on a line of its own, outside a script.
template <typename Fn>
auto onLine(Fn statement, BasicEngine& engine, std::u16string_view text) {
  KeptLine line{std::u16string(text)};
  return statement(contextOf(engine), line);
}

struct DirectCase {
  const char* name;
  StatementFn statement;
  const char16_t* line;
  std::int32_t errNum;  // also what the statement returns
  const char* errMsg;
};

void PrintTo(const DirectCase& c, std::ostream* os) { *os << c.name; }

class DirectCases : public ::testing::TestWithParam<DirectCase> {};

// None of these moves off the line the engine starts on.
TEST_P(DirectCases, ResultMessageAndLine) {
  const DirectCase& c = GetParam();
  Harness h;
  h.engine.SetCurrentLineNum(5);
  EXPECT_EQ(onLine(c.statement, h.engine, c.line), c.errNum);
  EXPECT_EQ(h.engine.ErrNum(), c.errNum);
  EXPECT_EQ(h.errMsg(), c.errMsg);
  EXPECT_EQ(h.engine.CurrentLineNum(), 5);
}

// clang-format off
const DirectCase kDirectCases[] = {
    // A bad first character of the target only leaves a message behind.
    {"assign_bad_first_character", stmt::Assign, u"1x = 2", 0, "错误的符号或变量名称"},
    {"assign_bad_later_character", stmt::Assign, u"a# = 1", 3, "错误的符号或变量名称'#'"},
    {"assign_equals_without_name", stmt::Assign, u" = 5", 1, "语法错"},
    {"msgbox_parenthesis_after_keyword", stmt::MsgBox, u"MsgBox(\"x\")", 3, "错误的符号或变量名称'('"},
    {"msgbox_bad_first_character", stmt::MsgBox, u"(x", 3, "错误的符号或变量名称"},
    {"msgbox_other_keyword", stmt::MsgBox, u"Show 1", 1, "语法错"},
    {"msgbox_unclosed_literal", stmt::MsgBox, u"MsgBox \"abc", 0, ""},
    {"else_bad_later_character", stmt::Else, u"Else#", 3, "错误的符号或变量名称 '#'"},
    {"else_bad_first_character", stmt::Else, u"  #Else", 3, "错误的符号或变量名称"},
    {"else_other_word", stmt::Else, u"Elsewhere", 1, "语法错"},
    {"else_comment_only", stmt::Else, u"' Else", 1, "语法错"},
    {"end_alone_does_nothing", stmt::EndIf, u"End ' stop", 0, ""},
    {"end_if_other_word", stmt::EndIf, u"Ends If", 1, "语法错"},
    {"do_without_while", stmt::Do, u"Do x < 3", 1, "语法错"},
    {"do_alone", stmt::Do, u"Do", 1, "语法错"},
    {"do_unclosed_literal", stmt::Do, u"Do While s = \"abc", 2, "错误的表达式"},
    {"loop_other_word", stmt::LoopOrEndDo, u"Looped", 1, "语法错"},
    {"end_without_do", stmt::LoopOrEndDo, u"End", 1, "语法错"},
    {"exit_alone_stays_on_line", stmt::ExitDo, u"Exit ' nothing", 0, ""},
    {"exit_for", stmt::ExitDo, u"Exit For", 1, "语法错"},
    {"exit_do_comment_is_cut", stmt::ExitDo, u"Exit Do ' leave", 16, "Exit Do 不在 Do...Loop 内"},
    // An unclosed literal after THEN returns without moving on.
    {"if_unclosed_literal_in_tail", stmt::If, u"If 1 Then x = \"abc", 2, "错误的表达式"},
    {"if_first_word_not_if", stmt::If, u"Iff 1 Then", 1, "语法错"},
};
// clang-format on

std::string directName(const ::testing::TestParamInfo<DirectCase>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Statements, DirectCases, ::testing::ValuesIn(kDirectCases), directName);

// ---- IsIfBlock -------------------------------------------------------------

TEST(IsIfBlock, ClassifiesAndReportsTheIfErrors) {
  // clang-format off
  const std::tuple<const char16_t*, bool, std::int32_t> cases[] = {
      {u"If a Then", true, 0}, {u"  if a then ' note", true, 0},
      {u"If a = \"Then \" Then", true, 0}, {u"If a Then b = 1", false, 0},
      {u"If a Then b = \"x", false, 0}, {u"If a", false, 9}, {u"If a>1Then", false, 9},
      {u"If aThen", false, 9}, {u"Iff a Then", false, 1}, {u"If \"a Then", false, 2},
  };
  // clang-format on
  for (const auto& [line, block, errNum] : cases) {
    Harness h;
    EXPECT_EQ(onLine(stmt::IsIfBlock, h.engine, line), block) << toUtf8(line);
    EXPECT_EQ(h.engine.ErrNum(), errNum) << toUtf8(line);
  }
}

// The entry a block statement pushes: its kind, its line and, for IF, the
// raw condition value or, for DO, the condition text as written.
TEST(FlagEntries, BlockStatementsKeepKindLineAndCondition) {
  // The statement, its line, the entry's items, and the IF and DO counts after it.
  const std::tuple<StatementFn, const char16_t*, std::vector<std::string>, std::int16_t,
                   std::int16_t>
      cases[] = {
          {stmt::If, u"If 5 Then ' block", {"String:If", "Integer:3", "Double:5"}, 1, 0},
          {stmt::Do,
           u"  do until 1 > 2 ' c",
           {"String:Do Until", "Integer:3", "String: 1 > 2 "},
           0,
           1},
      };
  for (const auto& [statement, line, items, ifs, dos] : cases) {
    Harness h;
    h.engine.SetCurrentLineNum(3);
    EXPECT_EQ(onLine(statement, h.engine, line), 0);
    EXPECT_EQ(h.engine.CurrentLineNum(), 4);
    EXPECT_EQ(h.engine.IfCount(), ifs);
    EXPECT_EQ(h.engine.DoCount(), dos);
    const Value entry = h.engine.GetpopValueStmtFlag();
    ASSERT_TRUE(entry.isArray()) << u8(line);
    EXPECT_EQ(entry.arrayValue().lbound(0), 1);
    std::vector<std::string> got;
    for (const Value& v : entry.arrayValue().elements()) got.push_back(describe(v));
    EXPECT_EQ(got, items);
  }
}

TEST(LineNumbers, SteppingPastTheLastLineNumberOverflows) {
  Harness h;
  h.engine.SetCurrentLineNum(32767);
  EXPECT_EQ(errorOf([&] { onLine(stmt::If, h.engine, u"If 1 Then"); }), vb::kOverflow);
}

// ---- assignment to record fields ---------------------------------------------

TEST(AssignToRecord, FieldWhenNoVariableHasTheName) {
  Harness h;
  auto rs = MemoryRecordset::create({u"Amount", u"Rate"}, {{Value::dbl(1), Value::dbl(2)}});
  h.engine.SetRecordSet(rs);
  h.engine.SetSysVar(u"rate", Value::dbl(9));
  h.run("Amount = 7\nRate = 5");
  EXPECT_EQ(h.engine.ErrNum(), 0) << h.errMsg();
  EXPECT_EQ(describe(rs->cell(0, 0)), "Double:7");
  // The variable wins over the field of the same name.
  EXPECT_EQ(describe(rs->cell(0, 1)), "Double:2");
  EXPECT_EQ(h.var("RATE"), "Double:5");
}

}  // namespace
}  // namespace korvex::testing
