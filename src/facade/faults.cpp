#include "facade/faults.hpp"

#include <exception>
#include <new>

#include "values/runtime_error.hpp"

namespace korvex {

namespace {
Error platformFault(std::int32_t number, std::u16string_view fallback) {
  std::u16string_view text = vb::runtimeErrorText(number);
  return {number, std::u16string(text.empty() ? fallback : text)};
}
}  // namespace

Error currentFault() {
  try {
    throw;
  } catch (const vb::RuntimeError& e) {
    return e.error();
  } catch (const std::bad_alloc&) {
    return platformFault(7, u"内存溢出");
  } catch (...) {
    return platformFault(51, u"内部错误");
  }
}

}  // namespace korvex
