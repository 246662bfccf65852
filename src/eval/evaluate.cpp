// Evaluating a kept expression: the actions resolve the operands that
// depend on the run's state, in scan order; then the postfix sequence runs
// on a value stack.
#include <cmath>
#include <string>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/nesting.hpp"
#include "eval/call.hpp"
#include "eval/eval.hpp"
#include "eval/expression.hpp"
#include "eval/inline_functions.hpp"
#include "eval/value_buffer.hpp"
#include "functions/host_functions.hpp"
#include "values/numeric.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::eval {

CallRef::CallRef() = default;
CallRef::CallRef(CallRef&&) noexcept = default;
CallRef::~CallRef() = default;

Expression::Expression(std::u16string_view text) : text_(text) {}
Expression::~Expression() = default;

std::uint64_t hostGeneration(const Context& ctx) noexcept {
  const FunctionRegistry* table = ctx.hostFunctions();
  return table ? table->generation() : 0;
}

Expression::Form& Expression::derive(Context& ctx, std::uint64_t generation) {
  // First use, or a host function added since: names may read differently.
  if (form_) retired_.push_back(std::move(form_));
  auto fresh = std::make_unique<Form>();
  compile(ctx, text_, *fresh);
  fresh->hostGeneration = generation;
  form_ = std::move(fresh);
  return *form_;
}

namespace {

bool fail(Context& ctx, std::int32_t number, std::u16string_view message) {
  ctx.report(number, message);
  return false;
}

bool fail(Context& ctx, const Message& m, std::u16string_view detail = {}) {
  ctx.report(m, detail);
  return false;
}

// ---- the actions --------------------------------------------------------

bool resolveName(Context& ctx, NameRef& n, Value& out) {
  SymbolTable& table = ctx.symbols();
  if (n.slot == nullptr || n.tableGeneration != table.generation()) {
    n.slot = nullptr;
    if (SymbolTable::Entry* e = table.slot(n.upper)) {
      n.slot = &e->value;
      n.tableGeneration = table.generation();
    }
  }
  if (n.slot != nullptr) {
    out = *n.slot;
    return true;
  }
  // The cached field names give the record's answer without asking it.
  const std::uint64_t fields = ctx.fieldNamesGeneration();
  if (n.fieldGeneration != fields) {
    n.isField = ctx.isCachedFieldName(n.upper);
    n.fieldGeneration = fields;
  }
  if (n.isField) {
    out = ctx.fieldValue(Value::string(n.written));
    return ctx.errNum() == 0;
  }
  if (n.statementWord) {
    return fail(ctx, msg::kKeywordMisused, msg::quoted(n.written, u":'"));
  }
  return fail(ctx, msg::kUnknownSymbol);
}

bool resolveCall(Context& ctx, CallRef& c, Value& out) {
  if (c.function == nullptr) {
    if (!c.inlineArgument) c.inlineArgument = std::make_unique<Expression>(c.args);
    const Value v = c.inlineArgument->evaluate(ctx);
    if (ctx.errNum() != 0) return false;
    out = applyInline(c.inlineOp, v, ctx.locale());
    return true;
  }
  if (!c.list) c.list = std::make_unique<ArgList>(c.args);
  Value result;
  const std::int32_t status = Invoke(*c.function, *c.list, result, ctx);
  if (static_cast<std::int16_t>(status) != 0) {
    // The function has stored its error; a status without one still
    // must not pass for success.
    if (ctx.errNum() == 0) ctx.frame().error.number = status;
    return false;
  }
  out = std::move(result);
  return true;
}

// Whether every name of a names-only form is a variable whose slot is known.
bool variablesKnown(Context& ctx, Expression::Form& f) {
  const std::uint64_t generation = ctx.symbols().generation();
  for (NameRef& n : f.names) {
    if (n.slot == nullptr || n.tableGeneration != generation) return false;
  }
  return true;
}

// Runs the actions; false when one failed (its error is on the engine).
bool resolve(Context& ctx, Expression::Form& f, ValueBuffer& operands) {
  for (const Action& a : f.actions) {
    // Resolved in place, in the operand's own slot.
    operands.push(Value());
    Value& v = operands.back();
    switch (a.kind) {
      case Action::Kind::Name:
        if (!resolveName(ctx, f.names[a.index], v)) return false;
        break;
      case Action::Kind::Call:
        if (!resolveCall(ctx, f.calls[a.index], v)) return false;
        break;
      case Action::Kind::Date: {
        const auto serial = vb::parseDate(f.dates[a.index], ctx.locale());
        if (!serial) return fail(ctx, msg::kTypeMismatch);
        v = Value::date(*serial);
        break;
      }
      case Action::Kind::Eof:
      case Action::Kind::Bof: {
        const bool flag =
            a.kind == Action::Kind::Eof ? ctx.recordFlag(u"EOF") : ctx.recordFlag(u"BOF");
        if (ctx.errNum() != 0) return false;
        v = Value::boolean(flag);
        break;
      }
      case Action::Kind::Fail: {
        const Failure& failure = f.failures[a.index];
        return fail(ctx, failure.number, failure.message);
      }
      case Action::Kind::Raise: {
        const Failure& failure = f.failures[a.index];
        throw vb::RuntimeError(failure.number, failure.message);
      }
    }
    if (a.missingOperator) return fail(ctx, msg::kMissingOperator);
  }
  return true;
}

// ---- the postfix sequence -------------------------------------------------

// The value stack of the postfix run, on top of the resolved operands in
// the same buffer.
class ValueStack {
 public:
  ValueStack(Context& ctx, ValueBuffer& items, std::size_t base)
      : ctx_(ctx), items_(items), base_(base) {}

