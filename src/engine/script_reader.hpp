// Character-level readers over one script line: a quoted string, a
// parenthesised group, one element of an argument list.
//
// Positions are 1-based (as the script language counts them); every reader
// starts at `pos` and leaves it on the last character it consumed. A reader
// returns 0 or an error number and keeps the error in error().
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "values/error.hpp"
#include "values/text_scan.hpp"

namespace korvex {

class ScriptReader {
 public:
  /// From the opening '"' through the next '"' (no escapes). Error 2
  /// "错误的表达式,期待引号。\r\n<text>" when the text ends first.
  std::int32_t readQuoted(std::u16string_view text, std::int16_t& pos, std::u16string& piece);
  /// From pos through the ")" matching the first "(" (blanks before it are
  /// kept). Errors 26 (something before the "(") and 25 (unbalanced).
  std::int32_t readGroup(std::u16string_view text, std::int16_t& pos, std::u16string& piece);
  /// The same piece as a view into `text`: a group is always a run of the
  /// text as written, so nested calls need not copy it.
  std::int32_t readGroup(std::u16string_view text, std::int16_t& pos, std::u16string_view& piece);
  /// One element of an argument list (see Paras). Error 2 for a list that
  /// ends with a separator.
  std::int32_t readListItem(std::u16string_view text, std::int16_t& pos, std::u16string& piece,
                            bool& separatorFound);
  /// The same element located without copying it: `span` runs from its
  /// first to its last character that counts, and `blanksDropped` tells
  /// that blanks between those do not count; only then does the element's
  /// text (readListItem) differ from `span`.
  std::int32_t findListItem(std::u16string_view text, std::int16_t& pos, std::u16string_view& span,
                            bool& blanksDropped, bool& separatorFound);

  const Error& error() const noexcept { return error_; }

 private:
  std::int32_t fail(std::int32_t number, std::u16string msg);
  std::int32_t fail(const Message& m, std::u16string_view detail = {}) {
    return fail(m.number, std::u16string(m.text) + std::u16string(detail));
  }
  // Move pos from the opening quote to the closing one / from the start of
  // a group to its closing ")".
  std::int32_t quoteEnd(std::u16string_view text, std::int16_t& pos);
  std::int32_t groupEnd(std::u16string_view text, std::int16_t& pos);
  // The list element reader behind both public forms; `out` (if any)
  // receives the element's text.
  std::int32_t listItem(std::u16string_view text, std::int16_t& pos, std::u16string* out,
                        std::u16string_view& span, bool& blanksDropped, bool& separatorFound);
  Error error_;
};

}  // namespace korvex
