// First pass: scans the expression character by character and writes
// operands and operators in postfix order. Operands are resolved on the way
// (constants, variables, fields, function calls), so the second pass only
// sees finished values and operators.
#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>

#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/names.hpp"
#include "engine/string_op.hpp"
#include "eval/eval.hpp"
#include "eval/function_table.hpp"
#include "eval/inline_functions.hpp"
#include "eval/to_postfix.hpp"
#include "functions/function_call.hpp"
#include "functions/host_functions.hpp"
#include "korvex/engine.hpp"
#include "values/ops.hpp"
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
constexpr std::array<std::u16string_view, 21> kStatementWords = {
    u"IF",     u"THEN", u"ELSE",      u"DO",       u"LOOP",         u"END",      u"FOR",
    u"NEXT",   u"TO",   u"STEP",      u"WHILE",    u"UNTIL",        u"EXIT",     u"DIM",
    u"MSGBOX", u"REM",  u"MOVEFIRST", u"MOVENEXT", u"MOVEPREVIOUS", u"MOVELAST", u"RAISEERROR"};

bool isStatementWord(std::u16string_view upper) noexcept {
  for (auto w : kStatementWords) {
    if (w == upper) return true;
  }
  return upper == u"移至顶部" || upper == u"下移指针" || upper == u"上移指针" ||
         upper == u"移至底部";
}

constexpr char16_t upperChar(char16_t c) noexcept { return vb::asciiUpper(c); }

constexpr bool isNumberChar(char16_t c) noexcept { return (c >= u'0' && c <= u'9') || c == u'.'; }

class Converter {
 public:
  Converter(BasicEngine& engine, std::u16string_view text, Scratch& work)
      : engine_(engine), text_(text), out_(work.postfix), ops_(work.ops), upper_(work.name) {}

  std::int16_t run();

 private:
  // Each step returns false after storing an error on the engine.
  bool fail(std::int32_t number, std::u16string_view message);
  bool failNamed(std::int32_t number, std::u16string_view message, std::u16string_view token);
  bool operand(Value v, bool protectedLiteral = false);
  bool binaryOrUnary(Op op);
  bool closeParenthesis();
  bool number();
  bool name();
  bool stringLiteral();
  bool dateLiteral();
  bool constant(const NameEntry& e);
  bool call(const NameEntry& e);
  bool callHost(const HostFunctionEntry& e);
  // The argument text after a function name, parentheses included; false
  // with the error reported when it cannot be read.
  bool readArguments(std::u16string_view& args);
  bool finishCall(std::int32_t status, Value result);
  // A relational or word operator at i_, or Op::None; moves i_ onto the
  // operator's last character.
  Op relOrLogicOperator(char16_t c);
  Op operatorAt(char16_t c);
  bool token(char16_t c);
  bool wordFollows(std::u16string_view rest);

  BasicEngine& engine_;
  std::u16string_view text_;
  Postfix& out_;
  std::vector<Op>& ops_;
  std::size_t i_ = 0;  // 0-based position of the current character
  Expect expect_ = Expect::Operand;
  bool anyToken_ = false;
  std::u16string& upper_;  // the upper-cased name being resolved
};

bool Converter::fail(std::int32_t number, std::u16string_view message) {
  services::Report(engine_, number, message);
  return false;
}

bool Converter::failNamed(std::int32_t number, std::u16string_view message,
                          std::u16string_view token) {
  std::u16string m(message);
  m += u":'";
  m += token;
  m += u'\'';
  return fail(number, m);
}

bool Converter::operand(Value v, bool protectedLiteral) {
  if (expect_ == Expect::Operator) return fail(50, msg::kMissingOperator);
  out_.push_back(PostfixItem{std::move(v), Op::None, protectedLiteral});
  expect_ = Expect::Operator;
  return true;
}

bool Converter::binaryOrUnary(Op op) {
  if (expect_ != Expect::Operator) {
    if (op == Op::Add || op == Op::Sub) {
      if (expect_ == Expect::AfterSign) return fail(51, msg::kMissingOperand);
      // A unary minus binds to what follows without popping anything, so
      // 2^-3 is 2, 3, "(-)", "^"; a unary plus is dropped.
      if (op == Op::Sub) ops_.push_back(Op::Neg);
      expect_ = Expect::AfterSign;
      return true;
    }
    if (op == Op::Not) {
      ops_.push_back(Op::Not);
      expect_ = Expect::AfterNot;
      return true;
    }
    return fail(51, msg::kMissingOperand);
  }
  // Equal priorities pop too: every binary operator is left-associative.
  const std::int16_t p = priority(op);
  while (!ops_.empty() && priority(ops_.back()) >= p) {
    out_.push_back(PostfixItem{Value{}, ops_.back(), false});
    ops_.pop_back();
  }
  ops_.push_back(op);
  expect_ = Expect::Operand;
  return true;
}

