// Numeric helpers shared by the conversions and the arithmetic.
#pragma once

#include <cmath>
#include <cstdint>

#include "values/runtime_error.hpp"

namespace korvex::vb {

/// Round half to even on whole numbers (the platform's CInt/CLng rounding).
inline double roundHalfEvenWhole(double x) noexcept {
  const double f = std::floor(x);
  const double diff = x - f;
  if (diff > 0.5) return f + 1;
  if (diff < 0.5) return f;
  return std::fmod(f, 2.0) == 0 ? f : f + 1;
}

/// A Double result, or the platform's overflow when it is not finite.
inline double checkedDouble(double d) {
  if (!std::isfinite(d)) raise(kOverflow);
  return d;
}

/// Double -> Currency's scaled integer (banker's rounding at the fourth
/// decimal); overflow outside the Currency range.
std::int64_t scaledCurrency(double d);

}  // namespace korvex::vb
