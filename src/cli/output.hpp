// Writing what a command prints as its outcome: an outcome nobody can read
// (a full disk, a closed pipe) is no success, whichever command wrote it.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace korvex::cli {

/// Writes `text` and flushes. When the stream refuses, says so on `err`
/// ("无法写出运行结果" and the system's reason) and returns false.
bool writeOutcome(std::ostream& out, std::ostream& err, std::string_view text);

/// The text as a terminal may show it: control characters (line breaks
/// included) written as escapes ("\n", "\x1b"), so that what came from a
/// database or a script cannot move the cursor or clear the screen.
std::string printable(std::u16string_view text);

}  // namespace korvex::cli
