#include "engine/context.hpp"

#include "engine/classify.hpp"
#include "engine/messages.hpp"
#include "values/runtime_error.hpp"

namespace korvex {

void Frame::reset() noexcept {
  error.clear();
  ifCount = 0;
  forCount = 0;
  doCount = 0;
  currentLine = 0;
  flags.clear();
}

Context::Context(BasicEngine* host)
    : host_(host),
      symbols_(this),
      // While no record is set the cache holds one empty name.
      fieldNames_(1),
      fieldNamesGeneration_(nextGeneration()),
      locale_(&Locale::zhCN()) {}

Context::~Context() = default;

std::int32_t Context::defineSymbol(std::u16string_view name, const Value& value) {
  if (symbols_.IsSymbolDefined(name)) return msg::kVariableDefined.number;
  symbols_.Add(name, value);
  return 0;
}

void Context::setLocale(const Locale& loc) {
  if (&loc == &Locale::zhCN() || &loc == &Locale::enUS()) {
    locale_ = &loc;
    ownLocale_.reset();
    return;
  }
  ownLocale_ = std::make_unique<Locale>(loc);
  locale_ = ownLocale_.get();
}

UserInterface& Context::ui() {
  if (!ui_) ui_ = std::make_shared<RecordingUserInterface>();
  return *ui_;
}

void Context::setUserInterface(std::shared_ptr<UserInterface> ui) noexcept {
  if (ui) ui_ = std::move(ui);
}

const ObjectRef& Context::excelBook() const noexcept {
  static const ObjectRef kNothing;
  return frame_->tail ? kNothing : excelBook_;
}

const ObjectRef& Context::activeSheet() const noexcept {
  static const ObjectRef kNothing;
  return frame_->tail ? kNothing : activeSheet_;
}

void Context::setHostFunctions(std::unique_ptr<FunctionRegistry> r) noexcept {
  hostFunctions_ = std::move(r);
}

// ---- the lines ---------------------------------------------------------------

std::u16string_view Context::lineCode(std::int16_t line) {
  const KeptScript* script = frame_->kept.get();
  if (script == nullptr || script->lines.empty()) {
    report(msg::kGetLineEmpty);
    return {};
  }
  if (line > static_cast<std::int64_t>(script->lines.size())) {
    report(msg::kGetLineIndex);
    return {};
  }
  if (line < 1) vb::raise(vb::kSubscript);
  return script->lines[static_cast<std::size_t>(line) - 1].text;
}

KeptLine* Context::keptLine(std::int16_t line) noexcept {
  KeptScript* script = frame_->kept.get();
  if (script == nullptr || line < 1 || static_cast<std::size_t>(line) > script->lines.size()) {
    return nullptr;
  }
  return &script->lines[static_cast<std::size_t>(line) - 1];
}

std::int16_t Context::kindOf(KeptLine& line) {
  if (!line.classified) {
    line.kind = classifyLine(line.text, line.error);
    line.classified = true;
  }
  if (line.error.failed()) frame_->error = line.error;
  return line.kind;
}

std::uint64_t Context::scriptGeneration() const noexcept {
  return frame_->kept ? frame_->kept->generation : 0;
}

}  // namespace korvex
