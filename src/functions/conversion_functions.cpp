// Conversion and test functions: CLng, CDbl, CDate, IsNumeric, IsEmpty.
#include "functions/families.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck N = ArgCheck::Numeric;

// One operation for the plain conversions: the argument through `Convert`.
template <Value (*Convert)(const Value&, const Locale&)>
std::int32_t convert(Call& call, Value& result) {
  result = Convert(call.arg(1), call.locale());
  return 0;
}

Value asLong(const Value& v, const Locale& loc) { return Value::lng(vb::toLong(v, loc)); }
Value asDouble(const Value& v, const Locale& loc) { return Value::dbl(vb::toDouble(v, loc)); }
Value asDate(const Value& v, const Locale& loc) { return Value::date(vb::toDate(v, loc)); }
Value isNumeric(const Value& v, const Locale& loc) { return Value::boolean(vb::isNumeric(v, loc)); }

bool onlySpaces(std::u16string_view s) noexcept {
  return s.find_first_not_of(u' ') == std::u16string_view::npos;
}

// True is the Double -1; for a value that is not empty nothing is stored, so
// the caller keeps whatever it passed in.
std::int32_t isEmpty(Call& call, Value& result) {
  const Value& v = call.arg(1);
  if (v.isNull() || v.isEmpty() || (v.isString() && onlySpaces(v.stringValue()))) {
    result = Value::dbl(-1);
  }
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"CLng"}, 1, 1, {N, A, A}, convert<asLong>,
     {u"值", ResultKind::Number, u"四舍六入五成双的长整数 (Long)"}},
    {{u"CDbl"}, 1, 1, {N, A, A}, convert<asDouble>, {u"值", ResultKind::Number, u"双精度数"}},
    {{u"CDate"}, 1, 1, {ArgCheck::Date, A, A}, convert<asDate>, {u"值", ResultKind::Date, u"日期"}},
    {{u"IsNumeric"}, 1, 1, {A, A, A}, convert<isNumeric>,
     {u"值", ResultKind::Boolean, u"值是否为数值或可读作数值的文本"}},
    {{u"IsEmpty"}, 1, 1, {A, A, A}, isEmpty,
     {u"值", ResultKind::Any, u"空值、Null 或只含空格的文本得 -1, 否则结果为空值 (不是 0)"}},
};
// clang-format on

}  // namespace

Family conversionFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
