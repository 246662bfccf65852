// The kept forms of a script's lines. A line's text never changes while the
// script is the same, so what its text alone decides (its statement kind,
// the parts of its statement, its expressions' scans) is derived the first
// time the line is reached and kept until the script changes. Everything
// that depends on the run's state is still decided each time the line runs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/generation.hpp"
#include "values/error.hpp"

namespace korvex {

namespace stmt {
/// A statement's kept form; each statement class has its own.
struct Form {
  virtual ~Form() = default;
};
}  // namespace stmt

struct KeptLine {
  explicit KeptLine(std::u16string_view t) : text(t) {}

  std::u16string text;
  // The statement kind and, when the line does not classify, its error.
  bool classified = false;
  std::int16_t kind = 0;
  Error error;
  // Made by the statement that runs the line (always the same one: the
  // kind decides).
  std::unique_ptr<stmt::Form> form;
  // The first line after this one that a block scan starting here does
  // not pass without doing anything (0 while unknown).
  std::int16_t skipStop = 0;
};

struct KeptScript {
  std::vector<KeptLine> lines;  // line n is lines[n - 1]
  /// Tells this script's forms from those of an earlier script.
  const std::uint64_t generation = nextGeneration();
};

namespace stmt {
/// The line's form of type F, made from its text on first use.
template <typename F>
F& formOf(KeptLine& line) {
  if (!line.form) line.form = std::make_unique<F>(line.text);
  return static_cast<F&>(*line.form);
}
}  // namespace stmt

}  // namespace korvex
