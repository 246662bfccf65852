// The line-by-line run loop. Each line is handed to the statement its kind
// names (the kind is derived once per line and kept); the first error ends
// the run and stays in the frame's error register until someone clears it:
// a frame whose register still holds an error fails at its first line.
#include "statements/run_loop.hpp"

#include <array>
#include <chrono>
#include <string>

#include "engine/checked.hpp"
#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "statements/statement.hpp"
#include "values/runtime_error.hpp"

namespace korvex {

namespace {

// The number under which the engine's own findings (a line it cannot
// classify, a block left open) reach the host: the platform's object-error
// base plus 1500.
constexpr std::int32_t kEngineError = static_cast<std::int32_t>(0x80040000u) + 1500;

constexpr std::u16string_view kRaiseErrorWord = u"RAISEERROR";

// The argument text of a RAISEERROR line: everything after the keyword but
// its first character (normally the separating blank). "RaiseError(5)"
// hands over "5)"; a line that is the bare keyword asks for a negative
// length, which the platform refuses (error 5).
std::u16string_view raiseErrorArgument(std::u16string_view line) {
  std::size_t q = 0;
  while (q + kRaiseErrorWord.size() <= line.size() &&
         !equalsNoCase(line.substr(q, kRaiseErrorWord.size()), kRaiseErrorWord)) {
    ++q;
  }
  const std::int64_t p = std::int64_t{toInt16Checked(static_cast<std::int64_t>(q) + 1)} +
                         static_cast<std::int64_t>(kRaiseErrorWord.size());
  const std::int64_t count = static_cast<std::int64_t>(line.size()) - p;
  if (count < 0) vb::raise(vb::kInvalidCall);
  return line.substr(line.size() - static_cast<std::size_t>(count));
}

// The record moves and RAISEERROR report in the error register themselves;
// what the register holds afterwards is the line's outcome.
template <const std::u16string_view* Member>
std::int32_t move(Context& ctx, KeptLine&) {
  ctx.move(*Member);
  return ctx.errNum();
}

constexpr std::u16string_view kMoveFirst = u"MoveFirst";
constexpr std::u16string_view kMoveNext = u"MoveNext";
constexpr std::u16string_view kMovePrevious = u"MovePrevious";
constexpr std::u16string_view kMoveLast = u"MoveLast";

std::int32_t raiseError(Context& ctx, KeptLine& line) {
  stmt::RaiseError(ctx, raiseErrorArgument(line.text));
  return ctx.errNum();
}

// The kinds that run a statement: its handler, and whether the loop moves
// on after it (the block statements set the next line themselves).
struct Arm {
  std::int16_t kind;
  std::int32_t (*run)(Context&, KeptLine&);
  bool advances;
};

constexpr Arm kArms[] = {
    {kStmtAssign, stmt::Assign, true},
    {kStmtIf, stmt::If, false},
    {kStmtEndIf, stmt::EndIf, false},
    {kStmtDim, stmt::Dim, true},
    {kStmtElse, stmt::Else, false},
    {kStmtDoWhile, stmt::Do, false},
    {kStmtDoUntil, stmt::Do, false},
    {kStmtLoop, stmt::LoopOrEndDo, false},
    {kStmtEndDo, stmt::LoopOrEndDo, false},
    {kStmtExitDo, stmt::ExitDo, false},
    {kStmtMsgBox, stmt::MsgBox, true},
    {kStmtRaiseError, raiseError, true},
    {kStmtMoveFirst, move<&kMoveFirst>, true},
    {kStmtMoveNext, move<&kMoveNext>, true},
    {kStmtMovePrevious, move<&kMovePrevious>, true},
    {kStmtMoveLast, move<&kMoveLast>, true},
};

// The arms by kind, for a lookup per line without a search.
constexpr std::int16_t kFirstKind = kStmtDim;
constexpr std::int16_t kLastKind = kStmtSyntaxError;
constexpr auto kArmByKind = [] {
  std::array<const Arm*, kLastKind - kFirstKind + 1> byKind{};
  for (const Arm& arm : kArms) byKind[static_cast<std::size_t>(arm.kind - kFirstKind)] = &arm;
  return byKind;
}();

const Arm* armFor(std::int16_t kind) noexcept {
  if (kind < kFirstKind || kind > kLastKind) return nullptr;
  return kArmByKind[static_cast<std::size_t>(kind - kFirstKind)];
}

// Ends the run with `number` and the stored message plus " : 行号 n".
[[noreturn]] void raiseLineError(const Frame& f, std::int32_t number) {
  std::u16string description = f.error.text;
  description += u" : ";
  description += msg::kLineLabel;
  const std::string line = std::to_string(f.currentLine);
  description.append(line.begin(), line.end());
  throw vb::RuntimeError(number, std::move(description));
}

// Whether the run ends before this line of the host's script, and why. The
// limits end it at once; a stop request (the host's, or the line hook's)
// is put to the user first.
StopReason stopBefore(Context& ctx, std::int16_t line) {
  if (ctx.stepLimit > 0 && ctx.steps >= ctx.stepLimit) return StopReason::StepLimit;
  if (ctx.timeLimit.count() > 0 &&
      std::chrono::steady_clock::now() - ctx.runStart >= ctx.timeLimit) {
    return StopReason::TimeLimit;
  }
  StopReason reason = StopReason::Request;
  if (ctx.lineHook && !ctx.lineHook(line)) {
    ctx.stopRequested.store(true);
    reason = StopReason::LineHook;
  }
  if (ctx.stopRequested.load()) {
    const auto answer = ctx.ui().messageBox(msg::kConfirmStop, UserInterface::Buttons::YesNo, u"");
    ctx.stopRequested.store(false);
    if (answer == UserInterface::Answer::Yes) return reason;
  }
  ++ctx.steps;
  return StopReason::None;
}

}  // namespace

void RunScript(Context& ctx) {
  Frame& f = ctx.frame();
  ctx.splitScript();
  f.currentLine = 1;
  // Held for the run: the lines and their forms stay alive whatever a
  // statement or a host callback does to the engine.
  const std::shared_ptr<KeptScript> script = f.kept;

  const auto advance = [&f] { f.currentLine = toInt16Checked(std::int32_t{f.currentLine} + 1); };

  while (f.currentLine <= f.lineCount) {
    // The point where the run yields to its host, once per line; a tail
    // runs within its line and is neither hooked nor stopped.
    if (!f.tail) {
      ctx.stoppedBy = stopBefore(ctx, f.currentLine);
      if (ctx.stoppedBy != StopReason::None) return;
    }

    // The host may have moved the line (a line hook can).
    if (static_cast<std::size_t>(f.currentLine) > script->lines.size()) {
      ctx.report(msg::kGetLineIndex);
      raiseLineError(f, kEngineError);
    }
    if (f.currentLine < 1) vb::raise(vb::kSubscript);
    KeptLine& line = script->lines[static_cast<std::size_t>(f.currentLine) - 1];

    // A register that still holds an error, from this run or an earlier
    // one nobody cleared, fails the line.
    const std::int16_t kind = ctx.kindOf(line);
    if (f.error.failed()) raiseLineError(f, kEngineError);

    if (kind == kStmtBlank || kind == kStmtComment) {
      advance();
      continue;
    }
    if (const Arm* arm = armFor(kind)) {
      f.error.number = arm->run(ctx, line);
      if (f.error.failed()) raiseLineError(f, f.error.number);
      if (arm->advances) advance();
      continue;
    }
    if (kind == kStmtEnd) {
      // Stops the script at once: open blocks are forgotten and the end
      // check does not run.
      f.ifCount = 0;
      f.doCount = 0;
      f.flags.clear();
      return;
    }
    if (kind == kStmtSyntaxError) {
      ctx.report(msg::kSyntax);
    } else {  // EXIT FOR, AddRecord, DelRecord: recognised, not provided
      ctx.report(msg::kUnrecognisedStatement);
    }
    raiseLineError(f, f.error.number);
  }

  if (f.ifCount > 0) ctx.report(msg::kIfWithoutEndIf);
  if (f.doCount > 0) ctx.report(msg::kDoWithoutLoop);
  if (f.error.failed()) raiseLineError(f, kEngineError);
}

}  // namespace korvex
