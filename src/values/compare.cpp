// Variant comparison: numbers numerically, strings binary (case-sensitive),
// a number is less than any string, Empty is 0 beside a number and "" beside
// a string, Null makes the result Null.
#include "values/ops.hpp"

namespace korvex::vb {

namespace {

enum class Class { Empty, Number, String };

Class classify(const Value& v) {
  switch (v.type()) {
    case VarType::Empty:
      return Class::Empty;
    case VarType::String:
      return Class::String;
    case VarType::Integer:
    case VarType::Long:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Date:
    case VarType::Boolean:
      return Class::Number;
    default:
      raise(kTypeMismatch);
  }
}

template <typename T>
int order(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

int compareNumbers(const Value& l, const Value& r, const Locale& loc) {
  // Currency against Currency stays exact; integer kinds are exact as
  // Doubles, and so is every other mix the platform compares as Double.
  if (l.type() == VarType::Currency && r.type() == VarType::Currency) {
    return order(l.currencyValue().scaled, r.currencyValue().scaled);
  }
  return order(toDouble(l, loc), toDouble(r, loc));
}

int compareStrings(std::u16string_view a, std::u16string_view b) { return order(a, b); }

}  // namespace

std::optional<int> compareValues(const Value& l, const Value& r, const Locale& loc) {
  if (l.type() == VarType::Double && r.type() == VarType::Double) {
    return order(l.doubleValue(), r.doubleValue());
  }
  if (l.isNull() || r.isNull()) return std::nullopt;
  const Class a = classify(l);
  const Class b = classify(r);
  if (a == Class::String && b == Class::String) {
    return compareStrings(l.stringValue(), r.stringValue());
  }
  if (a == Class::String) return b == Class::Empty ? compareStrings(l.stringValue(), u"") : 1;
  if (b == Class::String) return a == Class::Empty ? compareStrings(u"", r.stringValue()) : -1;
  return compareNumbers(l, r, loc);
}

Value compare(CompareOp op, const Value& l, const Value& r, const Locale& loc) {
  const auto c = compareValues(l, r, loc);
  if (!c) return Value::null();
  switch (op) {
    case CompareOp::Less:
      return Value::boolean(*c < 0);
    case CompareOp::LessEqual:
      return Value::boolean(*c <= 0);
    case CompareOp::Greater:
      return Value::boolean(*c > 0);
    case CompareOp::GreaterEqual:
      return Value::boolean(*c >= 0);
    case CompareOp::Equal:
      return Value::boolean(*c == 0);
    case CompareOp::NotEqual:
      return Value::boolean(*c != 0);
  }
  return {};
}

}  // namespace korvex::vb
