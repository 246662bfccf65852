// Array functions: LBound and UBound.
#include "functions/function_descriptors.hpp"
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

}  // namespace

const FunctionDescriptor kLBound{
    u"LBound", 1, 2, {Check::Array, Check::Numeric, Check::Any}, bound<false>};
const FunctionDescriptor kUBound{
    u"UBound", 1, 2, {Check::Array, Check::Numeric, Check::Any}, bound<true>};

}  // namespace korvex::fn
