#include "engine/nesting.hpp"

#include "values/runtime_error.hpp"

namespace korvex {

namespace {
// The stack belongs to the thread, and so does the count: a single-line
// IF's child engine runs on its parent's stack and adds to the same count.
thread_local int tDepth = 0;
}  // namespace

NestingLevel::NestingLevel() {
  if (tDepth >= kDeepest) vb::raise(vb::kOutOfStackSpace);
  ++tDepth;
}

NestingLevel::~NestingLevel() { --tDepth; }

}  // namespace korvex
