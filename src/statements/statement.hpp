// The statement classes the run loop dispatches to. Each parses and runs
// one line and returns its error number (0 = success), with the message
// stored on the engine. The block statements move CurrentLineNum themselves.
// What a line's text alone decides is derived on its first run and kept
// with the line (KeptLine::form).
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

class BasicEngine;
struct KeptLine;

namespace stmt {

std::int32_t Dim(BasicEngine& engine, KeptLine& line);
std::int32_t Assign(BasicEngine& engine, KeptLine& line);
std::int32_t If(BasicEngine& engine, KeptLine& line);
std::int32_t Else(BasicEngine& engine, KeptLine& line);
std::int32_t EndIf(BasicEngine& engine, KeptLine& line);
std::int32_t Do(BasicEngine& engine, KeptLine& line);
std::int32_t LoopOrEndDo(BasicEngine& engine, KeptLine& line);
std::int32_t ExitDo(BasicEngine& engine, KeptLine& line);
std::int32_t MsgBox(BasicEngine& engine, KeptLine& line);
/// `argText` is what the run loop cut after the keyword.
std::int32_t RaiseError(BasicEngine& engine, std::u16string_view argText);

/// Whether an IF line is a block IF (nothing but a comment after THEN);
/// reports the IF's parse errors (1, 2, 9) on the engine like If() would.
/// Returns false with ErrNum set on an error.
bool IsIfBlock(BasicEngine& engine, KeptLine& line);

}  // namespace stmt
}  // namespace korvex
