// The one call protocol every built-in function class follows.
//
// A class is nothing but a FunctionDescriptor: its display name, how many
// arguments it takes, the test each argument must pass and the operation
// itself. Invoke does the steps they all share: split the argument text,
// check the count, evaluate the arguments, test them, and decorate the
// messages with "{函数:" + name + argument text + "}".
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex {
class Context;
namespace eval {
class Expression;
}
}  // namespace korvex

namespace korvex::fn {

/// What an evaluated argument must be; a failure is error 4 "类型不匹配".
enum class Check : std::uint8_t {
  Any,      // nothing (including the string test that can never fail)
  Numeric,  // the platform's IsNumeric
  NumericOrNull,
  NonNegative,  // numeric and not less than 0 (compared as a number)
  Date,         // the platform's IsDate
  String,       // of type String
  Textual,      // has a string form: not Null, Object or Array
  Array,        // an array
};

/// Deliberate departures of single classes from the common steps.
enum Quirk : std::uint8_t {
  kNoQuirk = 0,
  /// Evaluation errors are not looked at before the argument test; the
  /// status returned is whatever the engine's ErrNum is at the end.
  kEngineStatus = 1,
  /// The type-mismatch message carries no "{函数:...}" suffix.
  kPlainTypeMessage = 2,
  /// The argument text must begin (after blanks) with "(".
  kRequiresParenthesis = 4,
};

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
  const eval::Expression& item(std::size_t i) const noexcept { return *items_[i]; }

 private:
  std::u16string_view text_;
  bool parsed_ = false;
  bool opens_ = false;
  std::vector<std::unique_ptr<eval::Expression>> items_;
};

class Call;
/// The operation: fills `result` (or leaves it alone) and returns 0, or an
/// error already stored through the Call's helpers.
using Operation = std::int32_t (*)(Call& call, Value& result);

struct FunctionDescriptor {
  std::u16string_view name;  // display name used in messages
  std::int8_t minArgs;       // < 0: the count is not tested
  std::int8_t maxArgs;
  std::array<Check, 3> checks;  // per argument position
  Operation operation;
  std::uint8_t quirks = kNoQuirk;
  /// When not empty, replaces the "{函数:...}" decoration of every message.
  std::u16string_view fixedSuffix = {};
  /// Whatever the operation needs beyond the call (a host function's entry).
  const void* context = nullptr;
};

/// One call in progress: the arguments and the error helpers.
class Call {
 public:
  Call(const FunctionDescriptor& desc, std::u16string_view argText, Context& ctx,
       std::span<const Value> args) noexcept
      : desc_(desc), argText_(argText), ctx_(ctx), args_(args) {}

  std::size_t count() const noexcept { return args_.size(); }
  /// Argument i (1-based), evaluated.
  const Value& arg(std::size_t i) const { return args_[i - 1]; }
  Context& context() const noexcept { return ctx_; }
  const Locale& locale() const noexcept;
  const FunctionDescriptor& descriptor() const noexcept { return desc_; }

  /// Stores "错误的参数表达式或参数个数" + suffix; returns 6.
  std::int32_t countError() const;
  /// Stores "类型不匹配" + suffix (with `extra` before the closing "}");
  /// returns 4.
  std::int32_t typeError(std::u16string_view extra = {}) const;
  /// Stores any number and message on the engine; returns the number.
  std::int32_t fail(std::int32_t number, std::u16string message) const;

 private:
  std::u16string suffix(std::u16string_view extra) const;

  const FunctionDescriptor& desc_;
  std::u16string_view argText_;
  Context& ctx_;
  std::span<const Value> args_;
};

/// Runs the common steps for one call of the class described by `desc`.
std::int32_t Invoke(const FunctionDescriptor& desc, const ArgList& args, Value& result,
                    Context& ctx);

/// Whether a value passes a check (exposed for the classes whose test
/// depends on the argument count).
bool Passes(Check check, const Value& v, const Locale& loc);

}  // namespace korvex::fn
