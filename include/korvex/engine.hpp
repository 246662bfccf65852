// BasicEngine: runs one payroll script.
//
// A host fills in CodeBlock, optionally hands over its parent object (with
// the database connection), the current record set, a workbook and sheet,
// pre-sets variables with SetSysVar, and calls Run (or Execute). Afterwards
// it reads the outcome, ErrNum (0 = success), ErrMsg and CurrentLineNum, and
// fetches results with GetVarValue.
//
// No member throws: every failure is reported the way a script reports its
// own, as an error number and Chinese text in ErrNum / ErrMsg, or through
// the documented return value of the member.
//
// Variables survive from one Execute to the next on the same engine, and so
// do ErrNum, ErrMsg, the block counters and the statement-flag stack: a host
// that reuses an engine after a failed run either calls Run, which clears the
// error first, or sets ErrNum to 0 itself before Execute.
//
// One engine runs one script at a time; separate engines may run at the same
// time on separate threads (they share nothing but read-only tables).
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/locale.hpp"
#include "korvex/statement_kind.hpp"
#include "korvex/stop_reason.hpp"
#include "korvex/user_interface.hpp"
#include "korvex/value.hpp"

namespace korvex {

class BasicEngine;
struct HostFunction;  // <korvex/host_function.hpp>
class Context;        // the run context behind the engine

/// What Run reports: the error number (0 = success), its text, the line
/// where the run stopped, and whether it was stopped before its end (a run
/// stopped has no error, but did not finish).
struct RunResult {
  std::int32_t errNum = 0;
  std::u16string errMsg;
  std::int16_t line = 0;
  StopReason stopReason = StopReason::None;

  bool ok() const noexcept { return errNum == 0; }
  bool stopped() const noexcept { return stopReason != StopReason::None; }
};

class BasicEngine {
 public:
  BasicEngine();
  ~BasicEngine();
  BasicEngine(const BasicEngine&) = delete;
  BasicEngine& operator=(const BasicEngine&) = delete;

  // ---- the script and its run ------------------------------------------

  const std::u16string& CodeBlock() const noexcept;
  void SetCodeBlock(std::u16string text) noexcept;

  /// Runs the script. The error state of an earlier run is kept: a nonzero
  /// ErrNum left over makes the first line fail with the old message. The
  /// outcome is in ErrNum / ErrMsg / CurrentLineNum.
  void Execute() noexcept;
  /// Clears ErrNum and ErrMsg, runs the script as Execute does and returns
  /// the outcome. Variables, counters and the statement-flag stack carry
  /// over as with Execute.
  RunResult Run() noexcept;

  std::int32_t ErrNum() const noexcept;
  void SetErrNum(std::int32_t n) noexcept;
  const std::u16string& ErrMsg() const noexcept;
  void SetErrMsg(std::u16string msg) noexcept;

  /// The line being run, or where the run stopped (1-based).
  std::int16_t CurrentLineNum() const noexcept;
  void SetCurrentLineNum(std::int16_t line) noexcept;
  /// Number of lines of the last split.
  std::int16_t LineCount() const noexcept;
  /// Text of line n (1-based) of the last split. No such line gives "" with
  /// ErrNum 19 (nothing split yet), 21 (past the last line) or 9 (below 1).
  std::u16string GetLineCode(std::int16_t line) noexcept;
  /// Statement-kind code of a line (StatementKind). A line that does not
  /// classify gives 0 with ErrNum / ErrMsg set: 3 for a bad character in
  /// its first word, 23 for a reserved word, 1 for a record move followed
  /// by more than a comment.
  std::int16_t WhatSTMT(std::u16string_view line) noexcept;

  /// Stored for the host; the engine does not consult it.
  std::int32_t Language() const noexcept;
  void SetLanguage(std::int32_t lang) noexcept;

  // ---- host objects (each may be null: "Nothing") ----------------------
  // What the engine calls on each is listed in <korvex/host_object.hpp>.

  /// The host's object; the data functions use its "Connect" member.
  const ObjectRef& Parent() const noexcept;
  void SetParent(ObjectRef obj) noexcept;
  const ObjectRef& RecordSet() const noexcept;
  /// Stores the record set and rebuilds the cached field names; a record
  /// set that cannot list its fields leaves its error in ErrNum / ErrMsg.
  void SetRecordSet(ObjectRef rs) noexcept;
  /// Where the SQL functions create the objects they use on their own (a
  /// private Connection, a Recordset): "Connection", "Recordset",
  /// "Command". Null (the default): the functions can create none and fail
  /// with 429 (korvex::sqliteObjectFactory() in korvex/sqlite.hpp gives the
  /// SQLite ones).
  const std::shared_ptr<korvex::ObjectFactory>& Objects() const noexcept;
  void SetObjectFactory(std::shared_ptr<korvex::ObjectFactory> factory) noexcept;
  const ObjectRef& ExcelBook() const noexcept;
  void SetExcelBook(ObjectRef obj) noexcept;
  const ObjectRef& ActiveExcelSheet() const noexcept;
  void SetActiveExcelSheet(ObjectRef obj) noexcept;

  /// Regional settings for conversions and Format (default zh-CN).
  const korvex::Locale& Locale() const noexcept;
  void SetLocale(const korvex::Locale& loc) noexcept;

  /// The user interface for message and input boxes (default: a recording
  /// interface that shows nothing and answers Yes).
  UserInterface& UI() const noexcept;
  /// A null pointer keeps the current interface.
  void SetUserInterface(std::shared_ptr<UserInterface> ui) noexcept;

