// The names an expression resolves before it looks at variables: the cell
// functions, the constants, the built-in functions and the few functions
// the evaluator computes itself.
#pragma once

#include <cstdint>
#include <string_view>

#include "functions/function_call.hpp"

namespace korvex::eval {

enum class NameKind : std::uint8_t { Function, Inline, Constant };

enum class InlineOp : std::uint8_t { Abs, Len, Sqr, Year, Trim, Int };

enum class ConstantId : std::uint8_t { CrLf, Empty, Null, True, False, Eof, Bof };

struct NameEntry {
  NameKind kind;
  std::uint8_t code;  // FunctionClass, InlineOp or ConstantId, by kind
  /// The name as the table spells it (used in messages of classes that are
  /// not available).
  std::u16string_view scriptName;

  FunctionClass functionClass() const noexcept { return static_cast<FunctionClass>(code); }
  InlineOp inlineOp() const noexcept { return static_cast<InlineOp>(code); }
  ConstantId constant() const noexcept { return static_cast<ConstantId>(code); }
};

/// The entry for an upper-cased name, or nullptr when the name is none of
/// these (it may still be a variable or a record field).
const NameEntry* lookupName(std::u16string_view upperName) noexcept;

}  // namespace korvex::eval
