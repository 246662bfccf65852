// Execute: the line-by-line run loop. Every line is classified afresh each
// time control reaches it and handed to its statement; the first error ends
// the run and is left for the host in ErrNum / ErrMsg.
#include <array>
#include <string>

#include "engine/checked.hpp"
#include "engine/engine_state.hpp"
#include "engine/faults.hpp"
#include "engine/messages.hpp"
#include "engine/string_op.hpp"
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

// The record moves and RAISEERROR report through ErrNum / ErrMsg themselves.
template <bool (BasicEngine::*Move)() noexcept>
std::int32_t move(BasicEngine& engine, KeptLine&) {
  (engine.*Move)();
  return engine.ErrNum();
}

std::int32_t raiseError(BasicEngine& engine, KeptLine& line) {
  stmt::RaiseError(engine, raiseErrorArgument(line.text));
  return engine.ErrNum();
}

// The kinds that run a statement: its handler, and whether the loop moves
// on after it (the block statements set the next line themselves).
struct Arm {
  std::int16_t kind;
  std::int32_t (*run)(BasicEngine&, KeptLine&);
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
    {kStmtMoveFirst, move<&BasicEngine::MoveFirst>, true},
    {kStmtMoveNext, move<&BasicEngine::MoveNext>, true},
    {kStmtMovePrevious, move<&BasicEngine::MovePrevious>, true},
    {kStmtMoveLast, move<&BasicEngine::MoveLast>, true},
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
[[noreturn]] void raiseLineError(const EngineAccess::State& s, std::int32_t number) {
  std::u16string description = s.errMsg;
  description += u" : ";
  description += msg::kLineLabel;
  const std::string line = std::to_string(s.currentLine);
  description.append(line.begin(), line.end());
  throw vb::RuntimeError(number, std::move(description));
}

}  // namespace

void BasicEngine::Execute() noexcept {
  try {
    services::RunLines(*this);
  } catch (...) {
    Fault f = currentFault();
    s_->errMsg = std::move(f.description);
    s_->errNum = f.number;
  }
}

RunResult BasicEngine::Run() noexcept {
  s_->errNum = 0;
  s_->errMsg.clear();
  Execute();
  RunResult r;
  r.errNum = s_->errNum;
  r.line = s_->currentLine;
  try {
    r.errMsg = s_->errMsg;
  } catch (...) {  // out of memory for the copy: the number still tells
  }
  return r;
}

void services::RunLines(BasicEngine& engine) {
  EngineAccess::State& s = EngineAccess::state(engine);
  SplitCodeBlock(engine);
  s.currentLine = 1;
  // Held for the run: the lines and their forms stay alive whatever a
  // statement or a host callback does to the engine.
  const std::shared_ptr<KeptScript> script = s.kept;

  const auto advance = [&s] { s.currentLine = toInt16Checked(std::int32_t{s.currentLine} + 1); };

  while (s.currentLine <= s.lineCount) {
    // The point where the run yields to its host, once per line.
    if (s.lineHook && !s.lineHook(s.currentLine)) s.stopRequested.store(true);
    if (s.stopRequested.load()) {
      const auto answer =
          engine.UI().messageBox(msg::kConfirmStop, UserInterface::Buttons::YesNo, u"");
      s.stopRequested.store(false);
      if (answer == UserInterface::Answer::Yes) return;
    }

    // The host may have moved the line (a line hook can).
    if (static_cast<std::size_t>(s.currentLine) > script->lines.size()) {
      services::Report(engine, 21, msg::kGetLineIndex);
      raiseLineError(s, kEngineError);
    }
    if (s.currentLine < 1) vb::raise(vb::kSubscript);
    KeptLine& line = script->lines[static_cast<std::size_t>(s.currentLine) - 1];

    const std::int16_t kind = services::KindOf(engine, line);
    if (s.errNum != 0) raiseLineError(s, kEngineError);

    if (kind == kStmtBlank || kind == kStmtComment) {
      advance();
      continue;
    }
    if (const Arm* arm = armFor(kind)) {
      s.errNum = arm->run(engine, line);
      if (s.errNum != 0) raiseLineError(s, s.errNum);
      if (arm->advances) advance();
      continue;
    }
    if (kind == kStmtEnd) {
      // Stops the script at once: open blocks are forgotten and the end
      // check does not run.
      s.ifCount = 0;
      s.doCount = 0;
      services::ClearFlags(engine);
      return;
    }
    if (kind == kStmtSyntaxError) {
      s.errMsg = msg::kSyntax;
      s.errNum = 1;
    } else {  // EXIT FOR, AddRecord, DelRecord: recognised, not provided
      s.errMsg = msg::kUnrecognisedStatement;
      s.errNum = 19;
    }
    raiseLineError(s, s.errNum);
  }

  if (s.ifCount > 0) {
    s.errMsg = msg::kIfWithoutEndIf;
    s.errNum = 10;
  }
  if (s.doCount > 0) {
    s.errMsg = msg::kDoWithoutLoop;
    s.errNum = 14;
  }
  if (s.errNum != 0) raiseLineError(s, kEngineError);
}

}  // namespace korvex
