// The engine's one error value: a number (0 = none) and its text. Whoever
// finds an error stores the text first and then the number, the order the
// host has always observed; the run loop, the functions and the host-object
// calls all pass errors on in this form, and the facade hands it to the host
// as ErrNum / ErrMsg.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex {

struct Error {
  std::int32_t number = 0;
  std::u16string text;

  bool failed() const noexcept { return number != 0; }
  /// Stores the text, then the number; returns the number.
  std::int32_t set(std::int32_t n, std::u16string_view t) {
    text.assign(t);
    number = n;
    return n;
  }
  void clear() noexcept {
    number = 0;
    text.clear();
  }
};

}  // namespace korvex
