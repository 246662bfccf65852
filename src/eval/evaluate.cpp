// Second pass: runs the postfix sequence on a value stack, and the public
// entry point that chains both passes.
#include <string>

#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/nesting.hpp"
#include "eval/eval.hpp"
#include "eval/to_postfix.hpp"
#include "korvex/engine.hpp"
#include "values/ops.hpp"

namespace korvex {

namespace eval {

namespace {

// A type fault stops the evaluation; thrown inside this unit only.
struct TypeFault {};

class ValueStack {
 public:
  ValueStack(BasicEngine& engine, std::vector<Value>& items) : engine_(engine), items_(items) {}

  void push(Value v) { items_.push_back(std::move(v)); }
  // Popping an empty stack is reported on the engine and gives Empty; the
  // evaluation goes on.
  Value pop() {
    if (items_.empty()) {
      services::Report(engine_, 18, msg::kPopEmpty);
      return {};
    }
    Value v = std::move(items_.back());
    items_.pop_back();
    return v;
  }
  std::size_t size() const noexcept { return items_.size(); }

 private:
  BasicEngine& engine_;
  std::vector<Value>& items_;
};

bool isNumeric(const Value& v, const Locale& loc) { return vb::isNumeric(v, loc); }

Value ordering(vb::CompareOp cmp, const Value& l, const Value& r, const Locale& loc) {
  // A string against anything else is refused, not ordered.
  if (l.isString() != r.isString()) throw TypeFault{};
  return vb::compare(cmp, l, r, loc);
}

Value logical(Op op, const Value& l, const Value& r, const Locale& loc) {
  if (!isNumeric(l, loc) || !isNumeric(r, loc)) throw TypeFault{};
  const bool a = vb::toBoolean(l, loc);
  const bool b = vb::toBoolean(r, loc);
  return Value::boolean(op == Op::And ? (a && b) : (a || b));
}

Value zeroIfNull(const Value& v) { return v.isNull() ? Value::integer(0) : v; }

Value applyBinary(Op op, const Value& l, const Value& r, const Locale& loc) {
  switch (op) {
    case Op::Add:
      // Null is ignored on either side: Null + 5 is 5.
      if (r.isNull()) return l;
      if (l.isNull()) return r;
      return vb::add(l, r, loc);
    case Op::Concat:
      return vb::concat(l, r, loc);
    case Op::Sub:
      return vb::subtract(zeroIfNull(l), zeroIfNull(r), loc);
    case Op::Mul:
      if (l.isNull() || r.isNull()) return Value::integer(0);
      return vb::multiply(l, r, loc);
    case Op::Div:
      return vb::divide(zeroIfNull(l), zeroIfNull(r), loc);
    case Op::Pow:
      return vb::power(l, r, loc);
    case Op::Ge:
      return ordering(vb::CompareOp::GreaterEqual, l, r, loc);
    case Op::Gt:
      return ordering(vb::CompareOp::Greater, l, r, loc);
    case Op::Lt:
      return ordering(vb::CompareOp::Less, l, r, loc);
    case Op::Le:
      return ordering(vb::CompareOp::LessEqual, l, r, loc);
    case Op::Ne:
    case Op::NeBang:
      return vb::compare(vb::CompareOp::NotEqual, l, r, loc);
    case Op::Eq:
      return vb::compare(vb::CompareOp::Equal, l, r, loc);
    case Op::And:
    case Op::Or:
      return logical(op, l, r, loc);
    default:
      return {};
  }
}

void apply(Op op, ValueStack& stack, const Locale& loc) {
  switch (op) {
    case Op::Neg:
      stack.push(vb::negate(stack.pop(), loc));
      return;
    case Op::Not: {
      const Value v = stack.pop();
      if (!isNumeric(v, loc)) throw TypeFault{};
      stack.push(Value::boolean(!vb::toBoolean(v, loc)));
      return;
    }
    default: {
      const Value r = stack.pop();
      const Value l = stack.pop();
      stack.push(applyBinary(op, l, r, loc));
      return;
    }
  }
}

Value typeMismatch(BasicEngine& engine) {
  services::Report(engine, 4, msg::kTypeMismatch);
  std::u16string box(msg::kExpressionError);
  box += msg::kTypeMismatch;
  box += u" Line:";
  const std::string line = std::to_string(engine.CurrentLineNum());
  box.append(line.begin(), line.end());
  engine.UI().messageBox(box, UserInterface::Buttons::Ok, u"");
  return {};
}

// An operand string that reads NUL, an operator text, NUL loses the two
// NULs, wherever it came from: a script can build such a text itself.
Value unwrapped(const Value& v) {
  if (!v.isString()) return v;
  const std::u16string& s = v.stringValue();
  if (s.size() < 3 || s.front() != u'\0' || s.back() != u'\0') return v;
  const std::u16string_view inner = std::u16string_view(s).substr(1, s.size() - 2);
  return isProtectedLiteral(inner) ? Value::string(std::u16string(inner)) : v;
}

}  // namespace

Value evaluatePostfix(BasicEngine& engine, const Postfix& postfix, std::vector<Value>& values) {
  const Locale& loc = engine.Locale();
  ValueStack stack(engine, values);
  try {
    for (const PostfixItem& item : postfix) {
      Op op = item.op;
      if (op == Op::None) {
        // A string that reads like an operator is applied as one, unless
        // it is a literal that was protected as an operand.
        if (item.value.isString() && !item.protectedLiteral) {
          op = appliedOperator(item.value.stringValue());
        }
        if (op == Op::None) {
          stack.push(unwrapped(item.value));
          continue;
        }
      }
      if (op == Op::Xor || op == Op::Mod || op == Op::Open) {
        // No rule for these: the text itself becomes an operand. A "(" gets
        // here when XOR, which ranks with it, popped it off the stack.
        stack.push(Value::string(operatorText(op)));
        continue;
      }
      apply(op, stack, loc);
    }
  } catch (const TypeFault&) {
    return typeMismatch(engine);
  } catch (const vb::RuntimeError&) {
    return typeMismatch(engine);
  }

  if (stack.size() == 0) return {};
  if (stack.size() == 1) return stack.pop();
  services::Report(engine, 2, msg::kBadExpression);
  engine.UI().messageBox(msg::kSeveralResults, UserInterface::Buttons::Ok, u"");
  return {};
}

}  // namespace eval

Value Evaluate(BasicEngine& engine, std::u16string_view expression) {
  // Function arguments are evaluated from inside this call.
  const NestingLevel level;
  eval::ScratchLease lease;
  eval::Scratch& work = lease.get();
  if (eval::toPostfix(engine, expression, work) != 0) return {};
  return eval::evaluatePostfix(engine, work.postfix, work.values);
}

}  // namespace korvex
