// Every built-in function the scripts can call, gathered from the family
// tables (functions/families.hpp), and the lookup by name.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

#include "functions/families.hpp"

namespace korvex::fn {

/// Hashes owned names and views alike, so that a map keyed by owned names
/// is searched with a view.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::u16string_view s) const noexcept {
    return std::hash<std::u16string_view>{}(s);
  }
};

/// The family tables in the order their names are looked up: the cell
/// functions first.
std::span<const Family> families() noexcept;

/// The title of each family, in the order of families().
std::span<const std::u16string_view> familyTitles() noexcept;

/// The function an upper-cased script name stands for, or nullptr. Where
/// two families had the same name, the earlier one would win.
const FunctionEntry* findFunction(std::u16string_view upperName) noexcept;

/// Whether a name of this function is resolved before the evaluator's
/// constants (the cell functions are; every other function comes after).
bool precedesConstants(const FunctionEntry& entry) noexcept;

}  // namespace korvex::fn
