#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "values/format.hpp"
#include "values/numeric.hpp"
#include "values/ops.hpp"

namespace korvex::vb {

namespace {

// Banker's rounding of a Currency's scaled integer to `digits` decimals.
Currency roundCurrency(Currency c, int digits) {
  if (digits >= 4) return c;
  std::int64_t unit = 1;
  for (int i = digits; i < 4; ++i) unit *= 10;
  std::int64_t q = c.scaled / unit;
  const std::int64_t r = c.scaled % unit;
  const std::int64_t twice = 2 * (r < 0 ? -r : r);
  if (twice > unit || (twice == unit && q % 2 != 0)) q += c.scaled < 0 ? -1 : 1;
  return Currency{q * unit};
}

// Whole part of a Currency, towards minus infinity (floor) or zero (trunc).
Currency wholeCurrency(Currency c, bool floorIt) {
  std::int64_t q = c.scaled / Currency::kScale;
  if (floorIt && c.scaled % Currency::kScale < 0) --q;
  return Currency{q * Currency::kScale};
}

// Round, Int and Fix keep the numeric type: whole-number types and Null pass
// through, Empty and Booleans become Integers, Currency and Dates stay what
// they are, and anything else is read as a Double.
template <typename OnDouble, typename OnCurrency>
Value keepingType(const Value& v, const Locale& loc, OnDouble onDouble, OnCurrency onCurrency) {
  switch (v.type()) {
    case VarType::Null:
    case VarType::Integer:
    case VarType::Long:
      return v;
    case VarType::Empty:
      return Value::integer(0);
    case VarType::Boolean:
      return Value::integer(v.booleanValue() ? -1 : 0);
    case VarType::Double:
      return Value::dbl(onDouble(v.doubleValue()));
    case VarType::Date:
      return Value::date(onDouble(v.doubleValue()));
    case VarType::Currency:
      return Value::currency(onCurrency(v.currencyValue()));
    default:
      return Value::dbl(onDouble(toDouble(v, loc)));
  }
}

// Int and Fix share everything but the direction of the cut.
Value wholePart(const Value& v, bool floorIt, const Locale& loc) {
  return keepingType(
      v, loc, [floorIt](double d) { return floorIt ? std::floor(d) : std::trunc(d); },
      [floorIt](Currency c) { return wholeCurrency(c, floorIt); });
}

}  // namespace

double roundHalfEven(double x, int digits) {
  if (!std::isfinite(x) || x == 0.0) return x;
  if (digits == 0) return roundHalfEvenWhole(x);
  // The platform scales in binary, rounds the whole number and scales back:
  // 2.675 * 100 is exactly 267.5 and goes to 268, 1.005 * 100 falls just
  // short of 100.5 and goes to 100.
  const double scale = std::pow(10.0, std::abs(digits));
  if (digits < 0) return roundHalfEvenWhole(x / scale) * scale;
  const double scaled = x * scale;
  if (!std::isfinite(scaled) || std::fabs(scaled) >= 4503599627370496.0) return x;  // 2^52
  return roundHalfEvenWhole(scaled) / scale;
}

Value round(const Value& v, int digits, const Locale& loc) {
  if (digits < 0) raise(kInvalidCall);
  return keepingType(
      v, loc, [digits](double d) { return roundHalfEven(d, digits); },
      [digits](Currency c) { return roundCurrency(c, digits); });
}

Value intPart(const Value& v, const Locale& loc) { return wholePart(v, true, loc); }
Value fixPart(const Value& v, const Locale& loc) { return wholePart(v, false, loc); }

}  // namespace korvex::vb
