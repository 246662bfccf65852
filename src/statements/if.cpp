// IF ... THEN (block or single line), ELSE and END IF.
#include <string>

#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/nesting.hpp"
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

constexpr std::u16string_view kThen = u"THEN";

struct IfParts {
  std::u16string_view condition;
  std::u16string_view tail;  // after THEN, up to a comment, trimmed
  bool tailReadable = true;  // false: a literal after THEN is not closed
};

// THEN counts only as a word of its own: a blank before it and a blank (or
// the end of the line) after it.
bool thenAt(std::u16string_view line, std::size_t pos) {
  if (pos == 0 || !isBlank(line[pos - 1])) return false;
  if (pos + kThen.size() > line.size()) return false;
  if (!equalsNoCase(line.substr(pos, kThen.size()), kThen)) return false;
  const std::size_t after = pos + kThen.size();
  return after == line.size() || isBlank(line[after]);
}

// The IF line taken apart without evaluating anything; 0 or the error
// reported on the engine.
std::int32_t splitIf(BasicEngine& engine, std::u16string_view line, IfParts& parts) {
  const detail::Word word = detail::readLooseWord(line, 0);
  if (word.text.empty() || word.text.front() == u'\'' || !equalsNoCase(word.text, u"IF")) {
    return fail(engine, 1, msg::kSyntax);
  }
  for (std::size_t pos = word.end; pos < line.size(); ++pos) {
    const char16_t c = line[pos];
    if (c == u'"') {
      const std::size_t close = line.find(u'"', pos + 1);
      if (close == std::u16string_view::npos) return fail(engine, 2, msg::kBadExpression);
      pos = close;
      continue;
    }
    if ((c == u'T' || c == u't') && thenAt(line, pos)) {
      parts.condition = line.substr(word.end, pos - word.end);
      const detail::Cut tail = detail::upToComment(line, pos + kThen.size());
      parts.tail = trimBlanks(tail.text);
      parts.tailReadable = tail.readable;
      return 0;
    }
  }
  return fail(engine, 9, msg::kIfMissingThen);
}

// The tail of a true single-line IF runs as a script of its own on a child
// engine that shares the variables and the record.
std::int32_t runTail(BasicEngine& engine, std::u16string_view tail) {
  // The tail may itself be a single-line IF.
  const NestingLevel level;
  BasicEngine child;
  child.SetParent(engine.Parent());
  services::ShareStateOf(child, engine);
  child.SetCodeBlock(std::u16string(tail));
  child.Execute();
  if (child.ErrNum() == 0) {
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  services::Report(engine, child.ErrNum(), child.ErrMsg());
  return child.ErrNum();
}

// Moves to the line a skip scan stopped at; the run loop runs that line.
std::int32_t jumpTo(BasicEngine& engine, std::int32_t scanResult, const detail::SkipStop& stop) {
  if (scanResult != 0) return scanResult;
  engine.SetCurrentLineNum(stop.line);
  return 0;
}

// The IF condition compared with the constant True: a number by its value
// (so "-1" is True), Null never; a text that is no number is the
// platform's type mismatch.
bool equalsTrue(const Value& condition, const Locale& loc) {
  if (condition.isNull()) return false;
  if (condition.isString()) return vb::toDouble(condition, loc) == -1;
  const auto cmp = vb::compareValues(condition, Value::boolean(true), loc);
  return cmp && *cmp == 0;
}

// ELSE and END IF: the keyword and what follows it up to a comment. nullopt
// when the keyword itself is wrong (already reported).
std::optional<std::u16string_view> keywordRest(BasicEngine& engine, std::u16string_view line,
                                               std::u16string_view keyword) {
  const auto word = detail::expectKeyword(engine, line, keyword);
  if (!word) return std::nullopt;
  return trimBlanks(detail::upToComment(line, word->end).text);
}

}  // namespace

bool IsIfBlock(BasicEngine& engine, std::u16string_view line) {
  IfParts parts;
  if (splitIf(engine, line, parts) != 0) return false;
  return parts.tailReadable && parts.tail.empty();
}

std::int32_t If(BasicEngine& engine, std::u16string_view line) {
  IfParts parts;
  if (const std::int32_t err = splitIf(engine, line, parts); err != 0) return err;
  // An unclosed literal after THEN: the statement cannot move on, and
  // returning "success" there would make the run loop repeat this line for
  // ever. Report it like an unclosed literal in the condition.
  if (!parts.tailReadable) return fail(engine, 2, msg::kBadExpression);
  const bool block = parts.tail.empty();

  const Value condition = Evaluate(engine, parts.condition);
  if (engine.ErrNum() != 0) return engine.ErrNum();

  if (block) {
    services::PushFlag(engine,
                       detail::flagEntry(detail::kIfMarker, engine.CurrentLineNum(), condition));
    engine.SetIfCount(detail::step16(engine.IfCount(), 1));
  }

  bool holds = false;
  if (!condition.isNull()) {
    if (!vb::isNumeric(condition, engine.Locale())) {
      // The message is set to the number, then the number is taken from the
      // message text, which is no number: the platform's type mismatch ends
      // the line. The order of the two is what hosts see.
      engine.SetErrMsg(u"4");
      vb::raise(vb::kTypeMismatch);
    }
    holds = vb::toBoolean(condition, engine.Locale());
  }

  if (holds) {
    if (!block) return runTail(engine, parts.tail);
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  if (!block) {
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  detail::SkipStop stop;
  return jumpTo(engine, detail::skipForward(engine, detail::Skip::FalseIf, condition, stop), stop);
}

std::int32_t Else(BasicEngine& engine, std::u16string_view line) {
  const auto rest = keywordRest(engine, line, u"ELSE");
  if (!rest) return engine.ErrNum();
  if (!rest->empty()) return fail(engine, 8, msg::kElseError);
  if (engine.StmtFlagCount() < 1) return fail(engine, 7, msg::kElseWithoutIf);
  const Value entry = services::PeekFlag(engine);
  if (detail::flagMarker(entry) != detail::kIfMarker) return fail(engine, 7, msg::kElseWithoutIf);

  // Only a condition exactly equal to True took the IF part; any other
  // value (5, Null, ...) leaves the ELSE part to run as well.
  if (!equalsTrue(detail::flagItem(entry, 3), engine.Locale())) {
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  // The ELSE part ends at the first END IF of any depth. Lines that do not
  // classify are passed over; the 0 returned at the END IF clears their
  // error number.
  for (std::int16_t at = detail::nextLine(engine.CurrentLineNum());; at = detail::nextLine(at)) {
    if (at > engine.LineCount()) return fail(engine, 10, msg::kIfWithoutEndIf);
    const std::int16_t kind = engine.WhatSTMT(services::LineCode(engine, at));
    if (kind == kStmtEndIf) {
      engine.SetCurrentLineNum(at);
      return 0;
    }
  }
}

std::int32_t EndIf(BasicEngine& engine, std::u16string_view line) {
  const auto rest = keywordRest(engine, line, u"END");
  if (!rest) return engine.ErrNum();
  // A bare END is the stop statement's business, not this one's.
  if (rest->empty()) return engine.ErrNum();
  if (!equalsNoCase(*rest, u"IF")) return fail(engine, 12, msg::kEndIfSyntax);
  if (engine.StmtFlagCount() < 1 ||
      detail::flagMarker(services::PeekFlag(engine)) != detail::kIfMarker) {
    return fail(engine, 11, msg::kEndIfWithoutIf);
  }
  services::PopFlag(engine);
  engine.SetIfCount(detail::step16(engine.IfCount(), -1));
  engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
  return 0;
}

}  // namespace korvex::stmt
