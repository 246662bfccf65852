#include "engine/symbol_table.hpp"

#include <algorithm>

#include "engine/context.hpp"
#include "engine/generation.hpp"
#include "engine/messages.hpp"
#include "values/text_scan.hpp"

namespace korvex {

SymbolTable::SymbolTable(Context* owner) noexcept : owner_(owner), generation_(nextGeneration()) {}

void SymbolTable::clear() {
  entries_.clear();
  nextOrder_ = 0;
  generation_ = nextGeneration();
}

SymbolTable::Entry* SymbolTable::slot(std::u16string_view upperName) {
  keyBuffer_.assign(upperName);
  const auto it = entries_.find(keyBuffer_);
  return it == entries_.end() ? nullptr : &it->second;
}

const std::u16string& SymbolTable::key(std::u16string_view name) const {
  upperNameInto(name, keyBuffer_);
  return keyBuffer_;
}

void SymbolTable::reportUndefined(const std::u16string& upperName) const {
  if (owner_ == nullptr) return;
  owner_->top().error.set(msg::kUndefinedVariable, msg::quoted(upperName));
}

void SymbolTable::Add(std::u16string_view name, const Value& value) {
  const std::u16string& k = key(name);
  if (entries_.contains(k)) {
    if (owner_ != nullptr) {
      owner_->ui().messageBox(msg::kSymbolDefined, UserInterface::Buttons::Ok, u"");
    }
    return;
  }
  entries_.emplace(k, Entry{value, nextOrder_++});
}

bool SymbolTable::IsSymbolDefined(std::u16string_view name) const {
  return entries_.contains(key(name));
}

const Value* SymbolTable::find(std::u16string_view name) const {
  const auto it = entries_.find(key(name));
  return it == entries_.end() ? nullptr : &it->second.value;
}

Value SymbolTable::value(std::u16string_view name) {
  const auto it = entries_.find(key(name));
  if (it == entries_.end()) {
    reportUndefined(keyBuffer_);
    return {};
  }
  return it->second.value;
}

void SymbolTable::setValue(std::u16string_view name, const Value& value) {
  const auto it = entries_.find(key(name));
  if (it == entries_.end()) {
    reportUndefined(keyBuffer_);
    return;
  }
  it->second.value = value;
  it->second.order = nextOrder_++;
}

std::vector<std::pair<std::u16string, Value>> SymbolTable::entries() const {
  std::vector<const std::pair<const std::u16string, Entry>*> ordered;
  ordered.reserve(entries_.size());
  for (const auto& e : entries_) ordered.push_back(&e);
  std::sort(ordered.begin(), ordered.end(),
            [](const auto* a, const auto* b) { return a->second.order < b->second.order; });
  std::vector<std::pair<std::u16string, Value>> out;
  out.reserve(ordered.size());
  for (const auto* e : ordered) out.emplace_back(e->first, e->second.value);
  return out;
}

}  // namespace korvex
