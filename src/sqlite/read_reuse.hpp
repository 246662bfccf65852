// Results of reading statements kept for the next time the same statement
// is run with the same values: within a batch, the month's totals are
// asked once per employee and answered once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "korvex/sqlite.hpp"

namespace korvex {

/// Shared by the connections of one database that see one committed state
/// (thread-safe). Entries are keyed by the statement as run and its bound
/// values; a result is kept only the second time its key is asked (most
/// statements of a month are asked once per employee), within a budget of
/// bytes, the least recently used going first. forget() drops everything:
/// called whenever the database may have changed.
class SqliteReuse {
 public:
  explicit SqliteReuse(std::size_t budgetBytes) : budget_(budgetBytes) {}

  /// The key of a statement text with its bound values.
  static std::string keyOf(std::string_view statement, std::span<const SqlParameter> values);

  /// A kept result, counted as reused; or nullopt, and the generation the
  /// answer from the database must be kept with.
  std::optional<SqlResult> find(const std::string& key, std::uint64_t& generation);
  /// Keeps a result unless forget() came between find() and now: the
  /// database may have changed while it was computed.
  void keep(const std::string& key, const SqlResult& result, std::uint64_t generation);
  void forget();

  /// A statement sent to the connections sharing this (reused or not).
  void countSent() noexcept { sent_.fetch_add(1, std::memory_order_relaxed); }
  SqliteReuseCounts counts() const noexcept {
    return {sent_.load(std::memory_order_relaxed), reused_.load(std::memory_order_relaxed)};
  }

 private:
  struct Entry {
    std::string key;
    SqlResult result;
    std::size_t bytes = 0;
  };

  std::size_t budget_;
  std::mutex mutex_;
  std::uint64_t generation_ = 0;
  std::size_t bytes_ = 0;
  std::list<Entry> recent_;  // most recently used first
  std::unordered_map<std::string_view, std::list<Entry>::iterator> entries_;
  std::unordered_set<std::size_t> askedOnce_;  // hashes of keys asked but not kept
  std::atomic<std::uint64_t> sent_{0}, reused_{0};
};

}  // namespace korvex
