// MSGBOX expression: shows the value in a modal box with an OK button.
#include <string>

#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/string_op.hpp"
#include "eval/eval.hpp"
#include "korvex/engine.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

std::int32_t MsgBox(BasicEngine& engine, KeptLine& kept) {
  const std::u16string_view line = kept.text;
  // The keyword must be followed by a blank: "MsgBox(" is a bad name.
  detail::Verdict verdict;
  const auto word = detail::readKeyword(verdict, line, detail::QuoteStyle::Tight);
  if (!word) return verdict.replay(engine);
  if (!equalsNoCase(word->text, u"MSGBOX")) return detail::fail(engine, 1, msg::kSyntax);

  const detail::Cut rest = detail::upToComment(line, word->end);
  if (!rest.readable) return engine.ErrNum();
  const std::u16string_view expression = trimBlanks(rest.text);
  if (expression.empty()) return detail::fail(engine, 1, msg::kSyntax);

  const Value value = Evaluate(engine, expression);
  if (engine.ErrNum() != 0) return engine.ErrNum();
  const std::u16string text =
      value.isNull() ? std::u16string() : vb::toString(value, engine.Locale());
  engine.UI().messageBox(text, UserInterface::Buttons::Ok, u"");
  return 0;
}

}  // namespace korvex::stmt
