// Forward scans over lines that are not run: the false part of an IF block,
// the body of a loop whose condition fails, the rest of a loop left by EXIT
// DO. Nested blocks met on the way are tracked on the statement-flag stack
// and the IF/DO counters, exactly as running them would.
#pragma once

#include <cstdint>

#include "korvex/value.hpp"

namespace korvex {

class Context;

namespace stmt::detail {

enum class Skip {
  /// A false IF block: stops at its ELSE or END IF.
  FalseIf,
  /// A DO WHILE that does not run: nested DO WHILE and DO UNTIL both count.
  DoWhileBody,
  /// A DO UNTIL that does not run: only nested DO UNTIL counts, a nested
  /// DO WHILE is passed over (its LOOP then ends the outer loop early).
  DoUntilBody,
  /// EXIT DO: like DoWhileBody, and a LOOP needs an open loop.
  ExitDo,
};

struct SkipStop {
  std::int16_t line = 0;
  std::int16_t kind = 0;
};

/// Scans from the line after CurrentLineNum. Returns 0 with the line that
/// ends the skipped part in `stop`, or an error number already reported on
/// the engine. `ifCondition` is the third element of the entries a FalseIf
/// scan pushes for nested block IFs.
std::int32_t skipForward(Context& ctx, Skip mode, const Value& ifCondition, SkipStop& stop);

}  // namespace stmt::detail
}  // namespace korvex
