// DO WHILE / DO UNTIL, LOOP / END DO and EXIT DO. The condition is written
// only at DO; LOOP evaluates the text DO left on the statement-flag stack.
#include <memory>
#include <string>

#include "engine/context.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "eval/eval.hpp"
#include "eval/expression.hpp"
#include "statements/block_skip.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

using detail::fail;

// Whether the loop whose entry is given runs its body (again).
bool bodyRuns(FlagFrame::Marker marker, const Value& condition, const Locale& locale) {
  const bool holds = detail::conditionHolds(condition, locale);
  return marker == FlagFrame::Marker::DoWhile ? holds : !holds;
}

struct DoForm : Form {
  explicit DoForm(std::u16string_view line) {
    const auto word = detail::expectKeyword(verdict, line, u"DO");
    if (!word) return;
    const detail::Cut rest = detail::upToComment(line, word->end);
    // An unclosed literal leaves no readable condition.
    if (!rest.readable) {
      verdict.fail(msg::kBadExpression);
      return;
    }
    const detail::Word kind = detail::readLooseWord(rest.text, 0);
    if (equalsNoCase(kind.text, u"WHILE")) {
      marker = FlagFrame::Marker::DoWhile;
    } else if (equalsNoCase(kind.text, u"UNTIL")) {
      marker = FlagFrame::Marker::DoUntil;
    } else {
      verdict.fail(msg::kSyntax);
      return;
    }
    const std::u16string_view text = rest.text.substr(kind.end);
    if (trimBlanks(text).empty()) {
      verdict.fail(msg::kDoMissingExpression);
      return;
    }
    condition = std::make_unique<eval::Expression>(text);
    conditionText = Value::string(text);
  }

  detail::Verdict verdict;
  FlagFrame::Marker marker = FlagFrame::Marker::Other;
  std::unique_ptr<eval::Expression> condition;
  Value conditionText;  // what the entry shows the host
};

struct LoopForm : Form {
  explicit LoopForm(std::u16string_view line) {
    const auto word = detail::readKeyword(verdict, line, detail::QuoteStyle::Spaced);
    if (!word) return;
    const std::u16string_view rest = trimBlanks(detail::upToComment(line, word->end).text);
    const bool isLoop = equalsNoCase(word->text, u"LOOP") && rest.empty();
    const bool isEndDo = equalsNoCase(word->text, u"END") && equalsNoCase(rest, u"DO");
    if (!isLoop && !isEndDo) verdict.fail(msg::kSyntax);
  }
  detail::Verdict verdict;
};

struct ExitForm : Form {
  explicit ExitForm(std::u16string_view line) {
    const auto word = detail::expectKeyword(verdict, line, u"EXIT");
    if (!word) return;
    const std::u16string_view rest = trimBlanks(detail::upToComment(line, word->end).text);
    // A bare EXIT does nothing at all, not even move on.
    if (rest.empty()) {
      verdict.kind = detail::Verdict::Kind::Status;
    } else if (!equalsNoCase(rest, u"DO")) {
      verdict.fail(msg::kSyntax);
    }
  }
  detail::Verdict verdict;
};

// The condition of the loop an entry stands for: the DO line's kept form
// while this script runs, else the entry's text read afresh.
Value loopCondition(Context& ctx, const FlagFrame& entry) {
  if (entry.condition != nullptr && entry.scriptGeneration == ctx.scriptGeneration()) {
    return entry.condition->evaluate(ctx);
  }
  const Value& text = entry.detail;
  return Evaluate(ctx, text.isString() ? std::u16string_view(text.stringValue()) : u"");
}

}  // namespace

std::int32_t Do(Context& ctx, KeptLine& line) {
  const DoForm& form = formOf<DoForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);

  const Value value = form.condition->evaluate(ctx);
  if (ctx.errNum() != 0) return ctx.errNum();
  if (!value.isNull() && !vb::isNumeric(value, ctx.locale())) {
    return fail(ctx, msg::kDoMissingExpression);
  }

  FlagFrame frame;
  frame.marker = form.marker;
  frame.line = Value::integer(ctx.currentLine());
  frame.detail = form.conditionText;
  frame.condition = form.condition.get();
  frame.scriptGeneration = ctx.scriptGeneration();
  ctx.flags().push(std::move(frame));
  ctx.frame().doCount = detail::step16(ctx.frame().doCount, 1);

  if (bodyRuns(form.marker, value, ctx.locale())) {
    ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
    return 0;
  }
  // Skip to the loop's LOOP line, which tests once more and leaves.
  detail::SkipStop stop;
  const auto mode = form.marker == FlagFrame::Marker::DoWhile ? detail::Skip::DoWhileBody
                                                              : detail::Skip::DoUntilBody;
  if (const std::int32_t err = detail::skipForward(ctx, mode, Value(), stop); err != 0) {
    return err;
  }
  ctx.setCurrentLine(stop.line);
  return 0;
}

std::int32_t LoopOrEndDo(Context& ctx, KeptLine& line) {
  const LoopForm& form = formOf<LoopForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);

  if (ctx.flags().size() < 1) return fail(ctx, msg::kLoopWithoutDo);
  const FlagFrame& entry = ctx.flags().top();
  if (!entry.isDo()) return fail(ctx, msg::kLoopWithoutDo);

  // The evaluation may change the stack (a host function can): keep what
  // is needed of the entry.
  const FlagFrame::Marker marker = entry.marker;
  const Value doLine = entry.line;
  const Value value = loopCondition(ctx, entry);
  if (ctx.errNum() != 0) return ctx.errNum();

  if (bodyRuns(marker, value, ctx.locale())) {
    // Back to the first line of the body; the DO line itself does not run again.
    const std::int16_t at = doLine.type() == VarType::Integer ? doLine.integerValue()
                                                              : vb::toInteger(doLine, ctx.locale());
    ctx.setCurrentLine(detail::nextLine(at));
    return 0;
  }
  ctx.flags().pop();
  ctx.frame().doCount = detail::step16(ctx.frame().doCount, -1);
  ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
  return 0;
}

std::int32_t ExitDo(Context& ctx, KeptLine& line) {
  const ExitForm& form = formOf<ExitForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);
  if (ctx.frame().doCount == 0) return fail(ctx, msg::kExitDoOutside);

  detail::SkipStop stop;
  if (const std::int32_t err = detail::skipForward(ctx, detail::Skip::ExitDo, Value(), stop);
      err != 0) {
    return err;
  }
  // Only the loop's own entry goes: IF blocks opened inside the loop stay
  // open on the stack and in IfCount.
  ctx.setCurrentLine(stop.line);
  const FlagFrame popped = ctx.flags().pop();
  ctx.frame().doCount = detail::step16(ctx.frame().doCount, -1);
  if (!popped.isDo()) return fail(ctx, msg::kLoopWithoutDo);
  ctx.setCurrentLine(detail::nextLine(stop.line));
  return 0;
}

}  // namespace korvex::stmt
