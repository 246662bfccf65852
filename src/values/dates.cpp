#include <cstdint>

#include "values/calendar.hpp"
#include "values/format.hpp"
#include "values/runtime_error.hpp"

namespace korvex::vb {

namespace {

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  const std::int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// A serial outside 100-01-01 .. 9999-12-31 is no date: the platform's
// overflow, as when such a number is converted to a date.
void requireValidSerial(double serial) {
  if (!isValidSerial(serial)) raise(kOverflow);
}

// The day number a serial falls on once its time is rounded to the second.
std::int64_t roundedDays(double serial) {
  requireValidSerial(serial);
  std::int64_t days = serialDays(serial);
  if (serialSeconds(serial) >= 86400) ++days;
  return days;
}

void requireDateRange(std::int64_t days) {
  if (days < kMinDateDays || days > kMaxDateDays) raise(kInvalidCall);
}

}  // namespace

DateParts splitDate(double serial) {
  requireValidSerial(serial);
  const DateTimeParts p = splitSerial(serial);
  return DateParts{p.year, p.month, p.day, p.hour, p.minute, p.second};
}

double dateSerial(int year, int month, int day) {
  // Two-digit years belong to the platform's window 1930..2029.
  std::int64_t y = year;
  if (y >= 0 && y <= 29) {
    y += 2000;
  } else if (y >= 30 && y <= 99) {
    y += 1900;
  }
  // Months beyond 1..12 move the year; days beyond the month move on from
  // its first day.
  const std::int64_t months = y * 12 + (static_cast<std::int64_t>(month) - 1);
  y = floorDiv(months, 12);
  const auto m = static_cast<int>(months - y * 12 + 1);
  if (y < -1000 || y > 11000) raise(kInvalidCall);
  const std::int64_t days =
      daysFromCivil(static_cast<int>(y), m, 1) + (static_cast<std::int64_t>(day) - 1);
  requireDateRange(days);
  return static_cast<double>(days);
}

double timeSerial(int hour, int minute, int second) {
  const std::int64_t total =
      static_cast<std::int64_t>(hour) * 3600 + static_cast<std::int64_t>(minute) * 60 + second;
  const std::int64_t days = floorDiv(total, 86400);
  requireDateRange(days);
  return combineSerial(days, static_cast<double>(total - days * 86400) / 86400.0);
}

int weekday(double serial) { return dayOfWeek(roundedDays(serial)) + 1; }

std::u16string weekdayName(int weekday, bool abbreviate, const Locale& loc) {
  if (weekday < 1 || weekday > 7) raise(kInvalidCall);
  const auto i = static_cast<std::size_t>(weekday - 1);
  return abbreviate ? loc.dayAbbrevs[i] : loc.dayNames[i];
}

std::u16string monthName(int month, bool abbreviate, const Locale& loc) {
  if (month < 1 || month > 12) raise(kInvalidCall);
  const auto i = static_cast<std::size_t>(month - 1);
  return abbreviate ? loc.monthAbbrevs[i] : loc.monthNames[i];
}

}  // namespace korvex::vb
