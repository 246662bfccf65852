#include "engine/generation.hpp"

#include <atomic>

namespace korvex {

std::uint64_t nextGeneration() noexcept {
  static std::atomic<std::uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace korvex
