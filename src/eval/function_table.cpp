// The evaluator's own names, and the order in which they and the catalog's
// functions are looked up.
#include "eval/function_table.hpp"

#include "functions/catalog.hpp"

namespace korvex::eval {

namespace {

struct Row {
  std::u16string_view key;  // upper-cased, as names are compared
  NameKind kind;
  std::uint8_t code;
};

constexpr Row in(std::u16string_view key, InlineOp op) {
  return {key, NameKind::Inline, static_cast<std::uint8_t>(op)};
}
constexpr Row co(std::u16string_view key, ConstantId id) {
  return {key, NameKind::Constant, static_cast<std::uint8_t>(id)};
}

// clang-format off
constexpr Row kOwnRows[] = {
    co(u"CRLF", ConstantId::CrLf),
    co(u"VBCRLF", ConstantId::CrLf),
    co(u"EMPTY", ConstantId::Empty),
    co(u"NULL", ConstantId::Null),
    co(u"TRUE", ConstantId::True),
    co(u"FALSE", ConstantId::False),
    co(u"EOF", ConstantId::Eof),
    co(u"BOF", ConstantId::Bof),
    in(u"ABS", InlineOp::Abs),
    in(u"LEN", InlineOp::Len),
    in(u"SQR", InlineOp::Sqr),
    in(u"YEAR", InlineOp::Year),
    in(u"TRIM", InlineOp::Trim),
    in(u"INT", InlineOp::Int),
};
// clang-format on

const Row* ownRow(std::u16string_view upperName) noexcept {
  for (const Row& r : kOwnRows) {
    if (r.key == upperName) return &r;
  }
  return nullptr;
}

}  // namespace

std::optional<NameEntry> lookupName(std::u16string_view upperName) noexcept {
  const fn::FunctionEntry* function = fn::findFunction(upperName);
  if (function != nullptr && fn::precedesConstants(*function)) {
    return NameEntry{NameKind::Function, 0, function};
  }
  if (const Row* r = ownRow(upperName)) return NameEntry{r->kind, r->code};
  if (function != nullptr) return NameEntry{NameKind::Function, 0, function};
  return std::nullopt;
}

bool isOwnName(std::u16string_view upperName) noexcept { return ownRow(upperName) != nullptr; }

}  // namespace korvex::eval
