// name = expression: stores into a variable, or else into a field of the
// current record.
#include <string>

#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/string_op.hpp"
#include "eval/eval.hpp"
#include "korvex/engine.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

using detail::fail;

constexpr std::u16string_view kAssignMarker = u"{来自赋值语句}";

}  // namespace

std::int32_t Assign(BasicEngine& engine, std::u16string_view line) {
  std::u16string_view name;
  std::size_t pos = 0;
  for (;;) {
    if (pos >= line.size()) return fail(engine, 22, msg::kUnsupportedStatement);
    const char16_t c = line[pos];
    if (isBlank(c)) {
      ++pos;
      continue;
    }
    if (c == u'=') break;
    if (!name.empty()) {
      std::u16string message(msg::kSyntax);
      message += kAssignMarker;
      return fail(engine, 1, message);
    }
    if (!isIdentStart(c)) {
      // Only the message: the line goes on as if nothing had been wrong.
      engine.SetErrMsg(std::u16string(msg::kBadSymbol));
      return engine.ErrNum();
    }
    const std::size_t start = pos;
    for (++pos; pos < line.size() && !isBlank(line[pos]) && line[pos] != u'='; ++pos) {
      if (isIdentChar(line[pos])) continue;
      std::u16string message(msg::kBadSymbol);
      message += u'\'';
      message += line[pos];
      message += u'\'';
      return fail(engine, 3, message);
    }
    name = line.substr(start, pos - start);
  }
  if (name.empty()) return fail(engine, 1, msg::kSyntax);

  const detail::Cut expression = detail::upToComment(line, pos + 1);
  // An unclosed literal ends the statement without a word and without
  // assigning.
  if (!expression.readable) return engine.ErrNum();
  if (trimBlanks(expression.text).empty()) return fail(engine, 1, msg::kSyntax);

  const Value value = Evaluate(engine, expression.text);
  if (engine.ErrNum() != 0) return engine.ErrNum();

  const std::u16string upper = vb::upperCase(name);
  if (services::SymbolDefined(engine, upper)) {
    engine.Vaule(upper, value);
    return 0;
  }
  // The record decides for itself how its field names match.
  if (engine.isFieldNameByArr(name)) {
    engine.ChangeField(Value::string(name), value);
    return engine.ErrNum();
  }
  std::u16string message(msg::kUndefinedVariable);
  message += u" '";
  message += name;
  message += u'\'';
  return fail(engine, 5, message);
}

}  // namespace korvex::stmt
