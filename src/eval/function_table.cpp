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

// What the reference shows of the functions above; a test checks that each
// name is one of theirs.
constexpr fn::ResultKind kNumber = fn::ResultKind::Number;
// clang-format off
constexpr InlineFunction kInlineFunctions[] = {
    {u"ABS", {u"数值", kNumber, u"绝对值; 整数保持其类型, 文本和日期得双精度数, Null 得 Null"}},
    {u"LEN", {u"值", kNumber, u"文本形式的字符数; Null 得 Null"}},
    {u"SQR", {u"数值", kNumber, u"平方根; 负数为错误 5"}},
    {u"YEAR", {u"日期", kNumber, u"日期中的年; Null 得 Null"}},
    {u"TRIM", {u"值", fn::ResultKind::String, u"去掉两端空格的文本; Null 得 Null"}},
    {u"INT", {u"数值", kNumber, u"向零取整: INT(-2.5) 为 -2; Null 为错误 94"}},
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

std::span<const InlineFunction> inlineFunctions() noexcept { return kInlineFunctions; }

bool isOwnName(std::u16string_view upperName) noexcept { return ownRow(upperName) != nullptr; }

}  // namespace korvex::eval
