// Why a run of the host's script ended before its last line without an
// error: BasicEngine::StoppedBy, RunResult::stopReason.
#pragma once

#include <cstdint>

namespace korvex {

enum class StopReason : std::uint8_t {
  None,       // the run ended by itself (at its end, at END, or with an error)
  Request,    // RequestStop during the run, confirmed by the user interface
  LineHook,   // the line hook returned false, confirmed by the user interface
  StepLimit,  // more lines than SetStepLimit allows
  TimeLimit,  // longer than SetTimeLimit allows
};

}  // namespace korvex
