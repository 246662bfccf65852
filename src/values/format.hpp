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
///
/// Number formats take a Double to its 15 significant digits first and then
/// round half away from zero (0.075, stored as 0.0749999..., shows as ".08"
/// with "#.##"; Round keeps its binary behaviour); numeric strings are
/// formatted as numbers, date strings as dates, and text that is neither
/// comes back unchanged. Null shows only through the fourth section of a
/// number format (the second of a string format). Raises 13 for objects and
/// arrays, 6 for a date format applied to a value outside the date range.
std::u16string format(const Value& v, std::u16string_view fmt, const Locale& loc);

/// Banker's rounding to `digits` decimals (Round(2.5) = 2, Round(3.5) = 4),
/// scaling in binary as the platform does: Round(2.675, 2) = 2.68 because
/// 2.675 * 100 is exactly 267.5; Round(1.005, 2) = 1 because 1.005 * 100 is
/// just below 100.5.
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

/// Splits a date serial (time rounded to the nearest second). Raises 6 for
/// a serial outside 100-01-01 .. 9999-12-31 (also weekday()).
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
