// First pass of the evaluator: expression text -> postfix sequence, with
// every operand (literal, constant, variable, field, function call) already
// resolved to its value.
#pragma once

#include <cstdint>
#include <string_view>

#include "eval/operators.hpp"
#include "eval/scratch.hpp"

namespace korvex {
class BasicEngine;
}

namespace korvex::eval {

/// 0 with `work.postfix` complete, or non-zero with the error stored on the
/// engine. Platform faults of the functions called on the way propagate.
std::int16_t toPostfix(BasicEngine& engine, std::u16string_view text, Scratch& work);

/// Second pass: runs the sequence on a value stack. Type faults and the
/// "more than one result" case are reported on the engine (with their
/// warning boxes) and give Empty.
Value evaluatePostfix(BasicEngine& engine, const Postfix& postfix, std::vector<Value>& stack);

}  // namespace korvex::eval
