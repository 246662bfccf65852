// The rows of a record set held in memory and the cursor over them, as the
// in-memory record set and the database one both keep them.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "korvex/host_object.hpp"

namespace korvex::host {

struct RowCursor {
  std::vector<std::vector<Value>> rows;
  /// The current row from 0; -1 before the first row (BOF), rows.size()
  /// after the last (EOF).
  std::ptrdiff_t position = 0;

  bool hasCurrent() const noexcept {
    return position >= 0 && static_cast<std::size_t>(position) < rows.size();
  }
  bool bof() const noexcept { return rows.empty() || position < 0; }
  bool eof() const noexcept {
    return rows.empty() || position >= static_cast<std::ptrdiff_t>(rows.size());
  }
  std::vector<Value>& current() { return rows[static_cast<std::size_t>(position)]; }

  /// Whether `name` is one of MoveFirst, MoveNext, MovePrevious, MoveLast.
  static bool isMove(std::u16string_view name) noexcept;
  /// Moves as the method `name` (one of isMove's) says; moving past either
  /// end, or to the first or last row of no rows, fails with 3021.
  DispatchResult move(std::u16string_view name);
};

}  // namespace korvex::host
