// What the engine offers its own statements, evaluator and functions beyond
// the host's members in <korvex/engine.hpp>: the variable table's services,
// the state a single-line IF shares with its child engine, the functions a
// host registered, and the forms of the line and flag-stack members that
// let the platform's run-time errors (6, 9) unwind to the run loop instead
// of reporting them, as a running line needs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "korvex/engine.hpp"

namespace korvex {

class HostFunctionEntry;

namespace services {

/// Stores the message and then the number on the engine, the order every
/// reporter keeps, and returns the number.
std::int32_t Report(BasicEngine& engine, std::int32_t number, std::u16string_view message);

bool SymbolDefined(const BasicEngine& engine, std::u16string_view name);
/// The variable's value; an undefined name reports error 5 and gives Empty.
Value SymbolValue(BasicEngine& engine, std::u16string_view name);
/// 0 = defined, 24 = the name exists already (nothing changes).
std::int32_t DefineSymbol(BasicEngine& engine, std::u16string_view name, const Value& value);

/// Makes `child` work on `parent`'s variables, record, host objects, user
/// interface, locale and registered functions (the child engine that runs a
/// single-line IF's tail).
void ShareStateOf(BasicEngine& child, BasicEngine& parent);

/// The function a host registered under this upper-cased name, or nullptr.
const HostFunctionEntry* HostFunctionNamed(const BasicEngine& engine,
                                           std::u16string_view upperName) noexcept;

/// Line n of the last split; "" with error 19 or 21 reported as
/// GetLineCode does, and the subscript fault (9) raised below line 1.
std::u16string LineCode(BasicEngine& engine, std::int16_t line);
/// Pushes on the statement-flag stack; the 32768th entry raises error 6.
void PushFlag(BasicEngine& engine, Value v);
Value PopFlag(BasicEngine& engine);
Value PeekFlag(BasicEngine& engine);

/// The run loop and the line split (run_loop.cpp, line_split.cpp). They
/// raise what a line raises; Execute traps it.
void SplitCodeBlock(BasicEngine& engine);
void RunLines(BasicEngine& engine);

}  // namespace services
}  // namespace korvex
