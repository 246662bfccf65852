// The host-side conversions: the script's own conversions with their
// run-time errors turned into values, so that nothing throws to a host.
#include "korvex/convert.hpp"

#include <new>

#include "values/format.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

template <typename T, typename Convert>
Converted<T> guarded(Convert convert) noexcept {
  Converted<T> out;
  try {
    out.value = convert();
  } catch (const vb::RuntimeError& e) {
    out.errNum = e.number();
    out.errMsg = e.description();
  } catch (const std::bad_alloc&) {
    out.errNum = 7;  // the platform's "out of memory"
    out.errMsg = u"内存不足";
  }
  return out;
}

}  // namespace

Converted<double> toDouble(const Value& v, const Locale& loc) noexcept {
  return guarded<double>([&] { return vb::toDouble(v, loc); });
}

Converted<std::int32_t> toLong(const Value& v, const Locale& loc) noexcept {
  return guarded<std::int32_t>([&] { return vb::toLong(v, loc); });
}

Converted<std::u16string> toText(const Value& v, const Locale& loc) noexcept {
  return guarded<std::u16string>([&] { return vb::toString(v, loc); });
}

Converted<double> toDateSerial(const Value& v, const Locale& loc) noexcept {
  return guarded<double>([&] { return vb::toDate(v, loc); });
}

Converted<std::u16string> formatValue(const Value& v, std::u16string_view format,
                                      const Locale& loc) noexcept {
  return guarded<std::u16string>([&] { return vb::format(v, format, loc); });
}

bool isNumericValue(const Value& v, const Locale& loc) noexcept { return vb::isNumeric(v, loc); }

bool isDateValue(const Value& v, const Locale& loc) noexcept { return vb::isDate(v, loc); }

Converted<DateTimeFields> dateTimeFields(double serial) noexcept {
  return guarded<DateTimeFields>([&] {
    const vb::DateParts p = vb::splitDate(serial);
    return DateTimeFields{p.year, p.month, p.day, p.hour, p.minute, p.second};
  });
}

std::u16string decodeGbk(std::string_view bytes) { return vb::decodeGbk(bytes); }

}  // namespace korvex