bool Converter::closeParenthesis() {
  while (!ops_.empty() && ops_.back() != Op::Open) {
    out_.push_back(PostfixItem{Value{}, ops_.back(), false});
    ops_.pop_back();
  }
  if (ops_.empty()) return fail(52, msg::kCloseWithoutOpen);
  // The state stays as it was: after "()" an operand is still expected.
  ops_.pop_back();
  return true;
}

bool Converter::wordFollows(std::u16string_view rest) {
  // The word's remaining letters, then a blank or the end of the text.
  const std::size_t after = i_ + 1 + rest.size();
  if (after > text_.size()) return false;
  for (std::size_t k = 0; k < rest.size(); ++k) {
    if (upperChar(text_[i_ + 1 + k]) != rest[k]) return false;
  }
  if (after < text_.size() && !isBlank(text_[after])) return false;
  i_ = after - 1;
  return true;
}

Op Converter::relOrLogicOperator(char16_t c) {
  const char16_t next = i_ + 1 < text_.size() ? text_[i_ + 1] : u'\0';
  switch (c) {
    case u'=':
      return Op::Eq;
    case u'>':
      if (next == u'=') {
        ++i_;
        return Op::Ge;
      }
      return Op::Gt;
    case u'<':
      if (next == u'=') {
        ++i_;
        return Op::Le;
      }
      if (next == u'>') {
        ++i_;
        return Op::Ne;
      }
      return Op::Lt;
    case u'!':
      if (next == u'=') {
        ++i_;
        return Op::NeBang;
      }
      return Op::None;
    case u'X':
      return wordFollows(u"OR") ? Op::Xor : Op::None;
    case u'O':
      return wordFollows(u"R") ? Op::Or : Op::None;
    case u'A':
      return wordFollows(u"ND") ? Op::And : Op::None;
    case u'N':
      return wordFollows(u"OT") ? Op::Not : Op::None;
    default:
      return Op::None;
  }
}

bool Converter::number() {
  const std::size_t start = i_;
  bool point = false;
  std::size_t k = i_;
  for (; k < text_.size() && isNumberChar(text_[k]); ++k) {
    if (text_[k] == u'.') {
      if (point) return fail(53, msg::kSeveralPoints);
      point = true;
    }
  }
  i_ = k - 1;
  const std::size_t len = k - start;
  if (len == 1 && point) return fail(54, msg::kBadOperand);
  // Digits and at most one point: the narrow copy is exact.
  std::array<char, 64> small{};
  std::string big;
  char* buf = small.data();
  if (len > small.size()) {
    big.resize(len);
    buf = big.data();
  }
  for (std::size_t j = 0; j < len; ++j) buf[j] = static_cast<char>(text_[start + j]);
  double d = 0;
  if (std::from_chars(buf, buf + len, d).ec == std::errc::result_out_of_range) {
    // Too large for a Double is the platform's overflow; too small is 0.
    const std::string_view digits(buf, len);
    const std::size_t first = digits.find_first_not_of('0');
    if (first != std::string_view::npos && digits[first] != '.') vb::raise(vb::kOverflow);
    d = 0;
  }
  return operand(Value::dbl(d));
}

bool Converter::stringLiteral() {
  StringOp reader;
  if (i_ + 1 > 32767) vb::raise(vb::kOverflow);  // positions are 16-bit
  std::int16_t pos = static_cast<std::int16_t>(i_ + 1);
  std::u16string piece;
  if (reader.ReadStringQueto(text_, pos, piece) != 0) {
    return fail(reader.ErrNum(), reader.ErrMsg());
  }
  i_ = static_cast<std::size_t>(pos) - 1;
  std::u16string_view inner = piece;
  inner = inner.substr(1, inner.size() - 2);
  const bool isProtected = isProtectedLiteral(inner);
  return operand(Value::string(inner), isProtected);
}

bool Converter::dateLiteral() {
  const std::size_t close = text_.find(u'#', i_ + 1);
  if (close == std::u16string_view::npos) return fail(55, msg::kExpressionError);
  const auto inner = text_.substr(i_ + 1, close - i_ - 1);
  i_ = close;
  const auto serial = vb::parseDate(inner, engine_.Locale());
  if (!serial) return fail(4, msg::kTypeMismatch);
  return operand(Value::date(*serial));
}

bool Converter::constant(const NameEntry& e) {
  switch (e.constant()) {
    case ConstantId::CrLf:
      return operand(Value::string(u"\r\n"));
    case ConstantId::Empty:
      return operand(Value{});
    case ConstantId::Null:
      return operand(Value::null());
    case ConstantId::True:
      return operand(Value::boolean(true));
    case ConstantId::False:
      return operand(Value::boolean(false));
    case ConstantId::Eof:
    case ConstantId::Bof: {
      const bool flag = e.constant() == ConstantId::Eof ? engine_.Eof() : engine_.BOF();
      if (engine_.ErrNum() != 0) return false;
      // An empty pair of parentheses may follow: EOF() is EOF.
      std::size_t k = i_ + 1;
      while (k < text_.size() && isBlank(text_[k])) ++k;
      if (k < text_.size() && text_[k] == u'(') {
        std::size_t m = k + 1;
        while (m < text_.size() && isBlank(text_[m])) ++m;
        if (m < text_.size() && text_[m] == u')') i_ = m;
      }
      return operand(Value::boolean(flag));
    }
  }
  return false;
}

