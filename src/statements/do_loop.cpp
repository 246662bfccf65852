// DO WHILE / DO UNTIL, LOOP / END DO and EXIT DO. The condition is written
// only at DO; LOOP evaluates the text DO left on the statement-flag stack.
#include <string>

#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/string_op.hpp"
#include "eval/eval.hpp"
#include "korvex/engine.hpp"
#include "statements/block_skip.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

using detail::fail;

// Whether the loop whose entry is given runs its body (again).
bool bodyRuns(std::u16string_view marker, const Value& condition, const Locale& locale) {
  const bool holds = detail::conditionHolds(condition, locale);
  return marker == detail::kDoWhileMarker ? holds : !holds;
}

}  // namespace

std::int32_t Do(BasicEngine& engine, std::u16string_view line) {
  const auto word = detail::expectKeyword(engine, line, u"DO");
  if (!word) return engine.ErrNum();
  const detail::Cut rest = detail::upToComment(line, word->end);
  // An unclosed literal leaves no readable condition.
  if (!rest.readable) return fail(engine, 2, msg::kBadExpression);

  const detail::Word kind = detail::readLooseWord(rest.text, 0);
  std::u16string_view marker;
  if (equalsNoCase(kind.text, u"WHILE")) {
    marker = detail::kDoWhileMarker;
  } else if (equalsNoCase(kind.text, u"UNTIL")) {
    marker = detail::kDoUntilMarker;
  } else {
    return fail(engine, 1, msg::kSyntax);
  }
  const std::u16string_view condition = rest.text.substr(kind.end);
  if (trimBlanks(condition).empty()) return fail(engine, 13, msg::kDoMissingExpression);

  const Value value = Evaluate(engine, condition);
  if (engine.ErrNum() != 0) return engine.ErrNum();
  if (!value.isNull() && !vb::isNumeric(value, engine.Locale())) {
    return fail(engine, 13, msg::kDoMissingExpression);
  }

  services::PushFlag(engine,
                     detail::flagEntry(marker, engine.CurrentLineNum(), Value::string(condition)));
  engine.SetDoCount(detail::step16(engine.DoCount(), 1));

  if (bodyRuns(marker, value, engine.Locale())) {
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  // Skip to the loop's LOOP line, which tests once more and leaves.
  detail::SkipStop stop;
  const auto mode =
      marker == detail::kDoWhileMarker ? detail::Skip::DoWhileBody : detail::Skip::DoUntilBody;
  if (const std::int32_t err = detail::skipForward(engine, mode, Value(), stop); err != 0) {
    return err;
  }
  engine.SetCurrentLineNum(stop.line);
  return 0;
}

std::int32_t LoopOrEndDo(BasicEngine& engine, std::u16string_view line) {
  const auto word = detail::readKeyword(engine, line, detail::QuoteStyle::Spaced);
  if (!word) return engine.ErrNum();
  const std::u16string_view rest = trimBlanks(detail::upToComment(line, word->end).text);
  const bool isLoop = equalsNoCase(word->text, u"LOOP") && rest.empty();
  const bool isEndDo = equalsNoCase(word->text, u"END") && equalsNoCase(rest, u"DO");
  if (!isLoop && !isEndDo) return fail(engine, 1, msg::kSyntax);

  if (engine.StmtFlagCount() < 1) return fail(engine, 15, msg::kLoopWithoutDo);
  const Value entry = services::PeekFlag(engine);
  const std::u16string_view marker = detail::flagMarker(entry);
  if (!detail::isDoMarker(marker)) return fail(engine, 15, msg::kLoopWithoutDo);

  const Value condition = detail::flagItem(entry, 3);
  const Value value =
      Evaluate(engine, condition.isString() ? std::u16string_view(condition.stringValue()) : u"");
  if (engine.ErrNum() != 0) return engine.ErrNum();

  if (bodyRuns(marker, value, engine.Locale())) {
    // Back to the first line of the body; the DO line itself does not run again.
    const std::int16_t doLine = vb::toInteger(detail::flagItem(entry, 2), engine.Locale());
    engine.SetCurrentLineNum(detail::nextLine(doLine));
    return 0;
  }
  services::PopFlag(engine);
  engine.SetDoCount(detail::step16(engine.DoCount(), -1));
  engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
  return 0;
}

std::int32_t ExitDo(BasicEngine& engine, std::u16string_view line) {
  const auto word = detail::expectKeyword(engine, line, u"EXIT");
  if (!word) return engine.ErrNum();
  const std::u16string_view rest = trimBlanks(detail::upToComment(line, word->end).text);
  // A bare EXIT does nothing at all, not even move on.
  if (rest.empty()) return engine.ErrNum();
  if (!equalsNoCase(rest, u"DO")) return fail(engine, 1, msg::kSyntax);
  if (engine.DoCount() == 0) return fail(engine, 16, msg::kExitDoOutside);

  detail::SkipStop stop;
  if (const std::int32_t err = detail::skipForward(engine, detail::Skip::ExitDo, Value(), stop);
      err != 0) {
    return err;
  }
  // Only the loop's own entry goes: IF blocks opened inside the loop stay
  // open on the stack and in IfCount.
  engine.SetCurrentLineNum(stop.line);
  const Value popped = services::PopFlag(engine);
  engine.SetDoCount(detail::step16(engine.DoCount(), -1));
  if (!detail::isDoMarker(detail::flagMarker(popped))) return fail(engine, 15, msg::kLoopWithoutDo);
  engine.SetCurrentLineNum(detail::nextLine(stop.line));
  return 0;
}

}  // namespace korvex::stmt
