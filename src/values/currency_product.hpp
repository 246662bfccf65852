// The product of two Currency amounts: their scaled integers multiplied
// into 128 bits, scaled back and rounded half to even.
#pragma once

#include <cstdint>
#include <optional>

namespace korvex::vb {

/// The scaled product of two scaled Currency amounts, rounded half to even;
/// nothing when it leaves the 64-bit range. Uses the compiler's 128-bit
/// integer where there is one, else currencyProductPortable.
std::optional<std::int64_t> currencyProduct(std::int64_t a, std::int64_t b);

/// The same in 64-bit halves, for targets without a 128-bit integer (32-bit
/// ones). Always built, so that it can be checked against the native one.
std::optional<std::int64_t> currencyProductPortable(std::int64_t a, std::int64_t b);

}  // namespace korvex::vb
