// Conversion and test functions: CLng, CDbl, CDate, IsNumeric, IsEmpty.
#include "functions/function_specs.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr Check A = Check::Any;
constexpr Check N = Check::Numeric;

std::int32_t clng(Call& call, Value& result) {
  result = Value::lng(vb::toLong(call.arg(1), call.locale()));
  return 0;
}

std::int32_t cdbl(Call& call, Value& result) {
  result = Value::dbl(vb::toDouble(call.arg(1), call.locale()));
  return 0;
}

std::int32_t cdate(Call& call, Value& result) {
  result = Value::date(vb::toDate(call.arg(1), call.locale()));
  return 0;
}

std::int32_t isNumeric(Call& call, Value& result) {
  result = Value::boolean(vb::isNumeric(call.arg(1), call.locale()));
  return 0;
}

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

const FunctionSpec kCLng{u"CLng", 1, 1, {N, A, A}, clng};
const FunctionSpec kCDbl{u"CDbl", 1, 1, {N, A, A}, cdbl};
const FunctionSpec kCDate{u"CDate", 1, 1, {Check::Date, A, A}, cdate};
const FunctionSpec kIsNumeric{u"IsNumeric", 1, 1, {A, A, A}, isNumeric};
const FunctionSpec kIsEmpty{u"IsEmpty", 1, 1, {A, A, A}, isEmpty};

}  // namespace korvex::fn
