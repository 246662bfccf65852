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

BatchOptions options(const Files& f) {
  BatchOptions o;
  o.script = f.script;
  o.database = f.db;
  o.record = "SELECT * FROM pay";
  o.json = true;
  return o;
}

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome run(const BatchOptions& o) {
  std::istringstream in;
  std::ostringstream out, err;
  const int status = runBatchCommand(o, in, out, err);
  return {status, out.str(), err.str()};
}

TEST(BatchCommand, WritesSucceedingRowsTheSameForAnyNumberOfThreads) {
  std::string first;
  for (unsigned jobs : {1u, 2u}) {
    const Files f = makeFiles("jobs" + std::to_string(jobs));
    BatchOptions o = options(f);
    o.jobs = jobs;
    const Outcome r = run(o);
    EXPECT_EQ(r.status, kExitScriptFailed) << r.err;
    EXPECT_NE(r.out.find(R"("failed": 1, "changedRows": 5)"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find(R"({"row": 4, "key": "E4", "errNum": 2000, "line": 3)"), std::string::npos)
        << r.out;
    const std::string written = wages(f.db);
    EXPECT_NE(written.find("E4=0.000000 E5=125.000000"), std::string::npos) << written;
    if (first.empty()) first = written;
    EXPECT_EQ(written, first);
  }
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
    BatchOptions o = options(f);
    o.database = c.database;
    o.record = c.record;
    const Outcome r = run(o);
    EXPECT_EQ(r.status, kExitUsage) << c.record;
    EXPECT_NE(r.err.find(c.errorPart), std::string::npos) << r.err;
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
    if (child == 0) {
      std::ostringstream sink;
      std::istringstream in;
      _exit(runBatchCommand(options(f), in, sink, sink));
    }
    const fs::path journal = f.db + "-journal";
    for (int i = 0; i < 400 && !fs::exists(journal); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    EXPECT_TRUE(fs::exists(journal)) << "no write reached the database";
    kill(child, signal);
    int status = 0;
    waitpid(child, &status, 0);
    if (signal == SIGINT) {
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == kExitInterrupted) << status;
    } else {
      EXPECT_TRUE(WIFSIGNALED(status)) << status;
    }
    EXPECT_EQ(wages(f.db), kUnchanged) << "signal " << signal;
  }
}

}  // namespace
}  // namespace korvex::cli
