// The kept form of one expression text.
//
// The scan of an expression derives most of what it finds from the text
// alone: the tokens, the postfix order, the literals, where a call's
// argument text begins and ends, and the errors of a malformed text. That
// part is derived once, when the text is first evaluated, and kept as long
// as the script's line. What depends on the run's state (whether a name is
// a variable or a field right now, its value, a function's result, a date
// literal read with the current regional settings) is resolved on every
// evaluation, in the order the scan meets it, so errors surface exactly as
// a scan of the text would raise them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "eval/function_table.hpp"
#include "eval/operators.hpp"
#include "korvex/value.hpp"

namespace korvex {
class Context;
struct Locale;
}  // namespace korvex

namespace korvex::eval {

class ArgList;

/// A name that is neither a built-in function nor a constant: a variable,
/// a record field, or nothing known, decided when it is evaluated. The
/// variable's slot is remembered until the variable table changes, the
/// answer of the record's field names until the record set changes.
struct NameRef {
  std::u16string upper;
  std::u16string_view written;  // as it stands in the text
  bool statementWord = false;
  std::uint64_t tableGeneration = 0;  // 0: nothing remembered
  Value* slot = nullptr;
  // Whether it is one of the record's field names, while they stay the same.
  std::uint64_t fieldGeneration = 0;
  bool isField = false;
};

/// A call of a built-in, evaluator or host function.
struct CallRef {
  /// The catalog's or the host's entry; nullptr for the inline function.
  const fn::FunctionEntry* function = nullptr;
  InlineOp inlineOp = InlineOp::Abs;
  std::u16string_view args;  // the argument text, parentheses included
  // Made on the first call: the argument list split and kept.
  std::unique_ptr<ArgList> list;
  std::unique_ptr<class Expression> inlineArgument;
  CallRef();
  CallRef(CallRef&&) noexcept;
  ~CallRef();
};

/// One resolving step of the scan, in scan order.
struct Action {
  enum class Kind : std::uint8_t {
    Name,   // NameRef names[index]
    Call,   // CallRef calls[index]
    Date,   // the literal's text dates[index], read with the current locale
    Eof,    // the record set's EOF
    Bof,    // the record set's BOF
    Fail,   // report failures[index] and stop
    Raise,  // raise failures[index] as the platform's run-time error
  };
  Kind kind;
  std::uint32_t index = 0;
  /// After the operand is resolved, the scan finds it where an operator
  /// was expected: error 50.
  bool missingOperator = false;
};

/// One element of the postfix sequence: an operator, a kept operand, or
/// the next operand the actions resolved.
struct Item {
  enum class Kind : std::uint8_t { Operator, Literal, Resolved };
  Kind kind;
  Op op = Op::None;
  std::uint32_t index = 0;  // into literals (Literal)
};

struct Failure {
  std::int32_t number;
  std::u16string message;
};

/// The generation of the engine's host function table (0 without one).
std::uint64_t hostGeneration(const Context& ctx) noexcept;

class Expression {
 public:
  /// Keeps a copy of the text; nothing is derived until the first Evaluate.
  explicit Expression(std::u16string_view text);
  ~Expression();
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;

  const std::u16string& text() const noexcept { return text_; }

  /// Evaluates against the engine's variables, record and functions. On an
  /// error the frame's error register is set and Empty is returned;
  /// platform run-time faults propagate as vb::RuntimeError.
  Value evaluate(Context& ctx);

  // The derived form (compile.cpp fills it).
  struct Form {
    std::vector<Action> actions;
    std::vector<Item> items;
    std::vector<Value> literals;
    std::vector<NameRef> names;
    std::vector<CallRef> calls;
    std::vector<std::u16string> dates;
    std::vector<Failure> failures;
    std::uint32_t resolved = 0;  // operands the actions produce
    /// Every action reads a name and none fails as written.
    bool namesOnly = false;
    /// The host functions the form was derived against (their names change
    /// how a name is read).
    std::uint64_t hostGeneration = 0;
  };

 private:
  Form& form(Context& ctx) {
    const std::uint64_t generation = hostGeneration(ctx);
    if (form_ && form_->hostGeneration == generation) [[likely]] {
      return *form_;
    }
    return derive(ctx, generation);
  }
  Form& derive(Context& ctx, std::uint64_t generation);

  std::u16string text_;
  std::unique_ptr<Form> form_;
  // Forms derived against earlier host function tables; kept alive in case
  // one is still being evaluated further up the stack.
  std::vector<std::unique_ptr<Form>> retired_;
};

/// Derives the form of `text` (compile.cpp). Views in the form point into
/// `text`.
void compile(Context& ctx, std::u16string_view text, Expression::Form& form);

}  // namespace korvex::eval
