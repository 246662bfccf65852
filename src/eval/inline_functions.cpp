#include "eval/inline_functions.hpp"

#include <cmath>
#include <limits>

#include "values/calendar.hpp"
#include "values/ops.hpp"

namespace korvex::eval {

namespace {

// Abs with the platform's types: whole numbers keep their width (and
// overflow at the one value without a positive twin), Booleans become
// Integers, strings and dates Doubles.
Value absolute(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Null:
      return v;
    case VarType::Empty:
      return Value::integer(0);
    case VarType::Integer:
      if (v.integerValue() == std::numeric_limits<std::int16_t>::min()) vb::raise(vb::kOverflow);
      return Value::integer(static_cast<std::int16_t>(std::abs(v.integerValue())));
    case VarType::Boolean:
      return Value::integer(v.booleanValue() ? 1 : 0);
    case VarType::Long:
      if (v.longValue() == std::numeric_limits<std::int32_t>::min()) vb::raise(vb::kOverflow);
      return Value::lng(std::abs(v.longValue()));
    case VarType::Currency:
      if (v.currencyValue().scaled == std::numeric_limits<std::int64_t>::min()) {
        vb::raise(vb::kOverflow);
      }
      return Value::currency(Currency{std::llabs(v.currencyValue().scaled)});
    default:
      return Value::dbl(std::fabs(vb::toDouble(v, loc)));
  }
}

// The whole part of a value that is not negative.
Value wholePart(const Value& a) {
  switch (a.type()) {
    case VarType::Double:
      return Value::dbl(std::floor(a.doubleValue()));
    case VarType::Currency: {
      const std::int64_t s = a.currencyValue().scaled;
      return Value::currency(Currency{s - s % Currency::kScale});
    }
    default:
      return a;
  }
}

Value trimSpaces(const Value& v, const Locale& loc) {
  const std::u16string s = vb::toString(v, loc);
  const std::size_t b = s.find_first_not_of(u' ');
  if (b == std::u16string::npos) return Value::string(std::u16string());
  const std::size_t e = s.find_last_not_of(u' ');
  return Value::string(std::u16string_view(s).substr(b, e - b + 1));
}

}  // namespace

Value applyInline(InlineOp op, const Value& v, const Locale& loc) {
  if (v.isObject() || v.isArray()) vb::raise(vb::kTypeMismatch);
  switch (op) {
    case InlineOp::Abs:
      return absolute(v, loc);
    case InlineOp::Len:
      if (v.isNull()) return v;
      return Value::lng(static_cast<std::int32_t>(vb::toString(v, loc).size()));
    case InlineOp::Sqr: {
      const double d = vb::toDouble(v, loc);
      if (d < 0) vb::raise(vb::kInvalidCall);
      return Value::dbl(std::sqrt(d));
    }
    case InlineOp::Year:
      if (v.isNull()) return v;
      return Value::integer(static_cast<std::int16_t>(vb::splitSerial(vb::toDate(v, loc)).year));
    case InlineOp::Trim:
      if (v.isNull()) return v;
      return trimSpaces(v, loc);
    case InlineOp::Int: {
      // Truncation toward zero: the sign times the whole part of the
      // magnitude, so INT(-2.5) is -2.
      if (v.isNull()) vb::raise(vb::kInvalidNull);
      const double d = vb::toDouble(v, loc);
      const std::int16_t sign = d > 0 ? 1 : (d < 0 ? -1 : 0);
      return vb::multiply(Value::integer(sign), wholePart(absolute(v, loc)), loc);
    }
  }
  return {};
}

}  // namespace korvex::eval
