// The call a host function's operation receives: the public face of the
// engine's own call, which never throws towards the host.
#include "engine/context.hpp"
#include "functions/protocol.hpp"
#include "korvex/host_function.hpp"

namespace korvex {

namespace {

template <typename Fn>
std::int32_t reporting(std::int32_t number, Fn&& fn) noexcept {
  try {
    return fn();
  } catch (...) {
    return number;  // out of memory while storing the message: the number stands
  }
}

}  // namespace

std::size_t HostFunctionCall::count() const noexcept { return call_.count(); }

const Value& HostFunctionCall::arg(std::size_t i) const noexcept {
  static const Value kNone;
  return i >= 1 && i <= call_.count() ? call_.arg(i) : kNone;
}

BasicEngine& HostFunctionCall::engine() const noexcept { return call_.context().host(); }
const Locale& HostFunctionCall::locale() const noexcept { return call_.locale(); }

std::int32_t HostFunctionCall::countError() const noexcept {
  return reporting(6, [&] { return call_.countError(); });
}

std::int32_t HostFunctionCall::typeError(std::u16string_view extra) const noexcept {
  return reporting(4, [&] { return call_.typeError(extra); });
}

std::int32_t HostFunctionCall::fail(std::int32_t number,
                                    std::u16string_view message) const noexcept {
  return reporting(number, [&] { return call_.fail(number, std::u16string(message)); });
}

}  // namespace korvex
