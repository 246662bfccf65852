// The table of each family of functions, defined by the family's own file.
// A table lists every function of the family once: its names, its
// argument counts and checks, its quirks and its operation. The catalog
// (functions/catalog.hpp) gathers them.
#pragma once

#include <span>

#include "functions/protocol.hpp"

namespace korvex::fn {

using Family = std::span<const FunctionEntry>;

// General functions (functions/*_functions.cpp).
Family stringFunctions() noexcept;         // Left, Right, Asc, Chr, ..., Mid
Family numericFunctions() noexcept;        // Round, Atn, Cos, Sin, Tan, Exp
Family conversionFunctions() noexcept;     // CLng, CDbl, CDate, IsNumeric, IsEmpty
Family dateFunctions() noexcept;           // Date, Time, Day, ..., MaxDay
Family variableFunctions() noexcept;       // SetVar, GetVar, IsVarExist
Family inputFunctions() noexcept;          // Input
Family arrayFunctions() noexcept;          // LBound, UBound
Family chineseAmountFunctions() noexcept;  // 大写 / Num2Chinese (chinese_amount.cpp)

// Functions reaching the host's database or workbook through late-bound
// host objects.
Family sqlFunctions() noexcept;   // DoSQL, DoSqlEx, _员工工资项目值
Family cellFunctions() noexcept;  // GetCell, SetCell, SetCellFormula

// Wage-domain functions (functions/wage/).
namespace wage {
Family jobDataFunctions() noexcept;     // department totals, piece wages, output value
Family assessmentFunctions() noexcept;  // assessment, substitute shifts, work group
Family propertyFunctions() noexcept;    // employee and product properties
Family turnoutFunctions() noexcept;     // output at the last step
}  // namespace wage

}  // namespace korvex::fn
