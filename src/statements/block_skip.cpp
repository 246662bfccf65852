#include "statements/block_skip.hpp"

#include <string>

#include "engine/engine_services.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "korvex/engine.hpp"
#include "statements/line_scan.hpp"
#include "statements/statement.hpp"

namespace korvex::stmt::detail {

namespace {

// Whether a nested DO line of this kind opens a loop for the scan.
bool countsAsLoop(Skip mode, std::int16_t kind) {
  if (kind == kStmtDoUntil) return true;
  return kind == kStmtDoWhile && (mode == Skip::DoWhileBody || mode == Skip::ExitDo);
}

// Lines a scan passes without doing anything: no block statement, no
// classification error.
bool plain(const KeptLine* kept, std::int16_t kind) {
  if (kept == nullptr || kept->errorNumber != 0) return false;
  switch (kind) {
    case kStmtIf:
    case kStmtElse:
    case kStmtEndIf:
    case kStmtDoWhile:
    case kStmtDoUntil:
    case kStmtLoop:
    case kStmtEndDo:
      return false;
    default:
      return true;
  }
}

}  // namespace

std::int32_t skipForward(BasicEngine& engine, Skip mode, const Value& ifCondition, SkipStop& stop) {
  const bool ifMode = mode == Skip::FalseIf;
  const std::int16_t depth = ifMode ? engine.IfCount() : engine.DoCount();
  const std::int16_t last = engine.LineCount();

  // Lines a scan from here passed before without doing anything are passed
  // again at once: the scan goes on at the line where it stopped before.
  KeptLine* from = services::KeptLineAt(engine, engine.CurrentLineNum());
  const std::int16_t first =
      from != nullptr && from->skipStop > 0 ? from->skipStop : nextLine(engine.CurrentLineNum());
  bool allPlain = true;
  const auto stopAt = [&](std::int16_t line, std::int16_t kind) -> std::int32_t {
    stop = {line, kind};
    if (from != nullptr && allPlain) from->skipStop = line;
    return 0;
  };

  for (std::int16_t line = first;; line = nextLine(line)) {
    if (line > last) {
      return ifMode ? fail(engine, 10, msg::kIfWithoutEndIf)
                    : fail(engine, 14, msg::kDoWithoutLoop);
    }
    KeptLine* kept = services::KeptLineAt(engine, line);
    const std::int16_t kind = kindAt(engine, line);
    // Only the false-IF scan stops at an error: a line that does not
    // classify, or one left by the line before. The loop scans pass over
    // such lines, and the 0 they return at the LOOP line clears the number
    // (not the message).
    if (ifMode && engine.ErrNum() != 0) return engine.ErrNum();
    const bool isPlain = plain(kept, kind);

    switch (kind) {
      case kStmtIf: {
        // A malformed IF reports its error and counts as no block.
        if (kept != nullptr && IsIfBlock(engine, *kept)) {
          // The entry records the running statement's line, not the nested one.
          FlagFrame frame;
          frame.marker = FlagFrame::Marker::If;
          frame.line = Value::integer(engine.CurrentLineNum());
          if (ifMode) frame.detail = ifCondition;
          services::PushFlag(engine, std::move(frame));
          engine.SetIfCount(step16(engine.IfCount(), 1));
        }
        break;
      }
      case kStmtElse:
        if (ifMode && engine.IfCount() == depth) return stopAt(line, kind);
        break;
      case kStmtEndIf:
        if (engine.IfCount() <= 0) return fail(engine, 11, msg::kEndIfWithoutIf);
        if (ifMode && engine.IfCount() == depth) return stopAt(line, kind);
        services::PopFlag(engine);
        engine.SetIfCount(step16(engine.IfCount(), -1));
        break;
      case kStmtDoWhile:
      case kStmtDoUntil:
        if (countsAsLoop(mode, kind)) {
          FlagFrame frame;
          frame.marker =
              kind == kStmtDoWhile ? FlagFrame::Marker::DoWhile : FlagFrame::Marker::DoUntil;
          frame.line = Value::integer(line);
          frame.detail = Value::string(u"");
          services::PushFlag(engine, std::move(frame));
          engine.SetDoCount(step16(engine.DoCount(), 1));
        }
        break;
      case kStmtLoop:
      case kStmtEndDo: {
        if (mode == Skip::ExitDo && engine.DoCount() <= 0) {
          return fail(engine, 15, msg::kLoopWithoutDo);
        }
        if (!ifMode && engine.DoCount() == depth) return stopAt(line, kind);
        // Whatever is on top is taken as the nested loop's entry; an IF
        // entry there (a DO WHILE passed over) is the structure error.
        const FlagFrame popped = services::PopFlag(engine);
        engine.SetDoCount(step16(engine.DoCount(), -1));
        if (!popped.isDo()) return fail(engine, 15, msg::kLoopWithoutDo);
        break;
      }
      default:
        break;
    }
    allPlain = allPlain && isPlain;
  }
}

}  // namespace korvex::stmt::detail
