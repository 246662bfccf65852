// `korvex batch`: a script run for every row of a query on a database.
#pragma once

#include <iosfwd>

#include "options.hpp"
#include "run_command.hpp"  // the exit statuses

namespace korvex::cli {

/// Exit status of a batch stopped by a signal (Ctrl-C, kill): 128 + SIGINT.
inline constexpr int kExitInterrupted = 130;

/// Runs the batch the options describe, reports on `out` (the summary) and
/// `err` (progress on a terminal, usage errors). Returns the exit status:
/// 0 every row succeeded, 1 some failed or the commit failed, 2 a usage
/// error, kExitInterrupted when stopped.
int runBatchCommand(const BatchOptions& options, std::istream& in, std::ostream& out,
                    std::ostream& err);

}  // namespace korvex::cli
