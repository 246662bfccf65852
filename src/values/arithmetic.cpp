// + - * / ^, negation and & with the platform's type promotion:
// Integer overflows into Long, Long into Double; Double with any number is a
// Double, except that Currency outranks Double in a sum or a difference (not
// in a product); Date plus or minus a number is a Date;
// Booleans are -1/0 Integers; Empty is 0 (or "" beside a String); a String
// beside a number is read as a Double; Null propagates.
#include <cmath>
#include <limits>

#include "values/calendar.hpp"
#include "values/currency_product.hpp"
#include "values/numeric.hpp"
#include "values/ops.hpp"

namespace korvex::vb {

namespace {

enum class Kind { Integer, Long, Double, Currency, Date };

// One operand reduced to a number of a known kind.
struct Operand {
  Kind kind = Kind::Integer;
  std::int64_t i = 0;  // Integer, Long, Currency (scaled)
  double d = 0;        // Double, Date

  double asDouble() const {
    switch (kind) {
      case Kind::Double:
      case Kind::Date:
        return d;
      case Kind::Currency:
        return static_cast<double>(i) / Currency::kScale;
      default:
        return static_cast<double>(i);
    }
  }
  std::int64_t asScaled() const {
    switch (kind) {
      case Kind::Currency:
        return i;
      case Kind::Integer:
      case Kind::Long:
        return i * Currency::kScale;
      default:
        return scaledCurrency(d);
    }
  }
};

Operand operand(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Empty:
      return {Kind::Integer, 0, 0};
    case VarType::Boolean:
      return {Kind::Integer, v.booleanValue() ? -1 : 0, 0};
    case VarType::Integer:
      return {Kind::Integer, v.integerValue(), 0};
    case VarType::Long:
      return {Kind::Long, v.longValue(), 0};
    case VarType::Double:
      return {Kind::Double, 0, v.doubleValue()};
    case VarType::Date:
      return {Kind::Date, 0, v.doubleValue()};
    case VarType::Currency:
      return {Kind::Currency, v.currencyValue().scaled, 0};
    case VarType::String:
      return {Kind::Double, 0, toDouble(v, loc)};
    default:
      raise(kTypeMismatch);
  }
}

Kind wider(Kind a, Kind b) { return static_cast<int>(a) > static_cast<int>(b) ? a : b; }

// An exact integer result in the narrowest of Integer, Long, Double that is
// at least `kind`.
Value wholeResult(std::int64_t r, Kind kind) {
  if (kind == Kind::Integer && r >= INT16_MIN && r <= INT16_MAX) {
    return Value::integer(static_cast<std::int16_t>(r));
  }
  if (r >= INT32_MIN && r <= INT32_MAX) return Value::lng(static_cast<std::int32_t>(r));
  return Value::dbl(static_cast<double>(r));
}

Value doubleResult(double d) { return Value::dbl(checkedDouble(d)); }

// a ^ b as the Linux build computes it, correctly rounded nearly always. The
// Windows runtime's double pow is often a unit in the last place off (for
// whole exponents about every other time); its 80-bit pow, rounded once to
// a double, agrees with the Linux one.
double powerOf(double a, double b) {
#ifdef _WIN32
  return static_cast<double>(std::pow(static_cast<long double>(a), static_cast<long double>(b)));
#else
  return std::pow(a, b);
#endif
}

Value dateResult(double d) {
  if (!isValidSerial(d)) raise(kOverflow);
  return Value::date(d);
}

Value currencyResult(std::int64_t scaled) { return Value::currency(Currency{scaled}); }

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
  std::int64_t r = 0;
  if (__builtin_add_overflow(a, b, &r)) raise(kOverflow);
  return r;
}

std::int64_t checkedSub(std::int64_t a, std::int64_t b) {
  std::int64_t r = 0;
  if (__builtin_sub_overflow(a, b, &r)) raise(kOverflow);
  return r;
}

std::int64_t checkedMul(std::int64_t a, std::int64_t b) {
  std::int64_t r = 0;
  if (__builtin_mul_overflow(a, b, &r)) raise(kOverflow);
  return r;
}

enum class AddOp { Plus, Minus };

Value addNumbers(const Operand& a, const Operand& b, AddOp op) {
  const Kind k = wider(a.kind, b.kind);
  const bool minus = op == AddOp::Minus;
  if (minus && a.kind == Kind::Date && b.kind == Kind::Date) return doubleResult(a.d - b.d);
  switch (k) {
    case Kind::Integer:
    case Kind::Long:
      return wholeResult(minus ? a.i - b.i : a.i + b.i, k);
    case Kind::Double:
      return doubleResult(minus ? a.asDouble() - b.asDouble() : a.asDouble() + b.asDouble());
    case Kind::Currency:
      // Subtract rather than add the negation: the most negative Currency
      // has no positive counterpart.
      return currencyResult(minus ? checkedSub(a.asScaled(), b.asScaled())
                                  : checkedAdd(a.asScaled(), b.asScaled()));
    case Kind::Date:
      return dateResult(minus ? a.asDouble() - b.asDouble() : a.asDouble() + b.asDouble());
  }
  return {};
}