  void push(Value v) { items_.push(std::move(v)); }
  // Popping an empty stack is reported on the engine and gives Empty; the
  // evaluation goes on.
  Value pop() {
    if (size() == 0) {
      ctx_.report(msg::kPopEmpty);
      return {};
    }
    Value v = std::move(items_.back());
    items_.pop();
    return v;
  }
  std::size_t size() const noexcept { return items_.size() - base_; }
  Value& top(std::size_t below = 0) noexcept { return items_[items_.size() - 1 - below]; }
  void drop() noexcept { items_.pop(); }
  // Replaces the two top values by fn(left, right), in place when both are
  // there; an empty place reads as Empty, reported as pop() reports it.
  template <typename Fn>
  void binary(Fn&& fn) {
    if (size() >= 2) {
      Value& l = top(1);
      l = fn(l, top());
      items_.pop();
      return;
    }
    const Value r = pop();
    const Value l = pop();
    push(fn(l, r));
  }

 private:
  Context& ctx_;
  ValueBuffer& items_;
  std::size_t base_;
};

Value ordering(vb::CompareOp cmp, const Value& l, const Value& r, const Locale& loc) {
  // A string against anything else is refused, not ordered.
  if (l.isString() != r.isString()) vb::raise(vb::kTypeMismatch);
  return vb::compare(cmp, l, r, loc);
}

Value logical(Op op, const Value& l, const Value& r, const Locale& loc) {
  if (!vb::isNumeric(l, loc) || !vb::isNumeric(r, loc)) vb::raise(vb::kTypeMismatch);
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

// Both operands Doubles, the commonest case of all: the sums, products and
// comparisons are done here, with the same results as the general rules.
bool applyToDoubles(Op op, double a, double b, Value& out) {
  switch (op) {
    case Op::Add:
      out = Value::dbl(vb::checkedDouble(a + b));
      return true;
    case Op::Sub:
      out = Value::dbl(vb::checkedDouble(a - b));
      return true;
    case Op::Mul:
      out = Value::dbl(vb::checkedDouble(a * b));
      return true;
    case Op::Lt:
      out = Value::boolean(a < b);
      return true;
    case Op::Gt:
      out = Value::boolean(a > b);
      return true;
    case Op::Le:
      out = Value::boolean(a <= b);
      return true;
    case Op::Ge:
      out = Value::boolean(a >= b);
      return true;
    case Op::Eq:
      out = Value::boolean(a == b);
      return true;
    case Op::Ne:
    case Op::NeBang:
      out = Value::boolean(a != b);
      return true;
    default:
      return false;
  }
}

void apply(Op op, ValueStack& stack, const Locale& loc) {
  if (stack.size() >= 2) {
    Value& l = stack.top(1);
    const Value& r = stack.top();
    if (l.type() == VarType::Double && r.type() == VarType::Double &&
        applyToDoubles(op, l.doubleValue(), r.doubleValue(), l)) {
      stack.drop();
      return;
    }
  }
  switch (op) {
    case Op::Neg:
      stack.push(vb::negate(stack.pop(), loc));
      return;
    case Op::Not: {
      const Value v = stack.pop();
      if (!vb::isNumeric(v, loc)) vb::raise(vb::kTypeMismatch);
      stack.push(Value::boolean(!vb::toBoolean(v, loc)));
      return;
    }
    default:
      stack.binary([&](const Value& l, const Value& r) { return applyBinary(op, l, r, loc); });
      return;
  }
}

Value typeMismatch(Context& ctx) {
  ctx.report(msg::kTypeMismatch);
  std::u16string box(msg::kExpressionError.text);
  box += msg::kTypeMismatch.text;
  box += u" Line:";
  const std::string line = std::to_string(ctx.currentLine());
  box.append(line.begin(), line.end());
  ctx.ui().messageBox(box, UserInterface::Buttons::Ok, u"");
  return {};
}

// An operand string that reads NUL, an operator text, NUL loses the two
// NULs, wherever it came from: a script can build such a text itself.
void unwrap(Value& v) {
  if (!v.isString()) return;
  const std::u16string& s = v.stringValue();
  if (s.size() < 3 || s.front() != u'\0' || s.back() != u'\0') return;
  const std::u16string_view inner = std::u16string_view(s).substr(1, s.size() - 2);
  if (isProtectedLiteral(inner)) v = Value::string(inner);
}

// Runs the postfix sequence; `operand(k)` gives the k-th resolved operand.
template <typename Operand>
Value run(Context& ctx, Expression::Form& f, ValueBuffer& work, Operand&& operand) {
  const Locale& loc = ctx.locale();
  ValueStack stack(ctx, work, work.size());
  std::size_t next = 0;
  try {
    for (const Item& item : f.items) {
      switch (item.kind) {
        case Item::Kind::Operator:
          apply(item.op, stack, loc);
          break;
        case Item::Kind::Literal:
          stack.push(f.literals[item.index]);
          break;
        case Item::Kind::Resolved: {
          Value v = operand(next++);
          // A string that reads like an operator is applied as one.
          if (v.isString()) {
            if (const Op op = appliedOperator(v.stringValue()); op != Op::None) {
              apply(op, stack, loc);
              break;
            }
          }
          unwrap(v);
          stack.push(std::move(v));
          break;
        }
      }
    }
  } catch (const vb::RuntimeError&) {
    return typeMismatch(ctx);
  }

  if (stack.size() == 0) return {};
  if (stack.size() == 1) return stack.pop();
  ctx.report(msg::kBadExpression);
  ctx.ui().messageBox(msg::kSeveralResults, UserInterface::Buttons::Ok, u"");
  return {};
}

// The commonest formula of all, Doubles with sums, products and perhaps a
// comparison at the end, runs on plain numbers. Anything else (another
// type, another operator, an overflow, a comparison's result used further,
// a stack fault) gives up before any effect, and the general run does it
// all again with the same results.
bool runOnDoubles(Expression::Form& f, Value& out) {
  constexpr std::size_t kDepth = 16;
  double stack[kDepth];
  std::size_t n = 0;
  std::size_t next = 0;
  bool compared = false;
  for (const Item& item : f.items) {
    if (compared) return false;
    if (item.kind != Item::Kind::Operator) {
      const Value& v = item.kind == Item::Kind::Literal ? f.literals[item.index]
                                                        : *f.names[f.actions[next++].index].slot;
      if (v.type() != VarType::Double || n == kDepth) return false;
      stack[n++] = v.doubleValue();
      continue;
    }
    if (n < 2) return false;
    const double a = stack[n - 2];
    const double b = stack[n - 1];
    double r = 0;
    switch (item.op) {
      case Op::Add:
        r = a + b;
        break;
      case Op::Sub:
        r = a - b;
        break;
      case Op::Mul:
        r = a * b;
        break;
      case Op::Lt:
        r = a < b;
        compared = true;
        break;
      case Op::Gt:
        r = a > b;
        compared = true;
        break;
      case Op::Le:
        r = a <= b;
        compared = true;
        break;
      case Op::Ge:
        r = a >= b;
        compared = true;
        break;
      case Op::Eq:
        r = a == b;
        compared = true;
        break;
      case Op::Ne:
      case Op::NeBang:
        r = a != b;
        compared = true;
        break;
      default:
        return false;
    }
    if (!std::isfinite(r)) return false;
    stack[n - 2] = r;
    --n;
  }
  if (n != 1) return false;
  out = compared ? Value::boolean(stack[0] != 0) : Value::dbl(stack[0]);
  return true;
}

}  // namespace

Value Expression::evaluate(Context& ctx) {
  // Function arguments are evaluated from inside this call.
  const NestingLevel level;
  Form& f = form(ctx);
  // A lone literal (a constant, a number, a text) needs no stack.
  if (f.actions.empty() && f.items.size() == 1 && f.items.front().kind == Item::Kind::Literal) {
    return f.literals[f.items.front().index];
  }
  if (f.namesOnly && variablesKnown(ctx, f)) {
    // Every operand is a variable whose place is known: reading one can
    // neither fail nor do anything, so each is read when the sequence needs it.
    Value out;
    if (runOnDoubles(f, out)) return out;
    ValueBuffer work;
    return run(ctx, f, work, [&f](std::size_t k) { return *f.names[f.actions[k].index].slot; });
  }
  // The resolved operands first, the value stack above them.
  ValueBuffer work;
  if (!resolve(ctx, f, work)) return {};
  return run(ctx, f, work, [&work](std::size_t k) { return std::move(work[k]); });
}

}  // namespace korvex::eval

namespace korvex {

Value Evaluate(Context& ctx, std::u16string_view expression) {
  eval::Expression kept(expression);
  return kept.evaluate(ctx);
}

}  // namespace korvex
