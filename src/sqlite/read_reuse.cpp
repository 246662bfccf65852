#include "sqlite/read_reuse.hpp"

#include <functional>
#include <variant>

namespace korvex {

namespace {

// Keys remembered as asked once before the memory is started afresh.
constexpr std::size_t kAskedOnceLimit = 1 << 20;

std::size_t cellBytes(const Value& v) {
  return sizeof(Value) + (v.isString() ? v.stringValue().size() * sizeof(char16_t) : 0);
}

std::size_t resultBytes(const SqlResult& r) {
  std::size_t bytes = sizeof(SqlResult);
  for (const auto& row : r.rows) {
    for (const Value& v : row) bytes += cellBytes(v);
  }
  for (const auto& id : r.rowIdentities) bytes += id.size() * sizeof(SqlCell);
  return bytes;
}

}  // namespace

std::string SqliteReuse::keyOf(std::string_view statement, std::span<const SqlParameter> values) {
  std::string key(statement);
  // Each value as its kind and its bytes, length first: no two lists of
  // values make one key.
  for (const SqlParameter& p : values) {
    key += '\0';
    key += static_cast<char>('0' + p.index());
    std::string bytes;
    if (const auto* n = std::get_if<long long>(&p)) bytes = std::to_string(*n);
    if (const auto* d = std::get_if<double>(&p)) bytes.assign(reinterpret_cast<const char*>(d), 8);
    if (const auto* s = std::get_if<std::string>(&p)) bytes = *s;
    if (const auto* b = std::get_if<SqlBlob>(&p)) bytes = b->bytes;
    key += std::to_string(bytes.size()) + ':' + bytes;
  }
  return key;
}

std::optional<SqlResult> SqliteReuse::find(const std::string& key, std::uint64_t& generation) {
  std::lock_guard lock(mutex_);
  generation = generation_;
  const auto it = entries_.find(key);
  if (it == entries_.end()) return std::nullopt;
  recent_.splice(recent_.begin(), recent_, it->second);
  reused_.fetch_add(1, std::memory_order_relaxed);
  return it->second->result;
}

void SqliteReuse::keep(const std::string& key, const SqlResult& result, std::uint64_t generation) {
  std::lock_guard lock(mutex_);
  if (generation != generation_ || entries_.contains(key)) return;
  if (askedOnce_.insert(std::hash<std::string>{}(key)).second) {
    if (askedOnce_.size() > kAskedOnceLimit) askedOnce_.clear();
    return;
  }
  const std::size_t bytes = resultBytes(result) + 2 * key.size();
  if (bytes > budget_ / 4) return;  // one result must not push out all the others
  recent_.push_front({key, result, bytes});
  entries_.emplace(recent_.front().key, recent_.begin());
  bytes_ += bytes;
  while (bytes_ > budget_) {
    bytes_ -= recent_.back().bytes;
    entries_.erase(recent_.back().key);
    recent_.pop_back();
  }
}

void SqliteReuse::forget() {
  std::lock_guard lock(mutex_);
  ++generation_;
  entries_.clear();
  recent_.clear();
  askedOnce_.clear();
  bytes_ = 0;
}

std::shared_ptr<SqliteReuse> makeSqliteReuse(std::size_t budgetBytes) {
  return std::make_shared<SqliteReuse>(budgetBytes);
}

SqliteReuseCounts reuseCounts(const SqliteReuse& reuse) noexcept { return reuse.counts(); }

}  // namespace korvex
