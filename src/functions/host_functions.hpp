// The functions a host registered on an engine (<korvex/host_function.hpp>):
// each becomes an entry of the common call protocol whose operation runs
// the host's checks and then the host's operation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/context.hpp"
#include "functions/catalog.hpp"
#include "functions/protocol.hpp"
#include "korvex/host_function.hpp"

namespace korvex {

class HostFunctionEntry {
 public:
  explicit HostFunctionEntry(HostFunction function);
  HostFunctionEntry(const HostFunctionEntry&) = delete;
  HostFunctionEntry& operator=(const HostFunctionEntry&) = delete;

  const fn::FunctionEntry& entry() const noexcept { return entry_; }
  const HostFunction& function() const noexcept { return function_; }

 private:
  HostFunction function_;
  fn::FunctionEntry entry_;
};

class HostFunctionTable final : public FunctionRegistry {
 public:
  /// Whether the function may be registered (see BasicEngine::RegisterFunction):
  /// its name reads as a script name and is no built-in function's, its
  /// counts are sound. The evaluator's own names (constants, the functions it
  /// computes itself) are its own to refuse.
  static bool acceptable(const HostFunction& function);
  void add(HostFunction function);
  const HostFunctionEntry* find(std::u16string_view upperName) const noexcept;
  bool empty() const noexcept { return entries_.empty(); }

 private:
  std::unordered_map<std::u16string, std::unique_ptr<HostFunctionEntry>, fn::NameHash,
                     std::equal_to<>>
      entries_;

 public:
  HostFunctionTable();
};

/// Adds the function to the context's registry (see
/// BasicEngine::RegisterFunction); false when it is not acceptable.
bool registerHostFunction(Context& ctx, HostFunction function);

/// The function a host registered under this upper-cased name, or nullptr.
const HostFunctionEntry* hostFunctionNamed(const Context& ctx,
                                           std::u16string_view upperName) noexcept;

}  // namespace korvex
