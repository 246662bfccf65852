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

/// `korvex batch`: the script once for every row of a query.
struct BatchOptions {
  /// Paths ("-": standard input), run in order as one script, as a month's
  /// wage items are kept one file each.
  std::vector<std::string> scripts;
  std::string database;         // --db: an existing SQLite file
  std::string record;           // --record: the query giving the rows
  std::vector<Preset> presets;  // --set, in command-line order
  unsigned jobs = 1;            // --jobs: threads computing rows
  bool dryRun = false;          // --dry-run: compute, write nothing
  bool json = false;            // --json: the summary as one JSON line
  bool reuse = true;            // off with --no-reuse: every statement runs
};

struct CommandLine {
  enum class Action { Help, Run, Batch, Error };
  Action action = Action::Error;
  RunOptions run;
  BatchOptions batch;
  std::string error;  // for Action::Error: what was wrong, one line
};

/// NAME=EXPR of --set; nullopt when NAME is missing.
std::optional<Preset> parsePreset(std::string_view text);

/// Parses the arguments after the program name.
CommandLine parseCommandLine(std::span<const std::string_view> args);

/// Parses the arguments after "batch": action Batch, Help or Error.
CommandLine parseBatchArguments(std::span<const std::string_view> args);

/// The text of `korvex --help`.
std::string_view usageText() noexcept;

}  // namespace korvex::cli