// Script numbers are Doubles: the commonest sums and products skip the
// general promotion.
bool bothDouble(const Value& l, const Value& r) noexcept {
  return l.type() == VarType::Double && r.type() == VarType::Double;
}

}  // namespace

Value add(const Value& l, const Value& r, const Locale& loc) {
  if (bothDouble(l, r)) return doubleResult(l.doubleValue() + r.doubleValue());
  if (l.isNull() || r.isNull()) return Value::null();
  if (l.isString() && r.isString()) return Value::string(l.stringValue() + r.stringValue());
  if (l.isString() && r.isEmpty()) return l;
  if (l.isEmpty() && r.isString()) return r;
  return addNumbers(operand(l, loc), operand(r, loc), AddOp::Plus);
}

Value subtract(const Value& l, const Value& r, const Locale& loc) {
  if (bothDouble(l, r)) return doubleResult(l.doubleValue() - r.doubleValue());
  if (l.isNull() || r.isNull()) return Value::null();
  return addNumbers(operand(l, loc), operand(r, loc), AddOp::Minus);
}

Value multiply(const Value& l, const Value& r, const Locale& loc) {
  if (bothDouble(l, r)) return doubleResult(l.doubleValue() * r.doubleValue());
  if (l.isNull() || r.isNull()) return Value::null();
  Operand a = operand(l, loc);
  Operand b = operand(r, loc);
  // A date in a product is just its serial.
  if (a.kind == Kind::Date) a.kind = Kind::Double;
  if (b.kind == Kind::Date) b.kind = Kind::Double;
  const Kind k = wider(a.kind, b.kind);
  switch (k) {
    case Kind::Integer:
    case Kind::Long:
      return wholeResult(a.i * b.i, k);  // |a|,|b| < 2^31: exact in 64 bits
    case Kind::Currency: {
      if (a.kind == Kind::Currency && b.kind == Kind::Currency) {
        const std::optional<std::int64_t> p = currencyProduct(a.i, b.i);
        if (!p) raise(kOverflow);
        return currencyResult(*p);
      }
      const Operand& cy = a.kind == Kind::Currency ? a : b;
      const Operand& other = a.kind == Kind::Currency ? b : a;
      // In a product a Double outranks Currency (unlike in a sum), so
      // Currency times a Double or a date's serial is a Double.
      if (other.kind == Kind::Double) return doubleResult(cy.asDouble() * other.d);
      return currencyResult(checkedMul(cy.i, other.i));
    }
    default:
      return doubleResult(a.asDouble() * b.asDouble());
  }
}

Value divide(const Value& l, const Value& r, const Locale& loc) {
  if (l.isNull() || r.isNull()) return Value::null();
  const double a = operand(l, loc).asDouble();
  const double b = operand(r, loc).asDouble();
  if (b == 0) raise(a == 0 ? kOverflow : kDivisionByZero);  // 0/0 is an overflow
  return doubleResult(a / b);
}

Value power(const Value& l, const Value& r, const Locale& loc) {
  if (l.isNull() || r.isNull()) return Value::null();
  const double a = operand(l, loc).asDouble();
  const double b = operand(r, loc).asDouble();
  // A negative base needs a whole exponent; zero has no negative powers.
  if ((a < 0 && b != std::trunc(b)) || (a == 0 && b < 0)) raise(kInvalidCall);
  return doubleResult(powerOf(a, b));
}

Value negate(const Value& v, const Locale& loc) {
  if (v.isNull()) return Value::null();
  const Operand a = operand(v, loc);
  switch (a.kind) {
    case Kind::Integer:
    case Kind::Long:
      return wholeResult(-a.i, a.kind);
    case Kind::Double:
      return Value::dbl(-a.d);
    case Kind::Currency:
      if (a.i == std::numeric_limits<std::int64_t>::min()) raise(kOverflow);
      return currencyResult(-a.i);
    case Kind::Date:
      return dateResult(-a.d);
  }
  return {};
}

Value concat(const Value& l, const Value& r, const Locale& loc) {
  if (l.isNull() && r.isNull()) return Value::null();
  std::u16string out = l.isNull() ? std::u16string() : toString(l, loc);
  if (!r.isNull()) out += toString(r, loc);
  return Value::string(std::move(out));
}

}  // namespace korvex::vb
