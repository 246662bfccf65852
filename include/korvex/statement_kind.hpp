// The statement-kind codes that BasicEngine::WhatSTMT returns for a line.
#pragma once

#include <cstdint>

namespace korvex {

/// Statement-kind codes returned by WhatSTMT.
enum StatementKind : std::int16_t {
  kStmtDim = 101,
  kStmtAssign = 102,
  kStmtIf = 103,
  kStmtElse = 104,
  kStmtEndIf = 105,
  kStmtDoWhile = 106,
  kStmtDoUntil = 107,
  kStmtExitDo = 108,
  kStmtLoop = 109,
  kStmtEndDo = 110,
  kStmtExitFor = 112,
  kStmtComment = 114,
  kStmtMoveFirst = 115,
  kStmtMoveNext = 116,
  kStmtMovePrevious = 117,
  kStmtMoveLast = 118,
  kStmtEnd = 120,
  kStmtMsgBox = 122,
  kStmtAddRecord = 123,
  kStmtDelRecord = 124,
  kStmtRaiseError = 125,
  kStmtBlank = 145,
  kStmtSyntaxError = 150,
};

}  // namespace korvex
