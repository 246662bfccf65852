// Scanning helpers shared by the statement classes: keyword words, the
// text up to a comment, the verdicts of a line's text, error reporting and
// 16-bit line stepping.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "korvex/value.hpp"
#include "values/error.hpp"

namespace korvex {

class Context;
struct Locale;

namespace stmt::detail {

/// Stores the message and then the number on the engine (the order every
/// statement reports in) and returns the number.
std::int32_t fail(Context& ctx, std::int32_t number, std::u16string_view message);
std::int32_t fail(Context& ctx, const Message& m, std::u16string_view detail = {});

/// What a line's text alone decides before anything of it runs: go on, or
/// end the statement the same way every time it runs. A statement derives
/// it once and replays it on every run of the line.
struct Verdict {
  enum class Kind : std::uint8_t {
    Go,
    Fail,         // report number and message
    MessageOnly,  // store the message, keep the number, end the statement
    Status,       // end the statement with whatever number the engine holds
  };
  Kind kind = Kind::Go;
  std::int32_t number = 0;
  std::u16string message;

  bool go() const noexcept { return kind == Kind::Go; }
  /// Ends the statement as decided; the statement's return value.
  std::int32_t replay(Context& ctx) const;
  /// Records a failure (the verdict must still be Go) and returns false.
  bool fail(std::int32_t n, std::u16string_view text);
  bool fail(const Message& m, std::u16string_view detail = {});
};

/// Index of the first non-blank character at or after `pos` (size() if none).
std::size_t skipBlanks(std::u16string_view s, std::size_t pos) noexcept;

/// How a keyword reader quotes a bad later character: " 'c'" or "'c'".
enum class QuoteStyle { Spaced, Tight };

/// A word of a line and the index just past it.
struct Word {
  std::u16string_view text;
  std::size_t end = 0;
};

/// The first word of a keyword line (ELSE, END, DO, LOOP, EXIT, MSGBOX):
/// blanks skipped, a comment before it gives the empty word, otherwise a
/// name-like run up to the next blank. A character that may not start or
/// continue a name is error 3 (recorded in `verdict`); nullopt then.
std::optional<Word> readKeyword(Verdict& verdict, std::u16string_view line, QuoteStyle style);

/// readKeyword, then the word must be `keyword` (any case), else error 1
/// "语法错". nullopt when it is missing or wrong (recorded in `verdict`).
std::optional<Word> expectKeyword(Verdict& verdict, std::u16string_view line,
                                  std::u16string_view keyword);

/// The next run of non-blank characters at or after `pos` (possibly empty).
Word readLooseWord(std::u16string_view line, std::size_t pos) noexcept;

/// The text from `from` up to a "'" outside string literals (the comment
/// mark), or to the end. `readable` is false when a literal is not closed;
/// the text then runs to the end of the line.
struct Cut {
  std::u16string_view text;
  bool readable = true;
};
Cut upToComment(std::u16string_view line, std::size_t from) noexcept;

/// The statement kind of line n of the running script, its error reported
/// as WhatSTMT reports it.
std::int16_t kindAt(Context& ctx, std::int16_t line);

/// line + 1 with the platform's overflow (error 6) past 32767.
std::int16_t nextLine(std::int16_t line);
/// Adds `delta` to a 16-bit counter, with the same overflow rule.
std::int16_t step16(std::int16_t value, int delta);

/// A condition read as a Boolean: Null is False, everything else converts
/// (a value that cannot is the platform's type mismatch).
bool conditionHolds(const Value& value, const Locale& locale);

}  // namespace stmt::detail
}  // namespace korvex
