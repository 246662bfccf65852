// The named formats: "General Number", "Currency", "Fixed", ..., "Short Time".
#include <array>

#include "values/calendar.hpp"
#include "values/date_text.hpp"
#include "values/format_detail.hpp"
#include "values/ops.hpp"

namespace korvex::vb::detail {

namespace {

enum class Named : std::uint8_t {
  GeneralNumber,
  Currency,
  NumberPattern,  // a user-defined number format
  YesNo,
  GeneralDate,
  LocalePicture,  // one of the locale's pictures
  DatePattern,    // a user-defined date format
  MediumDate,     // depends on the language version
};

// Which locale picture a LocalePicture entry means.
enum class Picture : std::uint8_t { None, ShortDate, LongDate, LongTime };

struct NamedFormat {
  std::u16string_view name;
  Named kind;
  std::u16string_view pattern;  // NumberPattern/DatePattern; "Yes/No" words
  Picture picture = Picture::None;
};

constexpr std::array<NamedFormat, 16> kNamed{{
    {u"General Number", Named::GeneralNumber, u""},
    {u"Currency", Named::Currency, u"#,##0.00"},
    {u"Fixed", Named::NumberPattern, u"0.00"},
    {u"Standard", Named::NumberPattern, u"#,##0.00"},
    {u"Percent", Named::NumberPattern, u"0.00%"},
    {u"Scientific", Named::NumberPattern, u"0.00E+00"},
    {u"Yes/No", Named::YesNo, u"Yes/No"},
    {u"True/False", Named::YesNo, u"True/False"},
    {u"On/Off", Named::YesNo, u"On/Off"},
    {u"General Date", Named::GeneralDate, u""},
    {u"Long Date", Named::LocalePicture, u"", Picture::LongDate},
    {u"Medium Date", Named::MediumDate, u""},
    {u"Short Date", Named::LocalePicture, u"", Picture::ShortDate},
    {u"Long Time", Named::LocalePicture, u"", Picture::LongTime},
    {u"Medium Time", Named::DatePattern, u"hh:nn AMPM"},
    {u"Short Time", Named::DatePattern, u"hh:nn"},
}};

// The medium date is no regional setting: it follows the language version,
// day-month-year with the month's abbreviation in English, a two-digit
// year-month-day in Chinese.
std::u16string_view mediumDatePattern(const Locale& loc) {
  return loc.name == u"zh-CN" ? u"yy-mm-dd" : u"dd-mmm-yy";
}

std::u16string_view pictureOf(Picture p, const Locale& loc) {
  switch (p) {
    case Picture::ShortDate:
      return loc.shortDate;
    case Picture::LongDate:
      return loc.longDate;
    default:
      return loc.longTime;
  }
}

std::u16string currencyText(const SignedDigits& n, std::u16string_view pattern, const Locale& loc) {
  const std::u16string amount =
      formatNumber(SignedDigits{n.magnitude, false, n.fromDouble}, false, pattern, loc);
  const std::u16string& shape = n.negative ? loc.currencyNegative : loc.currencyPositive;
  std::u16string out;
  out.reserve(shape.size() + amount.size());
  for (char16_t c : shape) {
    if (c == u'n') {
      out += amount;
    } else {
      out.push_back(c);
    }
  }
  return out;
}

bool isDateKind(Named k) {
  return k == Named::GeneralDate || k == Named::LocalePicture || k == Named::DatePattern ||
         k == Named::MediumDate;
}

}  // namespace

std::optional<std::u16string> formatNamed(const Value& v, std::u16string_view name,
                                          const Locale& loc) {
  const NamedFormat* found = nullptr;
  for (const auto& entry : kNamed) {
    if (entry.name.size() == name.size() && matchesNoCase(name, 0, entry.name)) {
      found = &entry;
      break;
    }
  }
  if (found == nullptr) return std::nullopt;
  if (v.isNull()) return std::u16string();

  if (isDateKind(found->kind)) {
    const std::optional<double> serial = dateValue(v, loc);
    if (!serial) return toString(v, loc);
    if (!isValidSerial(*serial)) raise(kOverflow);
    switch (found->kind) {
      case Named::GeneralDate:
        return dateToString(*serial, loc);
      case Named::MediumDate:
        return formatDate(*serial, mediumDatePattern(loc), loc);
      case Named::LocalePicture:
        return renderDatePicture(pictureOf(found->picture, loc), splitSerial(*serial), loc);
      default:
        return formatDate(*serial, found->pattern, loc);
    }
  }

  const std::optional<SignedDigits> number = numberDigits(v, loc);
  if (!number) return toString(v, loc);  // text that is no number stays as it is
  switch (found->kind) {
    case Named::GeneralNumber:
      if (v.type() == VarType::Integer || v.type() == VarType::Long ||
          v.type() == VarType::Currency) {
        return toString(v, loc);
      }
      return doubleToString(*numericValue(v, loc), loc);
    case Named::Currency:
      return currencyText(*number, found->pattern, loc);
    case Named::YesNo: {
      const std::size_t slash = found->pattern.find(u'/');
      return std::u16string(!number->magnitude.isZero() ? found->pattern.substr(0, slash)
                                                        : found->pattern.substr(slash + 1));
    }
    default:
      return formatNumber(*number, false, found->pattern, loc);
  }
}

}  // namespace korvex::vb::detail
