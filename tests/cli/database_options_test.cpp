// --db and --record of `korvex run` and `korvex batch` alike: the file
// opened is exactly the one named, whatever its name holds, and a record
// query that would write, or holds more than one statement, is refused
// before anything runs. Exit codes are written as numbers: they are what
// callers of the command see.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cli/batch_command.hpp"
#include "cli/run_command.hpp"
#include "korvex/sqlite.hpp"
#include "support.hpp"

namespace korvex::cli {
namespace {

using korvex::testing::ScratchDir;

const std::string kUnchanged = "E1=0.000000 ";

void makeDatabase(const std::string& path) {
  DatabaseResult<SqliteDatabase> db = SqliteDatabase::open(path, SqliteDatabase::Mode::Create);
  ASSERT_TRUE(db.ok()) << path;
  ASSERT_TRUE(db.value()
                  .execute("CREATE TABLE pay (code TEXT PRIMARY KEY, wage REAL); "
                           "INSERT INTO pay VALUES ('E1', 0)")
                  .ok());
}

// The table as "code=wage " for each row, or why it cannot be read.
std::string rows(const std::string& path) {
  DatabaseResult<SqliteDatabase> db = SqliteDatabase::open(path);
  if (!db.ok()) return toUtf8(db.error().message);
  DatabaseResult<SqlResult> result = db.value().query(u"SELECT code, wage FROM pay");
  if (!result.ok()) return toUtf8(result.error().message);
  std::string out;
  for (const auto& row : result.value().rows) {
    out += toUtf8(row[0].stringValue()) + "=" + std::to_string(row[1].doubleValue()) + " ";
  }
  return out;
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// `korvex run --db DB --record SQL SCRIPT` or `korvex batch SCRIPT --db DB
// --record SQL`, the script setting the current row's wage to 7.
Outcome korvex(const std::string& command, const ScratchDir& dir, const std::string& db,
               const std::string& record) {
  const std::string script = dir.file("pay.bas");
  std::ofstream(script, std::ios::binary) << "wage = 7\r\n";
  std::vector<std::string_view> args{command, "--db", db, "--record", record};
  args.insert(command == "run" ? args.end() : args.begin() + 1, script);
  const CommandLine c = parseCommandLine(args);
  std::istringstream in;
  std::ostringstream out, err;
  int status = -1;
  if (c.action == CommandLine::Action::Run) status = runScript(c.run, in, out, err);
  if (c.action == CommandLine::Action::Batch) status = runBatchCommand(c.batch, in, out, err);
  return {status, out.str(), err.str()};
}

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
      ScratchDir dir;
      makeDatabase(dir.file("x"));
      makeDatabase(dir.file("p"));
      const std::string db = dir.file(f.name);
      if (f.exists) makeDatabase(db);
      const Outcome r = korvex(command, dir, db, "SELECT * FROM pay");
      if (f.exists) {
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(rows(db), "E1=7.000000 ");
      } else {
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find("不存在"), std::string::npos) << r.err;
      }
      EXPECT_EQ(rows(dir.file("x")), kUnchanged);
      EXPECT_EQ(rows(dir.file("p")), kUnchanged);
    }
  }
}

// A refused query leaves the table as it was: neither it nor the script ran.
TEST(DatabaseOptions, RecordTakesOneStatementThatOnlyReads) {
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
      ScratchDir dir;
      const std::string db = dir.file("pay.db");
      makeDatabase(db);
      const Outcome r = korvex(command, dir, db, c.record);
      if (c.errPart == nullptr) {
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(rows(db), "E1=7.000000 ");
        continue;
      }
      EXPECT_EQ(r.status, 2);
      EXPECT_EQ(r.out, "");
      EXPECT_NE(r.err.find(c.errPart), std::string::npos) << r.err;
      EXPECT_EQ(rows(db), kUnchanged);
    }
  }
}

}  // namespace
}  // namespace korvex::cli
