// The one call protocol every function follows, built-in or registered by
// the host.
//
// A function is nothing but a FunctionEntry: the names scripts call it by,
// how many arguments it takes, the test each argument must pass and the
// operation itself. The evaluator does the steps they all share (split the
// argument text, check the count, evaluate the arguments, test them); the
// Call an operation sees decorates every message with "{函数:" + name +
// argument text + "}".
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/host_function.hpp"
#include "korvex/locale.hpp"
#include "korvex/value.hpp"
#include "values/error.hpp"

namespace korvex {
class Context;
}

namespace korvex::fn {

/// Deliberate departures of single functions from the common steps.
enum Quirk : std::uint8_t {
  kNoQuirk = 0,
  /// Evaluation errors are not looked at before the argument test; the
  /// status returned is whatever the error register holds at the end.
  kEngineStatus = 1,
  /// The type-mismatch message carries no "{函数:...}" suffix.
  kPlainTypeMessage = 2,
  /// The argument text must begin (after blanks) with "(".
  kRequiresParenthesis = 4,
};

class Call;
/// The operation: fills `result` (or leaves it alone) and returns 0, or an
/// error already stored through the Call's helpers.
using Operation = std::int32_t (*)(Call& call, Value& result);

/// What a function gives back, as the function reference names it.
enum class ResultKind : std::uint8_t { Number, String, Date, Boolean, Array, Any, Nothing };

/// A call with sample arguments and the SQL text it sends, made by the same
/// builder the function's operation uses.
struct SqlExample {
  std::u16string call;
  std::u16string sql;
};

/// What `korvex functions` shows of a function, kept in its row.
struct FunctionDoc {
  /// The arguments by name, in order, the optional ones in brackets:
  /// u"字符串, 开始[, 长度]", u"提示[, 标题[, 默认值]]".
  std::u16string_view arguments;
  ResultKind result;
  /// One line: what the function gives.
  std::u16string_view summary;
  /// The tests the operation makes itself that fail with 类型不匹配 (beyond
  /// `checks`), as one line.
  std::u16string_view ownTypeTests = {};
  /// The wage functions: sample calls and the SQL they send.
  std::vector<SqlExample> (*sql)() = nullptr;
};

/// Everything about one function. A family's table is an array of them.
struct FunctionEntry {
  /// The names scripts call it by, matched case-insensitively; the first is
  /// also the name its messages show. An unused slot stays empty.
  std::array<std::u16string_view, 2> names;
  std::int8_t minArgs;  // < 0: the count is not tested
  std::int8_t maxArgs;
  std::array<ArgCheck, 3> checks;  // per argument position
  Operation operation;
  FunctionDoc doc = {};
  std::uint8_t quirks = kNoQuirk;
  /// When not empty, replaces the "{函数:...}" decoration of every message.
  std::u16string_view fixedSuffix = {};
  /// Whatever the operation needs beyond the call (a host function's entry).
  const void* context = nullptr;

  std::u16string_view displayName() const noexcept { return names[0]; }
};

/// One call in progress: the arguments and the error helpers.
class Call {
 public:
  Call(const FunctionEntry& entry, std::u16string_view argText, Context& ctx,
       std::span<const Value> args) noexcept
      : entry_(entry), argText_(argText), ctx_(ctx), args_(args) {}

  std::size_t count() const noexcept { return args_.size(); }
  /// Argument i (1-based), evaluated.
  const Value& arg(std::size_t i) const { return args_[i - 1]; }
  Context& context() const noexcept { return ctx_; }
  const Locale& locale() const noexcept;
  const FunctionEntry& entry() const noexcept { return entry_; }

  /// Stores "错误的参数表达式或参数个数" + suffix; returns 6.
  std::int32_t countError() const;
  /// Stores "类型不匹配" + suffix (with `extra` before the closing "}");
  /// returns 4.
  std::int32_t typeError(std::u16string_view extra = {}) const;
  /// Stores any number and message on the engine; returns the number.
  std::int32_t fail(std::int32_t number, std::u16string message) const;
  /// Stores a message of the table followed by `detail`; returns its number.
  std::int32_t fail(const Message& m, std::u16string_view detail = {}) const;

 private:
  std::u16string suffix(std::u16string_view extra) const;

  const FunctionEntry& entry_;
  std::u16string_view argText_;
  Context& ctx_;
  std::span<const Value> args_;
};

/// Whether a value passes a check (exposed for the functions whose test
/// depends on the argument count).
bool Passes(ArgCheck check, const Value& v, const Locale& loc);

}  // namespace korvex::fn
