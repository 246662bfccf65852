// The command line of the korvex command.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

/// How a script's bytes are read: Auto is UTF-8 unless they are no UTF-8
/// but read as the Chinese code page.
enum class Encoding { Auto, Utf8, Gbk };

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
  Encoding encoding = Encoding::Auto;
  std::string db;                     // --db: the database file, empty for none
  std::optional<std::string> record;  // --record: the SQL of the current record
  bool traceSql = false;
  bool dryRun = false;   // --dry-run: the run's database writes are rolled back
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
  std::string database;                // --db: an existing SQLite file
  std::string record;                  // --record: the query giving the rows
  std::vector<Preset> presets;         // --set, in command-line order
  unsigned jobs = 1;                   // --jobs: threads computing rows
  bool dryRun = false;                 // --dry-run: compute, write nothing
  bool json = false;                   // --json: the summary as one JSON line
  bool reuse = true;                   // off with --no-reuse: every statement runs
  Encoding encoding = Encoding::Auto;  // --encoding: how the script's bytes are read
  std::string locale = "zh-CN";        // --locale
};

struct CommandLine {
  enum class Action { Help, Version, Run, Batch, Error };
  Action action = Action::Error;
  std::string_view helpText;  // Action::Help: one command's help; empty: the general one
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
/// The texts of `korvex run --help` and `korvex batch --help`.
std::string_view runUsageText() noexcept;
std::string_view batchUsageText() noexcept;
/// The line `korvex --version` prints: "korvex VERSION\n".
std::string_view versionText() noexcept;

}  // namespace korvex::cli
