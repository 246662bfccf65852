#include "functions/host_functions.hpp"

#include <algorithm>

#include "engine/context.hpp"
#include "engine/generation.hpp"
#include "engine/script_reader.hpp"
#include "values/text_scan.hpp"

namespace korvex {

struct HostFunctionBridge {
  static HostFunctionCall call(const fn::Call& c) noexcept { return HostFunctionCall(c); }
};

namespace {

constexpr int kMostArguments = 100;

// The operation of every host function's entry: the host's argument tests (any
// number of positions), then the host's own operation.
std::int32_t runHostFunction(fn::Call& call, Value& result) {
  const auto& entry = *static_cast<const HostFunctionEntry*>(call.entry().context);
  const HostFunction& function = entry.function();
  const std::size_t checked = std::min(call.count(), function.checks.size());
  for (std::size_t i = 1; i <= checked; ++i) {
    if (!fn::Passes(function.checks[i - 1], call.arg(i), call.locale())) {
      return call.typeError();
    }
  }
  return function.operation(HostFunctionBridge::call(call), result);
}

}  // namespace

HostFunctionEntry::HostFunctionEntry(HostFunction function)
    : function_(std::move(function)),
      entry_{{function_.name},
             static_cast<std::int8_t>(std::max(function_.minArgs, -1)),
             static_cast<std::int8_t>(function_.maxArgs),
             {},
             runHostFunction,
             {},
             fn::kNoQuirk,
             {},
             this} {}

bool HostFunctionTable::acceptable(const HostFunction& function) {
  const std::u16string_view name = function.name;
  if (name.empty() || !isIdentStart(name.front())) return false;
  if (!std::all_of(name.begin(), name.end(), isIdentChar)) return false;
  if (fn::findFunction(upperName(name)) != nullptr) return false;
  if (function.minArgs >= 0 &&
      (function.minArgs > function.maxArgs || function.maxArgs > kMostArguments)) {
    return false;
  }
  return static_cast<bool>(function.operation);
}

HostFunctionTable::HostFunctionTable() { generation_ = nextGeneration(); }

void HostFunctionTable::add(HostFunction function) {
  std::u16string key = upperName(function.name);
  entries_.insert_or_assign(std::move(key),
                            std::make_unique<HostFunctionEntry>(std::move(function)));
  generation_ = nextGeneration();
}

const HostFunctionEntry* HostFunctionTable::find(std::u16string_view upperName) const noexcept {
  const auto it = entries_.find(upperName);
  return it == entries_.end() ? nullptr : it->second.get();
}

bool registerHostFunction(Context& ctx, HostFunction function) {
  if (!HostFunctionTable::acceptable(function)) return false;
  if (ctx.hostFunctions() == nullptr) ctx.setHostFunctions(std::make_unique<HostFunctionTable>());
  static_cast<HostFunctionTable*>(ctx.hostFunctions())->add(std::move(function));
  return true;
}

const HostFunctionEntry* hostFunctionNamed(const Context& ctx,
                                           std::u16string_view upperName) noexcept {
  const auto* table = static_cast<const HostFunctionTable*>(ctx.hostFunctions());
  return table ? table->find(upperName) : nullptr;
}

}  // namespace korvex
