// BasicEngine: the host's face of a run context. Every member hands over to
// the context and turns whatever a member raises into ErrNum / ErrMsg, so
// that nothing is ever thrown towards the host.
#include "korvex/engine.hpp"

#include <chrono>
#include <exception>
#include <new>
#include <utility>

#include "engine/classify.hpp"
#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "eval/eval.hpp"
#include "eval/function_table.hpp"
#include "facade/faults.hpp"
#include "functions/host_functions.hpp"
#include "statements/run_loop.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

// Runs `fn` for a host-facing member: a fault it raises is reported in
// ErrNum / ErrMsg, as the run loop would, and `fallback` returned instead.
template <typename T, typename Fn>
T reported(Context& ctx, T fallback, Fn&& fn) noexcept {
  try {
    return fn();
  } catch (...) {
    Error e = currentFault();
    ctx.top().error = std::move(e);
  }
  return fallback;
}

// The same for a const member, which leaves the engine as it was: a fault
// (only running out of memory can raise one there) gives the fallback.
template <typename T, typename Fn>
T answered(T fallback, Fn&& fn) noexcept {
  try {
    return fn();
  } catch (...) {
    return fallback;
  }
}

template <typename Fn>
void reported(Context& ctx, Fn&& fn) noexcept {
  reported(ctx, true, [&] {
    fn();
    return true;
  });
}

// A record move, and a record flag, as the host asks for them.
bool moved(Context& ctx, std::u16string_view member) noexcept {
  return reported(ctx, false, [&] { return ctx.move(member); });
}
bool flagged(Context& ctx, std::u16string_view member) noexcept {
  return reported(ctx, false, [&] { return ctx.recordFlag(member); });
}

}  // namespace

Context& contextOf(BasicEngine& engine) noexcept { return *engine.ctx_; }

BasicEngine::BasicEngine() : ctx_(std::make_unique<Context>(this)) {}
BasicEngine::~BasicEngine() = default;

const std::u16string& BasicEngine::CodeBlock() const noexcept { return ctx_->top().codeBlock; }
void BasicEngine::SetCodeBlock(std::u16string text) noexcept {
  ctx_->top().codeBlock = std::move(text);
}

// ---- the run ---------------------------------------------------------------

void BasicEngine::Execute() noexcept {
  Context& c = *ctx_;
  // An undefined name the host looked up is no failure of this run.
  if (c.lookupError && c.top().error.number == msg::kUndefinedVariable.number) {
    c.top().error.clear();
  }
  c.lookupError = false;
  // A request made while no run was active is not for this one.
  c.stopRequested.store(false);
  c.stoppedBy = StopReason::None;
  c.steps = 0;
  c.runStart = std::chrono::steady_clock::now();
  reported(c, [&] { RunScript(c); });
}

RunResult BasicEngine::Run() noexcept {
  ctx_->top().error.clear();
  Execute();
  RunResult r;
  r.errNum = ErrNum();
  r.line = CurrentLineNum();
  r.stopReason = StoppedBy();
  try {
    r.errMsg = ErrMsg();
  } catch (...) {  // out of memory for the copy: the number still tells
  }
  return r;
}

std::int32_t BasicEngine::ErrNum() const noexcept { return ctx_->top().error.number; }
void BasicEngine::SetErrNum(std::int32_t n) noexcept {
  ctx_->top().error.number = n;
  ctx_->lookupError = false;
}
const std::u16string& BasicEngine::ErrMsg() const noexcept { return ctx_->top().error.text; }
void BasicEngine::SetErrMsg(std::u16string msg) noexcept {
  ctx_->top().error.text = std::move(msg);
  ctx_->lookupError = false;
}

std::int16_t BasicEngine::CurrentLineNum() const noexcept { return ctx_->top().currentLine; }
void BasicEngine::SetCurrentLineNum(std::int16_t line) noexcept { ctx_->top().currentLine = line; }
std::int16_t BasicEngine::LineCount() const noexcept { return ctx_->top().lineCount; }

std::u16string BasicEngine::GetLineCode(std::int16_t line) noexcept {
  return reported(*ctx_, std::u16string(), [&] { return std::u16string(ctx_->lineCode(line)); });
}

