// `korvex functions [NAME] [--json]`: the reference of the built-in
// functions, made from the function table (korvex/function_reference.hpp).
#pragma once

#include <iosfwd>
#include <span>
#include <string_view>

namespace korvex::cli {

/// Runs the subcommand on the arguments after "functions": without NAME
/// every function by family, with NAME (any of its names, any case) its
/// whole entry. Returns 0, or 2 for an unknown NAME (the nearest names are
/// suggested) or a usage error.
int runFunctions(std::span<const std::string_view> args, std::ostream& out, std::ostream& err);

}  // namespace korvex::cli
