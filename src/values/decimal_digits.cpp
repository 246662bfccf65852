#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "values/format_detail.hpp"

namespace korvex::vb::detail {

DecimalDigits toDecimalDigits(double x) {
  DecimalDigits d;
  x = std::fabs(x);
  if (x == 0.0 || !std::isfinite(x)) return d;
  // 15 significant digits: what the platform keeps of a Double in text.
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.14e", x);
  const char* p = buf;
  std::string digits;
  digits.reserve(15);
  for (; *p != 'e'; ++p) {
    if (*p >= '0' && *p <= '9') digits.push_back(*p);
  }
  const int exponent = std::atoi(p + 1);
  while (!digits.empty() && digits.back() == '0') digits.pop_back();
  d.digits = std::move(digits);
  d.pointPos = exponent + 1;
  return d;
}

void roundDigits(DecimalDigits& d, int decimals, Rounding mode) {
  const long cut = static_cast<long>(d.pointPos) + decimals;
  const long size = static_cast<long>(d.digits.size());
  if (cut >= size) return;  // nothing beyond the last kept place
  if (cut < 0) {
    d.digits.clear();
    d.pointPos = 0;
    return;
  }
  const char first = d.digits[static_cast<std::size_t>(cut)];
  bool up = first > '5' || (first == '5' && (mode == Rounding::HalfUp || cut + 1 < size));
  if (first == '5' && mode == Rounding::HalfEven && cut + 1 == size) {
    // Exactly half: round towards the even neighbour.
    const char prev = cut > 0 ? d.digits[static_cast<std::size_t>(cut - 1)] : '0';
    up = ((prev - '0') % 2) == 1;
  }
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

double fromDecimalDigits(const DecimalDigits& d, bool negative) {
  if (d.isZero()) return negative ? -0.0 : 0.0;
  std::string text = negative ? "-0." : "0.";
  text += d.digits;
  text += 'e';
  text += std::to_string(d.pointPos);
  return std::strtod(text.c_str(), nullptr);
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
