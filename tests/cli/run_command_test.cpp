// `korvex run` parsed and run as the command does: reading the script,
// pre-sets, console output and replies, the usage errors that run nothing,
// the stop prompt and the workbook options. Exit codes are written as numbers: they
// are what callers of the command see.
#include "cli/run_command.hpp"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/command_fixture.hpp"
#include "korvex/user_interface.hpp"
#include "workbook/workbook_fixture.hpp"

namespace korvex::cli {
namespace {

using korvex::testing::openBook;
using korvex::testing::read;
using korvex::testing::readFile;
using korvex::testing::ScratchDir;

// Line breaks are kept and a leading byte order mark skipped. Bytes that are
// no UTF-8 read as the Chinese code page when they decode as that, with a
// note; forced encodings and other bytes give no note.
TEST(DecodeScript, KeepsLinesAndReadsTheChineseCodePageWhenTheBytesAreNoUtf8) {
  const struct {
    std::string_view bytes;
    Encoding encoding;
    std::u16string text;
    std::string note;
  } kCases[] = {
      {"\xEF\xBB\xBF"
       "a\r\nb\rc\n\r",
       Encoding::Utf8, u"a\r\nb\rc\n\r", ""},
      {"a\xEF\xBB\xBF", Encoding::Utf8, u"a\uFEFF", ""},  // only a leading mark
      {"\xD6\xD0\xCE\xC4\r\n", Encoding::Gbk, u"中文\r\n", ""},
      {"", Encoding::Utf8, u"", ""},
      {"\xD6\xD0\xCE\xC4", Encoding::Auto, u"中文", "GBK"},
      {"\x81\x30\x81\x30\xD6\xD0", Encoding::Auto, u"\u0080中", "GB18030"},
      {"\xE4\xB8\xAD", Encoding::Auto, u"中", ""},            // UTF-8 stays UTF-8
      {"\xD6\xD0", Encoding::Utf8, u"\uFFFD\uFFFD", ""},      // forced
      {"\xE4\xB8\xAD", Encoding::Gbk, u"涓\uFFFD", ""},       // forced
      {"caf\xE9\r\n", Encoding::Auto, u"caf\uFFFD\r\n", ""},  // neither
  };
  for (const auto& c : kCases) {
    std::ostringstream notes;
    EXPECT_EQ(decodeScript(c.bytes, c.encoding, &notes), c.text) << c.bytes;
    EXPECT_EQ(notes.str(),
              c.note.empty() ? "" : "korvex: 脚本不是 UTF-8, 按 " + c.note + " 读取\n");
  }
}

using Answer = UserInterface::Answer;
using Buttons = UserInterface::Buttons;

TEST(ConsoleUserInterface, YesNoReadsOneReply) {
  struct Case {
    const char* input;
    Answer expected;
  };
  const Case cases[] = {
      {"n\n", Answer::No},     {"No\r\n", Answer::No}, {"  \xE5\x90\xA6 \n", Answer::No},
      {"y\n", Answer::Yes},    {"\n", Answer::Yes},    {"", Answer::Yes},  // end of input
      {"nope\n", Answer::Yes},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.input);
    std::ostringstream out;
    ConsoleUserInterface ui(in, out);
    EXPECT_EQ(ui.messageBox(u"stop?", Buttons::YesNo, u""), c.expected) << c.input;
    EXPECT_EQ(out.str().rfind("stop?", 0), 0u);
  }
}

// Each prompt reads the next line; an empty reply takes the default and the
// end of input cancels.
TEST(ConsoleUserInterface, InputBoxReadsALine) {
  struct Case {
    const char* input;
    std::vector<std::optional<std::u16string>> answers;
  };
  const Case cases[] = {
      {"abc\n", {u"abc"}},  {"\xE4\xB8\xAD\r\n", {u"中"}},          {"\n", {u"dflt"}},
      {"", {std::nullopt}}, {"1\n2\n", {u"1", u"2", std::nullopt}},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.input);
    std::ostringstream out;
    ConsoleUserInterface ui(in, out);
    for (const auto& expected : c.answers) {
      EXPECT_EQ(ui.inputBox(u"Amount", u"", u"dflt"), expected) << c.input;
    }
    EXPECT_NE(out.str().find("Amount"), std::string::npos);
  }
}

// `korvex run ARGS`, with `input` as standard input.
Outcome run(std::vector<std::string_view> args, const std::string& input = {},
            std::ostream* to = nullptr) {
  args.insert(args.begin(), "run");
  return korvex(args, input, to);
}

