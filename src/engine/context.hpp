// The run context: everything a run works on, below the facade the host
// sees. Statements, the evaluator and the functions work on a Context and
// never on BasicEngine; BasicEngine is a thin layer on top that is the only
// writer of what the host reads.
//
// A context holds the state shared by everything a run does (the variables,
// the current record, the host's objects, the user interface, the regional
// settings, the host's functions) and a stack of frames. The host's script
// runs in the top frame; a single-line IF runs its tail in a nested frame of
// its own, which has its own lines, blocks, line number and error register,
// sees no workbook, and is neither stopped nor hooked by the host.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/flag_stack.hpp"
#include "engine/kept_script.hpp"
#include "engine/symbol_table.hpp"
#include "korvex/host_object.hpp"
#include "korvex/locale.hpp"
#include "korvex/statement_kind.hpp"
#include "korvex/stop_reason.hpp"
#include "korvex/user_interface.hpp"
#include "values/error.hpp"

namespace korvex {

class BasicEngine;  // handed, as it is, to the host's own callbacks

/// The functions a host registered; defined with the functions, owned here.
class FunctionRegistry {
 public:
  virtual ~FunctionRegistry() = default;
  /// Changes whenever a function is added (unique among all registries):
  /// what was derived from the names before is stale.
  std::uint64_t generation() const noexcept { return generation_; }

 protected:
  std::uint64_t generation_ = 0;
};

/// One script being run: the host's script, or a single-line IF's tail.
struct Frame {
  explicit Frame(bool isTail = false) : flags(&error), tail(isTail) {}
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  /// Back to the state of a frame that never ran (its script and kept
  /// forms stay).
  void reset() noexcept;

  std::u16string codeBlock;
  // The source text the kept lines were split from (a run of the same text
  // reuses the split), and the lines with their kept forms. A run holds the
  // script for its duration, whatever a host callback does meanwhile.
  std::u16string splitSource;
  std::shared_ptr<KeptScript> kept;

  std::int16_t currentLine = 0;
  std::int16_t lineCount = 0;
  std::int16_t ifCount = 0;
  std::int16_t forCount = 0;
  std::int16_t doCount = 0;
  FlagStack flags;
  // Stays set until cleared: a later run of the same frame starts failing.
  Error error;
  const bool tail;
};

class Context {
 public:
  explicit Context(BasicEngine* host);
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  // ---- frames ----------------------------------------------------------

  Frame& frame() noexcept { return *frame_; }
  const Frame& frame() const noexcept { return *frame_; }
  /// The host's frame.
  Frame& top() noexcept { return top_; }
  const Frame& top() const noexcept { return top_; }

  /// Runs `fn` with `nested` as the current frame.
  template <typename Fn>
  void inFrame(Frame& nested, Fn&& fn) {
    Frame* const outer = frame_;
    frame_ = &nested;
    struct Restore {
      Context& c;
      Frame* f;
      ~Restore() { c.frame_ = f; }
    } restore{*this, outer};
    fn();
  }

  // ---- the error register of the current frame -------------------------

  std::int32_t errNum() const noexcept { return frame_->error.number; }
  const std::u16string& errMsg() const noexcept { return frame_->error.text; }
  /// Stores the message and then the number; returns the number.
  std::int32_t report(std::int32_t number, std::u16string_view message) {
    return frame_->error.set(number, message);
  }
  std::int32_t report(const Message& m) { return frame_->error.set(m); }
  std::int32_t report(const Message& m, std::u16string_view detail) {
    return frame_->error.set(m, detail);
  }
  void setErrMsg(std::u16string_view message) { frame_->error.text.assign(message); }

  // ---- lines and blocks of the current frame ------------------------------

  std::int16_t currentLine() const noexcept { return frame_->currentLine; }
  void setCurrentLine(std::int16_t line) noexcept { frame_->currentLine = line; }
  std::int16_t lineCount() const noexcept { return frame_->lineCount; }
  FlagStack& flags() noexcept { return frame_->flags; }

  /// Splits the frame's script into its kept lines (CR LF appended first
  /// when missing); the same text as last time keeps the lines it has.
  void splitScript();
  /// The text of line n; "" with error 19 (nothing split) or 21 (past the
  /// last line) reported, and the subscript fault (9) raised below line 1.
  std::u16string_view lineCode(std::int16_t line);
  /// The kept line n of the running script, or nullptr outside it.
  KeptLine* keptLine(std::int16_t line) noexcept;
  /// The line's statement kind, its error reported as WhatSTMT reports it;
  /// derived once per line.
  std::int16_t kindOf(KeptLine& line);
  /// The generation of the frame's kept forms (0 before a split).
  std::uint64_t scriptGeneration() const noexcept;

