#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "values/format_detail.hpp"

namespace korvex::vb::detail {

DecimalDigits exactDigits(double x) {
  DecimalDigits d;
  x = std::fabs(x);
  if (x == 0.0 || !std::isfinite(x)) return d;
  // 60 significant digits: beyond any rounding position a format can ask
  // for within a Double's range of precision, so the cut sees the true value.
  char buf[96];
  const auto written =
      std::to_chars(buf, buf + sizeof buf - 1, x, std::chars_format::scientific, 59);
  *written.ptr = '\0';
  const char* p = buf;
  std::string digits;
  digits.reserve(60);
  for (; *p != 'e'; ++p) {
    if (*p >= '0' && *p <= '9') digits.push_back(*p);
  }
  const int exponent = std::atoi(p + 1);
  while (!digits.empty() && digits.back() == '0') digits.pop_back();
  d.digits = std::move(digits);
  d.pointPos = exponent + 1;
  return d;
}

void roundHalfUp(DecimalDigits& d, int decimals) {
  const long cut = static_cast<long>(d.pointPos) + decimals;
  if (cut >= static_cast<long>(d.digits.size())) return;  // nothing to drop
  if (cut < 0) {
    d.digits.clear();
    d.pointPos = 0;
    return;
  }
  const bool up = d.digits[static_cast<std::size_t>(cut)] >= '5';
  d.digits.resize(static_cast<std::size_t>(cut));
  if (up) {
    std::size_t i = d.digits.size();
    while (i > 0 && d.digits[i - 1] == '9') --i;
    if (i == 0) {
      // All nines (or nothing kept): the carry adds a new leading digit.
      d.digits.assign(1, '1');
      d.pointPos += 1;
    } else {
      d.digits.resize(i);
      d.digits[i - 1] = static_cast<char>(d.digits[i - 1] + 1);
    }
  }
  while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
  if (d.digits.empty()) d.pointPos = 0;
}

SignedDigits signedDigits(double x) { return SignedDigits{exactDigits(x), x < 0, true}; }

SignedDigits signedDigits(Currency c) {
  SignedDigits n;
  n.negative = c.scaled < 0;
  // Magnitude of the scaled integer, safe for the most negative value.
  std::uint64_t m =
      n.negative ? 0 - static_cast<std::uint64_t>(c.scaled) : static_cast<std::uint64_t>(c.scaled);
  const std::string text = std::to_string(m);
  n.magnitude.digits = text;
  n.magnitude.pointPos = static_cast<int>(text.size()) - 4;  // four decimals
  while (!n.magnitude.digits.empty() && n.magnitude.digits.back() == '0') {
    n.magnitude.digits.pop_back();
  }
  if (n.magnitude.digits.empty()) {
    n.magnitude.pointPos = 0;
    n.negative = false;
  }
  return n;
}

void appendInt(std::u16string& out, long long n, int minDigits) {
  if (n < 0) {
    out.push_back(u'-');
    n = -n;
  }
  char buf[24];
  const int len = std::snprintf(buf, sizeof buf, "%0*lld", minDigits, n);
  for (int i = 0; i < len; ++i) out.push_back(static_cast<char16_t>(buf[i]));
}

}  // namespace korvex::vb::detail
