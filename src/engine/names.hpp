// Upper-casing of names for case-insensitive matching (variables, record
// fields). Names are nearly always ASCII, so that case is done in place
// without allocating; anything else goes through the full Unicode rule.
#pragma once

#include <string>
#include <string_view>

namespace korvex {

/// Writes the upper-cased name into `out` (reusing its storage).
void upperNameInto(std::u16string_view name, std::u16string& out);

inline std::u16string upperName(std::u16string_view name) {
  std::u16string out;
  upperNameInto(name, out);
  return out;
}

}  // namespace korvex
