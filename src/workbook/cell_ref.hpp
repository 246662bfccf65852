// Cell addresses in A1 notation and the limits of a sheet.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::xlsx {

inline constexpr std::int32_t kMaxRows = 1048576;
inline constexpr std::int32_t kMaxColumns = 16384;

struct CellRef {
  std::int32_t row = 0;     // 1-based
  std::int32_t column = 0;  // 1-based
};

/// "A" for 1, "AA" for 27, "XFD" for 16384.
std::string columnName(std::int32_t column);
/// "B3" for row 3, column 2.
std::string cellName(CellRef ref);
/// Parses "B3" (no '$'); nullopt when malformed or outside the sheet.
std::optional<CellRef> parseCellName(std::string_view text);

/// Moves the relative references of a formula (A1, $A1, A$1; not $A$1) by
/// the given offsets, as a formula shared by a block of cells reads in each
/// cell of the block. Text in quotes is left alone.
std::string shiftFormula(std::string_view formula, std::int32_t rows, std::int32_t columns);

}  // namespace korvex::xlsx
