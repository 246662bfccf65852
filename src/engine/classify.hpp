// Which kind of statement a line is (StatementKind), from its first word
// and for DO, END and EXIT its second.
#pragma once

#include <cstdint>
#include <string_view>

#include "values/error.hpp"

namespace korvex {

/// The line's kind, or 0 with the error in `error`: 3 for a bad character
/// in its first word, 23 for a reserved word, 1 for a record move followed
/// by more than a comment.
std::int16_t classifyLine(std::u16string_view line, Error& error);

}  // namespace korvex
