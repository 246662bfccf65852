// The bridge between the evaluator's function table and the function
// classes: one entry point per class identity.
#pragma once

#include <cstdint>
#include <string_view>

#include "korvex/value.hpp"

namespace korvex {

class Context;
namespace fn {
class ArgList;
}

/// Every function class the evaluator's table names (inline functions such
/// as ABS or LEN are the evaluator's own and are not listed).
enum class FunctionClass : std::uint8_t {
  GetCell,
  SetCell,
  SetCellFormula,
  Asc,
  Atn,
  CDbl,
  CDate,
  Chr,
  CInt32,
  Cos,
  CStr,
  Date,
  Day,
  ExecuteSQL,
  DoSqlEx,
  Format,
  Exp,
  GetVar,
  Hex,
  Hour,
  IsEmpty,
  Input,
  IsNumeric,
  IsVarExist,
  LBound,
  LCase,
  Left,
  MaxDay,
  Mid,
  Minute,
  Month,
  Right,
  Round,
  SetVar,
  Sin,
  Tan,
  UBound,
  UCase,
  WeekDayName,
  Time,
  Num2Chinese,
  EmployesProperty,
  EmployesCount,
  ProductProperty,
  WA_JJSumByDept,
  WA_CalcByWorkGroup,
  WA_AVG,
  WA_Total,
  WA_GetFieldValue,
  WA_Value,
  WA_DingBanHj,
  WA_KaoHe_Hj,
  WA_Turnout,
  WA_Turnout_Index,
  WA_jjSum_Index,
  WA_JJgzSum,
};

/// Creates the function object of this class, hands it the argument text
/// (the piece the parenthesis reader returned, parentheses included) and
/// returns its status: 0 with `result` set, or an error number already
/// stored on the engine with its message. `scriptName` is the name as the
/// table lists it, for the message of a class that is not available.
/// Platform run-time faults propagate as vb::RuntimeError.
std::int32_t CallFunction(FunctionClass cls, std::u16string_view scriptName,
                          std::u16string_view argText, Value& result, Context& ctx);
/// The same with the argument list already split (a kept call site).
std::int32_t CallFunction(FunctionClass cls, std::u16string_view scriptName,
                          const fn::ArgList& args, Value& result, Context& ctx);

}  // namespace korvex
