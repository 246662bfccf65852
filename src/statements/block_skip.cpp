#include "statements/block_skip.hpp"

#include <string>

#include "engine/context.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
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
  if (kept == nullptr || kept->error.failed()) return false;
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

std::int32_t skipForward(Context& ctx, Skip mode, const Value& ifCondition, SkipStop& stop) {
  const bool ifMode = mode == Skip::FalseIf;
  const std::int16_t depth = ifMode ? ctx.frame().ifCount : ctx.frame().doCount;
  const std::int16_t last = ctx.lineCount();

  // Lines a scan from here passed before without doing anything are passed
  // again at once: the scan goes on at the line where it stopped before.
  KeptLine* from = ctx.keptLine(ctx.currentLine());
  const std::int16_t first =
      from != nullptr && from->skipStop > 0 ? from->skipStop : nextLine(ctx.currentLine());
  bool allPlain = true;
  const auto stopAt = [&](std::int16_t line, std::int16_t kind) -> std::int32_t {
    stop = {line, kind};
    if (from != nullptr && allPlain) from->skipStop = line;
    return 0;
  };

  for (std::int16_t line = first;; line = nextLine(line)) {
    if (line > last) {
      return ifMode ? fail(ctx, msg::kIfWithoutEndIf) : fail(ctx, msg::kDoWithoutLoop);
    }
    KeptLine* kept = ctx.keptLine(line);
    const std::int16_t kind = kindAt(ctx, line);
    // Only the false-IF scan stops at an error: a line that does not
    // classify, or one left by the line before. The loop scans pass over
    // such lines, and the 0 they return at the LOOP line clears the number
    // (not the message).
    if (ifMode && ctx.errNum() != 0) return ctx.errNum();
    const bool isPlain = plain(kept, kind);

    switch (kind) {
      case kStmtIf: {
        // A malformed IF reports its error and counts as no block.
        if (kept != nullptr && IsIfBlock(ctx, *kept)) {
          // The entry records the running statement's line, not the nested one.
          FlagFrame frame;
          frame.marker = FlagFrame::Marker::If;
          frame.line = Value::integer(ctx.currentLine());
          if (ifMode) frame.detail = ifCondition;
          ctx.flags().push(std::move(frame));
          ctx.frame().ifCount = step16(ctx.frame().ifCount, 1);
        }
        break;
      }
      case kStmtElse:
        if (ifMode && ctx.frame().ifCount == depth) return stopAt(line, kind);
        break;
      case kStmtEndIf:
        if (ctx.frame().ifCount <= 0) return fail(ctx, msg::kEndIfWithoutIf);
        if (ifMode && ctx.frame().ifCount == depth) return stopAt(line, kind);
        ctx.flags().pop();
        ctx.frame().ifCount = step16(ctx.frame().ifCount, -1);
        break;
      case kStmtDoWhile:
      case kStmtDoUntil:
        if (countsAsLoop(mode, kind)) {
          FlagFrame frame;
          frame.marker =
              kind == kStmtDoWhile ? FlagFrame::Marker::DoWhile : FlagFrame::Marker::DoUntil;
          frame.line = Value::integer(line);
          frame.detail = Value::string(u"");
          ctx.flags().push(std::move(frame));
          ctx.frame().doCount = step16(ctx.frame().doCount, 1);
        }
        break;
      case kStmtLoop:
      case kStmtEndDo: {
        if (mode == Skip::ExitDo && ctx.frame().doCount <= 0) {
          return fail(ctx, msg::kLoopWithoutDo);
        }
        if (!ifMode && ctx.frame().doCount == depth) return stopAt(line, kind);
        // Whatever is on top is taken as the nested loop's entry; an IF
        // entry there (a DO WHILE passed over) is the structure error.
        const FlagFrame popped = ctx.flags().pop();
        ctx.frame().doCount = step16(ctx.frame().doCount, -1);
        if (!popped.isDo()) return fail(ctx, msg::kLoopWithoutDo);
        break;
      }
      default:
        break;
    }
    allPlain = allPlain && isPlain;
  }
}

}  // namespace korvex::stmt::detail
