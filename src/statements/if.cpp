// IF ... THEN (block or single line), ELSE and END IF.
#include <memory>
#include <string>

#include "engine/engine_services.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/nesting.hpp"
#include "engine/string_op.hpp"
#include "eval/expression.hpp"
#include "korvex/engine.hpp"
#include "statements/block_skip.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"

namespace korvex::stmt {

namespace {

using detail::fail;

constexpr std::u16string_view kThen = u"THEN";

// THEN counts only as a word of its own: a blank before it and a blank (or
// the end of the line) after it.
bool thenAt(std::u16string_view line, std::size_t pos) {
  if (pos == 0 || !isBlank(line[pos - 1])) return false;
  if (pos + kThen.size() > line.size()) return false;
  if (!equalsNoCase(line.substr(pos, kThen.size()), kThen)) return false;
  const std::size_t after = pos + kThen.size();
  return after == line.size() || isBlank(line[after]);
}

// The IF line taken apart: the condition, and the tail after THEN that a
// single-line IF runs.
struct IfForm : Form {
  explicit IfForm(std::u16string_view line);

  detail::Verdict verdict;  // of taking the line apart
  std::unique_ptr<eval::Expression> condition;
  std::u16string_view tail;  // after THEN, up to a comment, trimmed
  bool tailReadable = true;  // false: a literal after THEN is not closed
  // The engine that runs the tail, kept with its own forms between runs.
  std::unique_ptr<BasicEngine> child;
};

IfForm::IfForm(std::u16string_view line) {
  const detail::Word word = detail::readLooseWord(line, 0);
  if (word.text.empty() || word.text.front() == u'\'' || !equalsNoCase(word.text, u"IF")) {
    verdict.fail(1, msg::kSyntax);
    return;
  }
  for (std::size_t pos = word.end; pos < line.size(); ++pos) {
    const char16_t c = line[pos];
    if (c == u'"') {
      const std::size_t close = line.find(u'"', pos + 1);
      if (close == std::u16string_view::npos) {
        verdict.fail(2, msg::kBadExpression);
        return;
      }
      pos = close;
      continue;
    }
    if ((c == u'T' || c == u't') && thenAt(line, pos)) {
      condition = std::make_unique<eval::Expression>(line.substr(word.end, pos - word.end));
      const detail::Cut cut = detail::upToComment(line, pos + kThen.size());
      tail = trimBlanks(cut.text);
      tailReadable = cut.readable;
      return;
    }
  }
  verdict.fail(9, msg::kIfMissingThen);
}

// The tail of a true single-line IF runs as a script of its own on a child
// engine that shares the variables and the record. The child is made once
// per line and starts every run as a new engine would.
std::int32_t runTail(BasicEngine& engine, IfForm& form) {
  // The tail may itself be a single-line IF.
  const NestingLevel level;
  if (!form.child) {
    form.child = std::make_unique<BasicEngine>();
    form.child->SetCodeBlock(std::u16string(form.tail));
  }
  BasicEngine& child = *form.child;
  services::ResetForTail(child);
  child.SetParent(engine.Parent());
  services::ShareStateOf(child, engine);
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

// ELSE and END IF: the keyword and what follows it up to a comment.
struct KeywordForm : Form {
  KeywordForm(std::u16string_view line, std::u16string_view keyword) {
    const auto word = detail::expectKeyword(verdict, line, keyword);
    if (word) rest = trimBlanks(detail::upToComment(line, word->end).text);
  }
  detail::Verdict verdict;
  std::u16string_view rest;
};

struct ElseForm : KeywordForm {
  explicit ElseForm(std::u16string_view line) : KeywordForm(line, u"ELSE") {}
};
struct EndIfForm : KeywordForm {
  explicit EndIfForm(std::u16string_view line)
      : KeywordForm(line, u"END"), closesIf(equalsNoCase(rest, u"IF")) {}
  bool closesIf;
};

}  // namespace

bool IsIfBlock(BasicEngine& engine, KeptLine& line) {
  const IfForm& form = formOf<IfForm>(line);
  if (!form.verdict.go()) {
    form.verdict.replay(engine);
    return false;
  }
  return form.tailReadable && form.tail.empty();
}

std::int32_t If(BasicEngine& engine, KeptLine& line) {
  IfForm& form = formOf<IfForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(engine);
  // An unclosed literal after THEN: the statement cannot move on, and
  // returning "success" there would make the run loop repeat this line for
  // ever. Report it like an unclosed literal in the condition.
  if (!form.tailReadable) return fail(engine, 2, msg::kBadExpression);
  const bool block = form.tail.empty();

  const Value condition = form.condition->evaluate(engine);
  if (engine.ErrNum() != 0) return engine.ErrNum();

  if (block) {
    FlagFrame frame;
    frame.marker = FlagFrame::Marker::If;
    frame.line = Value::integer(engine.CurrentLineNum());
    frame.detail = condition;
    services::PushFlag(engine, std::move(frame));
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
    if (!block) return runTail(engine, form);
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

std::int32_t Else(BasicEngine& engine, KeptLine& line) {
  const ElseForm& form = formOf<ElseForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(engine);
  if (!form.rest.empty()) return fail(engine, 8, msg::kElseError);
  if (engine.StmtFlagCount() < 1) return fail(engine, 7, msg::kElseWithoutIf);
  const FlagFrame& entry = services::PeekFlag(engine);
  if (entry.marker != FlagFrame::Marker::If) return fail(engine, 7, msg::kElseWithoutIf);

  // Only a condition exactly equal to True took the IF part; any other
  // value (5, Null, ...) leaves the ELSE part to run as well.
  if (!equalsTrue(entry.detail, engine.Locale())) {
    engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
    return 0;
  }
  // The ELSE part ends at the first END IF of any depth. Lines that do not
  // classify are passed over; the 0 returned at the END IF clears their
  // error number.
  for (std::int16_t at = detail::nextLine(engine.CurrentLineNum());; at = detail::nextLine(at)) {
    if (at > engine.LineCount()) return fail(engine, 10, msg::kIfWithoutEndIf);
    if (detail::kindAt(engine, at) == kStmtEndIf) {
      engine.SetCurrentLineNum(at);
      return 0;
    }
  }
}

std::int32_t EndIf(BasicEngine& engine, KeptLine& line) {
  const EndIfForm& form = formOf<EndIfForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(engine);
  // A bare END is the stop statement's business, not this one's.
  if (form.rest.empty()) return engine.ErrNum();
  if (!form.closesIf) return fail(engine, 12, msg::kEndIfSyntax);
  if (engine.StmtFlagCount() < 1 || services::PeekFlag(engine).marker != FlagFrame::Marker::If) {
    return fail(engine, 11, msg::kEndIfWithoutIf);
  }
  services::PopFlag(engine);
  engine.SetIfCount(detail::step16(engine.IfCount(), -1));
  engine.SetCurrentLineNum(detail::nextLine(engine.CurrentLineNum()));
  return 0;
}

}  // namespace korvex::stmt