// A name set again moves to the end.
TEST(RunScript, PresetsAreEvaluatedInOrder) {
  const Outcome r = run({"--json", "--set", "A=1", "--set", "N=NULL", "--set", "s=\"abc\"", "--set",
                         "D=#2005-03-01#", "--set", "a=4 + 1", "-"},
                        "DIM x\r\nx = A + 1\r\n");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find(R"("variables": {"N": {"type": "Null", "value": null}, )"
                       R"("S": {"type": "String", "value": "abc"}, )"
                       R"("D": {"type": "Date", "value": "2005-03-01 00:00:00"}, )"
                       R"("A": {"type": "Double", "value": 5}, )"
                       R"("X": {"type": "Double", "value": 6}})"),
            std::string::npos)
      << r.out;
}

TEST(RunScript, ConsoleModePrintsMessagesAndTheError) {
  const Outcome r = run({"-"}, "MSGBOX \"工资 12\"\r\nRAISEERROR \"bad\"\r\nMSGBOX 2\r\n");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "\xE5\xB7\xA5\xE8\xB5\x84 12\n");
  EXPECT_EQ(r.err, "\xE9\x94\x99\xE8\xAF\xAF 2000: bad : \xE8\xA1\x8C\xE5\x8F\xB7 2\n");
}

// A pre-set that does not evaluate, a missing script, a directory that
// opens but whose read fails (no empty script), a workbook that is no
// workbook, a sheet it does not have: exit 2, nothing runs.
TEST(RunScript, UsageErrorsRunNothing) {
  ScratchDir dir;
  const std::string missing = dir.file("no/such/x.bas"), text = dir.file("text.xlsx"),
                    fresh = dir.file("fresh.xlsx");
  std::ofstream(text) << "plain text";
  const struct {
    std::vector<std::string_view> args;
    std::vector<std::string> errParts;
  } kCases[] = {
      {{"--set", "A=1+", "-"}, {"--set A=1+", "缺操作数"}},
      {{missing}, {"无法打开", "文件不存在"}},
      {{dir.path()}, {"无法读取", "是一个目录"}},
      {{"--workbook", text, "-"}, {"不是可读的 .xlsx 工作簿"}},
      {{"--workbook", fresh, "--sheet", "二月", "-"}, {"二月"}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.args.front());
    const Outcome r = run(c.args, "MSGBOX 1\r\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    for (const auto& part : c.errParts) EXPECT_NE(r.err.find(part), std::string::npos) << r.err;
  }
}

TEST(RunScript, AnOutcomeThatCannotBeWrittenIsNoSuccess) {
  FullStream full;
  const Outcome r = run({"--json", "-"}, "MSGBOX 1\r\n", &full);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("无法写出运行结果"), std::string::npos) << r.err;
}

TEST(RunScript, EndlessInputIsAnOverLongScript) {
  const Outcome r = run({"--json", "/dev/zero"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out.rfind(R"({"errNum": 6, "errMsg": "溢出",)", 0), 0u) << r.out;
}

// Reads what the child writes until `text` shows up (or a few seconds pass).
bool awaitOutput(int fd, const std::string& text) {
  std::string seen;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (seen.find(text) == std::string::npos && std::chrono::steady_clock::now() < end) {
    pollfd p{fd, POLLIN, 0};
    if (::poll(&p, 1, 100) <= 0) continue;
    char buf[256];
    const ssize_t n = ::read(fd, buf, sizeof buf);
    if (n <= 0) return false;
    seen.append(buf, static_cast<std::size_t>(n));
  }
  return seen.find(text) != std::string::npos;
}

TEST(RunScript, SecondInterruptEndsTheProcessAtTheStopPrompt) {
  ScratchDir dir;
  RunOptions o;
  o.script = dir.file("endless.bas");
  std::ofstream(o.script, std::ios::binary) << "MSGBOX \"go\"\r\nDO WHILE 1\r\nLOOP\r\n";
  int input[2], output[2];
  ASSERT_EQ(::pipe(input), 0);
  ASSERT_EQ(::pipe(output), 0);
  std::cout.flush();
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::dup2(input[0], STDIN_FILENO);
    ::dup2(output[1], STDOUT_FILENO);
    // The stop prompt waits on an input nobody writes to.
    std::ostringstream err;
    ::_exit(runScript(o, std::cin, std::cout, err));
  }
  ::close(output[1]);
  const bool running = awaitOutput(output[0], "go");
  ::kill(child, SIGINT);
  const bool prompted = running && awaitOutput(output[0], "确信终止程序吗?");
  ::kill(child, SIGINT);
  int status = 0;
  pid_t done = 0;
  for (int i = 0; i < 100 && done == 0; ++i) {
    done = ::waitpid(child, &status, WNOHANG);
    if (done == 0) ::usleep(50000);
  }
  if (done == 0) {
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
  }
  ::close(input[0]);
  ::close(input[1]);
  ::close(output[0]);
  EXPECT_TRUE(prompted);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
}

