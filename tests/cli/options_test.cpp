#include "cli/options.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace korvex::cli {
namespace {

CommandLine parse(std::initializer_list<std::string_view> args) {
  const std::vector<std::string_view> v(args);
  return parseCommandLine(v);
}

// Every form of help; each command's --help is its own; --version names
// the version.
TEST(Options, HelpAndVersion) {
  const struct {
    std::vector<std::string_view> args;
    std::string_view mentions, omits;
  } kCases[] = {
      {{"--help"}, "korvex run [选项] SCRIPT", ""},
      {{"-h"}, "--jobs", ""},
      {{"help"}, "--jobs", ""},
      {{"run", "--help"}, "--dry-run", "--jobs"},
      {{"run", "s.bas", "--help"}, "--dry-run", "--jobs"},
      {{"run", "x.bas", "-h"}, "--dry-run", "--jobs"},
      {{"batch", "-h"}, "--jobs", "--answer"},
      {{"batch", "--help"}, "--jobs", "--answer"},
  };
  for (const auto& c : kCases) {
    const CommandLine r = parseCommandLine(c.args);
    ASSERT_EQ(r.action, CommandLine::Action::Help) << c.args.front();
    const std::string_view text = r.helpText.empty() ? usageText() : r.helpText;
    EXPECT_NE(text.find(c.mentions), std::string_view::npos) << text;
    if (!c.omits.empty()) {
      EXPECT_EQ(text.find(c.omits), std::string_view::npos) << text;
    }
  }
  EXPECT_EQ(parse({"--version"}).action, CommandLine::Action::Version);
  EXPECT_EQ(versionText().rfind("korvex ", 0), 0u);
}

// The Chinese code page by any of its names, for run and batch alike.
TEST(Options, EncodingNames) {
  const struct {
    std::string_view name;
    Encoding encoding;
  } kCases[] = {{"gbk", Encoding::Gbk},     {"GB2312", Encoding::Gbk}, {"cp936", Encoding::Gbk},
                {"Gb18030", Encoding::Gbk}, {"UTF-8", Encoding::Utf8}, {"utf8", Encoding::Utf8}};
  for (const auto& c : kCases) {
    const CommandLine r =
        parseCommandLine(std::vector<std::string_view>{"run", "--encoding", c.name, "s.bas"});
    EXPECT_EQ(r.run.encoding, c.encoding) << c.name << r.error;
    const CommandLine b = parseCommandLine(std::vector<std::string_view>{
        "batch", "s.bas", "--db", "p", "--record", "q", "--encoding", c.name});
    EXPECT_EQ(b.batch.encoding, c.encoding) << c.name << b.error;
  }
}

TEST(Options, RunWithEveryOptionAndWithNone) {
  // clang-format off
  const CommandLine c =
      parse({"run", "--set", "A=5", "--set=S=\"a=b\"", "--set", " B = 1", "--locale", "en-US",
             "--answer", "one", "--answer=", "--json", "--encoding", "GBK", "--db", "pay.db",
             "--record=select 1", "--trace-sql", "script.bas", "--workbook", "w.xlsx", "--sheet=2",
             "--save", "o.xlsx", "--dry-run"});
  // clang-format on
  ASSERT_EQ(c.action, CommandLine::Action::Run) << c.error;
  const std::vector<Preset> presets{{"A", "5"}, {"S", "\"a=b\""}, {"B", " 1"}};
  EXPECT_EQ(c.run.presets, presets);
  EXPECT_EQ(c.run.locale, "en-US");
  EXPECT_EQ(c.run.answers, (std::vector<std::string>{"one", ""}));
  EXPECT_TRUE(c.run.answersGiven);
  EXPECT_TRUE(c.run.json);
  EXPECT_EQ(c.run.encoding, Encoding::Gbk);
  EXPECT_EQ(c.run.script, "script.bas");
  EXPECT_EQ(c.run.db, "pay.db");
  EXPECT_EQ(c.run.record, "select 1");
  EXPECT_TRUE(c.run.traceSql);
  EXPECT_EQ(c.run.workbook, "w.xlsx");
  EXPECT_EQ(c.run.sheet, "2");
  EXPECT_EQ(c.run.save, "o.xlsx");
  EXPECT_TRUE(c.run.dryRun);

  const CommandLine d = parse({"run", "s.bas"});
  ASSERT_EQ(d.action, CommandLine::Action::Run);
  EXPECT_TRUE(d.run.presets.empty());
  EXPECT_EQ(d.run.locale, "zh-CN");
  EXPECT_FALSE(d.run.answersGiven);
  EXPECT_FALSE(d.run.json);
  EXPECT_EQ(d.run.encoding, Encoding::Auto);
  EXPECT_FALSE(d.run.dryRun);
}

// Script, --db, --record, --dry-run and --json are parsed in the command's
// own tests (batch_command_test.cpp).
TEST(Options, Batch) {
  const CommandLine c = parse({"batch", "pay.bas", "more.bas", "--db=p.db", "--record", "q",
                               "--set", "M=3", "--jobs", "4", "--locale", "en-US"});
  ASSERT_EQ(c.action, CommandLine::Action::Batch) << c.error;
  EXPECT_EQ(c.batch.scripts, (std::vector<std::string>{"pay.bas", "more.bas"}));
  EXPECT_EQ(c.batch.locale, "en-US");
  EXPECT_EQ(c.batch.database, "p.db");
  EXPECT_EQ(c.batch.presets, (std::vector<Preset>{{"M", "3"}}));
  EXPECT_EQ(c.batch.jobs, 4u);
}

TEST(Options, ScriptArguments) {
  struct Case {
    std::vector<std::string_view> args;
    std::string script;
  };
  const Case cases[] = {
      {{"run", "-"}, "-"},                      // standard input
      {{"run", "--", "-odd.bas"}, "-odd.bas"},  // after "--" nothing is an option
      {{"run", "s.bas", "--json"}, "s.bas"},    // options may follow the script
  };
  for (const auto& c : cases) {
    const CommandLine r = parseCommandLine(c.args);
    ASSERT_EQ(r.action, CommandLine::Action::Run) << r.error;
    EXPECT_EQ(r.run.script, c.script);
  }
}

TEST(Options, UsageErrors) {
  struct Case {
    std::vector<std::string_view> args;
    const char* errorPart;
  };
  // clang-format off
  const Case cases[] = {
      {{}, "缺少命令"}, {{"walk", "s.bas"}, "未知的命令 'walk'"}, {{"run"}, "缺少脚本文件"},
      {{"run", "--json"}, "缺少脚本文件"}, {{"run", "a.bas", "b.bas"}, "给出了多个脚本"},
      {{"run", "--verbose", "s.bas"}, "未知的选项 '--verbose'"},
      {{"run", "s.bas", "--set"}, "--set 需要一个值"},
      {{"run", "--set", "A", "s.bas"}, "NAME=EXPR"}, {{"run", "--set", "=5", "s.bas"}, "NAME=EXPR"},
      {{"run", "--set", " =5", "s.bas"}, "NAME=EXPR"},
      {{"run", "--locale", "fr-FR", "s.bas"}, "未知的区域设置 'fr-FR'"},
      {{"run", "--encoding", "latin1", "s.bas"}, "未知的编码 'latin1'"},
      {{"run", "--json=yes", "s.bas"}, "--json 不带值"},
      {{"run", "s.bas", "--answer"}, "--answer 需要一个值"},
      {{"run", "--record", "select 1", "s.bas"}, "--record 需要 --db"},
      {{"run", "--db=", "s.bas"}, "--db 需要一个数据库文件"},
      {{"run", "--sheet", "x", "s.bas"}, "--workbook"}, {{"run", "--save", "x", "s.bas"}, "--workbook"},
      {{"batch", "s.bas", "--record", "q"}, "需要 --db PATH"},
      {{"batch", "s.bas", "--db", "p.db"}, "需要 --record SQL"},
      {{"batch", "--db", "p.db", "--record", "q"}, "缺少脚本文件"},
      {{"batch", "s.bas", "--db", "p", "--record", "q", "--jobs", "0"}, "--jobs 需要 1 到 64"},
      {{"batch", "s.bas", "--db", "p", "--record", "q", "--jobs", "2x"}, "--jobs 需要 1 到 64"},
      {{"batch", "s.bas", "--db", "p", "--record", "q", "--locale", "xx"}, "未知的区域设置 'xx'"},
      {{"batch", "s.bas", "--db", "p", "--record", "q", "--dry-run=1"}, "--dry-run 不带值"},
  };
  // clang-format on
  for (const auto& c : cases) {
    const CommandLine r = parseCommandLine(c.args);
    EXPECT_EQ(r.action, CommandLine::Action::Error);
    EXPECT_NE(r.error.find(c.errorPart), std::string::npos)
        << "error was '" << r.error << "', expected it to mention '" << c.errorPart << "'";
  }
}

}  // namespace
}  // namespace korvex::cli
