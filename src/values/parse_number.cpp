// Text -> number with the platform's rules for numeric strings.
#include <charconv>
#include <cmath>
#include <limits>

#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex::vb {

namespace {

int radixDigit(char16_t c, int radix) {
  int d = -1;
  if (c >= u'0' && c <= u'9') {
    d = c - u'0';
  } else if (c >= u'a' && c <= u'f') {
    d = c - u'a' + 10;
  } else if (c >= u'A' && c <= u'F') {
    d = c - u'A' + 10;
  }
  return d >= 0 && d < radix ? d : -1;
}

// "&H1F" / "&O17": the value is read as a 16-bit pattern when it fits in 16
// bits and as a 32-bit pattern otherwise, so "&HFFFF" is -1 and "&H10000" is
// 65536. Wider values are not numbers.
std::optional<double> parseRadix(std::u16string_view s) {
  if (s.size() < 3 || s[0] != u'&') return std::nullopt;
  const char16_t kind = asciiUpper(s[1]);
  const int radix = kind == u'H' ? 16 : kind == u'O' ? 8 : 0;
  if (radix == 0) return std::nullopt;
  std::uint64_t value = 0;
  for (std::size_t i = 2; i < s.size(); ++i) {
    const int d = radixDigit(s[i], radix);
    if (d < 0) return std::nullopt;
    value = value * static_cast<unsigned>(radix) + static_cast<unsigned>(d);
    if (value > 0xFFFFFFFFull) return std::nullopt;
  }
  if (value <= 0xFFFF) return static_cast<double>(static_cast<std::int16_t>(value));
  return static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
}

// The locale's currency symbol: the text beside "n" in its positive amount
// pattern ("$n", "¥n", "n €").
std::u16string_view currencySymbol(const Locale& loc) {
  const std::u16string_view pattern = loc.currencyPositive;
  const std::size_t n = pattern.find(u'n');
  if (n == std::u16string_view::npos) return {};
  const std::u16string_view before = trimParserBlanks(pattern.substr(0, n));
  return before.empty() ? trimParserBlanks(pattern.substr(n + 1)) : before;
}

// What may stand around the digits: on each side, in any order and with
// blanks between, at most one sign, one currency symbol and one parenthesis
// ("-$5", "$ -5", "(5)", "5-", "5 $"). Parentheses and "-" both make the
// number negative.
struct Affixes {
  bool sign = false;
  bool minus = false;
  bool currency = false;
  bool open = false;
  bool closed = false;

  // Reads the affixes from `i` on; `leading` selects "(" or ")".
  void read(std::u16string_view s, std::size_t& i, bool leading, std::u16string_view symbol) {
    while (i < s.size()) {
      const char16_t c = s[i];
      if (isParserBlank(c)) {
        ++i;
      } else if ((c == u'+' || c == u'-') && !sign) {
        sign = true;
        minus = c == u'-';
        ++i;
      } else if (!currency && !symbol.empty() && s.substr(i, symbol.size()) == symbol) {
        currency = true;
        i += symbol.size();
      } else if (leading && c == u'(' && !open) {
        open = true;
        ++i;
      } else if (!leading && c == u')' && open && !closed) {
        closed = true;
        ++i;
      } else {
        return;
      }
    }
  }
};

}  // namespace

std::optional<double> parseNumber(std::u16string_view text, const Locale& loc) {
  const std::u16string_view s = trimParserBlanks(text);
  if (s.empty()) return std::nullopt;
  if (s[0] == u'&') return parseRadix(s);

  const std::u16string_view symbol = currencySymbol(loc);
  Affixes affixes;
  std::size_t i = 0;
  affixes.read(s, i, true, symbol);

  // Copy the accepted characters into a plain ASCII buffer for from_chars;
  // anything longer than the buffer has far more digits than a Double holds,
  // so extra mantissa digits only move the exponent.
  char buf[400];
  std::size_t n = 0;
  auto put = [&](char c) {
    if (n < sizeof buf) buf[n++] = c;
  };
  int mantissaDigits = 0;
  int droppedIntDigits = 0;
  // Decimal magnitude of the mantissa: significant integer digits, or minus
  // the zeros that follow the decimal point before the first non-zero one.
  std::int64_t magnitude = 0;
  bool seenNonZero = false;
  for (; i < s.size(); ++i) {
    const char16_t c = s[i];
    if (isDigit(c)) {
      seenNonZero = seenNonZero || c != u'0';
      if (seenNonZero) ++magnitude;
      if (n + 16 < sizeof buf) {
        put(static_cast<char>(c));
      } else {
        ++droppedIntDigits;
      }
      ++mantissaDigits;
    } else if (c == loc.thousandsSeparator && mantissaDigits > 0) {
      continue;  // group separators are accepted anywhere after a digit
    } else {
      break;
    }
  }
  if (i < s.size() && s[i] == loc.decimalSeparator) {
    put('.');
    for (++i; i < s.size() && isDigit(s[i]); ++i) {
      if (!seenNonZero && s[i] == u'0') --magnitude;
      seenNonZero = seenNonZero || s[i] != u'0';
      if (n + 16 < sizeof buf) put(static_cast<char>(s[i]));
      ++mantissaDigits;
    }
  }
  if (mantissaDigits == 0) return std::nullopt;
  std::int64_t exponent = droppedIntDigits;
  if (i < s.size() && (s[i] == u'E' || s[i] == u'e' || s[i] == u'D' || s[i] == u'd')) {
    ++i;
    bool negativeExponent = false;
    if (i < s.size() && (s[i] == u'+' || s[i] == u'-')) negativeExponent = s[i++] == u'-';
    if (i >= s.size() || !isDigit(s[i])) return std::nullopt;
    std::int64_t e = 0;
    for (; i < s.size() && isDigit(s[i]); ++i) {
      if (e < 100000) e = e * 10 + (s[i] - u'0');
    }
    exponent += negativeExponent ? -e : e;
  }
  affixes.read(s, i, false, symbol);
  if (i != s.size() || affixes.open != affixes.closed) return std::nullopt;
  const bool negative = affixes.minus || affixes.open;
  if (exponent != 0) {
    put('e');
    char eb[24];
    const auto r = std::to_chars(eb, eb + sizeof eb, exponent);
    for (const char* p = eb; p != r.ptr; ++p) put(*p);
  }
  double value = 0;
  const auto [ptr, ec] = std::from_chars(buf, buf + n, value);
  if (ec == std::errc::result_out_of_range) {
    // Too large: an overflow for whoever converts it; too small: zero.
    const bool tiny = magnitude + exponent - droppedIntDigits < 0;
    if (tiny) return negative ? -0.0 : 0.0;
    return negative ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  if (ec != std::errc{} || ptr != buf + n) return std::nullopt;
  return negative ? -value : value;
}

}  // namespace korvex::vb
