// Operators of the expression language and the postfix sequence the two
// passes of the evaluator share.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "korvex/value.hpp"

namespace korvex::eval {

enum class Op : std::uint8_t {
  None,  // an operand
  Add,
  Sub,
  Mul,
  Div,
  Pow,
  Neg,
  Concat,
  Eq,
  Ne,
  NeBang,
  Lt,
  Gt,
  Le,
  Ge,
  Not,
  And,
  Or,
  Xor,
  Mod,
  Open,  // "(" on the operator stack only
};

/// Binding strength; higher binds tighter. "XOR" and "(" rank lowest.
std::int16_t priority(Op op) noexcept;

/// The operator's text as it stands in the postfix sequence ("(-)" for the
/// unary minus).
std::u16string_view operatorText(Op op) noexcept;

/// The operator the evaluation pass applies for a string element of exactly
/// this text; Op::None for an operand. "MOD" and "XOR" are not among them.
Op appliedOperator(std::u16string_view text) noexcept;

/// The operator an expression's text has at `at` (letters in any case; a
/// word operator only when a blank or the end follows it), the longest
/// that matches, with its length; Op::None when none starts there. "MOD"
/// is not read as an operator.
Op readOperator(std::u16string_view text, std::size_t at, std::size_t& length) noexcept;

/// True when a string literal of this text must be kept from being taken
/// for an operator (the comparison ignores case; "&" is not protected).
bool isProtectedLiteral(std::u16string_view text) noexcept;

/// One element of the postfix sequence: an operator, or an operand value.
struct PostfixItem {
  Value value;
  Op op = Op::None;
  /// A string literal whose text is an operator's: always an operand.
  bool protectedLiteral = false;
};

using Postfix = std::vector<PostfixItem>;

}  // namespace korvex::eval
