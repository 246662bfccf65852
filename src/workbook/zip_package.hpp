// The zip container of a workbook, held in memory. Parts are read on demand;
// changed, added and removed parts are remembered and only applied when the
// package is written out, so that every other part keeps its compressed
// bytes exactly as they were.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::xlsx {

class ZipPackage {
 public:
  /// An empty package (for a workbook made from scratch).
  ZipPackage() = default;
  /// Reads the archive's directory; false with a message when `bytes` is
  /// not a zip archive.
  bool load(std::string bytes, std::string& error);

  /// Parts that inflate (or claim to inflate) beyond `bytes` are refused
  /// by read().
  void setPartLimit(std::uint64_t bytes) noexcept { partLimit_ = bytes; }

  bool has(std::string_view name) const;
  /// The part's bytes (pending changes included); nullopt when absent or
  /// unreadable or too large (`error` says which).
  std::optional<std::string> read(std::string_view name, std::string& error) const;
  /// Adds or replaces a part.
  void put(std::string name, std::string bytes);
  void remove(std::string_view name);

  /// The whole archive with the changes applied; false with a message.
  bool write(std::string& out, std::string& error) const;

 private:
  std::uint64_t partLimit_ = UINT64_MAX;
  std::string archive_;  // the original archive (empty for a new package)
  std::vector<std::string> names_;
  std::map<std::string, std::optional<std::string>, std::less<>> changes_;  // nullopt = removed
};

}  // namespace korvex::xlsx
