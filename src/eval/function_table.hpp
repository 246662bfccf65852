// The names an expression resolves before it looks at variables: the
// functions of the catalog (functions/catalog.hpp), and the evaluator's
// own names, the constants and the few functions it computes itself.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "functions/protocol.hpp"

namespace korvex::eval {

enum class NameKind : std::uint8_t { Function, Inline, Constant };

enum class InlineOp : std::uint8_t { Abs, Len, Sqr, Year, Trim, Int };

enum class ConstantId : std::uint8_t { CrLf, Empty, Null, True, False, Eof, Bof };

struct NameEntry {
  NameKind kind;
  std::uint8_t code = 0;                        // InlineOp or ConstantId, by kind
  const fn::FunctionEntry* function = nullptr;  // kind Function

  InlineOp inlineOp() const noexcept { return static_cast<InlineOp>(code); }
  ConstantId constant() const noexcept { return static_cast<ConstantId>(code); }
};

/// What an upper-cased name stands for, or nothing when it is none of
/// these (it may still be a host function, a variable or a record field).
/// The cell functions come first, then the constants, then every other
/// function.
std::optional<NameEntry> lookupName(std::u16string_view upperName) noexcept;

/// A function the evaluator computes itself, as the function reference
/// shows it.
struct InlineFunction {
  std::u16string_view name;
  fn::FunctionDoc doc;
};
std::span<const InlineFunction> inlineFunctions() noexcept;

/// Whether an upper-cased name is one of the evaluator's own (a constant or
/// a function it computes itself), which no host function may take.
bool isOwnName(std::u16string_view upperName) noexcept;

}  // namespace korvex::eval
