// korvex: runs payroll scripts from the command line.
#include <csignal>
#include <iostream>
#include <new>
#include <string_view>
#include <vector>

#include "batch_command.hpp"
#include "check_command.hpp"
#include "demo_command.hpp"
#include "functions_command.hpp"
#include "options.hpp"
#include "run_command.hpp"

namespace {

int dispatch(int argc, char** argv) {
  using korvex::cli::CommandLine;
  // A reader that went away is a failed write to report, not a silent end.
  std::signal(SIGPIPE, SIG_IGN);
  // A file grown past the size limit is a failed write the saves clean up
  // after, not the end of the process.
  std::signal(SIGXFSZ, SIG_IGN);
  std::vector<std::string_view> args;
  for (int i = 1; i < argc; ++i) args.emplace_back(argv[i]);
  if (!args.empty() && args.front() == "demo") {
    return korvex::cli::runDemo(std::span(args).subspan(1), std::cout, std::cerr);
  }
  if (!args.empty() && args.front() == "check") {
    return korvex::cli::runCheck(std::span(args).subspan(1), std::cout, std::cerr);
  }
  if (!args.empty() && args.front() == "functions") {
    return korvex::cli::runFunctions(std::span(args).subspan(1), std::cout, std::cerr);
  }

  const CommandLine cmd = korvex::cli::parseCommandLine(args);
  switch (cmd.action) {
    case CommandLine::Action::Help:
      std::cout << (cmd.helpText.empty() ? korvex::cli::usageText() : cmd.helpText);
      return korvex::cli::kExitSuccess;
    case CommandLine::Action::Version:
      std::cout << korvex::cli::versionText();
      return korvex::cli::kExitSuccess;
    case CommandLine::Action::Run:
      return korvex::cli::runScript(cmd.run, std::cin, std::cout, std::cerr);
    case CommandLine::Action::Batch:
      return korvex::cli::runBatchCommand(cmd.batch, std::cin, std::cout, std::cerr);
    case CommandLine::Action::Error:
      break;
  }
  std::cerr << "korvex: " << cmd.error << "\n用 'korvex --help' 查看用法。\n";
  return korvex::cli::kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  // The library reports running out of memory as an error of its own; what
  // is left (a workbook or an outcome too large for the memory there is) is
  // reported here instead of aborting.
  try {
    return dispatch(argc, argv);
  } catch (const std::bad_alloc&) {
    std::cout.flush();
    std::cerr << "korvex: 内存不足\n";
    return korvex::cli::kExitUsage;
  }
}