bool Converter::readArguments(std::u16string_view& args) {
  // The argument text runs from just after the name through the matching
  // ")"; it is handed over with its parentheses.
  StringOp reader;
  if (i_ + 2 > 32767) vb::raise(vb::kOverflow);  // positions are 16-bit
  std::int16_t pos = static_cast<std::int16_t>(i_ + 2);
  if (reader.ReadStringParentheses(text_, pos, args) != 0) {
    return fail(reader.ErrNum(), reader.ErrMsg());
  }
  // pos is on the last character read; scanning goes on after it.
  i_ = static_cast<std::size_t>(pos) - 1;
  return true;
}

bool Converter::finishCall(std::int32_t status, Value result) {
  if (static_cast<std::int16_t>(status) != 0) {
    // The function has stored its error; a status without one still
    // must not pass for success.
    if (engine_.ErrNum() == 0) engine_.SetErrNum(status);
    return false;
  }
  return operand(std::move(result));
}

bool Converter::call(const NameEntry& e) {
  std::u16string_view args;
  if (!readArguments(args)) return false;
  Value result;
  if (e.kind == NameKind::Inline) {
    const Value v = Evaluate(engine_, args);
    if (engine_.ErrNum() != 0) return false;
    return operand(applyInline(e.inlineOp(), v, engine_.Locale()));
  }
  const std::int32_t status = CallFunction(e.functionClass(), e.scriptName, args, result, engine_);
  return finishCall(status, std::move(result));
}

bool Converter::callHost(const HostFunctionEntry& e) {
  std::u16string_view args;
  if (!readArguments(args)) return false;
  Value result;
  const std::int32_t status = CallHostFunction(e, args, result, engine_);
  return finishCall(status, std::move(result));
}

bool Converter::name() {
  const std::size_t start = i_;
  std::size_t k = i_ + 1;
  while (k < text_.size() && isIdentChar(text_[k])) ++k;
  i_ = k - 1;
  const std::u16string_view written = text_.substr(start, k - start);
  upperNameInto(written, upper_);

  if (const NameEntry* e = lookupName(upper_)) {
    return e->kind == NameKind::Constant ? constant(*e) : call(*e);
  }
  if (const HostFunctionEntry* h = services::HostFunctionNamed(engine_, upper_))
    return callHost(*h);
  if (services::SymbolDefined(engine_, upper_)) {
    return operand(services::SymbolValue(engine_, upper_));
  }
  // The cached field names give the record's answer without asking it.
  if (engine_.isFieldNameByArr(upper_)) {
    Value v = engine_.GetFieldValue(Value::string(written));
    if (engine_.ErrNum() != 0) return false;
    return operand(std::move(v));
  }
  if (isStatementWord(upper_)) return failNamed(23, msg::kKeywordMisused, written);
  return fail(56, msg::kUnknownSymbol);
}

// The operator a character starts, or Op::None when it starts an operand
// (or nothing). Word and relational operators may move i_ further.
Op Converter::operatorAt(char16_t c) {
  if (const Op op = arithmeticOperator(c); op != Op::None) return op;
  switch (c) {
    case u'>':
    case u'<':
    case u'!':
    case u'X':
    case u'O':
    case u'A':
    case u'N':
    case u'=':
      return relOrLogicOperator(c);
    default:
      return Op::None;
  }
}

bool Converter::token(char16_t c) {
  if (c == u'(') {
    ops_.push_back(Op::Open);
    expect_ = Expect::Operand;
    return true;
  }
  if (c == u')') return closeParenthesis();
  if (const Op op = operatorAt(c); op != Op::None) return binaryOrUnary(op);
  if (isNumberChar(c)) return number();
  if (c == u'"') return stringLiteral();
  if (c == u'#') return dateLiteral();
  if (isIdentStart(c)) return name();
  return fail(56, msg::kUnknownSymbol);
}

std::int16_t Converter::run() {
  for (i_ = 0; i_ < text_.size(); ++i_) {
    const char16_t c = upperChar(text_[i_]);
    if (c == u' ') continue;
    anyToken_ = true;
    if (!token(c)) return 1;
  }

  while (!ops_.empty()) {
    if (ops_.back() == Op::Open) {
      fail(57, msg::kMissingClose);
      return 1;
    }
    out_.push_back(PostfixItem{Value{}, ops_.back(), false});
    ops_.pop_back();
  }
  if (anyToken_ && expect_ != Expect::Operator) {
    fail(51, msg::kMissingOperand);
    return 1;
  }
  return 0;
}

}  // namespace

std::int16_t toPostfix(BasicEngine& engine, std::u16string_view text, Scratch& work) {
  return Converter(engine, text, work).run();
}

}  // namespace korvex::eval
