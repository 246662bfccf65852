// Statements called directly: paths the run loop never reaches because the
// line classifier rejects such lines first, the stack entries the block
// statements leave, and assignments to record fields.
#include <gtest/gtest.h>

#include <string>

#include "engine/kept_script.hpp"
#include "facade/context_of.hpp"
#include "korvex/memory_recordset.hpp"
#include "statements/statement.hpp"
#include "support.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {
namespace {

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
  std::int32_t result;
  std::int32_t errNum;
  const char* errMsg;
  std::int16_t lineAfter;  // the engine starts on line 5
};

void PrintTo(const DirectCase& c, std::ostream* os) { *os << c.name; }

class DirectCases : public ::testing::TestWithParam<DirectCase> {};

TEST_P(DirectCases, ResultMessageAndLine) {
  const DirectCase& c = GetParam();
  Harness h;
  h.engine.SetCurrentLineNum(5);
  EXPECT_EQ(onLine(c.statement, h.engine, c.line), c.result);
  EXPECT_EQ(h.engine.ErrNum(), c.errNum);
  EXPECT_EQ(h.errMsg(), c.errMsg);
  EXPECT_EQ(h.engine.CurrentLineNum(), c.lineAfter);
}

const DirectCase kDirectCases[] = {
    // A bad first character of the target only leaves a message behind.
    {"assign_bad_first_character", stmt::Assign, u"1x = 2", 0, 0, "错误的符号或变量名称", 5},
    {"assign_bad_later_character", stmt::Assign, u"a# = 1", 3, 3, "错误的符号或变量名称'#'", 5},
    {"assign_equals_without_name", stmt::Assign, u" = 5", 1, 1, "语法错", 5},
    {"msgbox_parenthesis_after_keyword", stmt::MsgBox, u"MsgBox(\"x\")", 3, 3,
     "错误的符号或变量名称'('", 5},
    {"msgbox_bad_first_character", stmt::MsgBox, u"(x", 3, 3, "错误的符号或变量名称", 5},
    {"msgbox_other_keyword", stmt::MsgBox, u"Show 1", 1, 1, "语法错", 5},
    {"msgbox_unclosed_literal", stmt::MsgBox, u"MsgBox \"abc", 0, 0, "", 5},
    {"else_bad_later_character", stmt::Else, u"Else#", 3, 3, "错误的符号或变量名称 '#'", 5},
    {"else_bad_first_character", stmt::Else, u"  #Else", 3, 3, "错误的符号或变量名称", 5},
    {"else_other_word", stmt::Else, u"Elsewhere", 1, 1, "语法错", 5},
    {"else_comment_only", stmt::Else, u"' Else", 1, 1, "语法错", 5},
    {"end_alone_does_nothing", stmt::EndIf, u"End ' stop", 0, 0, "", 5},
    {"end_if_other_word", stmt::EndIf, u"Ends If", 1, 1, "语法错", 5},
    {"do_without_while", stmt::Do, u"Do x < 3", 1, 1, "语法错", 5},
    {"do_alone", stmt::Do, u"Do", 1, 1, "语法错", 5},
    {"do_unclosed_literal", stmt::Do, u"Do While s = \"abc", 2, 2, "错误的表达式", 5},
    {"loop_other_word", stmt::LoopOrEndDo, u"Looped", 1, 1, "语法错", 5},
    {"end_without_do", stmt::LoopOrEndDo, u"End", 1, 1, "语法错", 5},
    {"exit_alone_stays_on_line", stmt::ExitDo, u"Exit ' nothing", 0, 0, "", 5},
    {"exit_for", stmt::ExitDo, u"Exit For", 1, 1, "语法错", 5},
    {"exit_do_comment_is_cut", stmt::ExitDo, u"Exit Do ' leave", 16, 16,
     "Exit Do 不在 Do...Loop 内", 5},
    // An unclosed literal after THEN returns without moving on.
    {"if_unclosed_literal_in_tail", stmt::If, u"If 1 Then x = \"abc", 2, 2, "错误的表达式", 5},
    {"if_first_word_not_if", stmt::If, u"Iff 1 Then", 1, 1, "语法错", 5},
};

std::string directName(const ::testing::TestParamInfo<DirectCase>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Statements, DirectCases, ::testing::ValuesIn(kDirectCases), directName);

// ---- IsIfBlock -------------------------------------------------------------

struct BlockCase {
  const char16_t* line;
  bool block;
  std::int32_t errNum;
};

TEST(IsIfBlock, ClassifiesAndReportsTheIfErrors) {
  // clang-format off
  const BlockCase cases[] = {
      {u"If a Then", true, 0}, {u"  if a then ' note", true, 0},
      {u"If a = \"Then \" Then", true, 0}, {u"If a Then b = 1", false, 0},
      {u"If a Then b = \"x", false, 0}, {u"If a", false, 9}, {u"If a>1Then", false, 9},
      {u"If aThen", false, 9}, {u"Iff a Then", false, 1}, {u"If \"a Then", false, 2},
  };
  // clang-format on
  for (const auto& c : cases) {
    Harness h;
    EXPECT_EQ(onLine(stmt::IsIfBlock, h.engine, c.line), c.block) << toUtf8(c.line);
    EXPECT_EQ(h.engine.ErrNum(), c.errNum) << toUtf8(c.line);
  }
}

// The entry a block statement pushes: its kind, its line and, for IF, the
// raw condition value or, for DO, the condition text as written.
TEST(FlagEntries, BlockStatementsKeepKindLineAndCondition) {
  const struct {
    StatementFn statement;
    const char16_t* line;
    std::vector<std::string> items;
    std::int16_t ifs, dos;
  } cases[] = {
      {stmt::If, u"If 5 Then ' block", {"String:If", "Integer:3", "Double:5"}, 1, 0},
      {stmt::Do, u"  do until 1 > 2 ' c", {"String:Do Until", "Integer:3", "String: 1 > 2 "}, 0, 1},
  };
  for (const auto& c : cases) {
    Harness h;
    h.engine.SetCurrentLineNum(3);
    EXPECT_EQ(onLine(c.statement, h.engine, c.line), 0);
    EXPECT_EQ(h.engine.CurrentLineNum(), 4);
    EXPECT_EQ(h.engine.IfCount(), c.ifs);
    EXPECT_EQ(h.engine.DoCount(), c.dos);
    const Value entry = h.engine.GetpopValueStmtFlag();
    ASSERT_TRUE(entry.isArray()) << u8(c.line);
    EXPECT_EQ(entry.arrayValue().lbound(0), 1);
    std::vector<std::string> items;
    for (const Value& v : entry.arrayValue().elements()) items.push_back(describe(v));
    EXPECT_EQ(items, c.items);
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
