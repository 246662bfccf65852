// `korvex demo PATH [--employees N] [--months M] [--seed S] [--force]`: writes the demo
// payroll database.
#pragma once

#include <iosfwd>
#include <span>
#include <string_view>

namespace korvex::cli {

/// Runs the subcommand on the arguments after "demo"; returns the exit
/// status (0 done, 1 the database could not be written or replaced, 2 usage
/// error or an existing file without --force).
int runDemo(std::span<const std::string_view> args, std::ostream& out, std::ostream& err);

}  // namespace korvex::cli
