// Conversion and test functions: CLng, CDbl, CDate, IsNumeric, IsEmpty.
#include "functions/function_descriptors.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr Check A = Check::Any;
constexpr Check N = Check::Numeric;

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

}  // namespace

const FunctionDescriptor kCLng{u"CLng", 1, 1, {N, A, A}, convert<asLong>};
const FunctionDescriptor kCDbl{u"CDbl", 1, 1, {N, A, A}, convert<asDouble>};
const FunctionDescriptor kCDate{u"CDate", 1, 1, {Check::Date, A, A}, convert<asDate>};
const FunctionDescriptor kIsNumeric{u"IsNumeric", 1, 1, {A, A, A}, convert<isNumeric>};
const FunctionDescriptor kIsEmpty{u"IsEmpty", 1, 1, {A, A, A}, isEmpty};

}  // namespace korvex::fn
