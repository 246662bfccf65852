// IF ... THEN (block or single line), ELSE and END IF.
#include <memory>
#include <string>

#include "engine/context.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/nesting.hpp"
#include "engine/script_reader.hpp"
#include "eval/expression.hpp"
#include "statements/block_skip.hpp"
#include "statements/line_scan.hpp"
#include "statements/run_loop.hpp"
#include "statements/statement.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

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
  // The frame that runs the tail, kept with its own forms between runs.
  std::unique_ptr<Frame> tailFrame;
};

IfForm::IfForm(std::u16string_view line) {
  const detail::Word word = detail::readLooseWord(line, 0);
  if (word.text.empty() || word.text.front() == u'\'' || !equalsNoCase(word.text, u"IF")) {
    verdict.fail(msg::kSyntax);
    return;
  }
  for (std::size_t pos = word.end; pos < line.size(); ++pos) {
    const char16_t c = line[pos];
    if (c == u'"') {
      const std::size_t close = line.find(u'"', pos + 1);
      if (close == std::u16string_view::npos) {
        verdict.fail(msg::kBadExpression);
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
  verdict.fail(msg::kIfMissingThen);
}

// The tail of a true single-line IF runs as a script of its own in a frame
// of its own: it shares the variables, the record and the host's objects
// but not the workbook, and starts every run as a fresh script would. Its
// error, already carrying the tail's own line, is the IF line's error.
std::int32_t runTail(Context& ctx, IfForm& form) {
  // The tail may itself be a single-line IF.
  const NestingLevel level;
  if (!form.tailFrame) {
    form.tailFrame = std::make_unique<Frame>(true);
    form.tailFrame->codeBlock = form.tail;
  }
  Frame& tail = *form.tailFrame;
  tail.reset();
  ctx.inFrame(tail, [&] {
    try {
      RunScript(ctx);
    } catch (const vb::RuntimeError& e) {
      tail.error = e.error();
    }
  });
  if (!tail.error.failed()) {
    ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
    return 0;
  }
  return ctx.report(tail.error.number, tail.error.text);
}

// Moves to the line a skip scan stopped at; the run loop runs that line.
std::int32_t jumpTo(Context& ctx, std::int32_t scanResult, const detail::SkipStop& stop) {
  if (scanResult != 0) return scanResult;
  ctx.setCurrentLine(stop.line);
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

bool IsIfBlock(Context& ctx, KeptLine& line) {
  const IfForm& form = formOf<IfForm>(line);
  if (!form.verdict.go()) {
    form.verdict.replay(ctx);
    return false;
  }
  return form.tailReadable && form.tail.empty();
}

std::int32_t If(Context& ctx, KeptLine& line) {
  IfForm& form = formOf<IfForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);
  // An unclosed literal after THEN: the statement cannot move on, and
  // returning "success" there would make the run loop repeat this line for
  // ever. Report it like an unclosed literal in the condition.
  if (!form.tailReadable) return fail(ctx, msg::kBadExpression);
  const bool block = form.tail.empty();

  const Value condition = form.condition->evaluate(ctx);
  if (ctx.errNum() != 0) return ctx.errNum();

  if (block) {
    FlagFrame frame;
    frame.marker = FlagFrame::Marker::If;
    frame.line = Value::integer(ctx.currentLine());
    frame.detail = condition;
    ctx.flags().push(std::move(frame));
    ctx.frame().ifCount = detail::step16(ctx.frame().ifCount, 1);
  }

  bool holds = false;
  if (!condition.isNull()) {
    if (!vb::isNumeric(condition, ctx.locale())) {
      // The message is set to the number, then the number is taken from the
      // message text, which is no number: the platform's type mismatch ends
      // the line. The order of the two is what hosts see.
      ctx.setErrMsg(u"4");
      vb::raise(vb::kTypeMismatch);
    }
    holds = vb::toBoolean(condition, ctx.locale());
  }

  if (holds) {
    if (!block) return runTail(ctx, form);
    ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
    return 0;
  }
  if (!block) {
    ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
    return 0;
  }
  detail::SkipStop stop;
  return jumpTo(ctx, detail::skipForward(ctx, detail::Skip::FalseIf, condition, stop), stop);
}

std::int32_t Else(Context& ctx, KeptLine& line) {
  const ElseForm& form = formOf<ElseForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);
  if (!form.rest.empty()) return fail(ctx, msg::kElseError);
  if (ctx.flags().size() < 1) return fail(ctx, msg::kElseWithoutIf);
  const FlagFrame& entry = ctx.flags().top();
  if (entry.marker != FlagFrame::Marker::If) return fail(ctx, msg::kElseWithoutIf);

  // Only a condition exactly equal to True took the IF part; any other
  // value (5, Null, ...) leaves the ELSE part to run as well.
  if (!equalsTrue(entry.detail, ctx.locale())) {
    ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
    return 0;
  }
  // The ELSE part ends at the first END IF of any depth. Lines that do not
  // classify are passed over; the 0 returned at the END IF clears their
  // error number.
  for (std::int16_t at = detail::nextLine(ctx.currentLine());; at = detail::nextLine(at)) {
    if (at > ctx.lineCount()) return fail(ctx, msg::kIfWithoutEndIf);
    if (detail::kindAt(ctx, at) == kStmtEndIf) {
      ctx.setCurrentLine(at);
      return 0;
    }
  }
}

std::int32_t EndIf(Context& ctx, KeptLine& line) {
  const EndIfForm& form = formOf<EndIfForm>(line);
  if (!form.verdict.go()) return form.verdict.replay(ctx);
  // A bare END is the stop statement's business, not this one's.
  if (form.rest.empty()) return ctx.errNum();
  if (!form.closesIf) return fail(ctx, msg::kEndIfSyntax);
  if (ctx.flags().size() < 1 || ctx.flags().top().marker != FlagFrame::Marker::If) {
    return fail(ctx, msg::kEndIfWithoutIf);
  }
  ctx.flags().pop();
  ctx.frame().ifCount = detail::step16(ctx.frame().ifCount, -1);
  ctx.setCurrentLine(detail::nextLine(ctx.currentLine()));
  return 0;
}

}  // namespace korvex::stmt
