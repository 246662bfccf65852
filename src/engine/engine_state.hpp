// The state behind BasicEngine, shared by the engine's own source files.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/engine_services.hpp"
#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/stack.hpp"
#include "engine/symbol_table.hpp"
#include "korvex/engine.hpp"
#include "korvex/host_function.hpp"

namespace korvex {

class HostFunctionTable;

/// The field names while no record is set: one empty entry.
inline const std::shared_ptr<const std::vector<std::u16string>>& noRecordFieldNames() {
  static const auto kNone =
      std::make_shared<const std::vector<std::u16string>>(1, std::u16string{});
  return kNone;
}

struct BasicEngine::State {
  explicit State(BasicEngine* self)
      : symbols(std::make_shared<SymbolTable>(self)),
        lines(std::make_unique<Stack>(self)),
        flags(self) {}

  std::shared_ptr<SymbolTable> symbols;  // shared with a single-line IF's child

  ObjectRef record;
  // Upper-cased field names of the record, in field order. Holds one empty
  // entry while no record is set. Shared with a single-line IF's child.
  std::shared_ptr<const std::vector<std::u16string>> fieldNames = noRecordFieldNames();
  // Changes with the field names: what was found in the old ones is stale.
  std::uint64_t fieldNamesGeneration = nextGeneration();

  std::atomic<bool> stopRequested{false};
  LineHook lineHook;

  std::u16string codeBlock;
  std::int16_t ifCount = 0;
  std::int16_t forCount = 0;
  std::int16_t doCount = 0;
  std::int16_t currentLine = 0;
  std::int16_t lineCount = 0;

  // The line list and the source text it was split from (a run of the same
  // text reuses the split).
  std::unique_ptr<Stack> lines;
  std::u16string splitSource;
  bool splitValid = false;
  // The kept forms of the split's lines (held by a run for its duration).
  std::shared_ptr<KeptScript> kept;

  FlagStack flags;

  std::int32_t errNum = 0;
  std::u16string errMsg;

  ObjectRef parent;
  std::shared_ptr<korvex::ObjectFactory> objectFactory;
  ObjectRef excelBook;
  ObjectRef activeSheet;
  std::int32_t language = 0;
  // The built-in locales are referred to, not copied: a single-line IF
  // makes a child engine per run of its line.
  std::shared_ptr<const korvex::Locale> locale{std::shared_ptr<const korvex::Locale>{},
                                               &Locale::zhCN()};
  // Created on first use when the host sets none.
  mutable std::shared_ptr<UserInterface> ui;
  // Created by the first RegisterFunction; shared with a single-line IF's child.
  std::shared_ptr<HostFunctionTable> hostFunctions;
};

struct EngineAccess {
  using State = BasicEngine::State;
  static BasicEngine::State& state(BasicEngine& e) noexcept { return *e.s_; }
  static const BasicEngine::State& state(const BasicEngine& e) noexcept { return *e.s_; }
  static HostFunctionCall hostCall(const fn::Call& call) noexcept { return HostFunctionCall(call); }
};

}  // namespace korvex
