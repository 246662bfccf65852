// BasicEngine: properties, variables and the services statements use. The
// run loop is in run_loop.cpp, classification in classify.cpp, the record
// binding in record_binding.cpp.
#include "korvex/engine.hpp"

#include <utility>

#include "engine/engine_state.hpp"
#include "engine/faults.hpp"
#include "engine/names.hpp"
#include "eval/eval.hpp"
#include "eval/function_table.hpp"
#include "functions/host_functions.hpp"

namespace korvex {

namespace {

// Runs `fn` for a host-facing member: a fault it raises is reported in
// ErrNum / ErrMsg, as the run loop would, and `fallback` returned instead.
template <typename State, typename T, typename Fn>
T reported(State& s, T fallback, Fn&& fn) noexcept {
  try {
    return fn();
  } catch (...) {
    Fault f = currentFault();
    s.errMsg = std::move(f.description);
    s.errNum = f.number;
  }
  return fallback;
}

template <typename State, typename Fn>
void reported(State& s, Fn&& fn) noexcept {
  reported(s, true, [&] {
    fn();
    return true;
  });
}

}  // namespace

// The default user interface is made on first use (UI()): a child engine
// of a single-line IF takes its parent's instead.
BasicEngine::BasicEngine() : s_(std::make_unique<State>(this)) {}

BasicEngine::~BasicEngine() {
  // A table this engine created may outlive it in an engine that shared it;
  // it then has nobody left to report to.
  if (s_->symbols && s_->symbols->Parent() == this) s_->symbols->SetParent(nullptr);
}

const std::u16string& BasicEngine::CodeBlock() const noexcept { return s_->codeBlock; }
void BasicEngine::SetCodeBlock(std::u16string text) noexcept { s_->codeBlock = std::move(text); }

std::int32_t BasicEngine::ErrNum() const noexcept { return s_->errNum; }
void BasicEngine::SetErrNum(std::int32_t n) noexcept { s_->errNum = n; }
const std::u16string& BasicEngine::ErrMsg() const noexcept { return s_->errMsg; }
void BasicEngine::SetErrMsg(std::u16string msg) noexcept { s_->errMsg = std::move(msg); }

std::int16_t BasicEngine::CurrentLineNum() const noexcept { return s_->currentLine; }
void BasicEngine::SetCurrentLineNum(std::int16_t line) noexcept { s_->currentLine = line; }
std::int16_t BasicEngine::LineCount() const noexcept { return s_->lineCount; }

std::int32_t BasicEngine::Language() const noexcept { return s_->language; }
void BasicEngine::SetLanguage(std::int32_t lang) noexcept { s_->language = lang; }

const ObjectRef& BasicEngine::Parent() const noexcept { return s_->parent; }
void BasicEngine::SetParent(ObjectRef obj) noexcept { s_->parent = std::move(obj); }
const ObjectRef& BasicEngine::RecordSet() const noexcept { return s_->record; }
const std::shared_ptr<ObjectFactory>& BasicEngine::Objects() const noexcept {
  return s_->objectFactory;
}
void BasicEngine::SetObjectFactory(std::shared_ptr<korvex::ObjectFactory> factory) noexcept {
  s_->objectFactory = std::move(factory);
}
const ObjectRef& BasicEngine::ExcelBook() const noexcept { return s_->excelBook; }
void BasicEngine::SetExcelBook(ObjectRef obj) noexcept { s_->excelBook = std::move(obj); }
const ObjectRef& BasicEngine::ActiveExcelSheet() const noexcept { return s_->activeSheet; }
void BasicEngine::SetActiveExcelSheet(ObjectRef obj) noexcept { s_->activeSheet = std::move(obj); }

const korvex::Locale& BasicEngine::Locale() const noexcept { return *s_->locale; }
void BasicEngine::SetLocale(const korvex::Locale& loc) noexcept {
  if (&loc == &Locale::zhCN() || &loc == &Locale::enUS()) {
    s_->locale =
        std::shared_ptr<const korvex::Locale>(std::shared_ptr<const korvex::Locale>{}, &loc);
    return;
  }
  reported(*s_, [&] { s_->locale = std::make_shared<const korvex::Locale>(loc); });
}

UserInterface& BasicEngine::UI() const noexcept {
  // Out of memory here leaves nothing to talk to: that ends the process.
  if (!s_->ui) s_->ui = std::make_shared<RecordingUserInterface>();
  return *s_->ui;
}
void BasicEngine::SetUserInterface(std::shared_ptr<UserInterface> ui) noexcept {
  if (ui) s_->ui = std::move(ui);
}

void BasicEngine::RequestStop() noexcept { s_->stopRequested.store(true); }
void BasicEngine::SetLineHook(LineHook hook) noexcept { s_->lineHook = std::move(hook); }

bool BasicEngine::RegisterFunction(HostFunction function) noexcept {
  return reported(*s_, false, [&] {
    if (!HostFunctionTable::acceptable(function) || eval::isOwnName(upperName(function.name))) {
      return false;
    }
    if (!s_->hostFunctions) s_->hostFunctions = std::make_shared<HostFunctionTable>();
    s_->hostFunctions->add(std::move(function));
    return true;
  });
}

std::int32_t services::Report(BasicEngine& engine, std::int32_t number,
                              std::u16string_view message) {
  EngineAccess::State& s = EngineAccess::state(engine);
  s.errMsg.assign(message);
  s.errNum = number;
  return number;
}

// ---- variables -----------------------------------------------------------

bool services::SymbolDefined(const BasicEngine& engine, std::u16string_view name) {
  return EngineAccess::state(engine).symbols->IsSymbolDefined(name);
}

Value services::SymbolValue(BasicEngine& engine, std::u16string_view name) {
  return EngineAccess::state(engine).symbols->value(name);
}

std::int32_t services::DefineSymbol(BasicEngine& engine, std::u16string_view name,
                                    const Value& value) {
  SymbolTable& symbols = *EngineAccess::state(engine).symbols;
  if (symbols.IsSymbolDefined(name)) return 24;
  symbols.Add(name, value);
  return 0;
}

bool BasicEngine::IsVarDefined(std::u16string_view name) const noexcept {
  return reported(*s_, false, [&] { return services::SymbolDefined(*this, name); });
}
Value BasicEngine::GetVarValue(std::u16string_view name) noexcept {
  return reported(*s_, Value(), [&] { return services::SymbolValue(*this, name); });
}
void BasicEngine::Vaule(std::u16string_view name, const Value& value) noexcept {
  reported(*s_, [&] { s_->symbols->setValue(name, value); });
}

void BasicEngine::SetSysVar(std::u16string_view name, const Value& value) noexcept {
  reported(*s_, [&] {
    if (services::DefineSymbol(*this, name, value) == 24) s_->symbols->setValue(name, value);
  });
}

std::vector<std::pair<std::u16string, Value>> BasicEngine::Variables() const noexcept {
  return reported(*s_, std::vector<std::pair<std::u16string, Value>>{},
                  [&] { return s_->symbols->entries(); });
}

void services::ShareStateOf(BasicEngine& child, BasicEngine& parent) {
  // What a single-line IF hands its child: the host's parent object, the
  // variable table and the record. The user interface, the regional
  // settings and the host's functions are the host's own, so they go along too.
  EngineAccess::State& c = EngineAccess::state(child);
  const EngineAccess::State& p = EngineAccess::state(parent);
  c.parent = p.parent;
  c.objectFactory = p.objectFactory;
  c.symbols = p.symbols;
  c.record = p.record;
  c.fieldNames = p.fieldNames;
  c.fieldNamesGeneration = p.fieldNamesGeneration;
  (void)parent.UI();  // make sure there is one to share
  c.ui = p.ui;
  c.locale = p.locale;
  c.hostFunctions = p.hostFunctions;
}

void services::ResetForTail(BasicEngine& child) {
  EngineAccess::State& c = EngineAccess::state(child);
  c.errNum = 0;
  c.errMsg.clear();
  c.ifCount = 0;
  c.forCount = 0;
  c.doCount = 0;
  c.currentLine = 0;
  c.flags.clear();
  c.stopRequested.store(false);
}

std::uint64_t services::FieldNamesGeneration(const BasicEngine& engine) noexcept {
  return EngineAccess::state(engine).fieldNamesGeneration;
}

const HostFunctionEntry* services::HostFunctionNamed(const BasicEngine& engine,
                                                     std::u16string_view upperName) noexcept {
  const auto& table = EngineAccess::state(engine).hostFunctions;
  return table ? table->find(upperName) : nullptr;
}

Value BasicEngine::Evaluate(std::u16string_view expression) noexcept {
  return reported(*s_, Value(), [&] { return korvex::Evaluate(*this, expression); });
}

// ---- the statement-flag stack and counters ---------------------------------

void services::PushFlag(BasicEngine& engine, FlagFrame&& frame) {
  EngineAccess::state(engine).flags.push(std::move(frame));
}
FlagFrame services::PopFlag(BasicEngine& engine) { return EngineAccess::state(engine).flags.pop(); }
const FlagFrame& services::PeekFlag(BasicEngine& engine) {
  return EngineAccess::state(engine).flags.top();
}
void services::ClearFlags(BasicEngine& engine) { EngineAccess::state(engine).flags.clear(); }

std::uint64_t services::ScriptGeneration(const BasicEngine& engine) noexcept {
  const auto& kept = EngineAccess::state(engine).kept;
  return kept ? kept->generation : 0;
}

void BasicEngine::PushStmtFlag(const Value& v) noexcept {
  reported(*s_, [&] { services::PushFlag(*this, FlagFrame::fromValue(v)); });
}
Value BasicEngine::PopStmtFlag() noexcept {
  return reported(*s_, Value(), [&] { return services::PopFlag(*this).toValue(); });
}
Value BasicEngine::GetpopValueStmtFlag() noexcept {
  return reported(*s_, Value(), [&] { return services::PeekFlag(*this).toValue(); });
}
std::int16_t BasicEngine::StmtFlagCount() const noexcept { return s_->flags.size(); }
std::int16_t BasicEngine::IfCount() const noexcept { return s_->ifCount; }
void BasicEngine::SetIfCount(std::int16_t n) noexcept { s_->ifCount = n; }
std::int16_t BasicEngine::ForCount() const noexcept { return s_->forCount; }
void BasicEngine::SetForCount(std::int16_t n) noexcept { s_->forCount = n; }
std::int16_t BasicEngine::DoCount() const noexcept { return s_->doCount; }
void BasicEngine::SetDoCount(std::int16_t n) noexcept { s_->doCount = n; }

std::u16string services::LineCode(BasicEngine& engine, std::int16_t line) {
  const Value* v = EngineAccess::state(engine).lines->LineRef(line);
  if (v == nullptr || !v->isString()) return {};
  return v->stringValue();
}

std::u16string BasicEngine::GetLineCode(std::int16_t line) noexcept {
  return reported(*s_, std::u16string(), [&] { return services::LineCode(*this, line); });
}

}  // namespace korvex
