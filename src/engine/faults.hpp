// Turning an exception that reached one of the engine's traps into the
// number and description the host reads.
#pragma once

#include <cstdint>
#include <string>

namespace korvex {

struct Fault {
  std::int32_t number;
  std::u16string description;
};

/// The fault being handled; call only inside a catch block. A platform
/// run-time error keeps its number and text; running out of memory is
/// error 7 and anything else an internal error (51).
Fault currentFault();

}  // namespace korvex
