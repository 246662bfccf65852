// Argument lists: the text between a function's parentheses, split into
// argument expressions.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/value.hpp"
#include "values/error.hpp"

namespace korvex {

struct Para {
  std::u16string_view Expression;  // source text as cut from the list
  std::int16_t ParaIndex = 0;      // counted from 0
};

// The list refers to the text it was parsed from, which must outlive it:
// nested calls hand their arguments down as views, not copies.
class Paras {
 public:
  Paras() = default;
  Paras(const Paras&) = delete;
  Paras& operator=(const Paras&) = delete;

  /// Splits the text: outer "(" and ")" dropped (each at most once), then
  /// top-level "," / "，" separate arguments; empty arguments are dropped.
  /// Returns the error number (0 when the text splits).
  std::int32_t Parse(std::u16string_view text);

  std::size_t Count() const noexcept { return items_.size(); }
  /// 1-based, as the list counts.
  const Para& Item(std::size_t index) const { return items_.at(index - 1); }
  Para& Item(std::size_t index) { return items_.at(index - 1); }
  std::u16string_view ParaText() const noexcept { return paraText_; }

  const Error& error() const noexcept { return error_; }

 private:
  std::u16string_view paraText_;
  std::vector<Para> items_;
  // The few arguments whose text is not a run of the list as written
  // (blanks between their parts are dropped).
  std::deque<std::u16string> rewritten_;
  Error error_;
};

}  // namespace korvex
