// RAISEERROR message: ends the script with error 2000 and the script's own
// message. Its argument is an argument list, like a function's.
#include <string>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "eval/call.hpp"
#include "eval/expression.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

constexpr std::u16string_view kName = u"RaiseError";
constexpr std::int32_t kUserError = 2000;

}  // namespace

std::int32_t RaiseError(Context& ctx, std::u16string_view argText) {
  eval::ArgList args(argText);
  if (!args.parsed() || args.count() != 1) {
    std::u16string source(u"{语句:");
    source += kName;
    source += argText;
    source += u'}';
    return detail::fail(ctx, msg::kBadArguments, source);
  }
  const Value value = args.item(0).evaluate(ctx);
  if (ctx.errNum() != 0) return ctx.errNum();

  // Any value is accepted; a Null cannot become text and faults here.
  std::u16string text = vb::toString(value, ctx.locale());
  return detail::fail(ctx, kUserError, text);
}

}  // namespace korvex::stmt
