#include "cli/run_command.hpp"

#include <gtest/gtest.h>

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

TEST(RunScript, UnreadableScriptIsAUsageError) {
  RunOptions o;
  o.script = testing::TempDir() + "/no/such/dir/x.bas";
  const RunResult r = run(o);
  EXPECT_EQ(r.status, kExitUsage);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("无法打开"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("文件不存在"), std::string::npos) << r.err;
}

TEST(RunScript, AScriptThatOpensButCannotBeReadRunsNothing) {
  // A directory opens, and its read fails: that is no empty script.
  RunOptions o;
  o.script = testing::TempDir();
  o.json = true;
  const RunResult r = run(o);
  EXPECT_EQ(r.status, kExitUsage);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("无法读取"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("是一个目录"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace korvex::cli
