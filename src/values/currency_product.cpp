#include "values/currency_product.hpp"

#include <limits>

#include "korvex/value.hpp"

namespace korvex::vb {

namespace {

constexpr std::uint32_t kScale = Currency::kScale;
constexpr std::uint32_t kHalf = kScale / 2;

// An unsigned 128-bit number in two halves.
struct Wide {
  std::uint64_t hi = 0;
  std::uint64_t lo = 0;
};

std::uint64_t magnitude(std::int64_t v) {
  // Through unsigned arithmetic: the most negative value has no positive
  // counterpart in 64 signed bits.
  return v < 0 ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
}

// 64 x 64 -> 128 bits from four 32 x 32 -> 64 partial products.
Wide multiplyWide(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kLow = 0xFFFFFFFFu;
  const std::uint64_t ll = (a & kLow) * (b & kLow);
  const std::uint64_t lh = (a & kLow) * (b >> 32);
  const std::uint64_t hl = (a >> 32) * (b & kLow);
  const std::uint64_t hh = (a >> 32) * (b >> 32);
  const std::uint64_t mid = (ll >> 32) + (lh & kLow) + (hl & kLow);  // < 3 * 2^32
  return {hh + (lh >> 32) + (hl >> 32) + (mid >> 32), (mid << 32) | (ll & kLow)};
}

// Divides n in place by a divisor below 2^32, one 32-bit digit at a time
// (each step's dividend fits 64 bits), and returns the remainder.
std::uint32_t divideWide(Wide& n, std::uint32_t divisor) {
  std::uint64_t rem = 0;
  for (std::uint64_t* half : {&n.hi, &n.lo}) {
    const std::uint64_t upper = (rem << 32) | (*half >> 32);
    const std::uint64_t qUpper = upper / divisor;
    rem = upper % divisor;
    const std::uint64_t lower = (rem << 32) | (*half & 0xFFFFFFFFu);
    *half = (qUpper << 32) | (lower / divisor);
    rem = lower % divisor;
  }
  return static_cast<std::uint32_t>(rem);
}

}  // namespace

std::optional<std::int64_t> currencyProductPortable(std::int64_t a, std::int64_t b) {
  const bool negative = (a < 0) != (b < 0);
  Wide q = multiplyWide(magnitude(a), magnitude(b));
  const std::uint32_t rem = divideWide(q, kScale);
  // Half to even is symmetric about zero: round the magnitude.
  if (rem > kHalf || (rem == kHalf && (q.lo & 1) != 0)) {
    if (++q.lo == 0) ++q.hi;
  }
  const std::uint64_t limit =
      static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + (negative ? 1 : 0);
  if (q.hi != 0 || q.lo > limit) return std::nullopt;
  return static_cast<std::int64_t>(negative ? 0 - q.lo : q.lo);
}

std::optional<std::int64_t> currencyProduct(std::int64_t a, std::int64_t b) {
#ifdef __SIZEOF_INT128__
  __extension__ typedef __int128 Int128;
  const Int128 p = static_cast<Int128>(a) * b;
  Int128 q = p / kScale;
  const Int128 rem = p % kScale;
  const Int128 half = kHalf;
  if (rem > half || (rem == half && q % 2 != 0)) ++q;
  if (rem < -half || (rem == -half && q % 2 != 0)) --q;
  if (q > std::numeric_limits<std::int64_t>::max() ||
      q < std::numeric_limits<std::int64_t>::min()) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(q);
#else
  return currencyProductPortable(a, b);
#endif
}

}  // namespace korvex::vb
