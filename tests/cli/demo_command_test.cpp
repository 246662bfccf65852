// `korvex demo`: repeatable contents, no overwriting, usage errors.
#include "cli/demo_command.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace korvex::cli {
namespace {

class DemoCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/korvex-demo-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    dir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  int demo(std::vector<std::string_view> args) {
    out_.str({});
    err_.str({});
    return runDemo(args, out_, err_);
  }

  // Every row of every table, in a fixed order, as text.
  static std::string contents(const std::string& path) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    std::string text;
    const auto rows = [&](const std::string& sql) {
      sqlite3_stmt* st = nullptr;
      sqlite3_prepare_v2(db, sql.c_str(), -1, &st, nullptr);
      std::vector<std::string> out;
      while (sqlite3_step(st) == SQLITE_ROW) {
        std::string row;
        for (int i = 0; i < sqlite3_column_count(st); ++i) {
          const auto* v = sqlite3_column_text(st, i);
          row += (v != nullptr ? reinterpret_cast<const char*>(v) : "<null>") + std::string("|");
        }
        out.push_back(row);
      }
      sqlite3_finalize(st);
      return out;
    };
    for (const std::string& table : rows("select name from sqlite_master order by name")) {
      if (table.find("sqlite_") == 0) continue;
      text += table + "\n";
      const std::string name = table.substr(0, table.size() - 1);
      if (name.find("WA_") == 0 || name.find("工资表") == 0 || name == "Employes") {
        for (const std::string& row : rows("select * from [" + name + "] order by 1, 2, 3")) {
          text += row + "\n";
        }
      }
    }
    sqlite3_close(db);
    return text;
  }

  std::string dir_;
  std::ostringstream out_, err_;
};

TEST_F(DemoCommand, SameSeedSameDatabaseOtherSeedOther) {
  const std::string a = dir_ + "/a.db", b = dir_ + "/b.db", c = dir_ + "/c.db";
  ASSERT_EQ(demo({a, "--employees", "40", "--months", "2", "--seed", "9"}), 0) << err_.str();
  ASSERT_EQ(demo({"--seed=9", "--months=2", "--employees=40", b}), 0) << err_.str();
  ASSERT_EQ(demo({c, "--employees", "40", "--months", "2", "--seed", "10"}), 0) << err_.str();
  const std::string first = contents(a);
  EXPECT_GT(first.size(), 10000U);
  EXPECT_EQ(first, contents(b));
  EXPECT_NE(first, contents(c));
}

TEST_F(DemoCommand, NoWorkAfterWagesStopOrBeforeHiring) {
  const std::string path = dir_ + "/pay.db";
  ASSERT_EQ(demo({path, "--employees", "150", "--months", "3"}), 0) << err_.str();
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  sqlite3_stmt* st = nullptr;
  sqlite3_prepare_v2(db,
                     "select (select count(*) from Employes where dGZTFTime is not null),"
                     " (select count(*) from Employes where bLeave = 1),"
                     " (select count(*) from WA_JobData j join Employes e on e.cCode = j.工号"
                     "  where j.日期 >= e.dGZTFTime or j.日期 < e.dInTime),"
                     " (select count(*) from WA_JobData where 是否顶班 = 1),"
                     " (select count(*) from [工资表2025年03月] where 计件工资 <> 0)",
                     -1, &st, nullptr);
  ASSERT_EQ(sqlite3_step(st), SQLITE_ROW);
  EXPECT_GT(sqlite3_column_int(st, 0), 0);
  EXPECT_GT(sqlite3_column_int(st, 1), 0);
  EXPECT_EQ(sqlite3_column_int(st, 2), 0);
  EXPECT_GT(sqlite3_column_int(st, 3), 0);
  EXPECT_EQ(sqlite3_column_int(st, 4), 0);  // the open month is left to compute
  sqlite3_finalize(st);
  sqlite3_close(db);
}

TEST_F(DemoCommand, RefusesExistingFilesAndBadOptions) {
  const std::string path = dir_ + "/kept.db";
  std::ofstream(path) << "keep";
  EXPECT_EQ(demo({path}), 2);
  EXPECT_NE(err_.str().find("文件已存在"), std::string::npos);
  std::ifstream in(path);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "keep");

  const std::string fresh = dir_ + "/new.db";
  const std::vector<std::vector<std::string_view>> bad = {
      {},
      {fresh, "--employees", "0"},
      {fresh, "--months", "x"},
      {fresh, "--months"},
      {fresh, "--colour", "1"},
      {fresh, fresh},
  };
  for (const auto& args : bad) {
    EXPECT_EQ(demo(args), 2) << args.size();
    EXPECT_FALSE(std::filesystem::exists(fresh));
  }
}

}  // namespace
}  // namespace korvex::cli
