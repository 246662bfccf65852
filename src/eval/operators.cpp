#include "eval/operators.hpp"

#include <array>

#include "values/text_scan.hpp"

namespace korvex::eval {

std::int16_t priority(Op op) noexcept {
  switch (op) {
    case Op::Pow:
      return 15;
    case Op::Neg:
      return 14;
    case Op::Mul:
    case Op::Div:
      return 13;
    case Op::Mod:
      return 12;
    case Op::Add:
    case Op::Sub:
      return 11;
    case Op::Concat:
      return 10;
    case Op::Eq:
    case Op::Ne:
    case Op::NeBang:
    case Op::Lt:
    case Op::Gt:
    case Op::Le:
    case Op::Ge:
      return 5;
    case Op::Not:
      return 4;
    case Op::And:
      return 3;
    case Op::Or:
      return 2;
    default:
      return 0;
  }
}

std::u16string_view operatorText(Op op) noexcept {
  switch (op) {
    case Op::Add:
      return u"+";
    case Op::Sub:
      return u"-";
    case Op::Mul:
      return u"*";
    case Op::Div:
      return u"/";
    case Op::Pow:
      return u"^";
    case Op::Neg:
      return u"(-)";
    case Op::Concat:
      return u"&";
    case Op::Eq:
      return u"=";
    case Op::Ne:
      return u"<>";
    case Op::NeBang:
      return u"!=";
    case Op::Lt:
      return u"<";
    case Op::Gt:
      return u">";
    case Op::Le:
      return u"<=";
    case Op::Ge:
      return u">=";
    case Op::Not:
      return u"NOT";
    case Op::And:
      return u"AND";
    case Op::Or:
      return u"OR";
    case Op::Xor:
      return u"XOR";
    case Op::Mod:
      return u"MOD";
    case Op::Open:
      return u"(";
    case Op::None:
      break;
  }
  return u"";
}

Op arithmeticOperator(char16_t c) noexcept {
  switch (c) {
    case u'+':
      return Op::Add;
    case u'-':
      return Op::Sub;
    case u'*':
      return Op::Mul;
    case u'/':
      return Op::Div;
    case u'^':
      return Op::Pow;
    case u'&':
      return Op::Concat;
    default:
      return Op::None;
  }
}

Op appliedOperator(std::u16string_view t) noexcept {
  // Almost every operand string is longer than an operator: one test ends it.
  switch (t.size()) {
    case 1:
      if (const Op op = arithmeticOperator(t[0]); op != Op::None) return op;
      switch (t[0]) {
        case u'>':
          return Op::Gt;
        case u'<':
          return Op::Lt;
        case u'=':
          return Op::Eq;
        default:
          return Op::None;
      }
    case 2:
      if (t == u">=") return Op::Ge;
      if (t == u"<=") return Op::Le;
      if (t == u"<>") return Op::Ne;
      if (t == u"!=") return Op::NeBang;
      if (t == u"OR") return Op::Or;
      return Op::None;
    case 3:
      if (t == u"(-)") return Op::Neg;
      if (t == u"NOT") return Op::Not;
      if (t == u"AND") return Op::And;
      return Op::None;
    default:
      return Op::None;
  }
}

bool isProtectedLiteral(std::u16string_view t) noexcept {
  if (t.empty() || t.size() > 3) return false;
  static constexpr std::array<std::u16string_view, 16> kProtected = {
      u"+", u"-", u"*",  u"/",  u"MOD", u"^",   u"=",  u"<>",
      u"<", u">", u"<=", u">=", u"NOT", u"AND", u"OR", u"XOR"};
  std::array<char16_t, 3> up{};
  for (std::size_t i = 0; i < t.size(); ++i) {
    up[i] = vb::asciiUpper(t[i]);
  }
  const std::u16string_view u(up.data(), t.size());
  for (auto p : kProtected) {
    if (p == u) return true;
  }
  return false;
}

}  // namespace korvex::eval
