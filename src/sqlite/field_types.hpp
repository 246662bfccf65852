// The data-access field types and the conversion of stored values to and
// from script values.
//
// A column's type comes from its declared SQL type (DATE gives Dates, BIT
// Booleans, INT Longs, MONEY Currency, ...); a column without one (an
// expression such as sum or count) follows the stored value's own type.
// Dates are stored as ISO text "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"
#include "sqlite/backend.hpp"
#include "values/calendar.hpp"

namespace korvex::ds {

/// The field type of a declared SQL type; 0 when nothing is declared.
std::int32_t typeOfDeclared(std::string_view declared);
/// The field type a stored value has on its own (Long, Double, text, ...);
/// 0 for Null.
std::int32_t typeOfStored(const Value& stored);

/// The script value of a stored value (Null, Long, Double, String) in a
/// field of the given type.
Value fieldValue(std::int32_t type, Value stored);
/// The value to store for a script value written into a field of the given
/// type (0: by the value's own type). Throws vb::RuntimeError when the
/// value does not convert (text into a Date field, ...).
Value storedValue(std::int32_t type, const Value& v, const Locale& loc);

/// The script value of a stored value on its own: integers within a Long
/// as Longs, others as Doubles, text as Strings, binary data one character
/// per byte.
Value storedCell(SqlCell cell);
/// Settles the field types of a result whose columns hold the declared
/// type (0 for none) and whose rows hold storedCell values: declared
/// columns convert their values; an expression column takes the type of
/// its first value that is not Null, binary when `binary` says its first
/// stored value was (so that it is written back as it is stored).
void settleColumnTypes(ResultSet& result, const std::vector<std::optional<bool>>& binary);

/// Whether a value of a field of the given type (as read, or as storedValue
/// makes it) stands for exactly one stored number: a 64-bit integer beyond
/// 2^53 is only the nearest Double, whose neighbours it cannot tell apart.
bool exactIn(std::int32_t type, const Value& v);

/// The parameter a script value binds as: whole Doubles as integers.
SqlParameter parameterOf(const Value& v);
/// The parameter that writes a stored value (from storedValue) back into a
/// field of the given type as the column keeps it: binary data as a BLOB of
/// its bytes, whole numbers of an integer column as 64-bit integers.
SqlParameter writtenParameter(std::int32_t type, const Value& stored);

/// A date in one of the forms the payroll texts use: "03/01/2005",
/// "2005-3-1", "2005/03/01", each optionally followed by a blank and
/// "HH:MM" or "HH:MM:SS" (ISO text with a "T" too).
std::optional<vb::DateTimeParts> parseDateText(std::u16string_view text);
/// parseDateText of UTF-8 text. The stored forms "YYYY-MM-DD" and
/// "YYYY-MM-DD HH:MM:SS" are read straight from the bytes, without
/// converting the text; every other text goes through parseDateText.
std::optional<vb::DateTimeParts> parseDateUtf8(std::string_view text);
/// ISO text of a date serial: the time is left out when it is midnight.
std::u16string isoDateText(double serial);
std::u16string isoDateText(const vb::DateTimeParts& p);

}  // namespace korvex::ds
