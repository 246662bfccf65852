// Deriving an expression's kept form: the scan of the text character by
// character into postfix order. Whatever needs the run's state is written
// down as an action, in the order the scan meets it; the scan then goes on
// as if the action had produced its operand, which is the only way it can
// succeed.
#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "eval/expression.hpp"
#include "functions/host_functions.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex::eval {

namespace {

// What the next token may be.
enum class Expect : std::uint8_t {
  Operator,   // after an operand
  Operand,    // at the start, after a binary operator or "("
  AfterSign,  // after a unary "-" or "+"
  AfterNot,   // after a unary NOT
};

// Statement words: used as an operand they are refused as keywords rather
// than reported as unknown names.
constexpr std::array<std::u16string_view, 25> kStatementWords = {
    u"IF",         u"THEN",      u"ELSE",     u"DO",           u"LOOP",
    u"END",        u"FOR",       u"NEXT",     u"TO",           u"STEP",
    u"WHILE",      u"UNTIL",     u"EXIT",     u"DIM",          u"MSGBOX",
    u"REM",        u"MOVEFIRST", u"MOVENEXT", u"MOVEPREVIOUS", u"MOVELAST",
    u"RAISEERROR", u"移至顶部",  u"下移指针", u"上移指针",     u"移至底部"};

bool isStatementWord(std::u16string_view upper) noexcept {
  for (auto w : kStatementWords) {
    if (w == upper) return true;
  }
  return false;
}

constexpr char16_t upperChar(char16_t c) noexcept { return vb::asciiUpper(c); }

constexpr bool isNumberChar(char16_t c) noexcept { return (c >= u'0' && c <= u'9') || c == u'.'; }

// Thrown to end the scan once an action or failure that always stops it has
// been written down.
struct Stop {};

class Compiler {
 public:
  Compiler(Context& ctx, std::u16string_view text, Expression::Form& form)
      : ctx_(ctx), text_(text), f_(form) {}

  void run();

 private:
  [[noreturn]] void fail(std::int32_t number, std::u16string message);
  [[noreturn]] void fail(const Message& m) { fail(m.number, std::u16string(m.text)); }
  void literal(Value v, bool protectedLiteral = false);
  // An operand found by an action: the action, then the operand's place.
  void resolved(Action::Kind kind, std::size_t index);
  void binaryOrUnary(Op op);
  void closeParenthesis();
  void number();
  void name();
  void stringLiteral();
  void dateLiteral();
  void constant(const NameEntry& e);
  // A call of `function`, or of the inline function `op` when it is nullptr.
  void call(const fn::FunctionEntry* function, InlineOp op = InlineOp::Abs);
  void token(char16_t c);
  void emitOperator(Op op);

