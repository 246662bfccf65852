// The spreadsheet cell functions GetCell, SetCell and SetCellFormula: they
// address a cell of the engine's ExcelBook by column letters and row, and
// reach the workbook only through its late-bound members (Worksheets, Item,
// Cells, value, Resize, Formula, index).
#include <array>
#include <optional>
#include <string>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "functions/families.hpp"
#include "host/late_bound.hpp"
#include "korvex/host_object.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck N = ArgCheck::Numeric;
constexpr ArgCheck S = ArgCheck::String;

constexpr std::int32_t kNoWorkbook = 1003;
constexpr std::u16string_view kNoWorkbookText = u"没有有效的Excel工作簿对象实例";

// The column table: A to Z are 1 to 26, then AA, AB, ... ZZ are 27 to 702.
// Letters are matched as variable names are (upper-cased); three letters
// are not in the table.
std::optional<std::int32_t> columnNumber(const std::u16string& upper) {
  const auto letter = [](char16_t c) { return c >= u'A' && c <= u'Z'; };
  if (upper.size() == 1 && letter(upper[0])) return upper[0] - u'A' + 1;
  if (upper.size() == 2 && letter(upper[0]) && letter(upper[1])) {
    return 26 + (upper[0] - u'A') * 26 + (upper[1] - u'A') + 1;
  }
  return std::nullopt;
}

// The sheet selector: the last argument when given, else the active
// sheet's index, else sheet 1.
Value sheetSelector(Call& call, std::size_t selectorPosition) {
  if (call.count() >= selectorPosition) return call.arg(selectorPosition);
  const ObjectRef& active = call.context().activeSheet();
  if (!active) return Value::integer(1);
  return unwrap(active->getProperty(u"index", {}));
}

std::int16_t rowOf(const Call& call) { return vb::toInteger(call.arg(2), call.locale()); }

// Finds the cell (column letters in argument 1) on the selected sheet.
// Returns 0 with `cell` set, or an error number already stored on the
// engine; run-time failures propagate.
std::int32_t accessCell(Call& call, std::int16_t row, std::u16string_view source,
                        std::size_t selectorPosition, ObjectRef& cell) {
  const Value selector = sheetSelector(call, selectorPosition);
  const ObjectRef& book = call.context().excelBook();
  if (!book) {
    throw vb::RuntimeError(kNoWorkbook, std::u16string(kNoWorkbookText), std::u16string(source));
  }
  const ObjectRef sheets = objectOf(unwrap(book->getProperty(u"Worksheets", {})));
  const std::array<Value, 1> item{selector};
  const ObjectRef sheet = objectOf(unwrap(sheets->getProperty(u"Item", item)));
  const std::u16string letters = upperName(call.arg(1).stringValue());
  const std::optional<std::int32_t> column = columnNumber(letters);
  if (!column) {
    return call.fail(msg::kUndefinedVariable, msg::quoted(letters));
  }
  const std::array<Value, 2> position{Value::integer(row), Value::lng(*column)};
  cell = objectOf(unwrap(sheet->getProperty(u"Cells", position)));
  return 0;
}

std::int32_t getCell(Call& call, Value& result) {
  const std::int16_t row = rowOf(call);
  ObjectRef cell;
  if (const std::int32_t status = accessCell(call, row, u"GetCell()函数", 3, cell)) return status;
  result = unwrap(cell->getProperty(u"value", {}));
  return 0;
}

std::int32_t setCell(Call& call, Value&) {
  const std::int16_t row = rowOf(call);
  const Value value = call.arg(3);
  ObjectRef cell;
  if (const std::int32_t status = accessCell(call, row, u"SetCell()函数", 4, cell)) return status;
  if (!value.isArray()) {
    unwrap(cell->setProperty(u"value", {}, value));
    return 0;
  }
  // The block spans the upper bounds, not the element counts: an array
  // with a spare last row and column (as DoSqlEx makes them) lands as its
  // data, a 1-based array whole.
  const Array& array = value.arrayValue();
  if (array.dimensions() == 0) vb::raise(vb::kSubscript);
  const std::int32_t u1 = array.ubound(0);
  const std::int32_t u2 = array.dimensions() >= 2 ? array.ubound(1) : 0;
  if (u1 > 0) {
    const std::array<Value, 2> size{Value::lng(u1), Value::lng(u2)};
    const ObjectRef block = objectOf(unwrap(cell->getProperty(u"Resize", size)));
    unwrap(block->setProperty(u"value", {}, value));
  } else if (u1 == 0) {
    unwrap(cell->setProperty(u"value", {}, value));
  }
  return 0;
}

std::int32_t setCellFormula(Call& call, Value&) {
  const std::int16_t row = rowOf(call);
  const Value formula = Value::string(vb::toString(call.arg(3), call.locale()));
  ObjectRef cell;
  if (const std::int32_t status = accessCell(call, row, u"SetCellFormula()函数", 4, cell)) {
    return status;
  }
  unwrap(cell->setProperty(u"Formula", {}, formula));
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"GetCell"}, 2, 3, {S, N, A}, getCell,
     {u"列, 行[, 工作表]", ResultKind::Any,
      u"单元格的值; 列为字母 A 到 ZZ, 工作表为序号或名称 (默认活动工作表)"}},
    {{u"SetCell"}, 3, 4, {S, N, A}, setCell,
     {u"列, 行, 值[, 工作表]", ResultKind::Nothing,
      u"写入单元格; 值为数组时从该单元格起写入一块"}},
    {{u"SetCellFormula"}, 3, 4, {S, N, A}, setCellFormula,
     {u"列, 行, 公式[, 工作表]", ResultKind::Nothing, u"把公式 (如 \"=C5*1.1\") 写入单元格"}},
};
// clang-format on

}  // namespace

Family cellFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
