#include "functions/protocol.hpp"

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "values/ops.hpp"

namespace korvex::fn {

const Locale& Call::locale() const noexcept { return ctx_.locale(); }

std::u16string Call::suffix(std::u16string_view extra) const {
  if (!entry_.fixedSuffix.empty()) return std::u16string(entry_.fixedSuffix);
  std::u16string s;
  s.reserve(6 + entry_.displayName().size() + argText_.size() + extra.size());
  s += u"{函数:";
  s += entry_.displayName();
  s += argText_;
  s += extra;
  s += u'}';
  return s;
}

std::int32_t Call::fail(std::int32_t number, std::u16string message) const {
  ctx_.report(number, message);
  return number;
}

std::int32_t Call::fail(const Message& m, std::u16string_view detail) const {
  return ctx_.report(m, detail);
}

std::int32_t Call::countError() const { return ctx_.report(msg::kBadArguments, suffix({})); }

std::int32_t Call::typeError(std::u16string_view extra) const {
  if (entry_.quirks & kPlainTypeMessage) return ctx_.report(msg::kTypeMismatch);
  return ctx_.report(msg::kTypeMismatch, suffix(extra));
}

bool Passes(ArgCheck check, const Value& v, const Locale& loc) {
  switch (check) {
    case ArgCheck::Any:
      return true;
    case ArgCheck::Numeric:
      return vb::isNumeric(v, loc);
    case ArgCheck::NumericOrNull:
      return v.isNull() || vb::isNumeric(v, loc);
    case ArgCheck::NonNegative:
      // Compared with a numeric constant, a numeric string counts by its
      // number: "-1" is negative.
      return vb::isNumeric(v, loc) && vb::toDouble(v, loc) >= 0;
    case ArgCheck::Date:
      return vb::isDate(v, loc);
    case ArgCheck::String:
      return v.isString();
    case ArgCheck::Textual:
      return !v.isNull() && !v.isObject() && !v.isArray();
    case ArgCheck::Array:
      return v.isArray();
  }
  return false;
}

}  // namespace korvex::fn
