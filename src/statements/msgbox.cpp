// MSGBOX expression: shows the value in a modal box with an OK button.
#include <string>

#include "engine/context.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "eval/eval.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

std::int32_t MsgBox(Context& ctx, KeptLine& kept) {
  const std::u16string_view line = kept.text;
  // The keyword must be followed by a blank: "MsgBox(" is a bad name.
  detail::Verdict verdict;
  const auto word = detail::readKeyword(verdict, line, detail::QuoteStyle::Tight);
  if (!word) return verdict.replay(ctx);
  if (!equalsNoCase(word->text, u"MSGBOX")) return detail::fail(ctx, msg::kSyntax);

  const detail::Cut rest = detail::upToComment(line, word->end);
  if (!rest.readable) return ctx.errNum();
  const std::u16string_view expression = trimBlanks(rest.text);
  if (expression.empty()) return detail::fail(ctx, msg::kSyntax);

  const Value value = Evaluate(ctx, expression);
  if (ctx.errNum() != 0) return ctx.errNum();
  const std::u16string text = value.isNull() ? std::u16string() : vb::toString(value, ctx.locale());
  ctx.ui().messageBox(text, UserInterface::Buttons::Ok, u"");
  return 0;
}

}  // namespace korvex::stmt
