// The statement classes the run loop dispatches to. Each parses and runs
// one line and returns its error number (0 = success), with the message
// stored on the engine. The block statements move CurrentLineNum themselves.
// What a line's text alone decides is derived on its first run and kept
// with the line (KeptLine::form).
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

class Context;
struct KeptLine;

namespace stmt {

std::int32_t Dim(Context& ctx, KeptLine& line);
std::int32_t Assign(Context& ctx, KeptLine& line);
std::int32_t If(Context& ctx, KeptLine& line);
std::int32_t Else(Context& ctx, KeptLine& line);
std::int32_t EndIf(Context& ctx, KeptLine& line);
std::int32_t Do(Context& ctx, KeptLine& line);
std::int32_t LoopOrEndDo(Context& ctx, KeptLine& line);
std::int32_t ExitDo(Context& ctx, KeptLine& line);
std::int32_t MsgBox(Context& ctx, KeptLine& line);
/// `argText` is what the run loop cut after the keyword.
std::int32_t RaiseError(Context& ctx, std::u16string_view argText);

/// Whether an IF line is a block IF (nothing but a comment after THEN);
/// reports the IF's parse errors (1, 2, 9) on the engine like If() would.
/// Returns false with the error reported on an error.
bool IsIfBlock(Context& ctx, KeptLine& line);

}  // namespace stmt
}  // namespace korvex
