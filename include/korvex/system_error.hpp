// Why a file could not be opened, read or written, for messages to people:
// one wording for every host and library of the engine, so that the same
// failure reads the same wherever it is reported.
#pragma once

#include <string>

namespace korvex {

/// An errno value in Chinese for the usual causes (a missing file, no
/// access, a full disk, ...), in the system's own words otherwise.
std::string systemErrorText(int code);

}  // namespace korvex
