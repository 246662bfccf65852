// `korvex demo`: repeatable contents, no overwriting, usage errors, no file
// left by a failed run.
#include "cli/demo_command.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>

#include "database_fixture.hpp"
#include "korvex/sqlite.hpp"
#include "support.hpp"

namespace korvex::cli {
namespace {

using korvex::testing::describe;
using korvex::testing::need;

// `korvex demo ARGS`: its exit code.
int demo(std::vector<std::string_view> args, std::string* err = nullptr) {
  std::ostringstream out, errors;
  const int status = runDemo(args, out, errors);
  if (err != nullptr) *err = errors.str();
  return status;
}

// The table names, then every row of the payroll tables, in a fixed order.
std::string contents(const std::string& path) {
  SqliteDatabase db = need(SqliteDatabase::open(path));
  std::string text;
  for (const auto& row :
       need(db.query(u"select name, type from sqlite_master order by name")).rows) {
    const std::string name = toUtf8(row[0].stringValue());
    text += name + "\n";
    if (row[1].stringValue() == u"table" &&
        (name.find("WA_") == 0 || name.find("工资表") == 0 || name == "Employes")) {
      const std::string sql = "select * from [" + name + "] order by 1, 2, 3";
      for (const auto& r : need(db.query(fromUtf8(sql))).rows) {
        for (const Value& v : r) text += describe(v) + "|";
        text += "\n";
      }
    }
  }
  return text;
}

TEST(DemoCommand, SameSeedSameDatabaseOtherSeedOther) {
  korvex::testing::ScratchDir dir;
  const std::string a = dir.file("a.db"), b = dir.file("b.db"), c = dir.file("c.db");
  ASSERT_EQ(demo({a, "--employees", "40", "--months", "2", "--seed", "9"}), 0);
  ASSERT_EQ(demo({"--seed=9", "--months=2", "--employees=40", b}), 0);
  ASSERT_EQ(demo({c, "--employees", "40", "--months", "2", "--seed", "10"}), 0);
  const std::string first = contents(a);
  EXPECT_GT(first.size(), 10000U);
  EXPECT_EQ(first, contents(b));
  EXPECT_NE(first, contents(c));
}

TEST(DemoCommand, NoWorkAfterWagesStopOrBeforeHiring) {
  korvex::testing::ScratchDir dir;
  const std::string path = dir.file("pay.db");
  ASSERT_EQ(demo({path, "--employees", "150", "--months", "3"}), 0);
  SqliteDatabase db = need(SqliteDatabase::open(path));
  const auto count = [&](const std::string& sql) {
    return need(db.query(fromUtf8("select count(*) from " + sql))).rows.at(0).at(0).longValue();
  };
  EXPECT_GT(count("Employes where dGZTFTime is not null"), 0);
  EXPECT_GT(count("Employes where bLeave = 1"), 0);
  EXPECT_EQ(count("WA_JobData j join Employes e on e.cCode = j.工号"
                  " where j.日期 >= e.dGZTFTime or j.日期 < e.dInTime"),
            0);
  EXPECT_GT(count("WA_JobData where 是否顶班 = 1"), 0);
  EXPECT_EQ(count("[工资表2025年03月] where 计件工资 <> 0"),
            0);  // the open month is left to compute
}

TEST(DemoCommand, RefusesExistingFilesAndBadOptions) {
  korvex::testing::ScratchDir dir;
  const std::string path = dir.file("kept.db");
  std::ofstream(path) << "keep";
  std::string err;
  EXPECT_EQ(demo({path}, &err), 2);
  EXPECT_NE(err.find("文件已存在"), std::string::npos);
  EXPECT_NE(err.find("--force"), std::string::npos);
  EXPECT_EQ(korvex::testing::readFile(path), "keep");
  // --force replaces it, and the stale journal beside it goes.
  std::ofstream(path + "-journal") << "stale";
  ASSERT_EQ(demo({path, "--force", "--employees", "5", "--months", "1"}), 0);
  EXPECT_NE(contents(path).find("Employes"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(path + "-journal"));

  const std::string fresh = dir.file("new.db");
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

TEST(DemoCommand, AFailedRunLeavesNoFile) {
  korvex::testing::ScratchDir dir;
  const std::string nowhere = dir.file("missing/pay.db");
  std::string err;
  EXPECT_EQ(demo({nowhere}, &err), 1);
  EXPECT_EQ(err.rfind("korvex demo: 无法创建数据库文件 " + nowhere + ": ", 0), 0U) << err;

  // A file that cannot grow past 64 KiB: the writing fails half-way, in a
  // child process, which reports what the command said.
  const std::string full = dir.file("full.db"), said = dir.file("said.txt");
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    const rlimit limit{64 * 1024, 64 * 1024};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string message;
    const int status = demo({full}, &message);
    std::ofstream(said) << message;
    _exit(status);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_FALSE(std::filesystem::exists(full));
  const std::string message = korvex::testing::readFile(said);
  EXPECT_EQ(message.rfind("korvex demo: SQL 错误: ", 0), 0U) << message;
}

}  // namespace
}  // namespace korvex::cli
