// --db and --record of `korvex run` and `korvex batch` alike: the file
// opened is exactly the one named, whatever its name holds, and a record
// query that would write, or holds more than one statement, is refused
// before anything runs. Exit codes are written as numbers: they are what
// callers of the command see.
#include <gtest/gtest.h>

#include "cli/batch_command.hpp"
#include "cli/command_fixture.hpp"
#include "cli/run_command.hpp"
#include "support.hpp"

namespace korvex::cli {
namespace {

// `korvex run --db DB --record SQL SCRIPT` or `korvex batch SCRIPT --db DB
// --record SQL`, the script setting the current row's wage to 7.
Outcome korvex(const std::string& command, const Files& f, const std::string& record) {
  std::vector<std::string_view> args{command, "--db", f.db, "--record", record};
  args.insert(command == "run" ? args.end() : args.begin() + 1, f.script);
  return cli::korvex(args);
}

constexpr const char* kSeven = "wage = 7\r\n";

// "x" and "p" are what a name split at ";" or "=" would open instead.
TEST(DatabaseOptions, DbOpensExactlyTheFileNamed) {
  const struct {
    const char* name;
    bool exists;
  } kFiles[] = {
      {"x;y.db", true},         {"p=q.db", true},
      {"a\"b\"\"c'd.db", true}, {" x; Data Source=p ", true},
      {"x;gone.db", false},
  };
  for (const std::string command : {"run", "batch"}) {
    for (const auto& f : kFiles) {
      SCOPED_TRACE(command + " " + f.name);
      const Files f0 = makeFiles("names", kSeven, "x");
      const std::string dir = f0.db.substr(0, f0.db.size() - 1);
      makePayDatabase(dir + "p");
      Files file{dir + f.name, f0.script, nullptr};
      if (!f.exists) std::filesystem::remove(file.db);
      if (f.exists && file.db != f0.db) makePayDatabase(file.db);
      const Outcome r = korvex(command, file, "SELECT * FROM pay WHERE code = 'E1'");
      if (f.exists) {
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(wages(file.db).substr(0, 12), "E1=7.000000 ");
      } else {
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find("不存在"), std::string::npos) << r.err;
      }
      EXPECT_EQ(wages(dir + "x"), kUnchanged);
      EXPECT_EQ(wages(dir + "p"), kUnchanged);
    }
  }
}

// A refused query leaves the table as it was: neither it nor the script ran.
// On the file and on the server.
class RecordQuery : public testing::OnEachBackend {};
KORVEX_ON_BOTH_BACKENDS(RecordQuery);

TEST_P(RecordQuery, TakesOneStatementThatOnlyReads) {
  const struct {
    const char* record;
    const char* errPart;  // nullptr: accepted, and the script runs
  } kCases[] = {
      {"DELETE FROM pay", "会修改数据库"},
      {"UPDATE pay SET wage = 1", "会修改数据库"},
      {"DROP TABLE pay", "会修改数据库"},
      {"SELECT * FROM pay; DELETE FROM pay", "只接受一条语句"},
      {"SELECT * FROM pay; SELECT * FROM pay", "只接受一条语句"},
      {"SELECT * FROM pay; no such thing", "只接受一条语句"},
      {"BEGIN", "不返回行"},
      {"SELECT * FROM nowhere", "--record 的查询失败"},
      {"SELECT * FROM pay WHERE LEFT(code, 1) = 'E'; -- 本月\n;", nullptr},
  };
  for (const std::string command : {"run", "batch"}) {
    for (const auto& c : kCases) {
      SCOPED_TRACE(command + " " + c.record);
      const Files f = makeFiles("record", kSeven, "pay.db", GetParam());
      const Outcome r = korvex(command, f, c.record);
      if (c.errPart == nullptr) {
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(wages(f.db).substr(0, 12), "E1=7.000000 ");
        continue;
      }
      EXPECT_EQ(r.status, 2);
      EXPECT_EQ(r.out, "");
      EXPECT_NE(r.err.find(c.errPart), std::string::npos) << r.err;
      EXPECT_EQ(wages(f.db), kUnchanged);
    }
  }
}

}  // namespace
}  // namespace korvex::cli
