// Built-in functions called from running scripts: results, the errors they
// raise with the line they stop on, and the warning boxes they show.
#include <gtest/gtest.h>

#include <string_view>

#include "support.hpp"

namespace korvex::testing {
namespace {

using namespace std::literals;

const ScriptCase kFunctionScripts[] = {
    // ansi
    {"DIM a, b, c\na = ASC(\"中\")\nb = CHR(-10544)\nc = LEN(\"中文\")",
     "A=Integer:-10544 | B=String:中 | C=Long:2"},
    // arg
    {"DIM x\nx = LEFT(\"a\" < 1, 1)",
     "err 4 类型不匹配 : 行号 2 | X=Empty: | box 表达式错误类型不匹配 Line:2"},
    // asc
    {"DIM a, b, c, d, e\na = ASC(\"AB\")\nb = CHR(66)\nc = HEX(255)\nd = CSTR(1.5)\ne = asc(7)",
     "A=Integer:65 | B=String:B | C=String:FF | D=String:1.5 | E=Integer:55"},
    // atn
    {"DIM x\nx = Atn(\"a\")", "err 4 类型不匹配{函数:Atn(\"a\")} : 行号 2 | X=Empty:"},
    // capitals
    {"DIM a, b\na = 大写(98765432109876)\nb = 大写(123456789012345)",
     "A=String:玖捌柒仟陆佰伍拾肆亿叁仟贰佰壹拾万零玖仟捌佰柒拾陆元整 | "
     "B=String:壹贰叁肆仟伍佰陆拾柒亿捌仟玖佰零壹万贰仟叁佰肆拾伍元整"},
    // chinese
    {"DIM 工资, 大写金额\n工资 = 12.5\n大写金额 = num2chinese(工资 * 2)",
     "工资=Double:12.5 | 大写金额=String:贰拾伍元整"},
    // chr
    {"DIM x\nx = CHR(\"a\")", "err 4 类型不匹配{函数:Chr(\"a\")} : 行号 2 | X=Empty:"},
    // constants
    {"DIM a, b, c, d, e, f\na = \"a\" & CRLF & \"b\" & vbcrlf\nb = EMPTY\nc = \"5\" * \"2\"\nd = "
     "#2005-03-01# + 1\ne = LEN(LEFT(\"a b c\", 3))\nf = LEN(1 + 2) + MaxDay(12, 2005) + "
     "MaxDay(#2005-12-31#) + IsEmpty(\"\")",
     "A=String:a\015\nb\015\n | B=Empty: | C=Double:10 | D=Date:2005/3/2 | E=Long:3 | "
     "F=Double:62"},
    // conversions
    {"DIM a, b, c, d, e, f\na = CLng(2.5)\nb = clng(3.5)\nc = CDbl(\"1.5\")\nd = "
     "IsNumeric(\"12\")\ne = IsNumeric(\"abc\")\nf = CDate(\"2005-03-01\")",
     "A=Long:2 | B=Long:4 | C=Double:1.5 | D=Boolean:True | E=Boolean:False | F=Date:2005/3/1"},
    // date
    {"DIM x\nx = HOUR(#2005-03-15 13:45:00#)", "err 4 类型不匹配 : 行号 2 | X=Empty:"},
    {"DIM a, b, c, d\na = YEAR(DATE()) > 2000\nb = TIME() < 1\nc = WeekDayName(#2005-03-13#)\nd = "
     "Round(\"2.5\")",
     "A=Boolean:True | B=Boolean:True | C=String:星期日 | D=Double:2"},
    // dates
    {"DIM a, b, c, d, e, f, g\na = MONTH(#2005-03-15#)\nb = DAY(#2005-03-15#)\nc = "
     "HOUR(CDate(\"2005-03-15 13:45:00\"))\nd = Minute(CDate(\"2005-03-15 13:45:00\"))\ne = "
     "MaxDay(#2004-02-10#)\nf = MaxDay(2, 2005)\ng = WeekDayName(#2005-03-14#)",
     "A=Double:3 | B=Double:15 | C=Double:13 | D=Double:45 | E=Integer:29 | F=Integer:28 | "
     "G=String:星期一"},
    // exp
    {"DIM a, b\na = EXP(0)\nb = Exp(709.782712893) > 1", "A=Double:1 | B=Boolean:True"},
    {"DIM x\nx = Exp(\"abc\")", "err 4 类型不匹配{函数:Exp(\"abc\")} : 行号 2 | X=Empty:"},
    // getvar
    {"DIM x\nx = GetVar(\"é\")", "err 5 变量未定义 'É' : 行号 2 | X=Empty:"},
    // hex
    {"DIM x\nx = Hex(1, 2)",
     "err 6 错误的参数表达式或参数个数{函数:Hex(1, 2)} : 行号 2 | X=Empty:"},
    {"DIM x\nx = HEX(\"abc\")", "err 4 类型不匹配{函数:Hex(\"abc\")} : 行号 2 | X=Empty:"},
    // input
    {"DIM x\nx = Input(1, 2, 3, 4)",
     "err 6 错误的参数表达式或参数个数{函数:Input(1, 2, 3, 4)} : 行号 2 | X=Empty:"},
    // isempty
    {"DIM a, b, c, d, e\na = IsEmpty(\"   \")\nb = IsEmpty(NULL)\nc = isempty(EMPTY)\nd = "
     "IsEmpty(0)\ne = IsEmpty(\"x\") + 1",
     "A=Double:-1 | B=Double:-1 | C=Double:-1 | D=Empty: | E=Double:1"},
    {"DIM x\nx = IsEmpty(1, 2)",
     "err 6 错误的参数表达式或参数个数{函数:IsEmpty(1, 2)} : 行号 2 | X=Empty:"},
    // isnumeric
    {"DIM a, b, c, d, e, f, g\na = IsNumeric(EMPTY)\nb = IsNumeric(NULL)\nc = IsNumeric(\"\")\nd = "
     "IsNumeric(\" 12 \")\ne = CLng(-2.5)\nf = CLng(\"12\")\ng = HEX(255.5)",
     "A=Boolean:True | B=Boolean:False | C=Boolean:False | D=Boolean:True | E=Long:-2 | F=Long:12 "
     "| G=String:100"},
    // isvarexist
    {"DIM x\nx = IsVarExist()",
     "err 6 错误的参数表达式或参数个数{函数:IsVarExist()} : 行号 2 | X=Empty:"},
    // lbound
    {"DIM x\nx = LBound()", "err 6 错误的参数表达式或参数个数{函数:LBound()} : 行号 2 | X=Empty:"},
    {"DIM x\nx = LBound(\"abc\")", "err 4 类型不匹配{函数:LBound(\"abc\")} : 行号 2 | X=Empty:"},
    // left
    {"DIM x\nx = LEFT(nosuch, 1)", "err 56 遇到不可识别的符号或变量名 : 行号 2 | X=Empty:"},
    {"DIM x\nx = LEFT(\"abc\", NULL)",
     "err 4 类型不匹配{函数:Left(\"abc\", NULL)} : 行号 2 | X=Empty:"},
    {"DIM a, b, c, d, e, f\na = LEFT(\"abc\", 5)\nb = LEFT(12345, 2)\nc = RIGHT(\"abcdef\", 2)\nd "
     "= Left(\"abc\", 0)\ne = LEFT(\"a,b,c\", 3)\nf = LEFT(UCASE(\"abcdef\")，LEN(\"abc\"))",
     "A=String:abc | B=String:12 | C=String:ef | D=String: | E=String:a,b | F=String:ABC"},
    {"DIM x\nx = LEFT(\"abc\", \"-1\")",
     "err 4 类型不匹配{函数:Left(\"abc\", \"-1\")} : 行号 2 | X=Empty:"},
    // maxday
    {"DIM x\nx = MaxDay(\"abc\")", "err 4 类型不匹配{函数:MaxDay(\"abc\")} : 行号 2 | X=Empty:"},
    {"DIM a, b\na = MaxDay(4, 99)\nb = MaxDay(2, 96)", "A=Integer:30 | B=Integer:29"},
    // mid
    {"DIM a, b, c\na = MID(\"abcdef\", 2)\nb = mid(\"abcdef\", 2, 3)\nc = Mid(\"a,b\" & \"c\", 2, "
     "2)",
     "A=String:bcdef | B=String:bcd | C=String:,b"},
    {"DIM a, b, c, d\na = MID(\"abcdef\"，2，3)\nb = MID(LEFT(\"abcdef\", 4), 2)\nc = MID( \"abc\" "
     ", 2 )\nd = LEFT(\"abc\", \"2\") & RIGHT(\"abc\", 2.5) & CHR(65.5)",
     "A=String:bcd | B=String:bcd | C=String:bc | D=String:abbcB"},
    // num2chinese
    {"DIM x\nx = 大写(nosuch)", "err 56 遇到不可识别的符号或变量名 : 行号 2 | X=Empty:"},
    {"DIM w0, w1, w2, w3\nw0 = 大写(0.004)\nw1 = 大写(12345678901.23)\nw2 = 大写(100010000)\nw3 = "
     "大写(1.999)",
     "W0=String:整 | W1=String:壹佰贰拾叁亿肆仟伍佰陆拾柒万捌仟玖佰零壹元贰角叁分 | "
     "W2=String:壹亿零壹万元整 | W3=String:贰元整"},
    {"DIM x\nx = 大写(NULL)", "err 4 类型不匹配 : 行号 2 | X=Empty:"},
    // right
    {"DIM x\nx = Right(\"abc\", \"z\")",
     "err 4 类型不匹配{函数:Right(\"abc\", \"z\")} : 行号 2 | X=Empty:"},
    {"DIM x\nx = RIGHT(\"abc\", \" -2 \")",
     "err 4 类型不匹配{函数:Right(\"abc\", \" -2 \")} : 行号 2 | X=Empty:"},
    // setvar
    {"DIM a, 金额\na = 1\n金额 = SetVar(\"a\", 9) AND GetVar(\"a\") = 9",
     "A=Double:9 | 金额=Boolean:True"},
    {"DIM a, b, c, d\na = SetVar(\"new1\", 5)\nb = GetVar(\"NEW1\") + 1\nc = "
     "IsVarExist(\"new1\")\nd = isvarexist(\"nope\")",
     "NEW1=Double:5 | A=Boolean:True | B=Double:6 | C=Boolean:True | D=Boolean:False"},
    // sin
    {"DIM x\nx = SIN()", "err 6 错误的参数表达式或参数个数{函数:Sin()} : 行号 2 | X=Empty:"},
    // trig
    {"DIM a, b, c, d, e, f, g\na = ROUND(ATN(1) * 4, 6)\nb = COS(0)\nc = SIN(0) + TAN(0)\nd = "
     "ROUND(1.23456, 2.6)\ne = CDbl(TRUE)\nf = #2005-03-01# - #2005-02-01#\ng = MaxDay(2, 2004)",
     "A=Double:3.141593 | B=Double:1 | C=Double:0 | D=Double:1.235 | E=Double:-1 | F=Double:28 | "
     "G=Integer:29"},
    // turnout
    {"DIM x\nx = 工序产量(2005, 3)",
     "err 6 错误的参数表达式或参数个数{函数:_工序产量(2005, 3)} : 行号 2 | X=Empty:"},
    {"DIM x\nx = 产品产量(1)",
     "err 6 错误的参数表达式或参数个数{函数:_产品产量(1)} : 行号 2 | X=Empty:"},
    // ubound
    {"DIM x\nx = UBound(5)", "err 4 类型不匹配{函数:UBound(5)} : 行号 2 | X=Empty:"},
    {"DIM a\na = 5\na = UBound(a)", "err 4 类型不匹配{函数:UBound(a)} : 行号 3 | A=Double:5"},
    // unavailable
    {"DIM x\nx = getcell(\"A\")",
     "err 6 错误的参数表达式或参数个数{函数:GetCell(\"A\")} : 行号 2 | X=Empty:"},
    {"DIM x\nx = _部门工资合计(1, \"a\")",
     "err 6 错误的参数表达式或参数个数{函数:_部门工资合计(1, \"a\")} : 行号 2 | X=Empty:"},
    // variable
    {"DIM x, y\nx = CHR(0) & \"and\" & CHR(0)\ny = x", "X=String:\000and\000 | Y=String:and"sv},
};

TEST(FunctionScripts, ResultsErrorsAndBoxes) { expectOutcomes(kFunctionScripts); }

}  // namespace
}  // namespace korvex::testing
