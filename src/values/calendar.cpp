#include "values/calendar.hpp"

#include <cmath>

namespace korvex::vb {

namespace {

// Day number of 1899-12-30 counted from 1970-01-01 in the civil-from-days
// algorithm's epoch.
constexpr std::int64_t kEpochShift = 25569;

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's
// era-based algorithm; exact for all 64-bit-representable years).
std::int64_t unixDays(std::int64_t y, unsigned m, unsigned d) noexcept {
  y -= m <= 2 ? 1 : 0;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

}  // namespace

bool isLeapYear(int year) noexcept { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) noexcept {
  static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

std::int64_t daysFromCivil(int year, int month, int day) noexcept {
  return unixDays(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) + kEpochShift;
}

CivilDate civilFromDays(std::int64_t days) noexcept {
  const std::int64_t z = days - kEpochShift + 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2 ? 1 : 0);
  return CivilDate{static_cast<int>(y), static_cast<int>(m), static_cast<int>(d)};
}

int dayOfWeek(std::int64_t days) noexcept {
  // Serial 0 (1899-12-30) was a Saturday.
  const std::int64_t w = (days + 6) % 7;
  return static_cast<int>(w < 0 ? w + 7 : w);
}

std::int64_t serialDays(double serial) noexcept {
  // Far outside any date, but keeps the conversion defined for garbage.
  constexpr double kLimit = 1e12;
  if (!(serial > -kLimit)) return static_cast<std::int64_t>(-kLimit);
  if (!(serial < kLimit)) return static_cast<std::int64_t>(kLimit);
  return static_cast<std::int64_t>(std::trunc(serial));
}

int serialSeconds(double serial) noexcept {
  if (!std::isfinite(serial)) return 0;
  const double frac = std::fabs(serial - std::trunc(serial));
  return static_cast<int>(std::llround(frac * 86400.0));
}

DateTimeParts splitSerial(double serial) noexcept {
  std::int64_t days = serialDays(serial);
  int secs = serialSeconds(serial);
  if (secs >= 86400) {
    // Rounded up to the next midnight: one calendar day later, whichever
    // side of the epoch the serial lies on.
    secs -= 86400;
    ++days;
  }
  const CivilDate c = civilFromDays(days);
  return DateTimeParts{c.year, c.month, c.day, secs / 3600, secs / 60 % 60, secs % 60};
}

double timeFraction(int hour, int minute, int second) noexcept {
  return (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
}

double combineSerial(std::int64_t days, double time) noexcept {
  const auto d = static_cast<double>(days);
  return days >= 0 ? d + time : d - time;
}

double serialFromParts(const DateTimeParts& p) noexcept {
  return combineSerial(daysFromCivil(p.year, p.month, p.day),
                       timeFraction(p.hour, p.minute, p.second));
}

bool isValidSerial(double serial) noexcept {
  // Below zero the fraction adds time to the day, so 100-01-01's times
  // reach down to (but not including) the serial one lower.
  return std::isfinite(serial) && serial > static_cast<double>(kMinDateDays - 1) &&
         serial < static_cast<double>(kMaxDateDays + 1);
}

}  // namespace korvex::vb
