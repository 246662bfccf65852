// The run context behind a BasicEngine, for the library's own units that
// start from an engine a host made.
#pragma once

#include "engine/context.hpp"
#include "korvex/engine.hpp"

namespace korvex {

Context& contextOf(BasicEngine& engine) noexcept;

}  // namespace korvex
