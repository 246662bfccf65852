// Calendar arithmetic for date serials: proleptic Gregorian dates counted in
// days from 1899-12-30 (serial 0), the fraction being the time of day.
//
// Negative serials count their whole days backwards from 1899-12-30 while the
// fraction is still the (absolute) time of day: -1.25 is 1899-12-29 06:00.
// Valid dates run from 100-01-01 to 9999-12-31 23:59:59.
//
// Pure functions, no state, no exceptions.
#pragma once

#include <cstdint>

namespace korvex::vb {

/// Day numbers of 100-01-01 and 9999-12-31, the bounds of the valid range.
inline constexpr std::int64_t kMinDateDays = -657434;
inline constexpr std::int64_t kMaxDateDays = 2958465;

struct CivilDate {
  int year = 1899;
  int month = 12;  // 1..12
  int day = 30;    // 1..31
  friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

struct DateTimeParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
  friend bool operator==(const DateTimeParts&, const DateTimeParts&) = default;
};

bool isLeapYear(int year) noexcept;
/// 28..31; 0 for a month outside 1..12.
int daysInMonth(int year, int month) noexcept;

/// Day number (serial of midnight) of a civil date. Any int year/month/day
/// is accepted and computed arithmetically: month and day are expected in
/// range; callers that need overflow rules normalise first.
std::int64_t daysFromCivil(int year, int month, int day) noexcept;
/// Civil date of a day number (any 64-bit day count within +-2^40).
CivilDate civilFromDays(std::int64_t days) noexcept;

/// Day of the week of a day number: 0 = Sunday .. 6 = Saturday.
int dayOfWeek(std::int64_t days) noexcept;

/// Whole days of a serial: truncation toward zero (the date part). Values
/// beyond +-1e12 (and NaN) are clamped so the result stays defined.
std::int64_t serialDays(double serial) noexcept;
/// Seconds into the day (0..86400) of a serial: |fraction| rounded to the
/// nearest second. 86400 means the time rounded up to the next midnight.
int serialSeconds(double serial) noexcept;

/// Splits a serial into date and time, the time rounded to the nearest
/// second (a time rounding up to midnight moves to the next day).
DateTimeParts splitSerial(double serial) noexcept;

/// The serial of a civil date and time of day (fields in range).
double serialFromParts(const DateTimeParts& p) noexcept;
/// The serial of a time of day alone (0 <= result < 1 for fields in range).
double timeFraction(int hour, int minute, int second) noexcept;
/// Combines a day number and a time fraction (0 <= time < 1) the way the
/// platform stores them: days + time for days >= 0, days - time below.
double combineSerial(std::int64_t days, double time) noexcept;

/// True when the serial is a date in 100-01-01 .. 9999-12-31 (any time).
bool isValidSerial(double serial) noexcept;

}  // namespace korvex::vb
