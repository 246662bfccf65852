// Calling a function: the steps every function shares, built-in or
// registered by the host. Invoke splits nothing itself; the argument list
// keeps the split with the call site.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "functions/protocol.hpp"
#include "korvex/value.hpp"

namespace korvex {
class Context;
}

namespace korvex::eval {

class Expression;

/// A call's argument text split into its argument expressions: what the
/// text alone decides, kept with the call site so that a call that runs
/// again neither splits nor scans its arguments afresh.
class ArgList {
 public:
  /// `argText` is the piece the parenthesis reader returned, parentheses
  /// included; it must outlive the list (the argument expressions keep
  /// copies of their own texts).
  explicit ArgList(std::u16string_view argText);
  ~ArgList();
  ArgList(const ArgList&) = delete;
  ArgList& operator=(const ArgList&) = delete;

  std::u16string_view text() const noexcept { return text_; }
  /// The split succeeded (no unclosed literal or group, no trailing comma).
  bool parsed() const noexcept { return parsed_; }
  /// The text begins (after blanks) with "(".
  bool opensWithParenthesis() const noexcept { return opens_; }
  std::size_t count() const noexcept { return items_.size(); }
  /// Argument i (0-based).
  Expression& item(std::size_t i) noexcept { return *items_[i]; }

 private:
  std::u16string_view text_;
  bool parsed_ = false;
  bool opens_ = false;
  std::vector<std::unique_ptr<Expression>> items_;
};

/// Runs the common steps for one call of `entry`: check the count, evaluate
/// the arguments, test them, run the operation. Returns 0 with `result` set,
/// or an error number already stored on the engine with its message.
/// Platform run-time faults propagate as vb::RuntimeError.
std::int32_t Invoke(const fn::FunctionEntry& entry, ArgList& args, Value& result, Context& ctx);

}  // namespace korvex::eval
