// Number -> text in the platform's shapes.
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "values/ops.hpp"

namespace korvex::vb {

namespace {

std::u16string widen(const char* first, const char* last, const Locale& loc) {
  std::u16string out;
  out.reserve(static_cast<std::size_t>(last - first));
  for (const char* p = first; p != last; ++p) {
    out.push_back(*p == '.' ? loc.decimalSeparator : static_cast<char16_t>(*p));
  }
  return out;
}

}  // namespace

std::u16string doubleToString(double d, const Locale& loc) {
  if (std::isnan(d)) return u"-1.#IND";
  if (std::isinf(d)) return d > 0 ? u"1.#INF" : u"-1.#INF";
  if (d == 0) return u"0";  // also -0
  // 15 significant digits, trailing zeros dropped, exponent form when the
  // decimal exponent is below -4 or at least 15: the C "%.15G" shape, which
  // is the platform's (two-digit minimum exponent, upper-case E).
  char buf[40];
  const auto res = std::to_chars(buf, buf + sizeof buf, d, std::chars_format::general, 15);
  for (char* p = buf; p != res.ptr; ++p) {
    if (*p == 'e') *p = 'E';
  }
  return widen(buf, res.ptr, loc);
}

std::u16string currencyToString(Currency c, const Locale& loc) {
  // Up to four decimals, none trailing. Work on the magnitude as unsigned so
  // the most negative amount is still exact.
  const bool negative = c.scaled < 0;
  const std::uint64_t mag =
      negative ? 0 - static_cast<std::uint64_t>(c.scaled) : static_cast<std::uint64_t>(c.scaled);
  const std::uint64_t whole = mag / Currency::kScale;
  std::uint64_t frac = mag % Currency::kScale;
  char buf[32];
  char* p = buf;
  if (negative) *p++ = '-';
  p = std::to_chars(p, buf + sizeof buf, whole).ptr;
  if (frac != 0) {
    *p++ = '.';
    char digits[4];
    for (int i = 3; i >= 0; --i) {
      digits[i] = static_cast<char>('0' + frac % 10);
      frac /= 10;
    }
    int n = 4;
    while (digits[n - 1] == '0') --n;
    for (int i = 0; i < n; ++i) *p++ = digits[i];
  }
  return widen(buf, p, loc);
}

}  // namespace korvex::vb
