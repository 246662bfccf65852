// The demo payroll on a database server: the same tables and rows as the
// demo file (made in a temporary file first and copied over), with the
// work-group procedure as a server function.
#pragma once

#include <optional>
#include <string>

#include "demo_database.hpp"

namespace korvex::cli {

/// Creates the demo tables in the server's database `connection`; tables
/// of the demo there already are replaced only with `replace`. nullopt,
/// with a message in `error`, when it cannot; a failure changes nothing.
std::optional<DemoSummary> createDemoOnServer(const std::string& connection,
                                              const DemoSettings& settings, bool replace,
                                              std::string& error);

}  // namespace korvex::cli
