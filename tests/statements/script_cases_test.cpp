// Statements run through the engine: each case is a script with the outcome
// a host would see (error, line, block counters, variables, message boxes).
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "statement_harness.hpp"

namespace korvex::testing {
namespace {

struct ScriptCase {
  const char* name;
  const char* script;  // lines separated by "\n"
  std::int32_t errNum;
  const char* errMsg;
  std::int16_t line;
  std::vector<std::pair<const char*, const char*>> vars = {};  // name, describe()
  std::vector<std::string> messages = {};
  std::int16_t ifCount = 0;
  std::int16_t doCount = 0;
  std::int16_t flagCount = 0;
};

void PrintTo(const ScriptCase& c, std::ostream* os) { *os << c.name; }

class ScriptCases : public ::testing::TestWithParam<ScriptCase> {};

TEST_P(ScriptCases, Outcome) {
  const ScriptCase& c = GetParam();
  Harness h;
  h.run(c.script);
  EXPECT_EQ(h.engine.ErrNum(), c.errNum);
  EXPECT_EQ(h.errMsg(), c.errMsg);
  EXPECT_EQ(h.engine.CurrentLineNum(), c.line);
  EXPECT_EQ(h.engine.IfCount(), c.ifCount);
  EXPECT_EQ(h.engine.DoCount(), c.doCount);
  EXPECT_EQ(h.engine.StmtFlagCount(), c.flagCount);
  EXPECT_EQ(h.messages(), c.messages);
  for (const auto& [name, expected] : c.vars) {
    EXPECT_EQ(h.var(name), expected) << "variable " << name;
  }
}

std::string caseName(const ::testing::TestParamInfo<ScriptCase>& info) { return info.param.name; }

// ---- DIM -------------------------------------------------------------------

const ScriptCase kDimCases[] = {
    {"list", "DIM a, b ,c", 0, "", 2, {{"A", "Empty:"}, {"B", "Empty:"}, {"C", "Empty:"}}},
    {"comment_after_blank", "DIM a ' note", 0, "", 2, {{"A", "Empty:"}}},
    {"quote_inside_name", "DIM a' note", 3, "错误的符号或变量名称 ''' : 行号 1", 1},
    {"two_names_without_comma", "DIM a b", 1, "语法错 : 行号 1", 1, {{"A", "Empty:"}}},
    {"leading_comma", "DIM ,a", 1, "语法错 : 行号 1", 1},
    {"double_comma", "DIM a,,b", 1, "语法错 : 行号 1", 1, {{"A", "Empty:"}}},
    {"no_name", "DIM", 1, "语法错{DIM} : 行号 1", 1},
    {"trailing_comma", "DIM a,", 1, "语法错{DIM} : 行号 1", 1, {{"A", "Empty:"}}},
    {"keyword_after_comma", "DIM a, DIM", 1, "语法错{DIM} : 行号 1", 1},
    {"keyword_after_name", "DIM a DIM", 1, "语法错 : 行号 1", 1},
    {"keyword_anywhere", "dim DIM,a", 0, "", 2, {{"A", "Empty:"}}},
    {"bad_first_character", "DIM 1x", 3, "错误的符号或变量名称 '1'{DIM} : 行号 1", 1},
    {"bad_later_character", "DIM ab#c", 3, "错误的符号或变量名称 '#' : 行号 1", 1},
    {"chinese_names", "Dim 工资, 金额_1", 0, "", 2, {{"工资", "Empty:"}, {"金额_1", "Empty:"}}},
    {"redeclare_keeps_value", "DIM a\na = 5\nDIM a", 0, "", 4, {{"A", "Double:5"}}},
};
INSTANTIATE_TEST_SUITE_P(Dim, ScriptCases, ::testing::ValuesIn(kDimCases), caseName);

// ---- assignment ------------------------------------------------------------

const ScriptCase kAssignCases[] = {
    {"quote_inside_literal", "DIM x\nx = \"it's\" ' note", 0, "", 3, {{"X", "String:it's"}}},
    {"no_blanks", "DIM x\nx=1", 0, "", 3, {{"X", "Double:1"}}},
    {"indented_other_case", "DIM x\n  X =  1", 0, "", 3, {{"X", "Double:1"}}},
    {"nothing_after_equals", "DIM x\nx =", 1, "语法错 : 行号 2", 2, {{"X", "Empty:"}}},
    {"only_comment_after_equals", "DIM x\nx = ' only a comment", 1, "语法错 : 行号 2", 2},
    {"two_words", "DIM a, b\na b = 1", 1, "语法错{来自赋值语句} : 行号 2", 2},
    {"one_word", "abc", 22, "不支持的语句体 : 行号 1", 1},
    {"undefined_target_as_written", "y = 1", 5, "变量未定义 'y' : 行号 1", 1},
    {"unclosed_literal_assigns_nothing",
     "DIM x, n\nx = \"abc\nn = 1",
     0,
     "",
     4,
     {{"X", "Empty:"}, {"N", "Double:1"}}},
    {"expression_error_keeps_value",
     "DIM x\nx = 7\nx = 1 XOR 2",
     2,
     "错误的表达式 : 行号 3",
     3,
     {{"X", "Double:7"}},
     {"栈中含多个结果, 请检查表达式是否正确"}},
};
INSTANTIATE_TEST_SUITE_P(Assign, ScriptCases, ::testing::ValuesIn(kAssignCases), caseName);

// ---- IF, ELSE, END IF --------------------------------------------------------

const ScriptCase kIfCases[] = {
    {"single_line_true", "DIM a, b\na = 5\nIf a > 1 Then b = 2", 0, "", 4, {{"B", "Double:2"}}},
    {"single_line_false", "DIM a, b\na = 0\nIf a > 1 Then b = 2", 0, "", 4, {{"B", "Empty:"}}},
    {"single_line_comment", "DIM n\nIf 1 Then n = 1 ' set n", 0, "", 3, {{"N", "Double:1"}}},
    {"single_line_shares_user_interface", "If 1 Then MsgBox \"one\"", 0, "", 2, {}, {"one"}},
    {"single_line_error_keeps_child_line", "DIM n\nIf 1 Then y = 1", 5,
     "变量未定义 'y' : 行号 1 : 行号 2", 2},
    {"exit_do_in_single_line_tail",
     "DIM n\nn = 0\nDo While 1\n  n = n + 1\n  If n >= 2 Then Exit Do\nLoop",
     16,
     "Exit Do 不在 Do...Loop 内 : 行号 1 : 行号 5",
     5,
     {{"N", "Double:2"}},
     {},
     0,
     1,
     1},
    {"value_five_runs_both_parts",
     "DIM x, n\nx = 5\nn = 0\nIf x Then\nn = n + 1\nElse\nn = n + 10\nEnd If",
     0,
     "",
     9,
     {{"N", "Double:11"}}},
    {"value_true_runs_then_part_only",
     "DIM x, n\nx = 1 = 1\nn = 0\nIf x Then\nn = n + 1\nElse\nn = n + 10\nEnd If",
     0,
     "",
     9,
     {{"X", "Boolean:True"}, {"N", "Double:1"}}},
    {"null_condition_runs_else_part",
     "DIM n\nIf NULL Then\nn = 1\nElse\nn = 2\nEnd If",
     0,
     "",
     7,
     {{"N", "Double:2"}}},
    {"false_block_skips_nested_block",
     "DIM n\nIf False Then\nIf True Then\nn = 1\nEnd If\nElse\nn = 2\nEnd If",
     0,
     "",
     9,
     {{"N", "Double:2"}}},
    {"false_block_ignores_single_line_if",
     "DIM n\nIf False Then\nIf 1 Then n = 5\nElse\nn = 2\nEnd If",
     0,
     "",
     7,
     {{"N", "Double:2"}}},
    {"else_part_ends_at_first_end_if",
     "DIM a, n\nIf True Then\nElse\nIf a Then\nEnd If\nn = 1\nEnd If",
     11,
     "End If 语句无 If : 行号 7",
     7,
     {{"N", "Double:1"}}},
    {"false_block_with_do_while_fails",
     "DIM c\nIf False Then\nDo While c\nLoop\nEnd If",
     15,
     "Loop 或 End Do 缺少 Do : 行号 2",
     2,
     {},
     {},
     1,
     -1,
     0},
    {"false_block_with_do_until_passes", "DIM c\nIf False Then\nDo Until c\nLoop\nEnd If", 0, "",
     6},
    // A malformed IF inside a skipped block stops the skip.
    {"skip_meets_if_without_then",
     "If False Then\nIf a\nEnd If",
     9,
     "If 语句缺 'Then' : 行号 1",
     1,
     {},
     {},
     1,
     0,
     1},
    {"then_needs_blank_before", "DIM a\nIf a>1Then", 9, "If 语句缺 'Then' : 行号 2", 2},
    {"then_inside_literal_is_skipped",
     "DIM s, n\ns = \"x\"\nIf s <> \" THEN \" Then n = 1",
     0,
     "",
     4,
     {{"N", "Double:1"}}},
    {"unclosed_literal_in_condition", "DIM s\nIf s = \"abc Then", 2, "错误的表达式 : 行号 2", 2},
    {"condition_not_numeric",
     "DIM s\ns = \"abc\"\nIf s Then\nEnd If",
     13,
     "类型不匹配",
     3,
     {},
     {},
     1,
     0,
     1},
    {"lower_case_keywords", "DIM n\nif 1 = 1 then\nn = 1\nend if", 0, "", 5, {{"N", "Double:1"}}},
    {"else_with_comment",
     "DIM n\nIf False Then\nn = 1\nElse ' note\nn = 2\nEnd If",
     0,
     "",
     7,
     {{"N", "Double:2"}}},
    {"else_with_text",
     "If True Then\nElse x = 1\nEnd If",
     8,
     "Else 语句错误 : 行号 2",
     2,
     {},
     {},
     1,
     0,
     1},
    {"else_without_if", "Else", 7, "Else 没有 If : 行号 1", 1},
    {"else_with_loop_on_top", "Do While 1\nElse", 7, "Else 没有 If : 行号 2", 2, {}, {}, 0, 1, 1},
    {"end_if_without_if", "End If", 11, "End If 语句无 If : 行号 1", 1},
    {"end_if_with_extra_text",
     "If True Then\nEnd If x",
     12,
     "End If 语法错 : 行号 2",
     2,
     {},
     {},
     1,
     0,
     1},
    {"false_block_reaches_end",
     "If False Then\nn = 1",
     10,
     "If 语句无 End If : 行号 1",
     1,
     {},
     {},
     1,
     0,
     1},
    {"else_part_reaches_end",
     "If True Then\nElse\nn = 1",
     10,
     "If 语句无 End If : 行号 2",
     2,
     {},
     {},
     1,
     0,
     1},
};
INSTANTIATE_TEST_SUITE_P(If, ScriptCases, ::testing::ValuesIn(kIfCases), caseName);

// ---- DO, LOOP, EXIT DO ---------------------------------------------------------

const ScriptCase kDoCases[] = {
    {"while_counts",
     "DIM i\ni = 0\nDo While i < 3\ni = i + 1\nLoop",
     0,
     "",
     6,
     {{"I", "Double:3"}}},
    {"until_end_do",
     "DIM i\ni = 0\nDo Until i >= 3\ni = i + 1\nEnd Do",
     0,
     "",
     6,
     {{"I", "Double:3"}}},
    {"false_while_skips_body", "DIM n\nDo While 1 = 2\nn = 1\nLoop", 0, "", 5, {{"N", "Empty:"}}},
    {"null_condition_skips_body", "DIM n\nDo While NULL\nn = 1\nLoop", 0, "", 5, {{"N", "Empty:"}}},
    {"exit_do_continues_after_loop",
     "DIM n\nDo While 1\nExit Do\nLoop\nn = 1",
     0,
     "",
     6,
     {{"N", "Double:1"}}},
    {"exit_do_closes_enclosing_if_on_the_way",
     "DIM n\nDo While 1\nIf 1 Then\nExit Do\nEnd If\nLoop\nn = 1",
     0,
     "",
     8,
     {{"N", "Double:1"}}},
    {"exit_do_inner_loop_only",
     "DIM n\nn = 0\nDo While n < 2\nn = n + 1\nDo While 1\nExit Do\nLoop\nLoop",
     0,
     "",
     9,
     {{"N", "Double:2"}}},
    {"exit_do_skips_nested_do_while",
     "DIM n\nDo While 1\nExit Do\nDo While 0\nLoop\nn = 5\nLoop\nn = n + 1",
     0,
     "",
     9,
     {{"N", "Double:1"}}},
    {"while_skip_counts_nested_do_while",
     "DIM n\nDo While 0\nDo While 0\nn = 1\nLoop\nn = 2\nLoop",
     0,
     "",
     8,
     {{"N", "Empty:"}}},
    {"until_skip_passes_nested_do_while",
     "DIM n\nDo Until 1\nDo While 0\nn = 1\nLoop\nn = 2\nLoop",
     15,
     "Loop 或 End Do 缺少 Do : 行号 7",
     7,
     {{"N", "Double:2"}}},
    {"skip_tracks_block_if",
     "DIM n\nDo While 0\nIf 1 Then\nn = 1\nEnd If\nLoop",
     0,
     "",
     7,
     {{"N", "Empty:"}}},
    {"no_condition", "Do While", 13, "Do 语句缺表达式 : 行号 1", 1},
    {"string_condition",
     "DIM s\ns = \"abc\"\nDo While s\nLoop",
     13,
     "Do 语句缺表达式 : 行号 3",
     3,
     {{"S", "String:abc"}}},
    {"loop_without_do", "Loop", 15, "Loop 或 End Do 缺少 Do : 行号 1", 1},
    {"loop_with_if_on_top",
     "Do While 1\nIf 1 Then\nLoop",
     15,
     "Loop 或 End Do 缺少 Do : 行号 3",
     3,
     {},
     {},
     1,
     1,
     2},
    {"loop_with_condition", "Do While 0\nLoop While x", 1, "语法错 : 行号 2", 2, {}, {}, 0, 1, 1},
    {"end_do_with_extra_text", "Do While 0\nEnd Do x", 1, "语法错 : 行号 2", 2, {}, {}, 0, 1, 1},
    {"exit_do_outside_loop", "Exit Do", 16, "Exit Do 不在 Do...Loop 内 : 行号 1", 1},
    {"skip_meets_end_if_without_if",
     "Do While 0\nEnd If\nLoop",
     11,
     "End If 语句无 If : 行号 1",
     1,
     {},
     {},
     0,
     1,
     1},
    {"skip_reaches_end", "Do While 0", 14, "Do 没有 Loop 或 End Do : 行号 1", 1, {}, {}, 0, 1, 1},
    {"exit_do_reaches_end",
     "Do While 1\nExit Do",
     14,
     "Do 没有 Loop 或 End Do : 行号 2",
     2,
     {},
     {},
     0,
     1,
     1},
};
INSTANTIATE_TEST_SUITE_P(Do, ScriptCases, ::testing::ValuesIn(kDoCases), caseName);

// ---- MSGBOX, RAISEERROR ----------------------------------------------------------

const ScriptCase kMessageCases[] = {
    {"msgbox_concatenation", "DIM s, x\ns = \"a\"\nx = 1\nMsgBox s & x", 0, "", 5, {}, {"a1"}},
    {"msgbox_only_comment", "MsgBox 'x", 1, "语法错 : 行号 1", 1},
    {"msgbox_null_shows_empty", "DIM x\nx = NULL\nMsgBox x\nMsgBox 2", 0, "", 5, {}, {"", "2"}},
    {"msgbox_quote_inside_literal", "MsgBox \"it's\" ' c", 0, "", 2, {}, {"it's"}},
    {"msgbox_lower_case", "msgbox 1 + 1", 0, "", 2, {}, {"2"}},
    {"raise_number", "RaiseError 42\nMsgBox 1", 2000, "42 : 行号 1", 1},
    {"raise_variable", "DIM s\ns = \"Bad data\"\nRaiseError s", 2000, "Bad data : 行号 3", 3},
    {"raise_two_arguments", "RaiseError 1, 2", 6,
     "错误的参数表达式或参数个数{语句:RaiseError1, 2} : 行号 1", 1},
    {"raise_null", "RaiseError NULL", 94, "无效使用 Null", 1},
};
INSTANTIATE_TEST_SUITE_P(Messages, ScriptCases, ::testing::ValuesIn(kMessageCases), caseName);

}  // namespace
}  // namespace korvex::testing
