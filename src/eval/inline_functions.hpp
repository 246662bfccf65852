// The functions the evaluator computes itself instead of through a function
// object: ABS, LEN, SQR, YEAR, TRIM and INT.
#pragma once

#include "eval/function_table.hpp"
#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex::eval {

/// Applies the operation to the (already evaluated) argument. Raises the
/// platform's run-time errors (vb::RuntimeError) like the built-in
/// operations do: 13 for an unusable type, 94 for a Null where a number is
/// required, 5 for the square root of a negative number.
Value applyInline(InlineOp op, const Value& v, const Locale& loc);

}  // namespace korvex::eval