// One transaction per run: kept only when the run succeeds and is no dry
// run; a record query without rows runs nothing. On the file and on the
// server.
class RunDatabase : public testing::OnEachBackend {};
KORVEX_ON_BOTH_BACKENDS(RunDatabase);

TEST_P(RunDatabase, OnlyASucceedingRunChangesTheFile) {
  const std::string all = "select * from pay order by code";
  const struct {
    const char* name;
    std::vector<std::string_view> options;
    std::string record;
    const char* script;
    int status;
    std::string wages;  // empty: the file keeps its bytes
    const char* said;   // in the JSON outcome, or on standard error
  } kCases[] = {
      {"dry",
       {"--dry-run"},
       all,
       "wage = 7\r\nDIM n\r\nn = DoSQL(\"update pay set pieces = 0\")\r\n",
       0,
       "",
       R"("messages": [], "fields": {"wage": {"type": "Double", "value": 7}}})"},
      // The script's own transaction is one inside the run's.
      {"dry_commit",
       {"--dry-run"},
       all,
       "DIM n\r\nn = DoSQL(\"begin\")\r\nwage = 7\r\nn = DoSQL(\"commit\")\r\n",
       0,
       "",
       R"("fields": {"wage": {"type": "Double", "value": 7}}})"},
      {"commit_then_fail",
       {},
       all,
       "DIM n\r\nn = DoSQL(\"begin\")\r\nn = DoSQL(\"update pay set wage = 9\")\r\n"
       "n = DoSQL(\"commit\")\r\nn = DoSQL(\"commit\")\r\n",
       1,
       "",
       "cannot commit - no transaction is active"},
      {"failing",
       {},
       all,
       "wage = 1\r\nMoveNext\r\nwage = 2\r\nRaiseError \"x\"\r\n",
       1,
       "",
       R"("fields": {"wage": {"type": "Double", "value": 2}}})"},
      {"empty",
       {},
       "select * from pay where code = 'none'",
       "wage = 1\r\n",
       2,
       "",
       "没有返回任何行"},
      {"written",
       {},
       all,
       "wage = 3\r\nMoveNext\r\nwage = pieces\r\n",
       0,
       "E1=3.000000 E2=20.000000 E3=0.000000 E4=0.000000 E5=0.000000 E6=0.000000 ",
       R"("fields": {"wage": {"type": "Double", "value": 20}}})"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Files f = makeFiles(std::string("run_") + c.name, c.script, "pay.db", GetParam());
    const bool file = GetParam() == testing::Backend::Sqlite;
    const std::string before = file ? readFile(f.db) : wages(f.db);
    std::vector<std::string_view> args{"--json", "--db", f.db, "--record", c.record, f.script};
    args.insert(args.begin(), c.options.begin(), c.options.end());
    const Outcome r = run(args);
    EXPECT_EQ(r.status, c.status) << r.err;
    EXPECT_NE((r.out + r.err).find(c.said), std::string::npos) << r.out << r.err;
    if (c.wages.empty()) {
      EXPECT_EQ(file ? readFile(f.db) : wages(f.db), before);
    } else {
      EXPECT_EQ(wages(f.db), c.wages);
    }
  }
}

// A new workbook is written only once a cell is written.
TEST(RunWorkbook, SheetAndSaveTargets) {
  ScratchDir dir;
  const std::string a = dir.file("a.xlsx"), b = dir.file("b.xlsx");
  EXPECT_EQ(run({"--workbook", a, "-"}, "DIM x\r\nx = GETCELL(\"A\", 1)\r\n").status, 0);
  EXPECT_FALSE(std::filesystem::exists(a));
  ASSERT_EQ(run({"--workbook", a, "-"}, "DIM x\r\nx = SETCELL(\"A\", 1, 5)\r\n").status, 0);
  const std::string before = readFile(a);

  Outcome r = run({"--workbook", a, "--sheet", "sheet1", "--save", b, "-"},
                  "DIM x\r\nx = GETCELL(\"A\", 1) + 1\r\nx = SETCELL(\"A\", 2, x)\r\n");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(read(*openBook(b), 2, 1), "Double:6");
  EXPECT_EQ(readFile(a), before);

  // Cells written before an error are saved too.
  r = run({"--json", "--workbook", a, "--sheet", "1", "-"},
          "DIM x\r\nx = SETCELL(\"C\", 3, 7)\r\nx = GETCELL(\"AAA\", 1)\r\n");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("变量未定义 'AAA'"), std::string::npos) << r.out;
  EXPECT_EQ(read(*openBook(a), 3, 3), "Double:7");
}

}  // namespace
}  // namespace korvex::cli
