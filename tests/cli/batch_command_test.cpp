// `korvex batch` parsed and run as the command does, on an SQLite file:
// what it writes and reports, its usage errors and an interrupted batch.
#include "cli/batch_command.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "datasource/backend.hpp"

namespace korvex::cli {
namespace {

namespace fs = std::filesystem;

// Six employees; E4 has negative pieces, which the pay script refuses.
constexpr const char* kSchema =
    "CREATE TABLE pay (code TEXT PRIMARY KEY, pieces INTEGER, wage REAL);"
    "INSERT INTO pay VALUES ('E1', 10, 0), ('E2', 20, 0), ('E3', 30, 0), ('E4', -1, 0),"
    " ('E5', 50, 0), ('E6', 60, 0);";

constexpr const char* kPayScript =
    "DIM rate\r\nrate = 2.5\r\nIf pieces < 0 Then RaiseError \"negative\"\r\n"
    "wage = pieces * rate\r\n";

struct Files {
  std::string db;
  std::string script;
};

Files makeFiles(const std::string& name, const std::string& script = kPayScript) {
  const fs::path dir = fs::path(testing::TempDir()) / ("batch_" + name);
  fs::remove_all(dir);
  fs::create_directories(dir);
  Files f{(dir / "pay.db").string(), (dir / "pay.bas").string()};
  std::ofstream(f.db, std::ios::binary).flush();  // an empty file is an empty database
  ds::openSqlite(f.db)->run(fromUtf8(kSchema));
  std::ofstream(f.script, std::ios::binary) << script;
  return f;
}

std::string wages(const std::string& db) {
  std::string out;
  for (const auto& row :
       ds::openSqlite(db)->run(u"SELECT code, wage FROM pay ORDER BY code").rows) {
    out += toUtf8(row[0].stringValue()) + "=" + std::to_string(row[1].doubleValue()) + " ";
  }
  return out;
}

const std::string kUnchanged =
    "E1=0.000000 E2=0.000000 E3=0.000000 E4=0.000000 E5=0.000000 E6=0.000000 ";

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

// `korvex batch SCRIPT --db DB --record "SELECT * FROM pay" --json MORE`.
Outcome run(const Files& f, std::vector<std::string_view> more = {}) {
  std::vector<std::string_view> args{
      "batch", f.script, "--db", f.db, "--record", "SELECT * FROM pay", "--json"};
  args.insert(args.end(), more.begin(), more.end());
  const CommandLine c = parseCommandLine(args);
  EXPECT_EQ(c.action, CommandLine::Action::Batch) << c.error;
  std::istringstream in;
  std::ostringstream out, err;
  const int status = runBatchCommand(c.batch, in, out, err);
  return {status, out.str(), err.str()};
}

// Exit codes are written as numbers: they are what callers of the command see.
TEST(BatchCommand, WritesSucceedingRowsAndReportsFailures) {
  const Files f = makeFiles("write");
  const Outcome dry = run(f, {"--dry-run"});
  EXPECT_EQ(dry.status, 1) << dry.err;
  EXPECT_NE(dry.out.find(R"("dryRun": true, "committed": false)"), std::string::npos) << dry.out;
  EXPECT_EQ(wages(f.db), kUnchanged);

  const Outcome r = run(f, {"--jobs", "2"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find(R"("failed": 1, "changedRows": 5)"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find(R"({"row": 4, "key": "E4", "errNum": 2000, "line": 3)"), std::string::npos)
      << r.out;
  EXPECT_EQ(wages(f.db),
            "E1=25.000000 E2=50.000000 E3=75.000000 E4=0.000000 E5=125.000000 E6=150.000000 ");
}

TEST(BatchCommand, UsageErrors) {
  const Files f = makeFiles("usage");
  struct Case {
    std::string database, record, errorPart;
  };
  const Case cases[] = {
      {f.db + ".missing", "SELECT * FROM pay", "不存在"},
      {f.db, "SELECT * FROM nowhere", "--record 的查询失败"},
      {f.db, "DELETE FROM pay", "--record"},
  };
  for (const Case& c : cases) {
    BatchOptions o;
    o.script = f.script;
    o.database = c.database;
    o.record = c.record;
    std::istringstream in;
    std::ostringstream out, err;
    EXPECT_EQ(runBatchCommand(o, in, out, err), 2) << c.record;
    EXPECT_NE(err.str().find(c.errorPart), std::string::npos) << err.str();
  }
  EXPECT_EQ(wages(f.db), kUnchanged);
}

// The batch runs in a child process that is stopped once the first row's
// write sits in the open transaction (its journal exists) while the third
// row loops forever.
TEST(BatchCommand, InterruptedBatchLeavesTheDatabaseAsItWas) {
  for (int signal : {SIGKILL, SIGINT}) {
    const Files f =
        makeFiles("stop" + std::to_string(signal),
                  "DIM i\r\nDo While code = \"E3\"\r\n  i = i + 1\r\nLoop\r\nwage = pieces\r\n");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(run(f).status);
    const fs::path journal = f.db + "-journal";
    for (int i = 0; i < 400 && !fs::exists(journal); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    EXPECT_TRUE(fs::exists(journal)) << "no write reached the database";
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    if (signal == SIGINT) {
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 130) << status;
    } else {
      EXPECT_TRUE(WIFSIGNALED(status)) << status;
    }
    EXPECT_EQ(wages(f.db), kUnchanged) << "signal " << signal;
  }
}

}  // namespace
}  // namespace korvex::cli
