// The spreadsheet cell functions GetCell, SetCell and SetCellFormula: they
// address a cell of the engine's ExcelBook by column letters and row, and
// reach the workbook only through its late-bound members (Worksheets, Item,
// Cells, value, Resize, Formula, index).
#pragma once

#include "functions/protocol.hpp"

namespace korvex::fn {

extern const FunctionDescriptor kGetCell, kSetCell, kSetCellFormula;

}  // namespace korvex::fn
