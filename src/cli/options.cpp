#include "cli/options.hpp"

#include <optional>

#include "korvex/locale.hpp"

namespace korvex::cli {

namespace {

constexpr std::string_view kUsage =
    "Usage: korvex run [options] SCRIPT\n"
    "       korvex --help\n"
    "\n"
    "Runs a payroll script. SCRIPT is a file (UTF-8; a byte-order mark is\n"
    "skipped) or - for standard input.\n"
    "\n"
    "Options:\n"
    "  --set NAME=EXPR    pre-set variable NAME to the value of EXPR before the\n"
    "                     run (repeatable, applied in order), e.g. --set A=5,\n"
    "                     --set S=\"abc\", --set D=#2005-03-01#, --set N=NULL\n"
    "  --locale LOCALE    zh-CN (default) or en-US\n"
    "  --answer TEXT      the reply to the next input prompt (repeatable); a\n"
    "                     prompt beyond the given replies is cancelled. Without\n"
    "                     any --answer, console runs ask on standard input.\n"
    "  --json             print the outcome as one JSON object on standard\n"
    "                     output (message boxes are recorded, not shown)\n"
    "  --encoding ENC     utf-8 (default) or gbk\n"
    "  -h, --help         show this text\n"
    "\n"
    "Exit status: 0 when the script ran without error, 1 when it failed,\n"
    "2 for a usage error or an unreadable script.\n";

std::string_view trimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

struct Parser {
  std::span<const std::string_view> args;
  std::size_t next = 0;
  CommandLine result;

  bool fail(std::string message) {
    result.action = CommandLine::Action::Error;
    result.error = std::move(message);
    return false;
  }

  // The value of an option given as "--opt VALUE" or "--opt=VALUE".
  std::optional<std::string_view> value(std::string_view option,
                                        std::optional<std::string_view> inlineValue) {
    if (inlineValue) return inlineValue;
    if (next >= args.size()) {
      fail("option " + std::string(option) + " needs a value");
      return std::nullopt;
    }
    return args[next++];
  }

  bool option(std::string_view arg) {
    std::string_view name = arg;
    std::optional<std::string_view> inlineValue;
    if (const auto eq = arg.find('='); eq != std::string_view::npos) {
      name = arg.substr(0, eq);
      inlineValue = arg.substr(eq + 1);
    }
    RunOptions& run = result.run;
    if (name == "--help" || name == "-h") {
      result.action = CommandLine::Action::Help;
      return true;
    }
    if (name == "--json") {
      if (inlineValue) return fail("option --json takes no value");
      run.json = true;
      return true;
    }
    if (name == "--set") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      const auto eq = v->find('=');
      const std::string_view name =
          eq == std::string_view::npos ? "" : trimBlanks(v->substr(0, eq));
      if (name.empty()) {
        return fail("--set expects NAME=EXPR, got '" + std::string(*v) + "'");
      }
      run.presets.push_back({std::string(name), std::string(v->substr(eq + 1))});
      return true;
    }
    if (name == "--locale") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      const Locale* loc = Locale::byName(*v);
      if (loc == nullptr) {
        return fail("unknown locale '" + std::string(*v) + "' (use zh-CN or en-US)");
      }
      run.locale = std::string(*v);
      return true;
    }
    if (name == "--answer") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      run.answers.emplace_back(*v);
      run.answersGiven = true;
      return true;
    }
    if (name == "--encoding") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      std::string lower;
      for (char c : *v) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
      if (lower == "utf-8" || lower == "utf8") {
        run.encoding = Encoding::Utf8;
      } else if (lower == "gbk") {
        run.encoding = Encoding::Gbk;
      } else {
        return fail("unknown encoding '" + std::string(*v) + "' (use utf-8 or gbk)");
      }
      return true;
    }
    return fail("unknown option '" + std::string(name) + "'");
  }

  bool script(std::string_view arg) {
    if (!result.run.script.empty()) {
      return fail("more than one script given ('" + result.run.script + "' and '" +
                  std::string(arg) + "')");
    }
    result.run.script = std::string(arg);
    return true;
  }

  void parse() {
    if (args.empty()) {
      fail("no command given");
      return;
    }
    const std::string_view command = args[next++];
    if (command == "--help" || command == "-h" || command == "help") {
      result.action = CommandLine::Action::Help;
      return;
    }
    if (command != "run") {
      fail("unknown command '" + std::string(command) + "'");
      return;
    }
    result.action = CommandLine::Action::Run;
    bool optionsEnded = false;
    while (next < args.size()) {
      const std::string_view arg = args[next++];
      if (!optionsEnded && arg == "--") {
        optionsEnded = true;
        continue;
      }
      const bool isOption = !optionsEnded && arg.size() > 1 && arg[0] == '-';
      const bool ok = isOption ? option(arg) : script(arg);
      if (!ok) return;
      if (result.action == CommandLine::Action::Help) return;
    }
    if (result.run.script.empty()) fail("no script given");
  }
};

}  // namespace

CommandLine parseCommandLine(std::span<const std::string_view> args) {
  Parser p{args, 0, {}};
  p.parse();
  return std::move(p.result);
}

std::string_view usageText() noexcept { return kUsage; }

}  // namespace korvex::cli
