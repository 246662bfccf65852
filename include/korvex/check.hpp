// Reading a formula for its mistakes without running it (library
// korvex_check): unclosed strings, unknown or misspelled statements, blocks
// left open, full-width punctuation, unknown functions and wrong argument
// counts, names read but never given a value, literals that cannot work
// where they stand. Nothing here runs a line or touches a database.
//
//   korvex::CheckSettings settings;
//   settings.fields = {u"工号", u"年", u"月"};  // the record's fields, if known
//   for (const korvex::CheckFinding& f : korvex::checkScript(text, settings)) ...
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex {

enum class CheckSeverity { Error, Warning };

/// One mistake found: where (line and column from 1, the column counted in
/// characters of the line as written), how bad, a stable code for tools
/// and a message for users.
struct CheckFinding {
  int line = 0;
  int column = 0;
  CheckSeverity severity = CheckSeverity::Error;
  std::string code;
  std::u16string message;
};

struct CheckSettings {
  /// The current record's field names (any case): names a formula may read
  /// without assigning them.
  std::vector<std::u16string> fields;
};

/// The lines of a script as the engine splits them: CR LF, a lone CR and a
/// lone LF each end a line.
std::vector<std::u16string_view> scriptLines(std::u16string_view text);

/// The findings of a script, ordered by line and column.
std::vector<CheckFinding> checkScript(std::u16string_view text, const CheckSettings& settings);

}  // namespace korvex
