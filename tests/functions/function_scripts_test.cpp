// Built-in functions called from running scripts, where a run adds what a
// bare evaluation lacks: the line an error stops on, the warning box naming
// that line, and values kept in variables.
#include <gtest/gtest.h>

#include <string_view>

#include "support.hpp"

namespace korvex::testing {
namespace {

using namespace std::literals;

const ScriptCase kFunctionScripts[] = {
    {"DIM x\nx = LEFT(\"a\" < 1, 1)",
     "err 4 类型不匹配 : 行号 2 | X=Empty: | box 表达式错误类型不匹配 Line:2"},
    // The argument splitter drops blanks, which spoils a date literal with a time.
    {"DIM x\nx = HOUR(#2005-03-15 13:45:00#)", "err 4 类型不匹配 : 行号 2 | X=Empty:"},
    // The name in the message is upper-cased beyond ASCII.
    {"DIM x\nx = GetVar(\"é\")", "err 5 变量未定义 'É' : 行号 2 | X=Empty:"},
    // The failing line is the third; the variable keeps its value.
    {"DIM a\na = 5\na = UBound(a)", "err 4 类型不匹配{函数:UBound(a)} : 行号 3 | A=Double:5"},
    // A NUL kept in a variable; copying it through an expression drops the NULs.
    {"DIM x, y\nx = CHR(0) & \"and\" & CHR(0)\ny = x", "X=String:\000and\000 | Y=String:and"sv},
};

TEST(FunctionScripts, ResultsErrorsAndBoxes) { expectOutcomes(kFunctionScripts); }

}  // namespace
}  // namespace korvex::testing
