// BasicEngine: runs one payroll script.
//
// A host fills in CodeBlock, optionally hands over its parent object (with
// the database connection), the current record set, a workbook and sheet,
// pre-sets variables with SetSysVar, and calls Execute. Execute never throws
// and never fails towards the host: afterwards the host reads ErrNum (0 =
// success), ErrMsg and CurrentLineNum, and fetches results with GetVarValue.
//
// Variables survive from one Execute to the next on the same engine, and so
// do ErrNum, ErrMsg, the block counters and the statement-flag stack: a host
// that reuses an engine after a failed run sets ErrNum to 0 first.
//
// The members below the "statement and function services" heading are what
// the engine's own statements and functions use; hosts rarely need them.
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
#include "korvex/user_interface.hpp"
#include "korvex/value.hpp"

namespace korvex {

class SymbolTable;
class Stack;

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

class BasicEngine {
 public:
  BasicEngine();
  ~BasicEngine();
  BasicEngine(const BasicEngine&) = delete;
  BasicEngine& operator=(const BasicEngine&) = delete;

  // ---- host-facing ------------------------------------------------------

  const std::u16string& CodeBlock() const noexcept;
  void SetCodeBlock(std::u16string text);

  /// Runs the script. Never throws; the outcome is in ErrNum / ErrMsg.
  void Execute() noexcept;

  std::int32_t ErrNum() const noexcept;
  void SetErrNum(std::int32_t n) noexcept;
  const std::u16string& ErrMsg() const noexcept;
  void SetErrMsg(std::u16string msg);

  std::int16_t CurrentLineNum() const noexcept;
  void SetCurrentLineNum(std::int16_t line) noexcept;
  /// Number of lines of the last split.
  std::int16_t LineCount() const noexcept;

  std::int32_t Language() const noexcept;
  void SetLanguage(std::int32_t lang) noexcept;

  /// Host objects (each may be null: "Nothing").
  const ObjectRef& Parent() const noexcept;
  void SetParent(ObjectRef obj);
  const ObjectRef& RecordSet() const noexcept;
  /// Stores the record set and rebuilds the cached field names.
  void SetRecordSet(ObjectRef rs);
  /// Where the SQL functions create the objects they use on their own (a
  /// private Connection, a Recordset): "Connection", "Recordset",
  /// "Command". Null (the default) means the SQLite data-access objects.
  const std::shared_ptr<korvex::ObjectFactory>& Objects() const noexcept;
  void SetObjectFactory(std::shared_ptr<korvex::ObjectFactory> factory);
  const ObjectRef& ExcelBook() const noexcept;
  void SetExcelBook(ObjectRef obj);
  const ObjectRef& ActiveExcelSheet() const noexcept;
  void SetActiveExcelSheet(ObjectRef obj);

  /// Regional settings for conversions and Format (default zh-CN).
  const korvex::Locale& Locale() const noexcept;
  void SetLocale(const korvex::Locale& loc) noexcept;

  /// The user interface for message and input boxes (default: a recording
  /// interface that shows nothing and answers Yes).
  UserInterface& UI() const noexcept;
  void SetUserInterface(std::shared_ptr<UserInterface> ui);

  /// Thread-safe: asks the running script to stop. At the top of the next
  /// line the engine asks "确信终止程序吗?" (Yes/No) through the user
  /// interface; Yes ends the run without an error.
  void RequestStop() noexcept;

  /// Called once per line, before the line runs, with the line number (the
  /// point where the run yields to the host). Returning false asks to stop,
  /// exactly like RequestStop.
  using LineHook = std::function<bool(std::int16_t line)>;
  void SetLineHook(LineHook hook);

  bool IsVarDefined(std::u16string_view name) const;
  /// Value of a variable; an undefined name leaves ErrNum 5 and gives Empty.
  Value GetVarValue(std::u16string_view name);
  /// Assigns an existing variable; an undefined name leaves ErrNum 5.
  void Vaule(std::u16string_view name, const Value& value);
  /// Defines the variable, or assigns it if it exists.
  void SetSysVar(std::u16string_view name, const Value& value);
  /// The variables in the table's order: (upper-cased name, value).
  std::vector<std::pair<std::u16string, Value>> Variables() const;

  /// Evaluates one expression with this engine's variables and record, as
  /// an assignment would. On failure returns Empty with ErrNum/ErrMsg set.
  /// Never throws.
  Value Evaluate(std::u16string_view expression) noexcept;

  // ---- statement and function services ----------------------------------

  /// Text of line n (1-based) of the last split; reports stack errors 19/21
  /// on the engine and gives "" when there is no such line.
  std::u16string GetLineCode(std::int16_t line);
  /// Statement-kind code of a line (StatementKind); may set ErrNum/ErrMsg.
  std::int16_t WhatSTMT(std::u16string_view line);

  void PushStmtFlag(const Value& v);
  Value PopStmtFlag();
  Value GetpopValueStmtFlag();
  std::int16_t StmtFlagCount() const noexcept;
  std::int16_t IfCount() const noexcept;
  void SetIfCount(std::int16_t n) noexcept;
  std::int16_t ForCount() const noexcept;
  void SetForCount(std::int16_t n) noexcept;
  std::int16_t DoCount() const noexcept;
  void SetDoCount(std::int16_t n) noexcept;

  bool SymbolDefined(std::u16string_view name) const;
  Value SymbolValue(std::u16string_view name);
  /// 0 = defined, 24 = the name exists already (nothing changes).
  std::int32_t DefineSymbol(std::u16string_view name, const Value& value);

  /// Shares another engine's variable table and record set (the child
  /// engine that runs a single-line IF's tail).
  void ShareStateOf(BasicEngine& parent);

  // Current-record binding.
  bool isFieldName(std::u16string_view name);
  bool isFieldNameByArr(std::u16string_view name) const;
  Value GetFieldValue(const Value& field);
  bool ChangeField(const Value& field, const Value& value);
  bool MoveFirst();
  bool MoveNext();
  bool MovePrevious();
  bool MoveLast();
  bool BOF();
  bool Eof();  // the record set's EOF ("EOF" itself is a C library macro)

 private:
  struct State;
  void splitCodeBlock();
  void runLines();
  [[noreturn]] void raiseLineError(std::int32_t number) const;
  std::unique_ptr<State> s_;
};

}  // namespace korvex
