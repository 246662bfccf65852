// JSON output of a script run: one line, keys in a fixed order, values in
// the same notation a JavaScript JSON.stringify would produce for them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvex/value.hpp"

namespace korvex::cli {

/// A quoted JSON string in UTF-8: '"' and '\' escaped, \b \f \n \r \t for
/// those controls, \u00XX for the other controls and \uDXXX for a lone
/// surrogate; everything else as UTF-8.
std::string jsonString(std::u16string_view text);

/// A finite Double as ECMAScript's Number::toString writes it: the shortest
/// digits that read back to the same double, plain decimal notation for
/// 1e-7 <= |x| < 1e21, exponent notation ("1e+21", "1.5e-7") outside;
/// -0 is "0". Non-finite values give the quoted strings "Infinity",
/// "-Infinity" and "NaN".
std::string jsonNumber(double x);

/// A Currency amount as an exact decimal number ("12.5", "-0.0001").
std::string jsonCurrency(Currency c);

/// A date serial as "YYYY-MM-DD HH:MM:SS" (unquoted).
std::string dateText(double serial);

/// {"type": T, "value": V}; an Array is {"type": "Array", "lbound": [...],
/// "value": [nested lists, first index outermost]} whose elements are values
/// of this same form.
std::string valueJson(const Value& v);

/// Everything the command reports about a finished run.
struct RunOutcome {
  std::int32_t errNum = 0;
  std::u16string errMsg;
  std::int32_t currentLine = 0;
  std::int32_t lineCount = 0;
  std::int32_t ifCount = 0;
  std::int32_t doCount = 0;
  std::int32_t flagCount = 0;
  std::vector<std::pair<std::u16string, Value>> variables;  // table order
  std::vector<std::u16string> messages;                     // order shown
  /// With --record: the record's fields the script assigned, in the order
  /// first assigned, each with its value afterwards.
  std::optional<std::vector<std::pair<std::u16string, Value>>> fields;
  std::optional<std::vector<std::u16string>> sql;  // with --trace-sql
};

/// The outcome as one JSON object on one line (no trailing newline).
std::string outcomeJson(const RunOutcome& outcome);

}  // namespace korvex::cli
