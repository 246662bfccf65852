// Helpers shared by the value tests.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "korvex/value.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {

/// Runs `f` and returns the run-time error number it raised, 0 if none.
inline int errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const vb::RuntimeError& e) {
    return e.number();
  }
  return 0;
}

/// Readable form of a UTF-16 string in failure messages.
inline std::string u8(std::u16string_view s) { return toUtf8(s); }

}  // namespace korvex::testing
