// Converting script values on the host side.
//
// A host that reads a result with BasicEngine::GetVarValue gets a Value; these
// functions turn it into a C++ number, text or date serial with exactly the
// rules a script's own conversions follow (CDbl, CLng, CStr, CDate, Format).
// They never throw: a value that cannot be converted gives no result and the
// run-time error a script would have met, with its number and Chinese text.
//
//   korvex::Converted<double> wage = korvex::toDouble(engine.GetVarValue(u"WAGE"));
//   if (wage) pay(*wage.value); else log(wage.errNum, wage.errMsg);
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex {

template <typename T>
struct Converted {
  std::optional<T> value;   // set on success
  std::int32_t errNum = 0;  // otherwise the run-time error: 13, 6, 94, ...
  std::u16string errMsg;

  explicit operator bool() const noexcept { return value.has_value(); }
};

/// CDbl: numbers, numeric text, Booleans (-1/0), dates as their serial.
Converted<double> toDouble(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;
/// CLng: banker's rounding; out of the 32-bit range is error 6.
Converted<std::int32_t> toLong(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;
/// CStr: the value's text form in the locale (Null is error 94).
Converted<std::u16string> toText(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;
/// CDate: the date serial (days since 1899-12-30, the fraction is the time).
Converted<double> toDateSerial(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;
/// Format(value, format) with the locale's separators and names.
Converted<std::u16string> formatValue(const Value& v, std::u16string_view format,
                                      const Locale& loc = Locale::zhCN()) noexcept;

/// IsNumeric and IsDate, which never fail.
bool isNumericValue(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;
bool isDateValue(const Value& v, const Locale& loc = Locale::zhCN()) noexcept;

/// The calendar date and time of day of a date serial.
struct DateTimeFields {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
};
/// Year, Month, Day, Hour, Minute and Second at once: the time rounded to
/// the nearest second (a time rounding up to midnight moves to the next
/// day); error 6 outside 100-01-01 .. 9999-12-31.
Converted<DateTimeFields> dateTimeFields(double serial) noexcept;

/// The text of GBK bytes (the code page of Chinese Windows), as a script
/// file saved there holds it.
std::u16string decodeGbk(std::string_view bytes);

}  // namespace korvex
