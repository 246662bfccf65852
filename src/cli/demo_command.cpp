#include "demo_command.hpp"

#include <charconv>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "demo_database.hpp"
#include "demo_server.hpp"
#include "korvex/batch.hpp"
#include "korvex/system_error.hpp"

namespace korvex::cli {
namespace {

constexpr std::string_view kDemoUsage =
    "用法: korvex demo PATH [--employees N] [--months M] [--seed S] [--force]\n"
    "在新文件 PATH 中建立演示用的工资数据库 (SQLite)。\n"
    "  --force         PATH 已存在时替换它 (否则不覆盖)\n"
    "  --employees N   员工人数, 1 到 1000000 (默认 200)\n"
    "  --months M      月份数, 从 2025年1月 起, 1 到 120 (默认 3)\n"
    "  --seed S        随机种子, 同一种子得到同样的数据 (默认 1)\n";

template <class T>
std::optional<T> number(std::string_view text, T lo, T hi) {
  T value{};
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value < lo || value > hi) {
    return std::nullopt;
  }
  return value;
}

int usageError(std::ostream& err, const std::string& message) {
  err << "korvex demo: " << message << "\n" << kDemoUsage;
  return 2;
}

}  // namespace

int runDemo(std::span<const std::string_view> args, std::ostream& out, std::ostream& err) {
  DemoSettings settings;
  std::optional<std::string> path;
  bool force = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    std::string_view arg = args[i];
    if (arg == "--help" || arg == "-h") {
      out << kDemoUsage;
      return 0;
    }
    if (arg == "--force") {
      force = true;
      continue;
    }
    if (!arg.starts_with("--")) {
      if (path) return usageError(err, "只能给一个文件路径");
      path = std::string(arg);
      continue;
    }
    std::optional<std::string_view> value;
    if (const auto eq = arg.find('='); eq != std::string_view::npos) {
      value = arg.substr(eq + 1);
      arg = arg.substr(0, eq);
    } else if (i + 1 < args.size()) {
      value = args[++i];
    }
    if (!value) return usageError(err, "选项 " + std::string(arg) + " 需要一个值");
    bool ok = true;
    if (arg == "--employees") {
      const auto n = number(*value, 1, 1000000);
      ok = n.has_value();
      if (n) settings.employees = *n;
    } else if (arg == "--months") {
      const auto n = number(*value, 1, 120);
      ok = n.has_value();
      if (n) settings.months = *n;
    } else if (arg == "--seed") {
      const auto n = number<std::uint64_t>(*value, 0, UINT64_MAX);
      ok = n.has_value();
      if (n) settings.seed = *n;
    } else {
      return usageError(err, "未知选项 " + std::string(arg));
    }
    if (!ok)
      return usageError(err, "选项 " + std::string(arg) + " 的值无效: " + std::string(*value));
  }
  if (!path) return usageError(err, "缺少数据库文件路径");
  std::string error;
  std::error_code ec;
  if (isServerDatabase(*path)) {
    const std::optional<DemoSummary> s = createDemoOnServer(*path, settings, force, error);
    if (!s) {
      err << "korvex demo: " << error << "\n";
      return 1;
    }
    out << "已在数据库服务器上建立演示数据: " << s->employees << " 名员工, " << s->months
        << " 个月, 计件记录 " << s->jobRows << " 条, 考核记录 " << s->assessmentRows
        << " 条; 待计算的工资表: " << s->lastWageTable << "\n";
    return 0;
  }
  const bool exists = std::filesystem::exists(*path, ec);
  if (exists && !force) {
    err << "korvex demo: 文件已存在, 不会覆盖 (用 --force 替换它): " << *path << "\n";
    return 2;
  }
  // A file replaced is built beside it first, so that a failure keeps the
  // old one.
  const std::string target = exists ? *path + ".korvex-new" : *path;
  if (exists) std::filesystem::remove(target, ec);
  const std::optional<DemoSummary> s = createDemoDatabase(target, settings, error);
  if (!s) {
    err << "korvex demo: " << error << "\n";
    return 1;
  }
  if (exists) {
    std::filesystem::rename(target, *path, ec);
    if (ec) {
      err << "korvex demo: 无法替换 " << *path << ": " << systemErrorText(ec.value()) << "\n";
      std::filesystem::remove(target, ec);
      return 1;
    }
    // The old file's journals would be taken for the new one's.
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
      std::filesystem::remove(*path + suffix, ec);
    }
  }
  out << "已建立演示数据库 " << *path << ": " << s->employees << " 名员工, " << s->months
      << " 个月, 计件记录 " << s->jobRows << " 条, 考核记录 " << s->assessmentRows
      << " 条; 待计算的工资表: " << s->lastWageTable << "\n";
  return 0;
}

}  // namespace korvex::cli
