#include "engine/nesting.hpp"

#include "values/runtime_error.hpp"

namespace korvex {

void NestingLevel::tooDeep() { vb::raise(vb::kOutOfStackSpace); }

}  // namespace korvex
