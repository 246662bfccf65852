// GetCell, SetCell and SetCellFormula run by the engine against real
// workbooks.
#include <gtest/gtest.h>

#include "call_by_name.hpp"
#include "korvex/engine.hpp"
#include "korvex/workbook.hpp"
#include "values/runtime_error.hpp"
#include "workbook_fixture.hpp"

namespace korvex::testing {
namespace {

class CellFunctions : public ::testing::Test {
 protected:
  void SetUp() override {
    book_ = openBook(writeWorkbook(dir_, sampleParts()));
    ASSERT_TRUE(book_);
    engine_.SetExcelBook(book_);
  }

  // "value" or "error N: message" of one expression.
  std::string eval(std::string_view expression) {
    const Outcome o = EvaluateOn(engine_, expression);
    return o.errNum != 0 ? "error " + std::to_string(o.errNum) + ": " + o.errMsg : o.value;
  }

  ScratchDir dir_;
  std::shared_ptr<Workbook> book_;
  BasicEngine engine_;
};

TEST_F(CellFunctions, AddressCellsByLettersRowAndSheet) {
  const std::pair<const char*, const char*> kCases[] = {
      {"GETCELL(\"A\", 2)", "Double:3000.5"},  // sheet 1 when no sheet is active
      {"getcell(\"b\", 2.4)", "Date:2024/3/1"},
      {"GETCELL(\"A\", 1, \"Other\")", "Double:7"},
      {"GETCELL(\"A\", 1, 2)", "Double:7"},
      {"GETCELL(\"A\")", "error 6: 错误的参数表达式或参数个数{函数:GetCell(\"A\")}"},
      {"GETCELL(\"A\", 1, 1, 1)",
       "error 6: 错误的参数表达式或参数个数{函数:GetCell(\"A\", 1, 1, 1)}"},
      {"SETCELL(\"A\", 1)", "error 6: 错误的参数表达式或参数个数{函数:SetCell(\"A\", 1)}"},
      {"SetCellFormula(\"A\", 1)",
       "error 6: 错误的参数表达式或参数个数{函数:SetCellFormula(\"A\", 1)}"},
      {"GETCELL(1, 1)", "error 4: 类型不匹配{函数:GetCell(1, 1)}"},
      {"SETCELL(\"A\", \"x\", 1)", "error 4: 类型不匹配{函数:SetCell(\"A\", \"x\", 1)}"},
      {"GETCELL(\"AAA\", 1)", "error 5: 变量未定义 'AAA'"},
      {"GETCELL(\"A1\", 1)", "error 5: 变量未定义 'A1'"},
      {"GETCELL(\"A\", 40000)", "error 6: 溢出"},
      {"GETCELL(\"A\", 1, \"无此表\")", "error 9: 下标越界: 工作簿中没有名为 '无此表' 的工作表"},
      // What a cell cannot hold is refused, not dropped.
      {"SETCELL(\"A\", 9, \"a\" & Chr(1) & \"b\")", "error 1004: 单元格不能保存控制字符 U+0001"},
      {"SetCellFormula(\"A\", 9, \"=1\" & Chr(27))", "error 1004: 单元格不能保存控制字符 U+001B"},
  };
  for (const auto& [expression, outcome] : kCases)
    EXPECT_EQ(eval(expression), outcome) << expression;
  EXPECT_EQ(eval("GETCELL(\"A\", 0)").substr(0, 11), "error 1004:");

  engine_.SetActiveExcelSheet(book_->sheet(Value::string(u"Other")).value.objectValue());
  EXPECT_EQ(eval("GETCELL(\"A\", 1)"), "Double:7");
  EXPECT_EQ(eval("GETCELL(\"A\", 2, 1)"), "Double:3000.5");
}

TEST_F(CellFunctions, WriteValuesFormulasAndTwoLetterColumns) {
  EXPECT_FALSE(book_->modified());
  EXPECT_EQ(eval("SETCELL(\"aa\", 1, 27)"), "Empty:");
  EXPECT_EQ(eval("SETCELL(\"ZZ\", 1, \"末列\", \"Other\")"), "Empty:");
  EXPECT_EQ(eval("SetCellFormula(\"C\", 5, 1 + 1)"), "Empty:");
  EXPECT_EQ(read(*book_, 1, 27), "Double:27");
  EXPECT_EQ(read(*book_, 1, 702, u"Value", 2), "String:末列");
  EXPECT_EQ(read(*book_, 5, 3), "Double:2");  // a formula text without "=" is a constant
  EXPECT_EQ(eval("SetCellFormula(\"D\", 5, \"=C5*3\")"), "Empty:");
  EXPECT_EQ(eval("GETCELL(\"D\", 5)"), "Empty:");  // no result until recalculated
  EXPECT_TRUE(book_->modified());
}

TEST_F(CellFunctions, ArraysLandByTheirUpperBounds) {
  const auto grid = [](std::int32_t lower, std::int32_t rows, std::int32_t columns) {
    Array a({{lower, rows}, {lower, columns}});
    for (std::size_t i = 0; i < a.elements().size(); ++i) {
      a.elements()[i] = Value::dbl(static_cast<double>(i + 1));
    }
    return a;
  };
  // A query result of two records of three fields with its header row and
  // the spare row and column: rows 0..3, columns 0..3.
  Array query = grid(0, 4, 4);
  for (int j = 0; j < 4; ++j) {
    query.elements()[j] = j < 3 ? Value::string(u"F" + fromUtf8(std::to_string(j))) : Value();
    query.elements()[12 + j] = Value();
    query.elements()[4 * j + 3] = Value();
  }
  const std::tuple<const char*, Array, std::vector<std::string>> kCases[] = {
      {"query", query, {"F0 F1 F2 -", "5 6 7 -", "9 10 11 -", "- - - -"}},
      {"oneBased3x2", grid(1, 3, 2), {"1 2 - -", "3 4 - -", "5 6 - -", "- - - -"}},
      {"zeroBased3x2", grid(0, 3, 2), {"1 - - -", "3 - - -", "- - - -", "- - - -"}},
      {"oneRow", grid(0, 1, 3), {"1 - - -", "- - - -", "- - - -", "- - - -"}},
      {"noRows", grid(0, 0, 3), {"- - - -", "- - - -", "- - - -", "- - - -"}},
  };
  for (const auto& [name, array, block] : kCases) {
    SetUp();
    engine_.SetSysVar(u"ARR", Value::array(array));
    ASSERT_EQ(eval("SETCELL(\"F\", 10, ARR)"), "Empty:") << name;
    for (std::int32_t r = 0; r < 4; ++r) {
      std::string row;
      for (std::int32_t col = 0; col < 4; ++col) {
        const std::string v = read(*book_, 10 + r, 6 + col);
        row += (col ? " " : "") + (v == "Empty:" ? "-" : v.substr(v.find(':') + 1));
      }
      EXPECT_EQ(row, block[static_cast<std::size_t>(r)]) << name << " row " << r;
    }
  }
  // A one-dimensional array asks for a block without columns.
  engine_.SetSysVar(u"ARR", Value::array(Array({{0, 3}})));
  EXPECT_EQ(eval("SETCELL(\"F\", 10, ARR)").substr(0, 11), "error 1004:");
}

// A single-line IF runs its tail apart from the workbook: the same cell read
// works as a line of its own and inside a block IF.
TEST_F(CellFunctions, ASingleLineIfTailSeesNoWorkbook) {
  const std::tuple<const char*, std::int32_t, const char*> kCases[] = {
      {"DIM x\nx = GETCELL(\"A\", 2)", 0, ""},
      {"DIM x\nIf 1 = 1 Then\nx = GETCELL(\"A\", 2)\nEnd If", 0, ""},
      {"DIM x\nIf 1 = 1 Then x = GETCELL(\"A\", 2)", 1003,
       "没有有效的Excel工作簿对象实例 : 行号 2"},
  };
  for (const auto& [script, errNum, errMsg] : kCases) {
    engine_.SetCodeBlock(scriptText(script));
    const RunResult r = engine_.Run();
    EXPECT_EQ(r.errNum, errNum) << script;
    EXPECT_EQ(toUtf8(r.errMsg), errMsg) << script;
  }
}

TEST(CellFunctionsWithoutWorkbook, FailWith1003FromTheirSource) {
  const std::tuple<const char16_t*, const char16_t*, const char16_t*> kCases[] = {
      {u"GETCELL", u"(\"A\", 1)", u"GetCell()函数"},
      {u"SETCELL", u"(\"A\", 1, 2)", u"SetCell()函数"},
      {u"SETCELLFORMULA", u"(\"A\", 1, \"=1\")", u"SetCellFormula()函数"},
  };
  for (const auto& [name, args, source] : kCases) {
    BasicEngine engine;
    Value result;
    try {
      callByName(name, args, result, engine);
      ADD_FAILURE() << toUtf8(source) << " did not fail";
    } catch (const vb::RuntimeError& e) {
      EXPECT_EQ(e.number(), 1003);
      EXPECT_EQ(e.description(), u"没有有效的Excel工作簿对象实例");
      EXPECT_EQ(e.source(), source);
    }
  }
}

}  // namespace
}  // namespace korvex::testing