std::int16_t BasicEngine::WhatSTMT(std::u16string_view line) noexcept {
  return reported(*ctx_, std::int16_t{0}, [&] {
    Error error;
    const std::int16_t kind = classifyLine(line, error);
    if (error.failed()) ctx_->top().error = std::move(error);
    return kind;
  });
}

std::int32_t BasicEngine::Language() const noexcept { return ctx_->language; }
void BasicEngine::SetLanguage(std::int32_t lang) noexcept { ctx_->language = lang; }

// ---- host objects ------------------------------------------------------------

const ObjectRef& BasicEngine::Parent() const noexcept { return ctx_->parent(); }
void BasicEngine::SetParent(ObjectRef obj) noexcept { ctx_->setParent(std::move(obj)); }
const ObjectRef& BasicEngine::RecordSet() const noexcept { return ctx_->record(); }
void BasicEngine::SetRecordSet(ObjectRef rs) noexcept {
  reported(*ctx_, [&] { ctx_->setRecord(std::move(rs)); });
}
const std::shared_ptr<ObjectFactory>& BasicEngine::Objects() const noexcept {
  return ctx_->objects();
}
void BasicEngine::SetObjectFactory(std::shared_ptr<korvex::ObjectFactory> factory) noexcept {
  ctx_->setObjects(std::move(factory));
}
const ObjectRef& BasicEngine::ExcelBook() const noexcept { return ctx_->hostExcelBook(); }
void BasicEngine::SetExcelBook(ObjectRef obj) noexcept { ctx_->setExcelBook(std::move(obj)); }
const ObjectRef& BasicEngine::ActiveExcelSheet() const noexcept { return ctx_->hostActiveSheet(); }
void BasicEngine::SetActiveExcelSheet(ObjectRef obj) noexcept {
  ctx_->setActiveSheet(std::move(obj));
}

const korvex::Locale& BasicEngine::Locale() const noexcept { return ctx_->locale(); }
void BasicEngine::SetLocale(const korvex::Locale& loc) noexcept {
  reported(*ctx_, [&] { ctx_->setLocale(loc); });
}

UserInterface& BasicEngine::UI() const noexcept {
  // Out of memory here leaves nothing to talk to: that ends the process.
  return ctx_->ui();
}
void BasicEngine::SetUserInterface(std::shared_ptr<UserInterface> ui) noexcept {
  ctx_->setUserInterface(std::move(ui));
}

void BasicEngine::RequestStop() noexcept { ctx_->stopRequested.store(true); }
void BasicEngine::SetLineHook(LineHook hook) noexcept { ctx_->lineHook = std::move(hook); }
void BasicEngine::SetStepLimit(std::int64_t lines) noexcept { ctx_->stepLimit = lines; }
void BasicEngine::SetTimeLimit(std::int64_t milliseconds) noexcept {
  ctx_->timeLimit = std::chrono::milliseconds(milliseconds);
}
StopReason BasicEngine::StoppedBy() const noexcept { return ctx_->stoppedBy; }
std::int64_t BasicEngine::LinesRun() const noexcept { return ctx_->steps; }

bool BasicEngine::RegisterFunction(HostFunction function) noexcept {
  return reported(*ctx_, false, [&] {
    // The evaluator's own names (constants, inline functions) cannot be
    // replaced either.
    if (eval::isOwnName(upperName(function.name))) return false;
    if (!function.operation) return false;
    // An exception from the host's operation is reported like any failure
    // of the function, keeping its text; the run adds the line.
    function.operation = [op = std::move(function.operation)](const HostFunctionCall& call,
                                                              Value& result) -> std::int32_t {
      try {
        return op(call, result);
      } catch (const std::bad_alloc&) {
        return call.fail(7, u"内存溢出");
      } catch (const std::exception& e) {
        const std::u16string text = fromUtf8(e.what());
        return call.fail(51, text.empty() ? std::u16string(u"内部错误") : text);
      } catch (...) {
        return call.fail(51, u"内部错误");
      }
    };
    return registerHostFunction(*ctx_, std::move(function));
  });
}

// ---- variables ---------------------------------------------------------------

