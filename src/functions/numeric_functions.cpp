// Numeric functions: Round, Atn, Cos, Sin, Tan and Exp.
#include <cmath>

#include "functions/families.hpp"
#include "values/format.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck N = ArgCheck::Numeric;

// The largest argument whose exponential is still a finite Double.
constexpr double kExpLimit = 709.782712893;

std::int32_t round(Call& call, Value& result) {
  const Value& v = call.arg(1);
  const double x = v.isNull() ? 0.0 : vb::toDouble(v, call.locale());
  int digits = 0;
  if (call.count() == 2) digits = vb::toInteger(call.arg(2), call.locale());
  if (digits < 0) vb::raise(vb::kInvalidCall);
  result = Value::dbl(vb::roundHalfEven(x, digits));
  return 0;
}

template <double (*F)(double)>
std::int32_t apply(Call& call, Value& result) {
  result = Value::dbl(F(vb::toDouble(call.arg(1), call.locale())));
  return 0;
}

double atan(double x) { return std::atan(x); }
double cos(double x) { return std::cos(x); }
double sin(double x) { return std::sin(x); }
double tan(double x) { return std::tan(x); }

std::int32_t exp(Call& call, Value& result) {
  const double x = vb::toDouble(call.arg(1), call.locale());
  if (x > kExpLimit) return call.typeError(u"参数不能大于709.782712893");
  result = Value::dbl(std::exp(x));
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"Round"}, 1, 2, {ArgCheck::NumericOrNull, A, A}, round,
     {u"数值[, 小数位数]", ResultKind::Number,
      u"四舍六入五成双到 小数位数 位 (默认 0); Null 得 0; 位数为负是错误 5"}},
    {{u"Atn"}, 1, 1, {N, A, A}, apply<atan>, {u"数值", ResultKind::Number, u"反正切 (弧度)"}},
    {{u"Cos"}, 1, 1, {N, A, A}, apply<cos>, {u"弧度", ResultKind::Number, u"余弦"}},
    {{u"Sin"}, 1, 1, {N, A, A}, apply<sin>, {u"弧度", ResultKind::Number, u"正弦"}},
    {{u"Tan"}, 1, 1, {N, A, A}, apply<tan>, {u"弧度", ResultKind::Number, u"正切"}},
    {{u"Exp"}, 1, 1, {N, A, A}, exp,
     {u"数值", ResultKind::Number, u"e 的 数值 次幂",
      u"数值大于 709.782712893 (信息的 } 前加 参数不能大于709.782712893)"}},
};
// clang-format on

}  // namespace

Family numericFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
