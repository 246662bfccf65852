#include "options.hpp"

#include <optional>

#include "argument_cursor.hpp"
#include "korvex/locale.hpp"

namespace korvex::cli {

namespace {

// The general help is the lines of usage, then run's help and batch's.
constexpr std::string_view kUsageHead =
    "用法: korvex run [选项] SCRIPT\n"
    "      korvex demo PATH [--employees N] [--months M] [--seed S] [--force]\n"
    "      korvex batch SCRIPT... --db PATH --record SQL [--set NAME=EXPR] [--jobs N]\n"
    "                   [--dry-run] [--no-reuse] [--encoding ENC] [--locale L] [--json]\n"
    "      korvex check [--json] [--db PATH --record SQL] FILE...\n"
    "      korvex functions [NAME] [--json]\n"
    "      korvex --help | --version\n"
    "      korvex 命令 --help   (只显示该命令的说明)\n"
    "\n";
constexpr std::string_view kRunUsage = "用法: korvex run [选项] SCRIPT\n\n";
constexpr std::string_view kRunHelp =
    "运行一个工资公式脚本。SCRIPT 是脚本文件 (UTF-8, 可带字节顺序标记; 不是 UTF-8\n"
    "而能按 GBK/GB18030 读取的文件按其读取, 并在标准错误上说明), 或 - 表示从标准\n"
    "输入读取。\n"
    "\n"
    "选项:\n"
    "  --set NAME=EXPR    运行前把变量 NAME 设为表达式 EXPR 的值 (可重复, 依次执行),\n"
    "                     例如 --set A=5, --set 'S=\"abc\"', --set D=#2005-03-01#,\n"
    "                     --set N=NULL\n"
    "  --locale LOCALE    区域设置: zh-CN (默认) 或 en-US\n"
    "  --answer TEXT      下一个输入框的回答 (可重复); 回答用完后的输入框视为取消。\n"
    "                     不给 --answer 时, 控制台运行从标准输入读取回答\n"
    "  --json             把运行结果作为一个 JSON 对象输出到标准输出\n"
    "                     (消息框只记录, 不显示)\n"
    "  --encoding ENC     脚本编码: utf-8 或 gbk (也可写 gb2312, cp936, gb18030);\n"
    "                     不给时自动判断\n"
    "  --db PATH          打开 SQLite 数据库文件 PATH (必须已存在), 作为宿主对象\n"
    "                     Parent 的成员 \"Connect\" 交给脚本\n"
    "  --record SQL       当前记录 RecordSet 为 SQL 在该数据库上的结果 (第一行为\n"
    "                     当前行; 给字段赋值写回数据库); 需要 --db。查询没有返回行\n"
    "                     时不运行 (退出状态 2)。JSON 结果在 \"messages\" 之后加\n"
    "                     \"fields\": 脚本赋值过的字段及其值\n"
    "  --dry-run          试运行: 脚本和字段赋值对数据库的修改在运行后全部回滚;\n"
    "                     工作簿只写到 --save 给出的文件\n"
    "  --trace-sql        JSON 结果在 \"messages\" (和 \"fields\") 之后加 \"sql\":\n"
    "                     运行中发给数据库的每一条 SQL 文本, 按顺序, 原样\n"
    "  --workbook PATH    把 .xlsx 工作簿 PATH 作为 ExcelBook (GETCELL, SETCELL,\n"
    "                     SetCellFormula 使用); 文件不存在时新建, 含一张空表 Sheet1\n"
    "  --sheet N|NAME     活动工作表 (ActiveExcelSheet): 序号 (从 1 起) 或名称\n"
    "  --save PATH        写过单元格后把工作簿保存到 PATH, 而不是写回原文件\n"
    "  -h, --help         显示本说明\n"
    "\n"
    "运行后若写过单元格 (运行出错时也一样), 工作簿即被保存。一次运行对数据库的\n"
    "修改在同一个事务中: 运行成功才提交, 出错时数据库保持原样。\n"
    "\n"
    "退出状态: 0 脚本运行无错误; 1 运行出错 (或无法提交); 2 用法错误, 脚本或\n"
    "工作簿无法读取, 或工作簿无法保存。\n";
constexpr std::string_view kBatchUsage =
    "用法: korvex batch SCRIPT... --db PATH --record SQL [--set NAME=EXPR] [--jobs N]\n"
    "                   [--dry-run] [--no-reuse] [--encoding ENC] [--locale L] [--json]\n";
constexpr std::string_view kBatchHelp =
    "\n"
    "korvex batch 对 --record 查询结果的每一行运行一次脚本 (多个脚本文件按顺序\n"
    "连成一个; 该行为当前记录),\n"
    "把字段赋值写回数据库; 整批写入在同一个事务中, 中断时数据库保持原样。\n"
    "  --db PATH          SQLite 数据库文件 (必须已存在)\n"
    "  --record SQL       给出各行的查询\n"
    "  --set NAME=EXPR    批处理开始前计算一次, 每行运行前设为变量 (可重复)\n"
    "  --jobs N           用 N 个线程计算各行 (默认 1); 结果与 N 无关\n"
    "  --dry-run          只计算, 不写入数据库\n"
    "  --no-reuse         每条 SQL 都发给数据库 (默认: 各行相同的只读查询共用已读的结果)\n"
    "  --encoding ENC     脚本编码, 同 korvex run\n"
    "  --locale LOCALE    区域设置, 同 korvex run\n"
    "  --json             把汇总作为一个 JSON 对象输出到标准输出\n"
    "退出状态: 0 每行都成功; 1 有行失败 (或提交失败); 2 用法错误; 130 被中断。\n";
// The commands that only read: told in the general help.
constexpr std::string_view kReadingHelp =
    "\n"
    "korvex check 不运行脚本, 只读出其中的错误 (未闭合的字符串和块, 拼错的语句,\n"
    "全角标点, 未知的函数, 参数个数, 没有赋值的名称, ...), 按文件和行列出。\n"
    "  --db PATH --record SQL  记录的字段 (只读取查询的列名) 可以不赋值就读\n"
    "  --json             把全部发现作为一个 JSON 数组输出\n"
    "退出状态: 0 没有发现; 1 有发现; 2 用法错误或文件无法读取。\n"
    "\n"
    "korvex functions 列出全部内置函数的用法、结果和说明; 给出函数名 NAME 时\n"
    "显示该函数的全部条目 (参数、可能的错误、工资函数发出的 SQL); --json 输出 JSON。\n";

std::string_view trimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

struct Parser : ArgumentCursor {
  bool option(std::string_view name, std::optional<std::string_view> inlineValue) {
    RunOptions& run = result.run;
    if (name == "--json") return flag(name, inlineValue, run.json);
    if (name == "--trace-sql") return flag(name, inlineValue, run.traceSql);
    if (name == "--dry-run") return flag(name, inlineValue, run.dryRun);
    if (name == "--db" || name == "--record") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      if (name == "--db") {
        if (v->empty()) return fail("选项 --db 需要一个数据库文件");
        run.db = std::string(*v);
      } else {
        run.record = std::string(*v);
      }
      return true;
    }
    if (name == "--set") return preset(name, inlineValue, run.presets);
    if (name == "--locale") return locale(name, inlineValue, run.locale);
    if (name == "--answer") {
      const auto v = value(name, inlineValue);
      if (!v) return false;
      run.answers.emplace_back(*v);
      run.answersGiven = true;
      return true;
    }
    if (name == "--encoding") return encoding(name, inlineValue, run.encoding);
    if (name == "--workbook") return text(name, inlineValue, run.workbook);
    if (name == "--sheet") return text(name, inlineValue, run.sheet);
    if (name == "--save") return text(name, inlineValue, run.save);
    return fail("未知的选项 '" + std::string(name) + "'");
  }