bool BasicEngine::IsVarDefined(std::u16string_view name) const noexcept {
  return answered(false, [&] { return ctx_->symbolDefined(name); });
}
Value BasicEngine::GetVarValue(std::u16string_view name) noexcept {
  return reported(*ctx_, Value(), [&] {
    if (!ctx_->symbolDefined(name)) ctx_->lookupError = true;
    return ctx_->symbolValue(name);
  });
}
void BasicEngine::Vaule(std::u16string_view name, const Value& value) noexcept {
  reported(*ctx_, [&] {
    if (!ctx_->symbolDefined(name)) ctx_->lookupError = true;
    ctx_->symbols().setValue(name, value);
  });
}
void BasicEngine::SetSysVar(std::u16string_view name, const Value& value) noexcept {
  reported(*ctx_, [&] { ctx_->setSymbol(name, value); });
}
std::vector<std::pair<std::u16string, Value>> BasicEngine::Variables() const noexcept {
  return answered(std::vector<std::pair<std::u16string, Value>>{},
                  [&] { return ctx_->symbols().entries(); });
}

void BasicEngine::ClearVariables() noexcept {
  Context& c = *ctx_;
  c.symbols().clear();
  reported(c, [&] { c.setRecord(nullptr); });
  c.setParent(nullptr);
  c.setExcelBook(nullptr);
  c.setActiveSheet(nullptr);
  c.top().reset();
  c.lookupError = false;
  c.stoppedBy = StopReason::None;
  c.steps = 0;
}

Value BasicEngine::Evaluate(std::u16string_view expression) noexcept {
  return reported(*ctx_, Value(), [&] { return korvex::Evaluate(*ctx_, expression); });
}

// ---- the statement-flag stack and counters -----------------------------------

void BasicEngine::PushStmtFlag(const Value& v) noexcept {
  reported(*ctx_, [&] { ctx_->top().flags.push(FlagFrame::fromValue(v)); });
}
Value BasicEngine::PopStmtFlag() noexcept {
  return reported(*ctx_, Value(), [&] { return ctx_->top().flags.pop().toValue(); });
}
Value BasicEngine::GetpopValueStmtFlag() noexcept {
  return reported(*ctx_, Value(), [&] { return ctx_->top().flags.top().toValue(); });
}
std::int16_t BasicEngine::StmtFlagCount() const noexcept { return ctx_->top().flags.size(); }
std::int16_t BasicEngine::IfCount() const noexcept { return ctx_->top().ifCount; }
void BasicEngine::SetIfCount(std::int16_t n) noexcept { ctx_->top().ifCount = n; }
std::int16_t BasicEngine::ForCount() const noexcept { return ctx_->top().forCount; }
void BasicEngine::SetForCount(std::int16_t n) noexcept { ctx_->top().forCount = n; }
std::int16_t BasicEngine::DoCount() const noexcept { return ctx_->top().doCount; }
void BasicEngine::SetDoCount(std::int16_t n) noexcept { ctx_->top().doCount = n; }

// ---- the current record ------------------------------------------------------

bool BasicEngine::isFieldName(std::u16string_view name) noexcept {
  return reported(*ctx_, false, [&] { return ctx_->isFieldName(name); });
}
bool BasicEngine::isFieldNameByArr(std::u16string_view name) const noexcept {
  return answered(false, [&] { return ctx_->isCachedFieldName(name); });
}
Value BasicEngine::GetFieldValue(const Value& field) noexcept {
  return reported(*ctx_, Value(), [&] { return ctx_->fieldValue(field); });
}
bool BasicEngine::ChangeField(const Value& field, const Value& value) noexcept {
  return reported(*ctx_, false, [&] { return ctx_->changeField(field, value); });
}
bool BasicEngine::MoveFirst() noexcept { return moved(*ctx_, u"MoveFirst"); }
bool BasicEngine::MoveNext() noexcept { return moved(*ctx_, u"MoveNext"); }
bool BasicEngine::MovePrevious() noexcept { return moved(*ctx_, u"MovePrevious"); }
bool BasicEngine::MoveLast() noexcept { return moved(*ctx_, u"MoveLast"); }
bool BasicEngine::BOF() noexcept { return flagged(*ctx_, u"BOF"); }
bool BasicEngine::Eof() noexcept { return flagged(*ctx_, u"EOF"); }

}  // namespace korvex
