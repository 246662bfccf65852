// How deep a script has nested the engine's own calls on this thread: every
// expression evaluated inside another (a function's arguments) and every
// single-line IF tail run inside another line is one level. Without a bound
// a short script could overflow whatever stack its host gave the thread;
// with it, a thread with 1 MiB of stack always suffices (also in the
// sanitizer build, whose frames run to some 16 KB a level) and a script that
// nests deeper ends with the platform's "out of stack space" (error 28).
#pragma once

namespace korvex {

/// One level of nesting, held for the lifetime of the object. Entering the
/// level past the bound raises vb::RuntimeError 28 instead.
class NestingLevel {
 public:
  /// The deepest nesting a script may reach.
  static constexpr int kDeepest = 40;

  NestingLevel() {
    if (depth >= kDeepest) tooDeep();
    ++depth;
  }
  ~NestingLevel() { --depth; }
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

 private:
  // The stack belongs to the thread, and so does the count: a single-line
  // IF's tail runs on the stack of its line and adds to the same count.
  static inline thread_local int depth = 0;
  [[noreturn]] static void tooDeep();
};

}  // namespace korvex
