// A cursor over UTF-16 text for the value parsers (numbers, dates).
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex::vb {

/// Blanks the parsers skip around numbers and dates.
constexpr bool isBlank(char16_t c) noexcept {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\u3000' || c == u'\u00A0';
}
constexpr bool isDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }
constexpr char16_t asciiUpper(char16_t c) noexcept {
  return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
}

/// Text without the characters `isBlankChar` accepts at both ends.
template <typename BlankTest>
constexpr std::u16string_view trimBy(std::u16string_view s, BlankTest isBlankChar) noexcept {
  std::size_t b = 0;
  std::size_t e = s.size();
  while (b < e && isBlankChar(s[b])) ++b;
  while (e > b && isBlankChar(s[e - 1])) --e;
  return s.substr(b, e - b);
}

/// Text with blanks removed at both ends.
constexpr std::u16string_view trimBlanks(std::u16string_view s) noexcept {
  return trimBy(s, isBlank);
}
/// Case-insensitive (ASCII letters) equality.
bool equalsNoCase(std::u16string_view a, std::u16string_view b) noexcept;

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
    while (!atEnd() && isBlank(text[pos])) ++pos;
  }
  /// Reads up to `maxDigits` decimal digits; false when there is none.
  /// `digits` receives how many were read.
  bool readUnsigned(std::int64_t& value, int& digits, int maxDigits = 9) noexcept;
};

}  // namespace korvex::vb
