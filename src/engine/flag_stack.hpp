// The statement-flag stack: the IF and DO blocks open at the moment. The
// block statements work on typed frames; the host sees and pushes each
// entry as the three-element array (marker, line, detail) with lower bound
// 1 that the engine has always shown, and a value the host pushes itself is
// read back exactly as it was pushed.
#pragma once

#include <cstdint>
#include <vector>

#include "korvex/value.hpp"
#include "values/error.hpp"

namespace korvex {

namespace eval {
class Expression;
}

struct FlagFrame {
  enum class Marker : std::uint8_t { Other, If, DoWhile, DoUntil };

  Marker marker = Marker::Other;
  Value line;    // element 2: the line of the IF or DO
  Value detail;  // element 3: an IF's condition value, a DO's condition text
  // A DO's kept condition, usable while the script of that generation runs.
  eval::Expression* condition = nullptr;
  std::uint64_t scriptGeneration = 0;
  // A value the host pushed, returned as it was.
  bool fromHost = false;
  Value pushed;

  bool isDo() const noexcept { return marker == Marker::DoWhile || marker == Marker::DoUntil; }
  /// The entry as the host sees it.
  Value toValue() const;
  /// A host's value read as an entry: its first element names the marker.
  static FlagFrame fromValue(const Value& v);
};

class FlagStack {
 public:
  /// `errors` receives the error reports.
  explicit FlagStack(Error* errors) noexcept : errors_(errors) {}

  std::int16_t size() const noexcept { return count_; }
  /// The 32768th entry is an overflow (error 6, raised).
  void push(FlagFrame&& frame);
  /// Removes the top entry; an empty stack reports error 18 and gives an
  /// entry without marker.
  FlagFrame pop();
  /// The top entry; an empty stack reports error 20 and gives an entry
  /// without marker.
  const FlagFrame& top();
  void clear() noexcept;

 private:
  Error* errors_;
  std::vector<FlagFrame> frames_;
  std::int16_t count_ = 0;
};

}  // namespace korvex
