// name = expression: stores into a variable, or else into a field of the
// current record.
#include <memory>
#include <string>

#include "engine/context.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "eval/expression.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

constexpr std::u16string_view kAssignMarker = u"{来自赋值语句}";

struct AssignForm : Form {
  explicit AssignForm(std::u16string_view line);

  detail::Verdict verdict;
  std::u16string_view name;  // as written
  std::u16string upper;
  std::unique_ptr<eval::Expression> expression;
  // The variable's entry while the table's generation stays the same.
  std::uint64_t tableGeneration = 0;
  SymbolTable::Entry* slot = nullptr;
};

AssignForm::AssignForm(std::u16string_view line) {
  std::size_t pos = 0;
  for (;;) {
    if (pos >= line.size()) {
      verdict.fail(msg::kUnsupportedStatement);
      return;
    }
    const char16_t c = line[pos];
    if (isBlank(c)) {
      ++pos;
      continue;
    }
    if (c == u'=') break;
    if (!name.empty()) {
      verdict.fail(msg::kSyntax, kAssignMarker);
      return;
    }
    if (!isIdentStart(c)) {
      // Only the message: the line goes on as if nothing had been wrong.
      verdict.kind = detail::Verdict::Kind::MessageOnly;
      verdict.message = msg::kBadSymbol.text;
      return;
    }
    const std::size_t start = pos;
    for (++pos; pos < line.size() && !isBlank(line[pos]) && line[pos] != u'='; ++pos) {
      if (isIdentChar(line[pos])) continue;
      verdict.fail(msg::kBadSymbol, msg::quoted({&line[pos], 1}, u"'"));
      return;
    }
    name = line.substr(start, pos - start);
  }
  if (name.empty()) {
    verdict.fail(msg::kSyntax);
    return;
  }
  const detail::Cut text = detail::upToComment(line, pos + 1);
  // An unclosed literal ends the statement without a word and without
  // assigning.
  if (!text.readable) {
    verdict.kind = detail::Verdict::Kind::Status;
    return;
  }
  if (trimBlanks(text.text).empty()) {
    verdict.fail(msg::kSyntax);
    return;
  }
  expression = std::make_unique<eval::Expression>(text.text);
  upper = vb::upperCase(name);
}

}  // namespace

std::int32_t Assign(Context& ctx, KeptLine& line) {
  AssignForm& form = formOf<AssignForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);

  Value value = form.expression->evaluate(ctx);
  if (ctx.errNum() != 0) return ctx.errNum();

  SymbolTable& table = ctx.symbols();
  if (form.slot == nullptr || form.tableGeneration != table.generation()) {
    form.slot = table.slot(form.upper);
    form.tableGeneration = table.generation();
  }
  if (form.slot != nullptr) {
    table.store(*form.slot, std::move(value));
    return 0;
  }
  // The record decides for itself how its field names match.
  if (ctx.isCachedFieldName(form.name)) {
    ctx.changeField(Value::string(form.name), value);
    return ctx.errNum();
  }
  return detail::fail(ctx, msg::kUndefinedVariable, msg::quoted(form.name));
}

}  // namespace korvex::stmt
