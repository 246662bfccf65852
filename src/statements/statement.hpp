// The statement classes the run loop dispatches to. Each parses and runs
// one line and returns its error number (0 = success), with the message
// stored on the engine. The block statements move CurrentLineNum themselves.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvex {

class BasicEngine;

namespace stmt {

std::int32_t Dim(BasicEngine& engine, std::u16string_view line);
std::int32_t Assign(BasicEngine& engine, std::u16string_view line);
std::int32_t If(BasicEngine& engine, std::u16string_view line);
std::int32_t Else(BasicEngine& engine, std::u16string_view line);
std::int32_t EndIf(BasicEngine& engine, std::u16string_view line);
std::int32_t Do(BasicEngine& engine, std::u16string_view line);
std::int32_t LoopOrEndDo(BasicEngine& engine, std::u16string_view line);
std::int32_t ExitDo(BasicEngine& engine, std::u16string_view line);
std::int32_t MsgBox(BasicEngine& engine, std::u16string_view line);
/// `argText` is what the run loop cut after the keyword.
std::int32_t RaiseError(BasicEngine& engine, std::u16string_view argText);

/// Whether an IF line is a block IF (nothing but a comment after THEN);
/// reports the IF's parse errors (1, 2, 9) on the engine like If() would.
/// Returns false with ErrNum set on an error.
bool IsIfBlock(BasicEngine& engine, std::u16string_view line);

}  // namespace stmt
}  // namespace korvex
