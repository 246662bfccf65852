// The expression evaluator: text -> postfix sequence -> Value.
#pragma once

#include <string_view>

#include "korvex/value.hpp"

namespace korvex {

class Context;

/// Evaluates one expression against the engine's variables, record and
/// functions. On an error the frame's error register is set and Empty is
/// returned. Platform run-time faults raised by built-in functions (e.g. an
/// overflow in CLng) propagate as vb::RuntimeError to the run loop.
Value Evaluate(Context& ctx, std::u16string_view expression);

}  // namespace korvex
