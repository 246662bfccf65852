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

namespace korvex::cli {
namespace {

TEST(DecodeScript, KeepsLineBreaksAndSkipsTheByteOrderMark) {
  EXPECT_EQ(decodeScript("\xEF\xBB\xBF"
                         "a\r\nb\rc\n\r",
                         Encoding::Utf8),
            u"a\r\nb\rc\n\r");
  EXPECT_EQ(decodeScript("a\xEF\xBB\xBF", Encoding::Utf8), u"a\uFEFF");  // only a leading mark
  EXPECT_EQ(decodeScript("x = \"\xE4\xB8\xAD\"", Encoding::Utf8), u"x = \"中\"");
  EXPECT_EQ(decodeScript("\xD6\xD0\xCE\xC4\r\n", Encoding::Gbk), u"中文\r\n");
  EXPECT_EQ(decodeScript("", Encoding::Utf8), u"");
}

struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
};

RunResult run(RunOptions options, const std::string& input = {}) {
  std::istringstream in(input);
  std::ostringstream out, err;
  RunResult r;
  r.status = runScript(options, in, out, err);
  r.out = out.str();
  r.err = err.str();
  return r;
}

RunOptions fromStdin(bool json = true) {
  RunOptions o;
  o.script = "-";
  o.json = json;
  return o;
}

std::string writeTemp(const std::string& name, const std::string& bytes) {
  const std::string path = testing::TempDir() + "/" + name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

TEST(RunScript, PresetsAreEvaluatedInOrder) {
  RunOptions o = fromStdin();
  o.presets = {{"N", "NULL"}, {"s", "\"abc\""}, {"D", "#2005-03-01#"}, {"A", "1"}, {"a", "4 + 1"}};
  const RunResult r = run(o, "DIM x\r\nx = A + 1\r\n");
  EXPECT_EQ(r.status, kExitSuccess) << r.err;
  EXPECT_NE(r.out.find(R"("variables": {"N": {"type": "Null", "value": null}, )"
                       R"("S": {"type": "String", "value": "abc"}, )"
                       R"("D": {"type": "Date", "value": "2005-03-01 00:00:00"}, )"
                       R"("A": {"type": "Double", "value": 5}, )"
                       R"("X": {"type": "Double", "value": 6}})"),
            std::string::npos)
      << r.out;
}

TEST(RunScript, PresetThatFailsToEvaluateIsAUsageError) {
  RunOptions o = fromStdin();
  o.presets = {{"A", "1+"}};
  const RunResult r = run(o, "MSGBOX 1\r\n");
  EXPECT_EQ(r.status, kExitUsage);
  EXPECT_EQ(r.out, "");  // nothing ran
  EXPECT_NE(r.err.find("--set A=1+"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("\xE7\xBC\xBA\xE6\x93\x8D\xE4\xBD\x9C\xE6\x95\xB0"), std::string::npos)
      << r.err;  // 缺操作数
}

TEST(RunScript, ConsoleModePrintsMessagesAndTheError) {
  const RunResult r = run(fromStdin(false), "MSGBOX \"hi\"\r\nRAISEERROR \"bad\"\r\nMSGBOX 2\r\n");
  EXPECT_EQ(r.status, kExitScriptFailed);
  EXPECT_EQ(r.out, "hi\n");
  EXPECT_EQ(r.err, "\xE9\x94\x99\xE8\xAF\xAF 2000: bad : \xE8\xA1\x8C\xE5\x8F\xB7 2\n");
}

// A missing script, and a directory that opens but whose read fails (no
// empty script): neither runs anything.
TEST(RunScript, UnreadableScriptIsAUsageError) {
  const struct {
    std::string path;
    const char *verb, *reason;
  } kCases[] = {{testing::TempDir() + "/no/such/dir/x.bas", "无法打开", "文件不存在"},
                {testing::TempDir(), "无法读取", "是一个目录"}};
  for (const auto& c : kCases) {
    RunOptions o;
    o.script = c.path;
    const RunResult r = run(o);
    EXPECT_EQ(r.status, kExitUsage);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find(c.verb), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(c.reason), std::string::npos) << r.err;
  }
}

TEST(RunScript, AnOutcomeThatCannotBeWrittenIsNoSuccess) {
  struct Full : std::streambuf {
    int overflow(int) override { return traits_type::eof(); }
  } full;
  std::istringstream in("MSGBOX 1\r\n");
  std::ostream out(&full);
  std::ostringstream err;
  EXPECT_EQ(runScript(fromStdin(), in, out, err), kExitUsage);
  EXPECT_NE(err.str().find("无法写出运行结果"), std::string::npos) << err.str();
}

TEST(RunScript, EndlessInputIsAnOverLongScript) {
  RunOptions o;
  o.json = true;
  o.script = "/dev/zero";
  const RunResult r = run(o);
  EXPECT_EQ(r.status, kExitScriptFailed);
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
  RunOptions o;
  o.script = writeTemp("endless.bas", "MSGBOX \"go\"\r\nDO WHILE 1\r\nLOOP\r\n");
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

}  // namespace
}  // namespace korvex::cli