  Context& ctx_;
  std::u16string_view text_;
  Expression::Form& f_;
  std::vector<Op> ops_;
  std::size_t i_ = 0;  // 0-based position of the current character
  Expect expect_ = Expect::Operand;
  bool anyToken_ = false;
};

void Compiler::fail(std::int32_t number, std::u16string message) {
  f_.failures.push_back(Failure{number, std::move(message)});
  f_.actions.push_back(
      Action{Action::Kind::Fail, static_cast<std::uint32_t>(f_.failures.size() - 1), false});
  throw Stop{};
}

void Compiler::emitOperator(Op op) {
  if (op == Op::Xor || op == Op::Mod || op == Op::Open) {
    // No rule for these: the text itself becomes an operand. A "(" gets
    // here when XOR, which ranks with it, popped it off the stack.
    f_.literals.push_back(Value::string(operatorText(op)));
    f_.items.push_back(
        Item{Item::Kind::Literal, Op::None, static_cast<std::uint32_t>(f_.literals.size() - 1)});
    return;
  }
  f_.items.push_back(Item{Item::Kind::Operator, op, 0});
}

void Compiler::literal(Value v, bool protectedLiteral) {
  if (expect_ == Expect::Operator) fail(msg::kMissingOperator);
  expect_ = Expect::Operator;
  // A string that reads like an operator is applied as one, unless it is
  // a literal protected as an operand; one that reads NUL, an operator
  // text, NUL loses the two NULs. Both depend on the text alone here.
  if (v.isString() && !protectedLiteral) {
    if (const Op op = appliedOperator(v.stringValue()); op != Op::None) {
      emitOperator(op);
      return;
    }
  }
  if (v.isString()) {
    const std::u16string& s = v.stringValue();
    if (s.size() >= 3 && s.front() == u'\0' && s.back() == u'\0') {
      const std::u16string_view inner = std::u16string_view(s).substr(1, s.size() - 2);
      if (isProtectedLiteral(inner)) v = Value::string(inner);
    }
  }
  f_.literals.push_back(std::move(v));
  f_.items.push_back(
      Item{Item::Kind::Literal, Op::None, static_cast<std::uint32_t>(f_.literals.size() - 1)});
}

void Compiler::resolved(Action::Kind kind, std::size_t index) {
  const bool missingOperator = expect_ == Expect::Operator;
  f_.actions.push_back(Action{kind, static_cast<std::uint32_t>(index), missingOperator});
  // Resolved where an operator was expected: error 50 once it succeeds.
  if (missingOperator) throw Stop{};
  f_.items.push_back(Item{Item::Kind::Resolved, Op::None, f_.resolved++});
  expect_ = Expect::Operator;
}

void Compiler::binaryOrUnary(Op op) {
  if (expect_ != Expect::Operator) {
    if (op == Op::Add || op == Op::Sub) {
      if (expect_ == Expect::AfterSign) fail(msg::kMissingOperand);
      // A unary minus binds to what follows without popping anything, so
      // 2^-3 is 2, 3, "(-)", "^"; a unary plus is dropped.
      if (op == Op::Sub) ops_.push_back(Op::Neg);
      expect_ = Expect::AfterSign;
      return;
    }
    if (op == Op::Not) {
      ops_.push_back(Op::Not);
      expect_ = Expect::AfterNot;
      return;
    }
    fail(msg::kMissingOperand);
  }
  // Equal priorities pop too: every binary operator is left-associative.
  const std::int16_t p = priority(op);
  while (!ops_.empty() && priority(ops_.back()) >= p) {
    emitOperator(ops_.back());
    ops_.pop_back();
  }
  ops_.push_back(op);
  expect_ = Expect::Operand;
}

void Compiler::closeParenthesis() {
  while (!ops_.empty() && ops_.back() != Op::Open) {
    emitOperator(ops_.back());
    ops_.pop_back();
  }
  if (ops_.empty()) fail(msg::kCloseWithoutOpen);
  // The state stays as it was: after "()" an operand is still expected.
  ops_.pop_back();
}

void Compiler::number() {
  const std::size_t start = i_;
  bool point = false;
  std::size_t k = i_;
  for (; k < text_.size() && isNumberChar(text_[k]); ++k) {
    if (text_[k] == u'.') {
      if (point) fail(msg::kSeveralPoints);
      point = true;
    }
  }
  i_ = k - 1;
  const std::size_t len = k - start;
  if (len == 1 && point) fail(msg::kBadOperand);
  // Digits and at most one point: the narrow copy is exact.
  std::string digits(len, '0');
  for (std::size_t j = 0; j < len; ++j) digits[j] = static_cast<char>(text_[start + j]);
  double d = 0;
  if (std::from_chars(digits.data(), digits.data() + len, d).ec == std::errc::result_out_of_range) {
    // Too large for a Double is the platform's overflow; too small is 0.
    const std::size_t first = digits.find_first_not_of('0');
    if (first != std::string::npos && digits[first] != '.') vb::raise(vb::kOverflow);
    d = 0;
  }
  literal(Value::dbl(d));
}

// The readers take 16-bit positions; a text longer than that overflows
// where the scan reaches past it.
std::int16_t position16(std::size_t position) {
  if (position > 32767) vb::raise(vb::kOverflow);
  return static_cast<std::int16_t>(position);
}

void Compiler::stringLiteral() {
  ScriptReader reader;
  std::int16_t pos = position16(i_ + 1);
  std::u16string piece;
  if (reader.readQuoted(text_, pos, piece) != 0) fail(reader.error().number, reader.error().text);
  i_ = static_cast<std::size_t>(pos) - 1;
  std::u16string_view inner = piece;
  inner = inner.substr(1, inner.size() - 2);
  literal(Value::string(inner), isProtectedLiteral(inner));
}

void Compiler::dateLiteral() {
  const std::size_t close = text_.find(u'#', i_ + 1);
  if (close == std::u16string_view::npos) fail(msg::kExpressionError);
  f_.dates.emplace_back(text_.substr(i_ + 1, close - i_ - 1));
  i_ = close;
  resolved(Action::Kind::Date, f_.dates.size() - 1);
}

void Compiler::constant(const NameEntry& e) {
  switch (e.constant()) {
    case ConstantId::CrLf:
      return literal(Value::string(u"\r\n"));
    case ConstantId::Empty:
      return literal(Value{});
    case ConstantId::Null:
      return literal(Value::null());
    case ConstantId::True:
      return literal(Value::boolean(true));
    case ConstantId::False:
      return literal(Value::boolean(false));
    case ConstantId::Eof:
    case ConstantId::Bof: {
      // An empty pair of parentheses may follow: EOF() is EOF.
      std::size_t k = i_ + 1;
      while (k < text_.size() && isBlank(text_[k])) ++k;
      if (k < text_.size() && text_[k] == u'(') {
        std::size_t m = k + 1;
        while (m < text_.size() && isBlank(text_[m])) ++m;
        if (m < text_.size() && text_[m] == u')') i_ = m;
      }
      return resolved(e.constant() == ConstantId::Eof ? Action::Kind::Eof : Action::Kind::Bof, 0);
    }
  }
}

void Compiler::call(const fn::FunctionEntry* function, InlineOp op) {
  // The argument text runs from just after the name through the matching
  // ")"; it is handed over with its parentheses.
  ScriptReader reader;
  std::int16_t pos = position16(i_ + 2);
  std::u16string_view args;
  if (reader.readGroup(text_, pos, args) != 0) fail(reader.error().number, reader.error().text);
  // pos is on the last character read; scanning goes on after it.
  i_ = static_cast<std::size_t>(pos) - 1;
  CallRef& c = f_.calls.emplace_back();
  c.function = function;
  c.inlineOp = op;
  c.args = args;
  resolved(Action::Kind::Call, f_.calls.size() - 1);
}

void Compiler::name() {
  const std::size_t start = i_;
  std::size_t k = i_ + 1;
  while (k < text_.size() && isIdentChar(text_[k])) ++k;
  i_ = k - 1;
  const std::u16string_view written = text_.substr(start, k - start);
  std::u16string upper = upperName(written);

  if (const std::optional<NameEntry> e = lookupName(upper)) {
    switch (e->kind) {
      case NameKind::Constant:
        return constant(*e);
      case NameKind::Inline:
        return call(nullptr, e->inlineOp());
      case NameKind::Function:
        return call(e->function);
    }
  }
  if (const HostFunctionEntry* h = hostFunctionNamed(ctx_, upper)) {
    return call(&h->entry());
  }
  NameRef& n = f_.names.emplace_back();
  n.statementWord = isStatementWord(upper);
  n.upper = std::move(upper);
  n.written = written;
  resolved(Action::Kind::Name, f_.names.size() - 1);
}

void Compiler::token(char16_t c) {
  if (c == u'(') {
    ops_.push_back(Op::Open);
    expect_ = Expect::Operand;
    return;
  }
  if (c == u')') return closeParenthesis();
  std::size_t length = 0;
  if (const Op op = readOperator(text_, i_, length); op != Op::None) {
    i_ += length - 1;  // onto the operator's last character
    return binaryOrUnary(op);
  }
  if (isNumberChar(c)) return number();
  if (c == u'"') return stringLiteral();
  if (c == u'#') return dateLiteral();
  if (isIdentStart(c)) return name();
  fail(msg::kUnknownSymbol);
}

void Compiler::run() {
  for (i_ = 0; i_ < text_.size(); ++i_) {
    const char16_t c = upperChar(text_[i_]);
    if (c == u' ') continue;
    anyToken_ = true;
    token(c);
  }
  while (!ops_.empty()) {
    if (ops_.back() == Op::Open) fail(msg::kMissingClose);
    emitOperator(ops_.back());
    ops_.pop_back();
  }
  if (anyToken_ && expect_ != Expect::Operator) fail(msg::kMissingOperand);
}

}  // namespace

void compile(Context& ctx, std::u16string_view text, Expression::Form& form) {
  form.hostGeneration = hostGeneration(ctx);
  try {
    Compiler(ctx, text, form).run();
    form.namesOnly = std::all_of(form.actions.begin(), form.actions.end(), [](const Action& a) {
      return a.kind == Action::Kind::Name && !a.missingOperator;
    });
  } catch (const Stop&) {
    // The scan ends at the action written last.
  } catch (const vb::RuntimeError& e) {
    // A fault of the text itself (a number too large, a position past the
    // 16-bit range) is raised where the scan meets it.
    form.failures.push_back(Failure{e.number(), e.description()});
    form.actions.push_back(
        Action{Action::Kind::Raise, static_cast<std::uint32_t>(form.failures.size() - 1), false});
  }
}

}  // namespace korvex::eval
