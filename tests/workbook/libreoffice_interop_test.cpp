// A workbook KORVEX wrote, opened by LibreOffice: it recalculates the
// formulas and exports the first sheet as CSV.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/workbook.hpp"
#include "workbook_fixture.hpp"

namespace korvex::testing {
namespace {

std::vector<std::vector<std::string>> readCsv(const std::string& path) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> fields;
    std::stringstream cells(line);
    for (std::string field; std::getline(cells, field, ',');) {
      if (field.size() >= 2 && field.front() == '"') field = field.substr(1, field.size() - 2);
      fields.push_back(field);
    }
    rows.push_back(std::move(fields));
  }
  return rows;
}

TEST(LibreOffice, RecalculatesAndShowsWhatKorvexWrote) {
  if (std::system("command -v soffice >/dev/null") != 0) GTEST_SKIP() << "soffice is not installed";
  ScratchDir dir;
  auto book = openBook(writeWorkbook(dir, sampleParts()));
  ASSERT_TRUE(book);
  BasicEngine engine;
  engine.SetExcelBook(book);
  engine.SetCodeBlock(
      u"DIM r\r\n"
      u"r = SETCELL(\"A\", 2, 100)\r\n"  // D2 holds =A2*2 with an old result
      u"r = SetCellFormula(\"F\", 2, \"=A2+D2\")\r\n"
      u"r = SETCELL(\"A\", 3, FALSE)\r\n"  // the cell A4's formula is shared from
      u"r = SETCELL(\"G\", 1, \"'0012\")\r\n"
      u"r = SETCELL(\"E\", 1, #2024-04-01#)\r\n"
      u"r = SETCELL(\"B\", 6, \"工资\")\r\n");
  engine.Execute();
  ASSERT_EQ(engine.ErrNum(), 0) << toUtf8(engine.ErrMsg());
  const std::string written = dir.file("written.xlsx");
  std::u16string error;
  ASSERT_TRUE(book->save(written, error)) << toUtf8(error);

  // A private profile that recalculates every formula on load, as the
  // workbook asks (this version of LibreOffice keeps the stored results
  // otherwise).
  std::filesystem::create_directories(dir.file("profile/user"));
  std::ofstream(dir.file("profile/user/registrymodifications.xcu"))
      << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<oor:items xmlns:oor=\"http://openoffice.org/2001/registry\">"
         "<item oor:path=\"/org.openoffice.Office.Calc/Formula/Load\">"
         "<prop oor:name=\"OOXMLRecalcMode\" oor:op=\"fuse\"><value>0</value></prop></item>"
         "</oor:items>\n";
  const std::string command =
      "cd '" + dir.path() + "' && timeout 300 soffice -env:UserInstallation=file://" + dir.path() +
      "/profile --headless --convert-to "
      "'csv:Text - txt - csv (StarCalc):44,34,76,1' written.xlsx "
      ">/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  const auto rows = readCsv(dir.file("written.csv"));
  ASSERT_GE(rows.size(), 6u);
  const auto at = [&](std::size_t row, std::size_t column) {
    return column <= rows[row - 1].size() ? rows[row - 1][column - 1] : std::string("(none)");
  };
  EXPECT_EQ(at(1, 1), "姓名");
  EXPECT_EQ(at(1, 7), "0012");
  EXPECT_NE(at(1, 5).find("2024"), std::string::npos) << at(1, 5);  // shown as a date
  EXPECT_EQ(at(2, 1), "100");
  EXPECT_EQ(at(2, 4), "200");  // recalculated, not the old 6001
  EXPECT_EQ(at(2, 6), "300");
  EXPECT_EQ(at(3, 1), "FALSE");
  EXPECT_EQ(at(4, 1), "1");  // =B3+1 on an empty B3
  EXPECT_EQ(at(6, 2), "工资");
}

}  // namespace
}  // namespace korvex::testing
