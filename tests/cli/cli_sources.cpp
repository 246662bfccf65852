// The command's units live in the korvex executable, not in the library, so
// the test program compiles them itself (everything but main).
#include "cli/json.cpp"         // NOLINT(bugprone-suspicious-include)
#include "cli/options.cpp"      // NOLINT(bugprone-suspicious-include)
#include "cli/run_command.cpp"  // NOLINT(bugprone-suspicious-include)
