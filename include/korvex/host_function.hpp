// Functions a host adds to the script language: a site's own wage rules,
// called from scripts like any built-in function.
//
// A function is described the way every built-in one is: its name, how many
// arguments it takes, the test each argument must pass, and the operation.
// The engine does the common steps itself: it splits the argument text,
// checks the count ("错误的参数表达式或参数个数"), evaluates the arguments
// (an argument's own error ends the call), tests them ("类型不匹配"), and
// only then calls the operation. Every message it stores ends in
// "{函数:" + name + argument text + "}", as a built-in function's does.
//
//   korvex::HostFunction bonus;
//   bonus.name = u"_工龄奖";                     // scripts write _工龄奖(年数)
//   bonus.minArgs = bonus.maxArgs = 1;
//   bonus.checks = {korvex::ArgCheck::Numeric};
//   bonus.operation = [](const korvex::HostFunctionCall& call, korvex::Value& result) {
//     const auto years = korvex::toDouble(call.arg(1), call.locale());
//     if (!years) return call.fail(years.errNum, years.errMsg);
//     result = korvex::Value::dbl(*years.value >= 10 ? 300 : 100);
//     return 0;
//   };
//   engine.RegisterFunction(bonus);
//
// Names resolve in this order: the built-in functions and constants (which a
// host function cannot replace), the host's functions, then variables and
// the fields of the current record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex {

class BasicEngine;
struct HostFunctionBridge;
namespace fn {
class Call;
}

/// What an evaluated argument must be; a failure is error 4 "类型不匹配".
enum class ArgCheck : std::uint8_t {
  Any,            // anything
  Numeric,        // a number or a text that reads as one (IsNumeric)
  NumericOrNull,  // as Numeric, or Null
  NonNegative,    // as Numeric and not below 0
  Date,           // a date or a text that reads as one (IsDate)
  String,         // of type String
  Textual,        // has a text form: not Null, an object or an array
  Array,          // an array
};

/// One call of a host function, handed to its operation.
class HostFunctionCall {
 public:
  /// Number of arguments.
  std::size_t count() const noexcept;
  /// Argument i (1-based), evaluated; Empty when there is no such argument.
  const Value& arg(std::size_t i) const noexcept;
  /// The engine running the script (its variables, record, host objects).
  BasicEngine& engine() const noexcept;
  const Locale& locale() const noexcept;

  /// Reports "错误的参数表达式或参数个数{函数:...}"; returns 6.
  std::int32_t countError() const noexcept;
  /// Reports "类型不匹配{函数:...}" (with `extra` before the closing "}");
  /// returns 4.
  std::int32_t typeError(std::u16string_view extra = {}) const noexcept;
  /// Reports any number with the message as given; returns the number.
  std::int32_t fail(std::int32_t number, std::u16string_view message) const noexcept;

 private:
  friend struct HostFunctionBridge;
  explicit HostFunctionCall(const fn::Call& call) noexcept : call_(call) {}
  const fn::Call& call_;
};

struct HostFunction {
  /// The name scripts call it by, matched case-insensitively; it must read
  /// as a script name (a letter, "_" or a Chinese character first, then
  /// letters, digits and "_"). Messages show it as written here.
  std::u16string name;
  /// Accepted argument counts, 0 to 100; minArgs below 0 accepts any count.
  int minArgs = 0;
  int maxArgs = 0;
  /// The test for each argument position; positions past the list take
  /// anything.
  std::vector<ArgCheck> checks;
  /// Fills `result` and returns 0, or returns an error number after
  /// reporting it through the call (fail, typeError, countError). A number
  /// returned without a report still ends the run with that number. An
  /// exception thrown here is reported as error 51 with the exception's text
  /// (what(), UTF-8; "内部错误" when it has none; 7 "内存溢出" for
  /// std::bad_alloc), like any failure of the function.
  std::function<std::int32_t(const HostFunctionCall& call, Value& result)> operation;
};

}  // namespace korvex
