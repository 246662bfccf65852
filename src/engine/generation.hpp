// Generation numbers: a table whose contents change takes a new number, so
// whatever was derived from its old contents can tell it is stale. The
// numbers are unique across all tables and threads and never 0.
#pragma once

#include <cstdint>

namespace korvex {

std::uint64_t nextGeneration() noexcept;

}  // namespace korvex
