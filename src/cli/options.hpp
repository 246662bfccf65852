// The command line of the korvex command.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

enum class Encoding { Utf8, Gbk };

/// A pre-set variable: NAME=EXPR from --set.
struct Preset {
  std::string name;
  std::string expression;
  friend bool operator==(const Preset&, const Preset&) = default;
};

struct RunOptions {
  std::vector<Preset> presets;       // in command-line order
  std::string locale = "zh-CN";      // zh-CN or en-US
  std::vector<std::string> answers;  // replies to input prompts, in order
  bool answersGiven = false;         // at least one --answer appeared
  bool json = false;
  Encoding encoding = Encoding::Utf8;
  std::string db;                     // --db: the database file, empty for none
  std::optional<std::string> record;  // --record: the SQL of the current record
  bool traceSql = false;
  std::string script;    // a path, or "-" for standard input
  std::string workbook;  // --workbook: the .xlsx file offered as ExcelBook
  std::string sheet;     // --sheet: number or name of the active sheet
  std::string save;      // --save: where the workbook is written instead
};

struct CommandLine {
  enum class Action { Help, Run, Error };
  Action action = Action::Error;
  RunOptions run;
  std::string error;  // for Action::Error: what was wrong, one line
};

/// Parses the arguments after the program name.
CommandLine parseCommandLine(std::span<const std::string_view> args);

/// The text of `korvex --help`.
std::string_view usageText() noexcept;

}  // namespace korvex::cli
