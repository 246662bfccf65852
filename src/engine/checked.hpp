// 16-bit arithmetic as the scripting platform does it: line numbers,
// positions and stack counts are 16-bit signed, and stepping past 32767 is a
// run-time overflow (error 6), not a wrap-around.
#pragma once

#include <cstdint>
#include <limits>

#include "values/runtime_error.hpp"

namespace korvex {

/// The value as a 16-bit signed number; raises the overflow error when it
/// does not fit.
inline std::int16_t toInt16Checked(std::int64_t v) {
  if (v > std::numeric_limits<std::int16_t>::max() ||
      v < std::numeric_limits<std::int16_t>::min()) {
    vb::raise(vb::kOverflow);
  }
  return static_cast<std::int16_t>(v);
}

}  // namespace korvex