  /// Thread-safe: asks the running script to stop. At the top of the next
  /// line the engine asks "确信终止程序吗?" (Yes/No) through the user
  /// interface; Yes ends the run without an error (StoppedBy tells). A
  /// request made while no run is active is dropped when the next run starts.
  void RequestStop() noexcept;

  /// Called once per line, before the line runs, with the line number (the
  /// point where the run yields to the host). Returning false asks to stop,
  /// exactly like RequestStop. An exception from the hook ends the run with
  /// error 51 (7 when out of memory).
  using LineHook = std::function<bool(std::int16_t line)>;
  void SetLineHook(LineHook hook) noexcept;

  /// Limits for each later run, checked where the line hook is called (0,
  /// the default: none). A run that would start line n+1 of the host's
  /// script with a step limit of n, or a line after the time limit has
  /// passed since the run began, ends there without an error and without
  /// asking; StoppedBy tells which. A line that takes long is not cut short.
  void SetStepLimit(std::int64_t lines) noexcept;
  void SetTimeLimit(std::int64_t milliseconds) noexcept;
  /// Why the last run (or the one in progress) was stopped; None when it
  /// ended by itself, with or without an error.
  StopReason StoppedBy() const noexcept;
  /// Lines of the host's script the last run started (single-line IF tails
  /// not counted).
  std::int64_t LinesRun() const noexcept;

  /// Adds a function scripts can call by name, checked and called like the
  /// built-in ones (see <korvex/host_function.hpp>). Returns false, and
  /// changes nothing, when the name is no script name or is a built-in
  /// function or constant, or the function has no operation. A name
  /// registered before is replaced. Functions belong to this engine.
  bool RegisterFunction(HostFunction function) noexcept;

  // ---- variables ----------------------------------------------------------

  bool IsVarDefined(std::u16string_view name) const noexcept;
  /// Value of a variable; an undefined name leaves ErrNum 5 and gives Empty.
  /// That error does not fail the next Execute (unless the host set ErrNum
  /// or ErrMsg since).
  Value GetVarValue(std::u16string_view name) noexcept;
  /// Assigns an existing variable; an undefined name leaves ErrNum 5, as
  /// GetVarValue does.
  void Vaule(std::u16string_view name, const Value& value) noexcept;
  /// Defines the variable, or assigns it if it exists.
  void SetSysVar(std::u16string_view name, const Value& value) noexcept;
  /// The variables in the table's order: (upper-cased name, value).
  std::vector<std::pair<std::u16string, Value>> Variables() const noexcept;
  /// For reusing the engine with another record: forgets every variable and
  /// the bound objects (Parent, RecordSet, ExcelBook, ActiveExcelSheet), and
  /// clears the error, the line, the counters and the statement-flag stack.
  /// The script, host functions, object factory, user interface, locale,
  /// line hook and limits stay.
  void ClearVariables() noexcept;

  /// Evaluates one expression with this engine's variables and record, as
  /// an assignment would. On failure returns Empty with ErrNum/ErrMsg set.
  Value Evaluate(std::u16string_view expression) noexcept;

  // ---- the control-structure stack and open-block counters ----------------
  // The block statements keep these; a host reads them after a run (a run
  // that failed inside a block leaves them as they were) and may reset them.
  // IF blocks leave the entry ("If", line of the IF, condition value), loops
  // ("Do While" or "Do Until", line of the DO, condition text), each a
  // three-element array with lower bound 1.

  /// Pushes any value; the 32768th entry is refused with error 6 (溢出).
  void PushStmtFlag(const Value& v) noexcept;
  /// Removes and returns the top entry; an empty stack gives Empty with
  /// error 18.
  Value PopStmtFlag() noexcept;
  /// The top entry, left in place; an empty stack gives Empty with error 20.
  Value GetpopValueStmtFlag() noexcept;
  std::int16_t StmtFlagCount() const noexcept;
  std::int16_t IfCount() const noexcept;
  void SetIfCount(std::int16_t n) noexcept;
  std::int16_t ForCount() const noexcept;
  void SetForCount(std::int16_t n) noexcept;
  std::int16_t DoCount() const noexcept;
  void SetDoCount(std::int16_t n) noexcept;

  // ---- the current record ---------------------------------------------------
  // A call the record set refuses leaves error 102 with the record set's own
  // description in ErrNum / ErrMsg and gives false (Empty for GetFieldValue).

  /// Whether the record set has a field of this name (asks the record set).
  bool isFieldName(std::u16string_view name) noexcept;
  /// As isFieldName, from the names cached when the record set was set.
  bool isFieldNameByArr(std::u16string_view name) const noexcept;
  /// The value of a field given by name or index.
  Value GetFieldValue(const Value& field) noexcept;
  /// Writes a field (Edit, set Value, Update).
  bool ChangeField(const Value& field, const Value& value) noexcept;
  bool MoveFirst() noexcept;
  bool MoveNext() noexcept;
  bool MovePrevious() noexcept;
  bool MoveLast() noexcept;
  bool BOF() noexcept;
  bool Eof() noexcept;  // the record set's EOF ("EOF" itself is a C library macro)

 private:
  // The library's own units (and their tests) reach the context through
  // this; hosts have no use for it.
  friend Context& contextOf(BasicEngine& engine) noexcept;
  std::unique_ptr<Context> ctx_;
};

}  // namespace korvex
