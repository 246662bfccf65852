// `korvex run`: reads a script, pre-sets variables, runs it and reports.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "options.hpp"

namespace korvex::cli {

/// Exit statuses of the command.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitScriptFailed = 1;
inline constexpr int kExitUsage = 2;

/// The script text from its raw bytes: UTF-8 with an optional byte-order
/// mark, or the Chinese code page (GBK, GB18030). Encoding::Auto reads
/// bytes that are no UTF-8 as that code page when they decode as such,
/// saying so in one line on `notes`. Line breaks are kept exactly as
/// written.
std::u16string decodeScript(std::string_view bytes, Encoding encoding,
                            std::ostream* notes = nullptr);

/// The bytes of a script file, or of `in` for "-"; nullopt with `error` set
/// (a Chinese one-line reason) when it cannot be read.
std::optional<std::string> readScriptBytes(const std::string& path, std::istream& in,
                                           std::string& error);

/// Runs the script the options name. `in` is standard input (the script for
/// "-", and console replies); `out` and `err` receive the report. Returns the
/// exit status.
int runScript(const RunOptions& options, std::istream& in, std::ostream& out, std::ostream& err);

}  // namespace korvex::cli
