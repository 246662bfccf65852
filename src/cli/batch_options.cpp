// The command line of `korvex batch`.
#include <charconv>

#include "argument_cursor.hpp"
#include "options.hpp"

namespace korvex::cli {

namespace {

// More threads than this only queue up behind the single writer.
constexpr unsigned kMaxJobs = 64;

struct BatchParser : ArgumentCursor {
  bool option(std::string_view name, std::optional<std::string_view> inlineValue) {
    BatchOptions& batch = result.batch;
    if (name == "--json") return flag(name, inlineValue, batch.json);
    if (name == "--dry-run") return flag(name, inlineValue, batch.dryRun);
    if (name == "--no-reuse") {
      bool off = false;
      if (!flag(name, inlineValue, off)) return false;
      batch.reuse = !off;
      return true;
    }
    if (name == "--db") return text(name, inlineValue, batch.database);
    if (name == "--record") return text(name, inlineValue, batch.record);
    if (name == "--set") return preset(name, inlineValue, batch.presets);
    if (name == "--encoding") return encoding(name, inlineValue, batch.encoding);
    if (name == "--locale") return locale(name, inlineValue, batch.locale);
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
    std::vector<std::string>& scripts = result.batch.scripts;
    const auto script = [&scripts](std::string_view arg) {
      scripts.emplace_back(arg);
      return true;
    };
    if (!walkAll(script, [this](auto name, auto v) { return option(name, v); })) {
      if (result.action == CommandLine::Action::Help) result.helpText = batchUsageText();
      return;
    }
    if (scripts.empty()) {
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
