// Scanning helpers shared by the statement classes: keyword words, the
// text up to a comment, error reporting, 16-bit line stepping and the
// entries the block statements keep on the statement-flag stack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "korvex/value.hpp"

namespace korvex {

class BasicEngine;
struct Locale;

namespace stmt::detail {

/// Stores the message and then the number on the engine (the order every
/// statement reports in) and returns the number.
std::int32_t fail(BasicEngine& engine, std::int32_t number, std::u16string_view message);

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
/// continue a name is reported as error 3; nullopt then.
std::optional<Word> readKeyword(BasicEngine& engine, std::u16string_view line, QuoteStyle style);

/// readKeyword, then the word must be `keyword` (any case), else error 1
/// "语法错". nullopt when it is missing or wrong (already reported).
std::optional<Word> expectKeyword(BasicEngine& engine, std::u16string_view line,
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

/// line + 1 with the platform's overflow (error 6) past 32767.
std::int16_t nextLine(std::int16_t line);
/// Adds `delta` to a 16-bit counter, with the same overflow rule.
std::int16_t step16(std::int16_t value, int delta);

// ---- statement-flag entries: (marker, line, detail), indexes 1 to 3 ------

inline constexpr std::u16string_view kIfMarker = u"If";
inline constexpr std::u16string_view kDoWhileMarker = u"Do While";
inline constexpr std::u16string_view kDoUntilMarker = u"Do Until";

Value flagEntry(std::u16string_view marker, std::int16_t line, Value detail);
/// Element 1 to 3 of an entry; Empty when the value is no entry.
Value flagItem(const Value& entry, std::size_t index);
/// The entry's marker (a view into `entry`); "" when the value is no entry
/// or holds no text there.
std::u16string_view flagMarker(const Value& entry);
bool isDoMarker(std::u16string_view marker) noexcept;

/// A condition read as a Boolean: Null is False, everything else converts
/// (a value that cannot is the platform's type mismatch).
bool conditionHolds(const Value& value, const Locale& locale);

}  // namespace stmt::detail
}  // namespace korvex
