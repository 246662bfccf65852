#include "eval/operators.hpp"

#include <array>

#include "engine/script_reader.hpp"
#include "values/text_scan.hpp"

namespace korvex::eval {

namespace {

// Every operator once: its text, binding strength, whether a string
// operand of exactly this text is applied as the operator, whether a
// literal of this text (any case) is kept an operand, and whether the
// scanner reads it in an expression's text.
struct OperatorInfo {
  Op op;
  std::u16string_view text;
  std::int16_t priority;
  bool applied;
  bool protectedLiteral;
  bool scanned;
};

constexpr std::array<OperatorInfo, 20> kOperators = {{
    {Op::Pow, u"^", 15, true, true, true},     {Op::Neg, u"(-)", 14, true, false, false},
    {Op::Mul, u"*", 13, true, true, true},     {Op::Div, u"/", 13, true, true, true},
    {Op::Mod, u"MOD", 12, false, true, false}, {Op::Add, u"+", 11, true, true, true},
    {Op::Sub, u"-", 11, true, true, true},     {Op::Concat, u"&", 10, true, false, true},
    {Op::Eq, u"=", 5, true, true, true},       {Op::Ne, u"<>", 5, true, true, true},
    {Op::NeBang, u"!=", 5, true, false, true}, {Op::Lt, u"<", 5, true, true, true},
    {Op::Gt, u">", 5, true, true, true},       {Op::Le, u"<=", 5, true, true, true},
    {Op::Ge, u">=", 5, true, true, true},      {Op::Not, u"NOT", 4, true, true, true},
    {Op::And, u"AND", 3, true, true, true},    {Op::Or, u"OR", 2, true, true, true},
    {Op::Xor, u"XOR", 0, false, true, true},   {Op::Open, u"(", 0, false, false, false},
}};

// The first characters of the texts applied as operators (all ASCII).
constexpr auto kAppliedStarts = [] {
  std::array<bool, 128> starts{};
  for (const OperatorInfo& o : kOperators) {
    if (o.applied) starts[static_cast<std::size_t>(o.text.front())] = true;
  }
  return starts;
}();

const OperatorInfo* infoOf(Op op) noexcept {
  for (const OperatorInfo& o : kOperators) {
    if (o.op == op) return &o;
  }
  return nullptr;
}

}  // namespace

std::int16_t priority(Op op) noexcept {
  const OperatorInfo* o = infoOf(op);
  return o != nullptr ? o->priority : 0;
}

std::u16string_view operatorText(Op op) noexcept {
  const OperatorInfo* o = infoOf(op);
  return o != nullptr ? o->text : std::u16string_view();
}

Op readOperator(std::u16string_view text, std::size_t at, std::size_t& length) noexcept {
  Op found = Op::None;
  length = 0;
  for (const OperatorInfo& o : kOperators) {
    const std::size_t n = o.text.size();
    if (!o.scanned || n <= length || at + n > text.size()) continue;
    bool same = true;
    for (std::size_t k = 0; k < n && same; ++k) same = vb::asciiUpper(text[at + k]) == o.text[k];
    if (!same) continue;
    // A word operator stands alone: a blank or the end follows it.
    const bool word = o.text.front() >= u'A' && o.text.front() <= u'Z';
    if (word && at + n < text.size() && !isBlank(text[at + n])) continue;
    found = o.op;
    length = n;
  }
  return found;
}

Op appliedOperator(std::u16string_view t) noexcept {
  // Almost every operand string is longer than an operator: one test ends it.
  if (t.empty() || t.size() > 3 || t[0] >= kAppliedStarts.size() || !kAppliedStarts[t[0]]) {
    return Op::None;
  }
  for (const OperatorInfo& o : kOperators) {
    if (o.applied && o.text == t) return o.op;
  }
  return Op::None;
}

bool isProtectedLiteral(std::u16string_view t) noexcept {
  if (t.empty() || t.size() > 3) return false;
  std::array<char16_t, 3> up{};
  for (std::size_t i = 0; i < t.size(); ++i) {
    up[i] = vb::asciiUpper(t[i]);
  }
  const std::u16string_view u(up.data(), t.size());
  for (const OperatorInfo& o : kOperators) {
    if (o.protectedLiteral && o.text == u) return true;
  }
  return false;
}

}  // namespace korvex::eval
