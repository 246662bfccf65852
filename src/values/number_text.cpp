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

// Digit places a Double's plain form may take on either side of the point.
constexpr int kPlainPlaces = 15;

}  // namespace

std::u16string doubleToString(double d, const Locale& loc) {
  if (std::isnan(d)) return u"-1.#IND";
  if (std::isinf(d)) return d > 0 ? u"1.#INF" : u"-1.#INF";
  if (d == 0) return u"0";  // also -0
  // At most 15 significant digits, trailing zeros dropped. The plain form is
  // used while it needs no more than 15 digit places: up to 15 integer
  // digits, or down to the 15th place after the point (0.000056789, but
  // 5.6789E-12); beyond that the exponent form with an upper-case E and at
  // least two exponent digits.
  char sci[32];
  const auto res = std::to_chars(sci, sci + sizeof sci, d, std::chars_format::scientific, 14);
  const char* p = sci;
  const bool negative = *p == '-';
  if (negative) ++p;
  char digits[16];
  int count = 0;
  for (; *p != 'e'; ++p) {
    if (*p != '.') digits[count++] = *p;
  }
  while (count > 1 && digits[count - 1] == '0') --count;
  int exponent = 0;
  std::from_chars(p + 1 + (p[1] == '+'), res.ptr, exponent);

  char buf[40];
  char* out = buf;
  if (negative) *out++ = '-';
  const bool plain = exponent >= 0 ? exponent < kPlainPlaces : count - exponent - 1 <= kPlainPlaces;
  if (!plain) {
    *out++ = digits[0];
    if (count > 1) *out++ = '.';
    for (int i = 1; i < count; ++i) *out++ = digits[i];
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const int mag = exponent < 0 ? -exponent : exponent;
    if (mag < 10) *out++ = '0';
    out = std::to_chars(out, buf + sizeof buf, mag).ptr;
  } else if (exponent >= 0) {
    for (int i = 0; i <= exponent; ++i) *out++ = i < count ? digits[i] : '0';
    if (count > exponent + 1) *out++ = '.';
    for (int i = exponent + 1; i < count; ++i) *out++ = digits[i];
  } else {
    *out++ = '0';
    *out++ = '.';
    for (int i = -1; i > exponent; --i) *out++ = '0';
    for (int i = 0; i < count; ++i) *out++ = digits[i];
  }
  return widen(buf, out, loc);
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
