// Stack: a growable stack of Values that doubles as a 1-based list.
//
// The engine keeps two: the script's lines (pushed in order, read by number
// with GetLine) and the statement-flag stack on which the block statements
// record which IF / DO blocks are open. Misuse is reported on the owning
// engine (ErrNum / ErrMsg) and answered with Empty; the stack is left as it
// was.
#pragma once

#include <cstdint>
#include <vector>

#include "korvex/value.hpp"

namespace korvex {

class BasicEngine;

class Stack {
 public:
  /// `parent` receives the error reports; may be null (errors then only
  /// give Empty).
  explicit Stack(BasicEngine* parent = nullptr) noexcept : parent_(parent) {}

  BasicEngine* Parent() const noexcept { return parent_; }
  void SetParent(BasicEngine* parent) noexcept { parent_ = parent; }

  /// Number of items in use.
  std::int16_t StackSize() const noexcept { return count_; }
  /// Slots allocated; grows in steps of 10 and never shrinks.
  std::int32_t Capacity() const noexcept { return static_cast<std::int32_t>(items_.size()); }

  /// Puts a value on top. The 32768th item is an overflow (error 6, thrown).
  void Push(Value v);
  /// Removes and returns the top item; error 18 on an empty stack.
  Value Pop();
  /// The top item, left in place; error 20 on an empty stack.
  Value GetPopValue();
  /// Item `index` (1 = bottom); error 19 on an empty stack, 21 past the top.
  /// An index below 1 on a non-empty stack is a subscript fault (error 9,
  /// thrown).
  Value GetLine(std::int16_t index);
  /// As GetLine, without copying: nullptr where GetLine reports an error.
  const Value* LineRef(std::int16_t index);

 private:
  void report(std::int32_t number, std::u16string_view text) const;

  BasicEngine* parent_;
  std::vector<Value> items_;  // item i lives at items_[i - 1]
  std::int16_t count_ = 0;
};

}  // namespace korvex
