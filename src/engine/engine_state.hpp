// The state behind BasicEngine, shared by the engine's own source files.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/stack.hpp"
#include "engine/symbol_table.hpp"
#include "korvex/engine.hpp"

namespace korvex {

struct BasicEngine::State {
  explicit State(BasicEngine* self)
      : symbols(std::make_shared<SymbolTable>(self)),
        lines(std::make_unique<Stack>(self)),
        flags(std::make_unique<Stack>(self)) {}

  std::shared_ptr<SymbolTable> symbols;  // shared with a single-line IF's child

  ObjectRef record;
  // Upper-cased field names of the record, in field order. Holds one empty
  // entry while no record is set.
  std::vector<std::u16string> fieldNames{std::u16string{}};

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

  std::unique_ptr<Stack> flags;

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
};

}  // namespace korvex
