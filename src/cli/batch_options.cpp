// The command line of `korvex batch`.
#include <charconv>

#include "argument_cursor.hpp"
#include "options.hpp"

namespace korvex::cli {

namespace {

// More threads than this only queue up behind the single writer.
constexpr unsigned kMaxJobs = 64;

struct BatchParser : ArgumentCursor {
  bool flag(std::string_view name, std::optional<std::string_view> inlineValue, bool& target) {
    if (inlineValue) return fail("选项 " + std::string(name) + " 不带值");
    target = true;
    return true;
  }

  bool option(std::string_view arg) {
    std::string_view name = arg;
    std::optional<std::string_view> inlineValue;
    if (const auto eq = arg.find('='); eq != std::string_view::npos) {
      name = arg.substr(0, eq);
      inlineValue = arg.substr(eq + 1);
    }
    BatchOptions& batch = result.batch;
    if (name == "--help" || name == "-h") {
      result.action = CommandLine::Action::Help;
      return true;
    }
    if (name == "--json") return flag(name, inlineValue, batch.json);
    if (name == "--dry-run") return flag(name, inlineValue, batch.dryRun);
    if (name == "--db" || name == "--record") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      if (v->empty()) return fail("选项 " + std::string(name) + " 的值不能为空");
      (name == "--db" ? batch.database : batch.record) = std::string(*v);
      return true;
    }
    if (name == "--set") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      auto preset = parsePreset(*v);
      if (!preset) return fail("--set 需要 NAME=EXPR 的形式, 而不是 '" + std::string(*v) + "'");
      batch.presets.push_back(std::move(*preset));
      return true;
    }
    if (name == "--jobs") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      unsigned n = 0;
      const auto [end, ec] = std::from_chars(v->data(), v->data() + v->size(), n);
      if (ec != std::errc{} || end != v->data() + v->size() || n < 1 || n > kMaxJobs) {
        return fail("--jobs 需要 1 到 " + std::to_string(kMaxJobs) + " 之间的整数, 而不是 '" +
                    std::string(*v) + "'");
      }
      batch.jobs = n;
      return true;
    }
    return fail("未知的选项 '" + std::string(name) + "'");
  }

  void parse() {
    result.action = CommandLine::Action::Batch;
    bool optionsEnded = false;
    while (next < args.size()) {
      const std::string_view arg = args[next++];
      if (!optionsEnded && arg == "--") {
        optionsEnded = true;
        continue;
      }
      if (!optionsEnded && arg.size() > 1 && arg[0] == '-') {
        if (!option(arg) || result.action == CommandLine::Action::Help) return;
        continue;
      }
      if (!result.batch.script.empty()) {
        fail("给出了多个脚本 ('" + result.batch.script + "' 和 '" + std::string(arg) + "')");
        return;
      }
      result.batch.script = std::string(arg);
    }
    if (result.batch.script.empty()) {
      fail("缺少脚本文件");
    } else if (result.batch.database.empty()) {
      fail("korvex batch 需要 --db PATH");
    } else if (result.batch.record.empty()) {
      fail("korvex batch 需要 --record SQL");
    }
  }
};

}  // namespace

CommandLine parseBatchArguments(std::span<const std::string_view> args) {
  BatchParser p{{args, 0, {}}};
  p.parse();
  return std::move(p.result);
}

}  // namespace korvex::cli
