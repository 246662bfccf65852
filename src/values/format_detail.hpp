// Internals shared by the Format and rounding units: decimal digit strings,
// section splitting and the per-kind formatters.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/locale.hpp"
#include "korvex/value.hpp"

namespace korvex::vb::detail {

/// A non-negative number as at most 15 significant decimal digits: the value
/// is 0.<digits> * 10^pointPos, so pointPos digits stand before the point.
/// Zero has no digits. Working on these digits (not on the binary double)
/// makes 1.005 round like the decimal it was written as.
struct DecimalDigits {
  std::string digits;  // '0'..'9', no leading or trailing zeros
  int pointPos = 0;

  bool isZero() const noexcept { return digits.empty(); }
  /// The digit at a position counted from the point (0 = first digit after
  /// the point's left side, i.e. index into the digit string shifted).
  char digitAt(int index) const noexcept {
    return index >= 0 && index < static_cast<int>(digits.size())
               ? digits[static_cast<std::size_t>(index)]
               : '0';
  }
};

enum class Rounding { HalfUp, HalfEven };

/// |x| as decimal digits (x finite).
DecimalDigits toDecimalDigits(double x);
/// Rounds to `decimals` places after the point (may be negative).
void roundDigits(DecimalDigits& d, int decimals, Rounding mode);
double fromDecimalDigits(const DecimalDigits& d, bool negative);

/// Splits a format at the semicolons outside quotes and backslash escapes.
std::vector<std::u16string_view> splitSections(std::u16string_view fmt);

/// Reads the literal that starts at `i` if it is a quoted text or a backslash
/// escape: appends it to `out`, advances `i` past it and returns true.
bool takeQuotedOrEscaped(std::u16string_view fmt, std::size_t& i, std::u16string& out);

enum class FormatKind { Number, Date, String };
/// What a user-defined format formats: digit placeholders make a number
/// format, date/time tokens a date format, @ and & a string format.
/// nullopt when the format has none of them (literals only).
std::optional<FormatKind> classifyFormat(std::u16string_view fmt);

/// User-defined number format over all its sections. `isNull` selects the
/// fourth section (empty text when there is none).
std::u16string formatNumber(double x, bool isNull, std::u16string_view fmt, const Locale& loc);
/// One user-defined date/time section applied to a serial.
std::u16string formatDate(double serial, std::u16string_view fmt, const Locale& loc);
/// User-defined string format; the second section serves "" and Null.
std::u16string formatString(std::u16string_view s, bool isNull, std::u16string_view fmt);
/// The named formats ("Fixed", "Short Date", ...); nullopt for other text.
std::optional<std::u16string> formatNamed(const Value& v, std::u16string_view name,
                                          const Locale& loc);

/// The value as a number for a number format: numbers, Booleans, Dates
/// (their serial), Empty (0) and numeric strings; nullopt otherwise.
std::optional<double> numericValue(const Value& v, const Locale& loc);
/// The value as a date serial for a date format: Dates, numbers, Booleans,
/// Empty and strings that read as dates or numbers; nullopt otherwise.
std::optional<double> dateValue(const Value& v, const Locale& loc);

void appendInt(std::u16string& out, long long n, int minDigits = 1);

}  // namespace korvex::vb::detail
