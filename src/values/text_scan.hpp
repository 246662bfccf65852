// The text primitives every scanner of KORVEX shares: what a blank is, what
// a name is made of, trimming, case-insensitive comparison and the
// upper-casing of names. Scripts and the value parsers disagree on blanks
// (a script's blank is any control character or the space; the number and
// date parsers skip only the usual white space, ideographic and no-break
// spaces included), so each has its own, named for whom it serves.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex {

// ---- characters --------------------------------------------------------------

/// A script's blank: any character whose code is at or below the space.
constexpr bool isBlank(char16_t c) noexcept { return c <= u' '; }
constexpr bool isDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }
constexpr bool isAsciiLetter(char16_t c) noexcept {
  return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}
/// May start a name: A-Z/a-z, "_", or any non-ASCII (e.g. Chinese) character.
constexpr bool isIdentStart(char16_t c) noexcept {
  return isAsciiLetter(c) || c == u'_' || c >= 0x80;
}
/// May continue a name: as isIdentStart plus the digits.
constexpr bool isIdentChar(char16_t c) noexcept { return isIdentStart(c) || isDigit(c); }
constexpr char16_t asciiUpper(char16_t c) noexcept {
  return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
}

// ---- text --------------------------------------------------------------------

/// Text without the characters `isBlankChar` accepts at both ends.
template <typename BlankTest>
constexpr std::u16string_view trimBy(std::u16string_view s, BlankTest isBlankChar) noexcept {
  std::size_t b = 0;
  std::size_t e = s.size();
  while (b < e && isBlankChar(s[b])) ++b;
  while (e > b && isBlankChar(s[e - 1])) --e;
  return s.substr(b, e - b);
}
/// The text without a script's blanks at both ends.
constexpr std::u16string_view trimBlanks(std::u16string_view s) noexcept {
  return trimBy(s, [](char16_t c) { return isBlank(c); });
}
/// The text before the first carriage return.
constexpr std::u16string_view firstLine(std::u16string_view s) noexcept {
  return s.substr(0, s.find(u'\r'));
}

/// The text in double quotes, a quote inside written twice: an SQL
/// identifier, a connection-string value.
template <typename Char>
std::basic_string<Char> doubleQuoted(std::basic_string_view<Char> text) {
  std::basic_string<Char> out(1, Char('"'));
  out.reserve(text.size() + 2);
  for (const Char c : text) {
    if (c == Char('"')) out += c;
    out += c;
  }
  out += Char('"');
  return out;
}

/// Equality with ASCII letters compared case-insensitively (keywords).
bool equalsNoCase(std::u16string_view a, std::u16string_view b) noexcept;

/// Writes the upper-cased name into `out`, reusing its storage. Names
/// (variables, fields, functions) are nearly always ASCII, which is done in
/// place; anything else follows the full rule of UCase.
void upperNameInto(std::u16string_view name, std::u16string& out);
inline std::u16string upperName(std::u16string_view name) {
  std::u16string out;
  upperNameInto(name, out);
  return out;
}

}  // namespace korvex

namespace korvex::vb {

using korvex::asciiUpper;
using korvex::equalsNoCase;
using korvex::isDigit;

/// The blanks the number and date parsers skip.
constexpr bool isParserBlank(char16_t c) noexcept {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\u3000' || c == u'\u00A0';
}
/// The text without the parsers' blanks at both ends.
constexpr std::u16string_view trimParserBlanks(std::u16string_view s) noexcept {
  return trimBy(s, isParserBlank);
}

/// A cursor over text for the value parsers (numbers, dates).
struct Cursor {
  std::u16string_view text;
  std::size_t pos = 0;

  bool atEnd() const noexcept { return pos >= text.size(); }
  char16_t peek() const noexcept { return atEnd() ? u'\0' : text[pos]; }
  bool accept(char16_t c) noexcept {
    if (peek() != c || atEnd()) return false;
    ++pos;
    return true;
  }
  /// Accepts `word` case-insensitively.
  bool acceptWord(std::u16string_view word) noexcept;
  void skipBlanks() noexcept {
    while (!atEnd() && isParserBlank(text[pos])) ++pos;
  }
  /// Reads up to `maxDigits` decimal digits; false when there is none.
  /// `digits` receives how many were read.
  bool readUnsigned(std::int64_t& value, int& digits, int maxDigits = 9) noexcept;
};

}  // namespace korvex::vb
