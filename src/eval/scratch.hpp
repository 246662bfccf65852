// Working storage of one evaluation, recycled: expressions are evaluated
// for every line a script runs, and nested evaluations (function arguments)
// each need their own set, so a per-thread pool hands out one set per
// nesting level and keeps its capacity between uses.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "eval/operators.hpp"

namespace korvex::eval {

struct Scratch {
  Postfix postfix;
  std::vector<Op> ops;        // the operator stack of the first pass
  std::vector<Value> values;  // the value stack of the second pass
  std::u16string name;        // an upper-cased name

  /// Drops the contents (and the strings and objects they hold), keeps the
  /// capacity.
  void clear() noexcept {
    postfix.clear();
    ops.clear();
    values.clear();
    name.clear();
  }
};

/// The scratch set of the current nesting level for as long as it lives.
class ScratchLease {
 public:
  ScratchLease();
  ~ScratchLease();
  ScratchLease(const ScratchLease&) = delete;
  ScratchLease& operator=(const ScratchLease&) = delete;

  Scratch& get() noexcept { return *scratch_; }

 private:
  Scratch* scratch_;
};

}  // namespace korvex::eval
