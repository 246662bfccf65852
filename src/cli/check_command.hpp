// `korvex check [--json] [--db PATH --record SQL] FILE...`: reads formulas
// for their mistakes without running them.
#pragma once

#include <iosfwd>
#include <span>
#include <string_view>

namespace korvex::cli {

/// Runs the subcommand on the arguments after "check"; returns the exit
/// status: 0 no findings, 1 findings, 2 usage error or an unreadable file.
int runCheck(std::span<const std::string_view> args, std::ostream& out, std::ostream& err);

}  // namespace korvex::cli
