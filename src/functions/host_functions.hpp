// The functions a host registered on an engine (<korvex/host_function.hpp>):
// each becomes a descriptor of the common call protocol whose operation
// runs the host's checks and then the host's operation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/context.hpp"
#include "functions/protocol.hpp"
#include "korvex/host_function.hpp"

namespace korvex {

class HostFunctionEntry {
 public:
  explicit HostFunctionEntry(HostFunction function);
  HostFunctionEntry(const HostFunctionEntry&) = delete;
  HostFunctionEntry& operator=(const HostFunctionEntry&) = delete;

  const fn::FunctionDescriptor& descriptor() const noexcept { return descriptor_; }
  const HostFunction& function() const noexcept { return function_; }

 private:
  HostFunction function_;
  fn::FunctionDescriptor descriptor_;
};

class HostFunctionTable final : public FunctionRegistry {
 public:
  /// Whether the function may be registered (see BasicEngine::RegisterFunction).
  static bool acceptable(const HostFunction& function);
  void add(HostFunction function);
  const HostFunctionEntry* find(std::u16string_view upperName) const noexcept;
  bool empty() const noexcept { return entries_.empty(); }

 private:
  struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view s) const noexcept {
      return std::hash<std::u16string_view>{}(s);
    }
  };
  std::unordered_map<std::u16string, std::unique_ptr<HostFunctionEntry>, NameHash, std::equal_to<>>
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

/// Calls a host function with the argument list its name was followed by.
std::int32_t CallHostFunction(const HostFunctionEntry& entry, const fn::ArgList& args,
                              Value& result, Context& ctx);

}  // namespace korvex
