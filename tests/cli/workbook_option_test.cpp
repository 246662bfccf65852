// korvex run --workbook / --sheet / --save.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/run_command.hpp"
#include "korvex/workbook.hpp"
#include "values/ops.hpp"

namespace korvex::cli {
namespace {

class WorkbookOption : public ::testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/korvex-cli-XXXXXX";
    dir_ = ::mkdtemp(name);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string file(const std::string& name) const { return dir_ + "/" + name; }

  int run(RunOptions o, const std::string& script, std::string* out = nullptr,
          std::string* err = nullptr) {
    o.script = "-";
    o.json = true;
    std::istringstream in(script);
    std::ostringstream outStream, errStream;
    const int status = runScript(o, in, outStream, errStream);
    if (out != nullptr) *out = outStream.str();
    if (err != nullptr) *err = errStream.str();
    return status;
  }

  // Cell (row, column) of a sheet of the workbook on disk, as text.
  std::string cell(const std::string& path, std::int32_t row, std::int32_t column,
                   const Value& sheet = Value::lng(1)) {
    std::u16string error;
    auto book = Workbook::open(path, error);
    if (!book) return "unreadable: " + toUtf8(error);
    const std::array<Value, 2> at{Value::lng(row), Value::lng(column)};
    const auto s = book->sheet(sheet).value.objectValue();
    const Value v =
        s->getProperty(u"Cells", at).value.objectValue()->getProperty(u"Value", {}).value;
    return toUtf8(vb::toString(v, Locale::zhCN()));
  }

  std::string dir_;
};

TEST_F(WorkbookOption, ANewWorkbookIsWrittenOnceACellIsWritten) {
  RunOptions o;
  o.workbook = file("new.xlsx");
  EXPECT_EQ(run(o, "DIM x\r\nx = GETCELL(\"A\", 1)\r\n"), kExitSuccess);
  EXPECT_FALSE(std::filesystem::exists(o.workbook));  // nothing written, nothing saved
  EXPECT_EQ(run(o, "DIM x\r\nx = SETCELL(\"B\", 2, \"工资\")\r\n"), kExitSuccess);
  EXPECT_EQ(cell(o.workbook, 2, 2, Value::string(u"Sheet1")), "工资");
}

TEST_F(WorkbookOption, SheetAndSaveTargets) {
  RunOptions make;
  make.workbook = file("a.xlsx");
  ASSERT_EQ(run(make, "DIM x\r\nx = SETCELL(\"A\", 1, 5)\r\n"), kExitSuccess);
  std::ifstream original(make.workbook, std::ios::binary);
  const std::string before((std::istreambuf_iterator<char>(original)), {});

  RunOptions o;
  o.workbook = make.workbook;
  o.sheet = "sheet1";
  o.save = file("b.xlsx");
  std::string out;
  EXPECT_EQ(run(o, "DIM x\r\nx = GETCELL(\"A\", 1) + 1\r\nx = SETCELL(\"A\", 2, x)\r\n", &out),
            kExitSuccess);
  EXPECT_EQ(cell(o.save, 2, 1), "6");
  std::ifstream after(make.workbook, std::ios::binary);
  EXPECT_EQ(std::string((std::istreambuf_iterator<char>(after)), {}), before);

  // Cells written before an error are saved too.
  o.save.clear();
  o.sheet = "1";
  EXPECT_EQ(run(o, "DIM x\r\nx = SETCELL(\"C\", 3, 7)\r\nx = GETCELL(\"AAA\", 1)\r\n", &out),
            kExitScriptFailed);
  EXPECT_NE(out.find("变量未定义 'AAA'"), std::string::npos) << out;
  EXPECT_EQ(cell(make.workbook, 3, 3), "7");
}

TEST_F(WorkbookOption, UnusableWorkbookOrSheetRunsNothing) {
  std::ofstream(file("text.xlsx")) << "plain text";
  RunOptions bad;
  bad.workbook = file("text.xlsx");
  RunOptions noSheet;
  noSheet.workbook = file("fresh.xlsx");
  noSheet.sheet = "二月";
  for (const RunOptions& o : {bad, noSheet}) {
    std::string out, err;
    EXPECT_EQ(run(o, "MSGBOX 1\r\n", &out, &err), kExitUsage);
    EXPECT_EQ(out, "");
    EXPECT_NE(err.find(o.sheet.empty() ? "不是可读的 .xlsx 工作簿" : "二月"), std::string::npos)
        << err;
  }
}

TEST(WorkbookOptions, SheetAndSaveNeedAWorkbook) {
  for (const char* option : {"--sheet", "--save"}) {
    const std::array<std::string_view, 4> args{"run", option, "x", "s.bas"};
    const CommandLine cmd = parseCommandLine(args);
    EXPECT_EQ(cmd.action, CommandLine::Action::Error) << option;
    EXPECT_NE(cmd.error.find("--workbook"), std::string::npos) << cmd.error;
  }
  const std::array<std::string_view, 8> args{"run",    "--workbook", "w.xlsx", "--sheet=2",
                                             "--save", "o.xlsx",     "s.bas",  "--json"};
  const CommandLine cmd = parseCommandLine(args);
  ASSERT_EQ(cmd.action, CommandLine::Action::Run) << cmd.error;
  EXPECT_EQ(cmd.run.workbook, "w.xlsx");
  EXPECT_EQ(cmd.run.sheet, "2");
  EXPECT_EQ(cmd.run.save, "o.xlsx");
}

}  // namespace
}  // namespace korvex::cli
