// Array functions: LBound and UBound.
#include "functions/families.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

// LBound/UBound(array[, dimension]): the bound as a Long; a dimension the
// array does not have is the platform's subscript fault.
template <bool Upper>
std::int32_t bound(Call& call, Value& result) {
  const Array& array = call.arg(1).arrayValue();
  std::int32_t dimension = 1;
  if (call.count() == 2) dimension = vb::toLong(call.arg(2), call.locale());
  if (dimension < 1 || static_cast<std::size_t>(dimension) > array.dimensions()) {
    vb::raise(vb::kSubscript);
  }
  const auto index = static_cast<std::size_t>(dimension - 1);
  result = Value::lng(Upper ? array.ubound(index) : array.lbound(index));
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"LBound"}, 1, 2, {ArgCheck::Array, ArgCheck::Numeric, ArgCheck::Any}, bound<false>,
     {u"数组[, 维]", ResultKind::Number, u"数组第 维 维 (默认 1) 的下界; 没有该维是错误 9"}},
    {{u"UBound"}, 1, 2, {ArgCheck::Array, ArgCheck::Numeric, ArgCheck::Any}, bound<true>,
     {u"数组[, 维]", ResultKind::Number, u"数组第 维 维 (默认 1) 的上界; 没有该维是错误 9"}},
};
// clang-format on

}  // namespace

Family arrayFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
