// Rendering a date/time in one of the locale's picture patterns
// (Locale::shortDate, longDate, longTime).
#pragma once

#include <string>
#include <string_view>

#include "korvex/locale.hpp"
#include "values/calendar.hpp"

namespace korvex::vb {

/// Renders `picture` for the given date and time. Recognised fields:
/// yyyy yy y (year), MMMM MMM MM M (month name, abbreviation, number),
/// dddd ddd dd d (day name, abbreviation, day), HH H (24-hour), hh h
/// (12-hour), mm m (minute), ss s (second), tt t (AM/PM designator, or its
/// first character); text in single quotes is copied without the quotes;
/// every other character is copied as it is.
std::u16string renderDatePicture(std::u16string_view picture, const DateTimeParts& p,
                                 const Locale& loc);

}  // namespace korvex::vb
