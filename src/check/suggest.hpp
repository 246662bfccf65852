// What a mistyped word was probably meant to be: the edit distance, the
// nearest statement keywords and function names, and the ASCII character
// a full-width one stands for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::check {

/// Edits (insert, delete, replace, swap two neighbours) from a to b,
/// letters compared without case.
std::size_t editDistance(std::u16string_view a, std::u16string_view b);

/// The statement word (as the engine spells it, e.g. u"END IF") closest to
/// `words` (the line's first word, or its first two joined without a
/// blank), or empty when none is close.
std::u16string_view nearestStatement(std::u16string_view first, std::u16string_view second);

/// The known function names closest to `name` (at most three, nearest
/// first), empty when none is close.
std::vector<std::u16string_view> nearestFunctions(std::u16string_view name);

/// The ASCII character a full-width one is written for, or 0. Full-width
/// digits count only where a name does not run on into them.
char16_t asciiFor(char16_t c) noexcept;

}  // namespace korvex::check
