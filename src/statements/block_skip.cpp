#include "statements/block_skip.hpp"

#include <string>

#include "engine/engine_services.hpp"
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

}  // namespace

std::int32_t skipForward(BasicEngine& engine, Skip mode, const Value& ifCondition, SkipStop& stop) {
  const bool ifMode = mode == Skip::FalseIf;
  const std::int16_t depth = ifMode ? engine.IfCount() : engine.DoCount();
  const std::int16_t last = engine.LineCount();

  for (std::int16_t line = nextLine(engine.CurrentLineNum());; line = nextLine(line)) {
    if (line > last) {
      return ifMode ? fail(engine, 10, msg::kIfWithoutEndIf)
                    : fail(engine, 14, msg::kDoWithoutLoop);
    }
    const std::u16string code = services::LineCode(engine, line);
    const std::int16_t kind = engine.WhatSTMT(code);
    // Only the false-IF scan stops at an error: a line that does not
    // classify, or one left by the line before. The loop scans pass over
    // such lines, and the 0 they return at the LOOP line clears the number
    // (not the message).
    if (ifMode && engine.ErrNum() != 0) return engine.ErrNum();

    switch (kind) {
      case kStmtIf: {
        // A malformed IF reports its error and counts as no block.
        if (IsIfBlock(engine, code)) {
          // The entry records the running statement's line, not the nested one.
          services::PushFlag(engine, flagEntry(kIfMarker, engine.CurrentLineNum(),
                                               ifMode ? ifCondition : Value()));
          engine.SetIfCount(step16(engine.IfCount(), 1));
        }
        break;
      }
      case kStmtElse:
        if (ifMode && engine.IfCount() == depth) {
          stop = {line, kind};
          return 0;
        }
        break;
      case kStmtEndIf:
        if (engine.IfCount() <= 0) return fail(engine, 11, msg::kEndIfWithoutIf);
        if (ifMode && engine.IfCount() == depth) {
          stop = {line, kind};
          return 0;
        }
        services::PopFlag(engine);
        engine.SetIfCount(step16(engine.IfCount(), -1));
        break;
      case kStmtDoWhile:
      case kStmtDoUntil:
        if (countsAsLoop(mode, kind)) {
          services::PushFlag(engine,
                             flagEntry(kind == kStmtDoWhile ? kDoWhileMarker : kDoUntilMarker, line,
                                       Value::string(u"")));
          engine.SetDoCount(step16(engine.DoCount(), 1));
        }
        break;
      case kStmtLoop:
      case kStmtEndDo: {
        if (mode == Skip::ExitDo && engine.DoCount() <= 0) {
          return fail(engine, 15, msg::kLoopWithoutDo);
        }
        if (!ifMode && engine.DoCount() == depth) {
          stop = {line, kind};
          return 0;
        }
        // Whatever is on top is taken as the nested loop's entry; an IF
        // entry there (a DO WHILE passed over) is the structure error.
        const Value popped = services::PopFlag(engine);
        engine.SetDoCount(step16(engine.DoCount(), -1));
        if (!isDoMarker(flagMarker(popped))) return fail(engine, 15, msg::kLoopWithoutDo);
        break;
      }
      default:
        break;
    }
  }
}

}  // namespace korvex::stmt::detail
