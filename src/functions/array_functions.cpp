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

constexpr FunctionEntry kTable[] = {
    {{u"LBound"}, 1, 2, {ArgCheck::Array, ArgCheck::Numeric, ArgCheck::Any}, bound<false>},
    {{u"UBound"}, 1, 2, {ArgCheck::Array, ArgCheck::Numeric, ArgCheck::Any}, bound<true>},
};

}  // namespace

Family arrayFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
