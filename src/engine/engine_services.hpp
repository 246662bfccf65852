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
struct KeptLine;
struct FlagFrame;

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
/// Puts a child engine that ran a tail before back in the state of a new
/// engine (its script and kept forms stay).
void ResetForTail(BasicEngine& child);

/// Changes whenever the record set, and with it the cached field names,
/// changes.
std::uint64_t FieldNamesGeneration(const BasicEngine& engine) noexcept;

/// The function a host registered under this upper-cased name, or nullptr.
const HostFunctionEntry* HostFunctionNamed(const BasicEngine& engine,
                                           std::u16string_view upperName) noexcept;

/// Line n of the last split; "" with error 19 or 21 reported as
/// GetLineCode does, and the subscript fault (9) raised below line 1.
std::u16string LineCode(BasicEngine& engine, std::int16_t line);
/// Pushes on the statement-flag stack; the 32768th entry raises error 6.
void PushFlag(BasicEngine& engine, FlagFrame&& frame);
/// The top entry, removed / left in place; an empty stack reports 18 / 20
/// and gives an entry without marker.
FlagFrame PopFlag(BasicEngine& engine);
const FlagFrame& PeekFlag(BasicEngine& engine);
/// Forgets every open block (the END statement).
void ClearFlags(BasicEngine& engine);

/// The kept line n of the running script, or nullptr outside it.
KeptLine* KeptLineAt(BasicEngine& engine, std::int16_t line);
/// The line's statement kind as WhatSTMT gives it, its error reported the
/// same way; derived once per line.
std::int16_t KindOf(BasicEngine& engine, KeptLine& line);
/// The generation of the running script's kept forms (0 before a split).
std::uint64_t ScriptGeneration(const BasicEngine& engine) noexcept;

/// The run loop and the line split (run_loop.cpp, line_split.cpp). They
/// raise what a line raises; Execute traps it.
void SplitCodeBlock(BasicEngine& engine);
void RunLines(BasicEngine& engine);

}  // namespace services
}  // namespace korvex
