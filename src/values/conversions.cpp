// Value -> String / number / Date / Boolean, and the IsNumeric/IsDate tests.
#include <cmath>
#include <limits>

#include "values/calendar.hpp"
#include "values/numeric.hpp"
#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex::vb {

namespace {

std::u16string integerText(std::int64_t v) {
  char16_t buf[24];
  int n = 0;
  std::uint64_t mag = v < 0 ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
  do {
    buf[n++] = static_cast<char16_t>(u'0' + mag % 10);
    mag /= 10;
  } while (mag != 0);
  std::u16string out;
  out.reserve(static_cast<std::size_t>(n) + 1);
  if (v < 0) out.push_back(u'-');
  while (n > 0) out.push_back(buf[--n]);
  return out;
}

double stringToDouble(const std::u16string& s, const Locale& loc) {
  const auto d = parseNumber(s, loc);
  if (!d) raise(kTypeMismatch);
  return checkedDouble(*d);
}

std::optional<bool> booleanWord(std::u16string_view s) {
  const auto t = trimParserBlanks(s);
  if (equalsNoCase(t, u"True")) return true;
  if (equalsNoCase(t, u"False")) return false;
  return std::nullopt;
}

// Whole-number conversion with banker's rounding and a range check.
template <typename Int>
Int toWhole(const Value& v, const Locale& loc) {
  constexpr auto lo = static_cast<double>(std::numeric_limits<Int>::min());
  constexpr auto hi = static_cast<double>(std::numeric_limits<Int>::max());
  switch (v.type()) {
    case VarType::Integer:
      return static_cast<Int>(v.integerValue());
    case VarType::Long:
      if (v.longValue() < lo || v.longValue() > hi) raise(kOverflow);
      return static_cast<Int>(v.longValue());
    case VarType::Currency: {
      // Exact: round the scaled integer half to even at the unit.
      const std::int64_t s = v.currencyValue().scaled;
      std::int64_t q = s / Currency::kScale;
      const std::int64_t r = s % Currency::kScale;
      const std::int64_t half = Currency::kScale / 2;
      if (r > half || (r == half && q % 2 != 0)) ++q;
      if (r < -half || (r == -half && q % 2 != 0)) --q;
      if (q < lo || q > hi) raise(kOverflow);
      return static_cast<Int>(q);
    }
    default: {
      const double r = roundHalfEvenWhole(toDouble(v, loc));
      if (!(r >= lo && r <= hi)) raise(kOverflow);
      return static_cast<Int>(r);
    }
  }
}

}  // namespace

std::int64_t scaledCurrency(double d) {
  // Whole units and the fraction scale separately: d * 10000 in one Double
  // loses the last digits of amounts above about 5.8e13, while both parts
  // here are exact and only the fraction is rounded (half to even).
  const double whole = std::trunc(d);
  // The Currency range is +-922,337,203,685,477.5807.
  if (!(std::fabs(whole) <= 922337203685477.0)) raise(kOverflow);
  const double fraction = roundHalfEvenWhole((d - whole) * static_cast<double>(Currency::kScale));
  std::int64_t scaled = 0;
  if (__builtin_mul_overflow(static_cast<std::int64_t>(whole), Currency::kScale, &scaled) ||
      __builtin_add_overflow(scaled, static_cast<std::int64_t>(fraction), &scaled)) {
    raise(kOverflow);
  }
  return scaled;
}

std::u16string toString(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Empty:
      return {};
    case VarType::Null:
      raise(kInvalidNull);
    case VarType::Integer:
      return integerText(v.integerValue());
    case VarType::Long:
      return integerText(v.longValue());
    case VarType::Double:
      return doubleToString(v.doubleValue(), loc);
    case VarType::Currency:
      return currencyToString(v.currencyValue(), loc);
    case VarType::Date:
      return dateToString(v.doubleValue(), loc);
    case VarType::String:
      return v.stringValue();
    case VarType::Boolean:
      return v.booleanValue() ? u"True" : u"False";
    case VarType::Object:
    case VarType::Array:
      break;
  }
  raise(kTypeMismatch);
}

double toDouble(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Empty:
      return 0;
    case VarType::Null:
      raise(kInvalidNull);
    case VarType::Integer:
      return v.integerValue();
    case VarType::Long:
      return v.longValue();
    case VarType::Double:
    case VarType::Date:
      return v.doubleValue();
    case VarType::Currency:
      return static_cast<double>(v.currencyValue().scaled) / Currency::kScale;
    case VarType::String:
      return stringToDouble(v.stringValue(), loc);
    case VarType::Boolean:
      return v.booleanValue() ? -1 : 0;
    case VarType::Object:
    case VarType::Array:
      break;
  }
  raise(kTypeMismatch);
}

std::int16_t toInteger(const Value& v, const Locale& loc) { return toWhole<std::int16_t>(v, loc); }

std::int32_t toLong(const Value& v, const Locale& loc) { return toWhole<std::int32_t>(v, loc); }

Currency toCurrency(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Currency:
      return v.currencyValue();
    case VarType::Integer:
      return Currency{v.integerValue() * Currency::kScale};
    case VarType::Long:
      return Currency{v.longValue() * Currency::kScale};
    case VarType::Boolean:
      return Currency{v.booleanValue() ? -Currency::kScale : 0};
    default:
      return Currency{scaledCurrency(toDouble(v, loc))};
  }
}

double toDate(const Value& v, const Locale& loc) {
  double serial = 0;
  switch (v.type()) {
    case VarType::String: {
      const auto d = parseDate(v.stringValue(), loc);
      if (!d) raise(kTypeMismatch);
      return *d;
    }
    case VarType::Date:
      return v.doubleValue();
    default:
      serial = toDouble(v, loc);
      break;
  }
  if (!isValidSerial(serial)) raise(kOverflow);
  return serial;
}

bool toBoolean(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::Boolean:
      return v.booleanValue();
    case VarType::Integer:
      return v.integerValue() != 0;
    case VarType::Long:
      return v.longValue() != 0;
    case VarType::Currency:
      return v.currencyValue().scaled != 0;
    case VarType::String: {
      if (const auto b = booleanWord(v.stringValue())) return *b;
      return stringToDouble(v.stringValue(), loc) != 0;
    }
    default:
      return toDouble(v, loc) != 0;
  }
}

bool isNumeric(const Value& v, const Locale& loc) noexcept {
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Boolean:
      return true;
    case VarType::String:
      return parseNumber(v.stringValue(), loc).has_value();
    default:
      return false;
  }
}

bool isDate(const Value& v, const Locale& loc) noexcept {
  if (v.type() == VarType::Date) return true;
  if (v.type() != VarType::String) return false;
  return parseDate(v.stringValue(), loc).has_value();
}

}  // namespace korvex::vb
