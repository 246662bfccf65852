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

/// A message of the engine's numbered table: the number it always comes
/// with and its text.
struct Message {
  std::int32_t number;
  std::u16string_view text;
};

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
  std::int32_t set(const Message& m) { return set(m.number, m.text); }
  /// The message's text followed by `detail`.
  std::int32_t set(const Message& m, std::u16string_view detail) {
    text.assign(m.text);
    text += detail;
    number = m.number;
    return number;
  }
  void clear() noexcept {
    number = 0;
    text.clear();
  }
};

}  // namespace korvex
