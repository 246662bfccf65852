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

/// A non-negative number as decimal digits: the value is
/// 0.<digits> * 10^pointPos, so pointPos digits stand before the point. Zero
/// has no digits.
struct DecimalDigits {
  std::string digits;  // '0'..'9', no leading or trailing zeros
  int pointPos = 0;

  bool isZero() const noexcept { return digits.empty(); }
  /// The digit at an index into the digit string; '0' outside it.
  char digitAt(int index) const noexcept {
    return index >= 0 && index < static_cast<int>(digits.size())
               ? digits[static_cast<std::size_t>(index)]
               : '0';
  }
};

/// Significant digits a Double shows at most, as in its string form.
inline constexpr int kDoubleDigits = 15;

/// The exact decimal value of |x| (x finite), to far more digits than a
/// Double holds; Format cuts it to kDoubleDigits significant digits before
/// its own rounding, so 0.075 (really 0.07499999...) shows as .08.
DecimalDigits exactDigits(double x);
/// Rounds half away from zero to `decimals` places after the point (may be
/// negative).
void roundHalfUp(DecimalDigits& d, int decimals);

/// Splits a format at the semicolons outside quotes and backslash escapes.
std::vector<std::u16string_view> splitSections(std::u16string_view fmt);

/// Reads the literal that starts at `i` if it is a quoted text or a backslash
/// escape: appends it to `out`, advances `i` past it and returns true.
bool takeQuotedOrEscaped(std::u16string_view fmt, std::size_t& i, std::u16string& out);

inline char16_t asciiLower(char16_t c) noexcept {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}
/// True when `word` stands at `at` in `s`, ignoring ASCII case.
bool matchesNoCase(std::u16string_view s, std::size_t at, std::u16string_view word) noexcept;
/// Length of the AM/PM token at `at` ("AM/PM" 5, "AMPM" 4, "A/P" 3, any
/// case); 0 when there is none.
std::size_t ampmTokenLength(std::u16string_view s, std::size_t at) noexcept;

enum class FormatKind { Number, Date, String };
/// What a user-defined format formats: digit placeholders make a number
/// format, date/time tokens a date format, @ and & a string format.
/// nullopt when the format has none of them (literals only).
std::optional<FormatKind> classifyFormat(std::u16string_view fmt);

/// A number with its sign, as formats see it.
struct SignedDigits {
  DecimalDigits magnitude;
  bool negative = false;
  bool fromDouble = false;  // shows at most kDoubleDigits significant digits
};
SignedDigits signedDigits(double x);
/// Exact digits of a Currency (all 19 of them, beyond a Double's 15).
SignedDigits signedDigits(Currency c);

/// User-defined number format over all its sections. `isNull` selects the
/// fourth section (empty text when there is none).
std::u16string formatNumber(const SignedDigits& n, bool isNull, std::u16string_view fmt,
                            const Locale& loc);
inline std::u16string formatNumber(double x, bool isNull, std::u16string_view fmt,
                                   const Locale& loc) {
  return formatNumber(signedDigits(x), isNull, fmt, loc);
}
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
/// numericValue as digits, exact for Currency.
std::optional<SignedDigits> numberDigits(const Value& v, const Locale& loc);
/// The value as a date serial for a date format: Dates, numbers, Booleans,
/// Empty and strings that read as dates or numbers; nullopt otherwise.
std::optional<double> dateValue(const Value& v, const Locale& loc);

void appendInt(std::u16string& out, long long n, int minDigits = 1);

}  // namespace korvex::vb::detail
