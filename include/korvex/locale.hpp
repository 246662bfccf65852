// Locale: the regional settings that conversions and Format consult.
//
// A Locale is always passed explicitly; nothing in KORVEX reads the C
// library's global locale. Two locales are built in: zh-CN (the default) and
// en-US.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace korvex {

struct Locale {
  std::u16string name;  // "zh-CN", "en-US"
  char16_t decimalSeparator = u'.';
  char16_t thousandsSeparator = u',';
  int groupSize = 3;
  char16_t dateSeparator = u'/';
  char16_t timeSeparator = u':';

  // Currency: a pattern with "n" for the formatted absolute amount, e.g.
  // "¥n" / "¥-n" or "$n" / "($n)". Two decimals.
  std::u16string currencyPositive;
  std::u16string currencyNegative;

  // Date and time patterns in the platform's picture syntax (yyyy, M, MM, d,
  // dd, dddd, MMMM, H, HH, h, hh, mm, ss, tt).
  std::u16string shortDate;  // zh-CN "yyyy/M/d", en-US "M/d/yyyy"
  std::u16string longDate;   // zh-CN "yyyy年M月d日", en-US "dddd, MMMM d, yyyy"
  std::u16string longTime;   // zh-CN "H:mm:ss", en-US "h:mm:ss tt"
  std::u16string amDesignator;
  std::u16string pmDesignator;

  std::array<std::u16string, 12> monthNames;
  std::array<std::u16string, 12> monthAbbrevs;
  std::array<std::u16string, 7> dayNames;    // Sunday first
  std::array<std::u16string, 7> dayAbbrevs;  // Sunday first

  /// The built-in locales. References stay valid for the program's life.
  static const Locale& zhCN();
  static const Locale& enUS();
  /// "zh-CN" or "en-US" (case-insensitive); nullptr for anything else.
  static const Locale* byName(std::string_view name);
};

}  // namespace korvex
