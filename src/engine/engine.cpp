// BasicEngine: properties, variables and the services statements use. The
// run loop is in run_loop.cpp, classification in classify.cpp, the record
// binding in record_binding.cpp.
#include "korvex/engine.hpp"

#include <utility>

#include "engine/engine_state.hpp"
#include "engine/faults.hpp"
#include "eval/eval.hpp"

namespace korvex {

// The default user interface is made on first use (UI()): a child engine
// of a single-line IF takes its parent's instead.
BasicEngine::BasicEngine() : s_(std::make_unique<State>(this)) {}

BasicEngine::~BasicEngine() {
  // A table this engine created may outlive it in an engine that shared it;
  // it then has nobody left to report to.
  if (s_->symbols && s_->symbols->Parent() == this) s_->symbols->SetParent(nullptr);
}

const std::u16string& BasicEngine::CodeBlock() const noexcept { return s_->codeBlock; }
void BasicEngine::SetCodeBlock(std::u16string text) { s_->codeBlock = std::move(text); }

std::int32_t BasicEngine::ErrNum() const noexcept { return s_->errNum; }
void BasicEngine::SetErrNum(std::int32_t n) noexcept { s_->errNum = n; }
const std::u16string& BasicEngine::ErrMsg() const noexcept { return s_->errMsg; }
void BasicEngine::SetErrMsg(std::u16string msg) { s_->errMsg = std::move(msg); }

std::int16_t BasicEngine::CurrentLineNum() const noexcept { return s_->currentLine; }
void BasicEngine::SetCurrentLineNum(std::int16_t line) noexcept { s_->currentLine = line; }
std::int16_t BasicEngine::LineCount() const noexcept { return s_->lineCount; }

std::int32_t BasicEngine::Language() const noexcept { return s_->language; }
void BasicEngine::SetLanguage(std::int32_t lang) noexcept { s_->language = lang; }

const ObjectRef& BasicEngine::Parent() const noexcept { return s_->parent; }
void BasicEngine::SetParent(ObjectRef obj) { s_->parent = std::move(obj); }
const ObjectRef& BasicEngine::RecordSet() const noexcept { return s_->record; }
const std::shared_ptr<ObjectFactory>& BasicEngine::Objects() const noexcept {
  return s_->objectFactory;
}
void BasicEngine::SetObjectFactory(std::shared_ptr<korvex::ObjectFactory> factory) {
  s_->objectFactory = std::move(factory);
}
const ObjectRef& BasicEngine::ExcelBook() const noexcept { return s_->excelBook; }
void BasicEngine::SetExcelBook(ObjectRef obj) { s_->excelBook = std::move(obj); }
const ObjectRef& BasicEngine::ActiveExcelSheet() const noexcept { return s_->activeSheet; }
void BasicEngine::SetActiveExcelSheet(ObjectRef obj) { s_->activeSheet = std::move(obj); }

const korvex::Locale& BasicEngine::Locale() const noexcept { return *s_->locale; }
void BasicEngine::SetLocale(const korvex::Locale& loc) noexcept {
  if (&loc == &Locale::zhCN() || &loc == &Locale::enUS()) {
    s_->locale =
        std::shared_ptr<const korvex::Locale>(std::shared_ptr<const korvex::Locale>{}, &loc);
  } else {
    s_->locale = std::make_shared<const korvex::Locale>(loc);
  }
}

UserInterface& BasicEngine::UI() const noexcept {
  if (!s_->ui) s_->ui = std::make_shared<RecordingUserInterface>();
  return *s_->ui;
}
void BasicEngine::SetUserInterface(std::shared_ptr<UserInterface> ui) {
  if (ui) s_->ui = std::move(ui);
}

void BasicEngine::RequestStop() noexcept { s_->stopRequested.store(true); }
void BasicEngine::SetLineHook(LineHook hook) { s_->lineHook = std::move(hook); }

// ---- variables -----------------------------------------------------------

bool BasicEngine::SymbolDefined(std::u16string_view name) const {
  return s_->symbols->IsSymbolDefined(name);
}

Value BasicEngine::SymbolValue(std::u16string_view name) { return s_->symbols->value(name); }

std::int32_t BasicEngine::DefineSymbol(std::u16string_view name, const Value& value) {
  if (s_->symbols->IsSymbolDefined(name)) return 24;
  s_->symbols->Add(name, value);
  return 0;
}

bool BasicEngine::IsVarDefined(std::u16string_view name) const { return SymbolDefined(name); }
Value BasicEngine::GetVarValue(std::u16string_view name) { return SymbolValue(name); }
void BasicEngine::Vaule(std::u16string_view name, const Value& value) {
  s_->symbols->setValue(name, value);
}

void BasicEngine::SetSysVar(std::u16string_view name, const Value& value) {
  if (DefineSymbol(name, value) == 24) Vaule(name, value);
}

std::vector<std::pair<std::u16string, Value>> BasicEngine::Variables() const {
  return s_->symbols->entries();
}

void BasicEngine::ShareStateOf(BasicEngine& parent) {
  // What a single-line IF hands its child: the host's parent object, the
  // variable table and the record. The user interface and the regional
  // settings are the process's own, so they go along too.
  s_->parent = parent.s_->parent;
  s_->objectFactory = parent.s_->objectFactory;
  s_->symbols = parent.s_->symbols;
  s_->record = parent.s_->record;
  s_->fieldNames = parent.s_->fieldNames;
  (void)parent.UI();  // make sure there is one to share
  s_->ui = parent.s_->ui;
  s_->locale = parent.s_->locale;
}

Value BasicEngine::Evaluate(std::u16string_view expression) noexcept {
  try {
    return korvex::Evaluate(*this, expression);
  } catch (...) {
    Fault f = currentFault();
    s_->errMsg = std::move(f.description);
    s_->errNum = f.number;
  }
  return {};
}

// ---- the statement-flag stack and counters ---------------------------------

void BasicEngine::PushStmtFlag(const Value& v) { s_->flags->Push(v); }
Value BasicEngine::PopStmtFlag() { return s_->flags->Pop(); }
Value BasicEngine::GetpopValueStmtFlag() { return s_->flags->GetPopValue(); }
std::int16_t BasicEngine::StmtFlagCount() const noexcept { return s_->flags->StackSize(); }
std::int16_t BasicEngine::IfCount() const noexcept { return s_->ifCount; }
void BasicEngine::SetIfCount(std::int16_t n) noexcept { s_->ifCount = n; }
std::int16_t BasicEngine::ForCount() const noexcept { return s_->forCount; }
void BasicEngine::SetForCount(std::int16_t n) noexcept { s_->forCount = n; }
std::int16_t BasicEngine::DoCount() const noexcept { return s_->doCount; }
void BasicEngine::SetDoCount(std::int16_t n) noexcept { s_->doCount = n; }

std::u16string BasicEngine::GetLineCode(std::int16_t line) {
  const Value* v = s_->lines->LineRef(line);
  if (v == nullptr || !v->isString()) return {};
  return v->stringValue();
}

}  // namespace korvex