  void parse() {
    if (args.empty()) {
      fail("缺少命令");
      return;
    }
    const std::string_view command = args[next++];
    if (command == "--help" || command == "-h" || command == "help") {
      result.action = CommandLine::Action::Help;
      return;
    }
    if (command == "--version" || command == "-V") {
      result.action = CommandLine::Action::Version;
      return;
    }
    if (command == "batch") {
      result = parseBatchArguments(args.subspan(next));
      return;
    }
    if (command != "run") {
      fail("未知的命令 '" + std::string(command) + "'");
      return;
    }
    result.action = CommandLine::Action::Run;
    const RunOptions& run = result.run;
    if (!walk(result.run.script, [this](auto name, auto v) { return option(name, v); })) {
      if (result.action == CommandLine::Action::Help) result.helpText = runUsageText();
      return;
    }
    if (run.record && run.db.empty()) {
      fail("选项 --record 需要 --db");
    } else if (run.workbook.empty() && !run.sheet.empty()) {
      fail("--sheet 需要同时给出 --workbook");
    } else if (run.workbook.empty() && !run.save.empty()) {
      fail("--save 需要同时给出 --workbook");
    }
  }
};

}  // namespace

std::optional<Preset> parsePreset(std::string_view text) {
  const auto eq = text.find('=');
  if (eq == std::string_view::npos) return std::nullopt;
  const std::string_view name = trimBlanks(text.substr(0, eq));
  if (name.empty()) return std::nullopt;
  return Preset{std::string(name), std::string(text.substr(eq + 1))};
}

CommandLine parseCommandLine(std::span<const std::string_view> args) {
  Parser p{{args, 0, {}}};
  p.parse();
  return std::move(p.result);
}

std::string_view usageText() noexcept {
  static const std::string text = std::string(kUsageHead) + std::string(kRunHelp) +
                                  std::string(kBatchHelp) + std::string(kReadingHelp);
  return text;
}

std::string_view runUsageText() noexcept {
  static const std::string text = std::string(kRunUsage) + std::string(kRunHelp);
  return text;
}

std::string_view batchUsageText() noexcept {
  static const std::string text = std::string(kBatchUsage) + std::string(kBatchHelp);
  return text;
}

std::string_view versionText() noexcept { return "korvex " KORVEX_VERSION "\n"; }

}  // namespace korvex::cli
