// Variant conversions, arithmetic and comparison, with the platform's rules.
//
// Every function here may throw vb::RuntimeError (runtime_error.hpp) with the
// platform's number: 13 for a value that cannot be converted, 6 for an
// overflow, 11 for a division by zero, 94 for Null where a value is needed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"
#include "values/runtime_error.hpp"

namespace korvex::vb {

// ---- conversions -------------------------------------------------------

/// The value's string form (CStr). Empty gives "", Null raises 94, an Object
/// or Array raises 13.
std::u16string toString(const Value& v, const Locale& loc);
/// The string form of a Double: at most 15 significant digits, shortest form,
/// plain while it needs no more than 15 places on either side of the point
/// ("0.000056789"), else the exponent form ("1E+15", "5.6789E-12").
std::u16string doubleToString(double d, const Locale& loc);
std::u16string currencyToString(Currency c, const Locale& loc);
/// A date serial in the locale's short-date form, plus " " and the long
/// time when it has a time part; the time alone when the date part is 0.
std::u16string dateToString(double serial, const Locale& loc);

double toDouble(const Value& v, const Locale& loc);         // CDbl
std::int16_t toInteger(const Value& v, const Locale& loc);  // CInt, banker's rounding
std::int32_t toLong(const Value& v, const Locale& loc);     // CLng, banker's rounding
Currency toCurrency(const Value& v, const Locale& loc);     // CCur
double toDate(const Value& v, const Locale& loc);           // CDate, serial
bool toBoolean(const Value& v, const Locale& loc);          // CBool

/// Parses a numeric string (blanks, thousands separators, one decimal point,
/// exponent, &H / &O prefixes; a sign, the locale's currency symbol and
/// parentheses for a minus on either side of the digits). nullopt when it is
/// not a number.
std::optional<double> parseNumber(std::u16string_view s, const Locale& loc);
/// Parses a date string (locale forms, yyyy-mm-dd, m/d/yyyy, yyyy/m/d, each
/// with an optional time). nullopt when it is not a date.
std::optional<double> parseDate(std::u16string_view s, const Locale& loc);

/// IsNumeric: Empty and Booleans true, Dates false, "" false; never throws.
bool isNumeric(const Value& v, const Locale& loc) noexcept;
/// IsDate: Dates, and strings that parse as dates; never throws.
bool isDate(const Value& v, const Locale& loc) noexcept;

// ---- arithmetic (platform promotion rules) -----------------------------

Value add(const Value& l, const Value& r, const Locale& loc);  // + (strings concatenate)
Value subtract(const Value& l, const Value& r, const Locale& loc);
Value multiply(const Value& l, const Value& r, const Locale& loc);
Value divide(const Value& l, const Value& r, const Locale& loc);  // / gives a Double
Value power(const Value& l, const Value& r, const Locale& loc);   // ^ gives a Double
Value negate(const Value& v, const Locale& loc);
Value concat(const Value& l, const Value& r, const Locale& loc);  // & (Null as "")

// ---- comparison --------------------------------------------------------

enum class CompareOp { Less, LessEqual, Greater, GreaterEqual, Equal, NotEqual };

/// Variant comparison: numbers numerically, strings binary (case-sensitive),
/// a number against a string: the number is the lesser; Empty as 0 or "".
/// Returns Null when either side is Null, else a Boolean.
Value compare(CompareOp op, const Value& l, const Value& r, const Locale& loc);
/// -1, 0 or 1; nullopt when either side is Null.
std::optional<int> compareValues(const Value& l, const Value& r, const Locale& loc);

// ---- code page 936 (the ANSI code page) --------------------------------

/// Asc: the signed 16-bit ANSI code of the first character (a double-byte
/// GBK character gives its two-byte code as a negative number). Raises 5 for
/// an empty string.
std::int16_t ansiCode(std::u16string_view s);
/// Chr: the character with this ANSI code (0..255 or a two-byte GBK code,
/// given signed or unsigned). Raises 5 outside the code page.
std::u16string charFromAnsi(std::int32_t code);
/// True when the character is double-byte in the ANSI code page (its code
/// taken as signed 16 bits is negative) — the test for names in Chinese.
bool isDoubleByte(char16_t ch) noexcept;
/// GBK bytes <-> UTF-16, for files saved in GBK.
std::u16string decodeGbk(std::string_view bytes);

// ---- case, trimming ----------------------------------------------------

// Case mapping for ASCII, Latin-1 and Latin Extended-A, Greek, Cyrillic and
// the full-width Latin letters; other characters are left as they are.
std::u16string upperCase(std::u16string_view s);
std::u16string lowerCase(std::u16string_view s);

}  // namespace korvex::vb