  // ---- shared by every frame ------------------------------------------

  SymbolTable& symbols() noexcept { return symbols_; }
  /// Whether a variable exists; its value (an undefined name reports error
  /// 5 on the host's frame and gives Empty); defines one (24 when the name
  /// exists, and nothing changes).
  bool symbolDefined(std::u16string_view name) const { return symbols_.IsSymbolDefined(name); }
  Value symbolValue(std::u16string_view name) { return symbols_.value(name); }
  std::int32_t defineSymbol(std::u16string_view name, const Value& value);
  /// Defines the variable, or assigns it if it exists.
  void setSymbol(std::u16string_view name, const Value& value) {
    if (defineSymbol(name, value) != 0) symbols_.setValue(name, value);
  }

  const Locale& locale() const noexcept { return *locale_; }
  void setLocale(const Locale& loc);
  UserInterface& ui();
  void setUserInterface(std::shared_ptr<UserInterface> ui) noexcept;

  const ObjectRef& parent() const noexcept { return parent_; }
  void setParent(ObjectRef obj) noexcept { parent_ = std::move(obj); }
  const std::shared_ptr<ObjectFactory>& objects() const noexcept { return objects_; }
  void setObjects(std::shared_ptr<ObjectFactory> f) noexcept { objects_ = std::move(f); }
  /// The workbook and its active sheet; a tail sees none.
  const ObjectRef& excelBook() const noexcept;
  const ObjectRef& activeSheet() const noexcept;
  const ObjectRef& hostExcelBook() const noexcept { return excelBook_; }
  const ObjectRef& hostActiveSheet() const noexcept { return activeSheet_; }
  void setExcelBook(ObjectRef obj) noexcept { excelBook_ = std::move(obj); }
  void setActiveSheet(ObjectRef obj) noexcept { activeSheet_ = std::move(obj); }

  /// The host's registered functions (null until the first registration).
  FunctionRegistry* hostFunctions() const noexcept { return hostFunctions_.get(); }
  void setHostFunctions(std::unique_ptr<FunctionRegistry> r) noexcept;

  /// The engine the host sees, for the host's own callbacks.
  BasicEngine& host() const noexcept { return *host_; }

  // ---- the current record (record_binding.cpp) ---------------------------
  // A call the record set refuses reports error 102 with the record set's
  // own description and gives false (Empty for fieldValue).

  const ObjectRef& record() const noexcept { return record_; }
  /// Stores the record set and caches its upper-cased field names; a record
  /// set that cannot list them reports its failure.
  void setRecord(ObjectRef rs);
  /// Changes with the cached field names: what was found in the old ones is
  /// stale.
  std::uint64_t fieldNamesGeneration() const noexcept { return fieldNamesGeneration_; }
  bool isFieldName(std::u16string_view name);
  bool isCachedFieldName(std::u16string_view name) const;
  Value fieldValue(const Value& field);
  bool changeField(const Value& field, const Value& value);
  bool move(std::u16string_view member);
  bool recordFlag(std::u16string_view member);

  // ---- stopping -----------------------------------------------------------

  std::atomic<bool> stopRequested{false};
  std::function<bool(std::int16_t)> lineHook;
  // Limits of one run of the host's script, checked where the line hook is
  // called (0: none): lines started, and time since the run began.
  std::int64_t stepLimit = 0;
  std::chrono::milliseconds timeLimit{0};
  // The run in progress, or the last one: lines started, when it began and
  // why it was stopped.
  std::int64_t steps = 0;
  std::chrono::steady_clock::time_point runStart;
  StopReason stoppedBy = StopReason::None;
  // The host frame's error was left by a host-side variable access (an
  // undefined name), not by a run: the next run does not fail on it.
  bool lookupError = false;
  std::int32_t language = 0;

 private:
  BasicEngine* host_;
  Frame top_;
  Frame* frame_ = &top_;

  SymbolTable symbols_;
  ObjectRef record_;
  std::vector<std::u16string> fieldNames_;
  std::uint64_t fieldNamesGeneration_;

  ObjectRef parent_;
  std::shared_ptr<ObjectFactory> objects_;
  ObjectRef excelBook_;
  ObjectRef activeSheet_;
  const Locale* locale_;
  std::unique_ptr<Locale> ownLocale_;  // a host's own settings; the built-in ones are referred to
  std::shared_ptr<UserInterface> ui_;
  std::unique_ptr<FunctionRegistry> hostFunctions_;
};

}  // namespace korvex
