// Format, rounding and date parts, with the platform's rules.
//
// May throw vb::RuntimeError like the conversions in ops.hpp.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex::vb {

/// The platform's Format(value, format): user-defined number formats, the
/// named formats, date/time formats and string formats. An empty format
/// gives the value's string form (Null gives "").
std::u16string format(const Value& v, std::u16string_view fmt, const Locale& loc);

/// Banker's rounding to `digits` decimals (Round(2.5) = 2, Round(3.5) = 4).
double roundHalfEven(double x, int digits = 0);
/// Round on a Value: keeps Integer/Long/Currency types, Null stays Null,
/// strings are converted; raises 5 for negative digits.
Value round(const Value& v, int digits, const Locale& loc);
/// Int (floor) and Fix (truncation) on a Value, keeping the numeric type
/// (a string becomes a Double, Null stays Null).
Value intPart(const Value& v, const Locale& loc);
Value fixPart(const Value& v, const Locale& loc);

// ---- dates --------------------------------------------------------------

struct DateParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
};

/// Splits a date serial (time rounded to the nearest second).
DateParts splitDate(double serial);
/// DateSerial with the platform's month/day overflow rules; raises 5 when
/// the result is outside 100-01-01 .. 9999-12-31.
double dateSerial(int year, int month, int day);
double timeSerial(int hour, int minute, int second);
/// Weekday 1..7 with Sunday = 1 (the platform's default first day).
int weekday(double serial);
/// Locale's weekday name for 1..7 (Sunday = 1), full or abbreviated.
std::u16string weekdayName(int weekday, bool abbreviate, const Locale& loc);
std::u16string monthName(int month, bool abbreviate, const Locale& loc);

}  // namespace korvex::vb
