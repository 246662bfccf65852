// String functions: Left, Right, Asc, Chr, CStr, LCase, UCase, Hex, Format
// and Mid.
#include <cstdint>
#include <string>

#include "functions/families.hpp"
#include "values/format.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck N = ArgCheck::Numeric;

// Left and Right take any first argument and use its string form; Null
// passes through as the platform's Variant string functions do.
template <bool FromLeft>
std::int32_t takeEnd(Call& call, Value& result) {
  const Value& source = call.arg(1);
  const std::int32_t n = vb::toLong(call.arg(2), call.locale());
  if (n < 0) vb::raise(vb::kInvalidCall);  // e.g. the text "-1", which passes the test
  if (source.isNull()) {
    result = Value::null();
    return 0;
  }
  // A string is cut where it stands; the whole of it is the same value.
  std::u16string converted;
  if (!source.isString()) converted = vb::toString(source, call.locale());
  const std::u16string_view s = source.isString() ? source.stringValue() : converted;
  const std::size_t take = std::min(static_cast<std::size_t>(n), s.size());
  if (take == s.size() && source.isString()) {
    result = source;
    return 0;
  }
  result = Value::string(FromLeft ? s.substr(0, take) : s.substr(s.size() - take));
  return 0;
}

template <std::u16string (*Convert)(std::u16string_view)>
std::int32_t changeCase(Call& call, Value& result) {
  const Value& v = call.arg(1);
  result = v.isNull() ? Value::null() : Value::string(Convert(vb::toString(v, call.locale())));
  return 0;
}

std::int32_t asc(Call& call, Value& result) {
  result = Value::integer(vb::ansiCode(vb::toString(call.arg(1), call.locale())));
  return 0;
}

std::int32_t chr(Call& call, Value& result) {
  result = Value::string(vb::charFromAnsi(vb::toLong(call.arg(1), call.locale())));
  return 0;
}

std::int32_t cstr(Call& call, Value& result) {
  result = Value::string(vb::toString(call.arg(1), call.locale()));
  return 0;
}

std::u16string hexDigits(std::uint32_t n) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  std::u16string out;
  do {
    out.insert(out.begin(), kDigits[n & 0xF]);
    n >>= 4;
  } while (n != 0);
  return out;
}

// An Integer (or a Boolean, which is one) is written in 16 bits, anything
// else as a Long in 32: Hex of the Integer -1 is FFFF, of the Long FFFFFFFF.
std::int32_t hex(Call& call, Value& result) {
  const Value& v = call.arg(1);
  std::uint32_t bits;
  if (v.type() == VarType::Integer || v.type() == VarType::Boolean) {
    bits = static_cast<std::uint16_t>(vb::toInteger(v, call.locale()));
  } else {
    bits = static_cast<std::uint32_t>(vb::toLong(v, call.locale()));
  }
  result = Value::string(hexDigits(bits));
  return 0;
}

std::int32_t format(Call& call, Value& result) {
  const std::u16string fmt =
      call.count() >= 2 ? vb::toString(call.arg(2), call.locale()) : std::u16string();
  result = Value::string(vb::format(call.arg(1), fmt, call.locale()));
  return 0;
}

std::int32_t mid(Call& call, Value& result) {
  const std::u16string& s = call.arg(1).stringValue();
  const std::int32_t start = vb::toLong(call.arg(2), call.locale());
  if (start < 1) vb::raise(vb::kInvalidCall);
  std::size_t length = std::u16string::npos;
  if (call.count() == 3) {
    const std::int32_t n = vb::toLong(call.arg(3), call.locale());
    if (n < 0) vb::raise(vb::kInvalidCall);
    length = static_cast<std::size_t>(n);
  }
  const auto from = static_cast<std::size_t>(start - 1);
  result = Value::string(from >= s.size() ? std::u16string() : s.substr(from, length));
  return 0;
}

constexpr ResultKind kText = ResultKind::String;

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"Left"}, 2, 2, {A, ArgCheck::NonNegative, A}, takeEnd<true>,
     {u"字符串, 长度", kText, u"字符串左边的 长度 个字符 (非文本取其文本形式; Null 得 Null)"}},
    {{u"Right"}, 2, 2, {A, ArgCheck::NonNegative, A}, takeEnd<false>,
     {u"字符串, 长度", kText, u"字符串右边的 长度 个字符 (非文本取其文本形式; Null 得 Null)"}},
    {{u"Asc"}, 1, 1, {A, A, A}, asc,
     {u"字符串", ResultKind::Number, u"第一个字符的 ANSI (GBK) 代码"}},
    {{u"Chr"}, 1, 1, {N, A, A}, chr,
     {u"代码", kText, u"ANSI (GBK) 代码对应的字符; 代码页之外为错误 5"}},
    {{u"CStr"}, 1, 1, {A, A, A}, cstr,
     {u"值", kText, u"值的文本形式"}},
    {{u"LCase"}, 1, 1, {A, A, A}, changeCase<vb::lowerCase>,
     {u"字符串", kText, u"改为小写的文本; Null 得 Null"}},
    {{u"UCase"}, 1, 1, {A, A, A}, changeCase<vb::upperCase>,
     {u"字符串", kText, u"改为大写的文本; Null 得 Null"}},
    {{u"Hex"}, 1, 1, {N, A, A}, hex,
     {u"数值", kText, u"十六进制文本: Integer 按 16 位 (-1 为 FFFF), 其余按 32 位"}},
    {{u"Format"}, 1, 2, {A, A, A}, format,
     {u"值[, 格式]", kText, u"按格式 (如 \"0.00\", \"yyyy-mm-dd\") 写成的文本"}},
    // Mid keeps an older shape: its own message marker, and a first
    // argument that really must be a String.
    {{u"MID"}, 2, 3, {ArgCheck::String, N, N}, mid,
     {u"字符串, 开始[, 长度]", kText, u"从第 开始 个字符 (从 1 起) 起 长度 个字符; 无长度到末尾"},
     kRequiresParenthesis, u"{MID()}"},
};
// clang-format on

}  // namespace

Family stringFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
