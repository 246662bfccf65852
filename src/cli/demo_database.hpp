// The demo payroll database: a new SQLite file with the tables the wage
// functions read (employees, departments, piece-work, assessments, work
// groups, products and their processes, monthly wage tables) and the
// work-group procedure, filled with made-up but plausible data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korvex::cli {

struct DemoSettings {
  int employees = 200;
  int months = 3;  // consecutive months from firstYear/firstMonth
  std::uint64_t seed = 1;
  int firstYear = 2025;
  int firstMonth = 1;
};

struct DemoSummary {
  int employees = 0;
  int months = 0;
  long jobRows = 0;
  long assessmentRows = 0;
  std::string lastWageTable;  // the open month, whose computed items are 0
};

/// Writes the database into a file that must not exist yet. The same
/// settings always give the same contents. nullopt, with a message for the
/// user in `error`, when it cannot; a failed run leaves no file behind.
std::optional<DemoSummary> createDemoDatabase(const std::string& path, const DemoSettings& settings,
                                              std::string& error);

}  // namespace korvex::cli
