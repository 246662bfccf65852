// Running a script: the current frame's lines, one after another.
#pragma once

namespace korvex {

class Context;

/// Splits the current frame's script and runs it from line 1. The first
/// error ends the run: it is raised as a platform fault whose text carries
/// " : 行号 n", for whoever holds the frame to trap.
void RunScript(Context& ctx);

}  // namespace korvex
