// `korvex batch`: the runner against a recording writer (order, threads,
// dry run, stop, refused writes) and its summary; then the command parsed
// and run as it is, on an SQLite file: what it writes and reports, its
// usage errors and an interrupted batch.
#include "cli/batch_command.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <tuple>

#include "cli/batch_report.hpp"
#include "cli/command_fixture.hpp"
#include "cli/demo_database.hpp"
#include "database_fixture.hpp"
#include "korvex/batch.hpp"
#include "korvex/sqlite.hpp"

namespace korvex::cli {
namespace {

using korvex::testing::need;
using korvex::testing::readFile;
using Write = std::tuple<std::size_t, std::size_t, double>;  // row, column, value

class RecordingWriter : public BatchWriter {
 public:
  std::vector<Write> written;
  std::size_t refuseRow = SIZE_MAX;
  bool refuseCommit = false;
  int commits = 0;
  int rollbacks = 0;

  DispatchResult write(std::size_t row, std::span<const FieldWrite> writes,
                       std::size_t& changed) override {
    if (row == refuseRow) return DispatchResult::failure(19, u"约束失败");
    changed = writes.size();
    for (const auto& w : writes) written.emplace_back(row, w.column, w.value.doubleValue());
    return DispatchResult::success();
  }
  DispatchResult commit() override {
    if (refuseCommit) return DispatchResult::failure(5, u"数据库被锁定");
    ++commits;
    return DispatchResult::success();
  }
  void rollback() noexcept override { ++rollbacks; }
};

// Employees: code, pieces, wage. A row with negative pieces fails on line 3;
// DIM would fail on a second run in the same engine, so a variable leaking
// from one row to the next fails every row after the first.
BatchTable employees(int count) {
  BatchTable t{{u"编号", u"件数", u"工资"}, {}};
  for (int i = 1; i <= count; ++i) {
    const double pieces = i % 4 == 0 ? -1 : i * 10;
    t.rows.push_back(
        {Value::string(u"E" + fromUtf8(std::to_string(i))), Value::dbl(pieces), Value::dbl(0)});
  }
  return t;
}

BatchJob payJob(unsigned jobs = 1) {
  BatchJob job;
  job.script =
      u"DIM 单价\r\n单价 = 基价 + 0.5\r\nIf 件数 < 0 Then RaiseError \"件数为负\"\r\n"
      u"工资 = 件数 * 单价\r\n";
  job.presets = {{u"基价", Value::dbl(2)}};
  job.jobs = jobs;
  return job;
}

// The summary as the command writes it, the timing left out.
std::string summary(BatchSummary s) {
  s.seconds = 0;
  return summaryJson(s);
}

TEST(Batch, OutcomeDoesNotDependOnTheNumberOfThreads) {
  const BatchTable table = employees(200);
  RecordingWriter one, four;
  const BatchSummary a = runBatch(table, payJob(1), &one);
  const BatchSummary b = runBatch(table, payJob(4), &four);
  EXPECT_EQ(one.written, four.written);
  EXPECT_EQ(one.written.size(), 150u);
  EXPECT_TRUE(std::is_sorted(one.written.begin(), one.written.end()));
  EXPECT_EQ(summary(a), summary(b));
}

TEST(Batch, StoppedBatchRollsBack) {
  std::atomic<bool> stop{false};
  BatchJob job = payJob(2);
  job.stop = &stop;
  job.progress = [&](std::size_t done, std::size_t) {
    if (done == 2) stop = true;
  };
  RecordingWriter writer;
  const BatchSummary s = runBatch(employees(50), job, &writer);
  EXPECT_TRUE(s.interrupted);
  EXPECT_EQ(s.done, 2u);
  EXPECT_EQ(writer.commits, 0);
  EXPECT_EQ(writer.rollbacks, 1);
}

TEST(Batch, RefusedWritesFailTheRowOrTheBatch) {
  RecordingWriter refusesRow;
  refusesRow.refuseRow = 1;
  EXPECT_EQ(summary(runBatch(employees(3), payJob(), &refusesRow)),
            R"({"rows": 3, "done": 3, "succeeded": 2, "failed": 1, "changedRows": 2, )"
            R"("changedFields": 2, "dryRun": false, "committed": true, "interrupted": false, )"
            R"("error": "", "seconds": 0, "rowsPerSecond": 0, "failures": [{"row": 2, )"
            R"("key": "E2", "errNum": 19, "line": 0, "message": "约束失败"}]})");

  RecordingWriter refusesCommit;
  refusesCommit.refuseCommit = true;
  const BatchSummary c = runBatch(employees(3), payJob(), &refusesCommit);
  EXPECT_FALSE(c.committed);
  EXPECT_EQ(c.error, u"数据库被锁定");
  EXPECT_EQ(refusesCommit.rollbacks, 1);
}

TEST(BatchReport, JsonSummaryAndTextThatKeepsTheTerminalClean) {
  BatchSummary s;
  s.rows = s.done = 3;
  s.failed = 1;
  s.changedRows = s.changedFields = 2;
  s.committed = true;
  s.seconds = 0.5;
  s.statements = SqliteReuseCounts{120, 80};
  s.failures.push_back({2, u"E\"2", 2000, 3, u"件数为负 : 行号 3", ""});
  EXPECT_EQ(summaryJson(s),
            R"({"rows": 3, "done": 3, "succeeded": 2, "failed": 1, "changedRows": 2, )"
            R"("changedFields": 2, "dryRun": false, "committed": true, "interrupted": false, )"
            R"("error": "", "seconds": 0.5, "rowsPerSecond": 6, "statements": 120, "reused": 80, )"
            R"("failures": [{"row": 2, )"
            R"("key": "E\"2", "errNum": 2000, "line": 3, "message": "件数为负 : 行号 3"}]})");
  // Rows that failed alike are told once, with the first few of them; the
  // summary comes last. Keys and messages come from the database and the
  // script: their control characters are shown, not obeyed.
  s.failures[0].key = u"E\x1b[2J\t";
  s.failures[0].message = u"a\r\nb\x7f";
  for (std::size_t row = 4; row < 10; ++row) {
    s.failures.push_back({row, u"E" + fromUtf8(std::to_string(row)), 2000, 3, u"a\r\nb\x7f", ""});
  }
  s.failures.push_back({10, u"E10", 13, 0, u"字段 工资 = abc: 类型不匹配", ""});
  s.failures.push_back({11, u"E11", 11, 2, u"除数为零", "b.bas"});
  EXPECT_EQ(summaryText(s),
            "失败的行:\n"
            "  行号 3, 错误 2000: a\\r\\nb\\x7f\n"
            "    7 行: 第 2 行 [E\\x1b[2J\\t], 第 4 行 [E4], 第 5 行 [E5], 第 6 行 [E6], "
            "第 7 行 [E7] …\n"
            "  写回, 错误 13: 字段 工资 = abc: 类型不匹配\n"
            "    1 行: 第 10 行 [E10]\n"
            "  b.bas:2, 错误 11: 除数为零\n"
            "    1 行: 第 11 行 [E11]\n"
            "批处理完成: 3 行, 成功 2 行, 失败 1 行; 改动 2 行共 2 个字段 (0.50 秒, 6 行/秒)\n"
            "SQL 语句 120 条, 其中 80 条用已读的结果作答\n");
}

// `korvex batch SCRIPT --db DB --record RECORD --json MORE`.
Outcome run(const Files& f, std::vector<std::string_view> more = {},
            std::string_view record = "SELECT * FROM pay", std::ostream* to = nullptr) {
  std::vector<std::string_view> args{"batch", f.script, "--db", f.db, "--record", record, "--json"};
  args.insert(args.end(), more.begin(), more.end());
  return korvex(args, {}, to);
}

// Exit codes are written as numbers: they are what callers of the command see.
// The raised error carries the line of the single-line If's tail (run on its
// own) and the line of the If.
// On the server a batch that writes shares the month with other
// processes: its summary says so.
class BatchOnBoth : public testing::OnEachBackend {};
KORVEX_ON_BOTH_BACKENDS(BatchOnBoth);

TEST_P(BatchOnBoth, WritesSucceedingRowsAndReportsFailures) {
  const Files f = makeFiles("write", kPayScript, "pay.db", GetParam());
  const auto expected = [&](const char* dryRunAndCommitted, const std::string& computed) {
    const bool shared = onServer() && computed.empty();
    return std::string(R"({"rows": 6, "done": 6, "succeeded": 5, "failed": 1, "changedRows": 5, )"
                       R"("changedFields": 5, )") +
           dryRunAndCommitted +
           R"(, "interrupted": false, "error": "", "seconds": 0, "rowsPerSecond": 0, )" +
           (shared ? R"("sharedRows": 6, )" : "") +
           R"("statements": 0, "reused": 0, "failures": [{"row": 4, "key": "E4", "errNum": 2000, "line": 3, )"
           R"("message": "negative : 行号 1 : 行号 3"}])" +
           computed + "}\n";
  };
  // What a dry run computed, row by row.
  std::string computed = R"(, "computed": [)";
  for (const int row : {1, 2, 3, 5, 6}) {
    computed += std::string(row > 1 ? ", " : "") + R"({"row": )" + std::to_string(row) +
                R"(, "key": "E)" + std::to_string(row) + R"(", "fields": {"wage": )" +
                R"({"type": "Double", "value": )" + std::to_string(row * 25) + "}}}";
  }
  computed += "]";
  // The timing figures vary from run to run: each is written as 0.
  const auto untimed = [](std::string out) {
    for (const std::string key : {"\"seconds\": ", "\"rowsPerSecond\": "}) {
      const std::size_t at = out.find(key);
      if (at == std::string::npos) continue;
      const std::size_t from = at + key.size();
      out.replace(from, out.find(',', from) - from, "0");
    }
    return out;
  };
  const Outcome dry = run(f, {"--dry-run"});
  EXPECT_EQ(dry.status, 1) << dry.err;
  EXPECT_EQ(untimed(dry.out), expected(R"("dryRun": true, "committed": false)", computed));
  EXPECT_EQ(wages(f.db), kUnchanged);

  const Outcome r = run(f, {"--jobs", "2"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(untimed(r.out), expected(R"("dryRun": false, "committed": true)", ""));
  EXPECT_EQ(wages(f.db),
            "E1=25.000000 E2=50.000000 E3=75.000000 E4=0.000000 E5=125.000000 E6=150.000000 ");
}

// A month kept as one file per item runs as one script; a failing line is
// told as the line of its file (the first file's breaks are LF alone, its
// last line has none).
TEST(BatchCommand, SeveralScriptsRunAsOneAndTellTheirOwnLines) {
  const Files f = makeFiles("several", "DIM rate\nrate = 2.5");
  const std::string second = f.script.substr(0, f.script.rfind('/')) + "/wage.bas";
  std::ofstream(second, std::ios::binary)
      << "wage = pieces * rate\r\nIf pieces < 0 Then RaiseError \"negative\"\r\n";
  const Outcome r = korvex(std::vector<std::string_view>{
      "batch", f.script, second, "--db", f.db, "--record", "SELECT * FROM pay", "--json"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find(R"("errNum": 2000, "file": "wage.bas", "line": 2, )"), std::string::npos)
      << r.out;
  EXPECT_EQ(wages(f.db),
            "E1=25.000000 E2=50.000000 E3=75.000000 E4=0.000000 E5=125.000000 E6=150.000000 ");
}

TEST(BatchCommand, ASummaryThatCannotBeWrittenIsNoSuccess) {
  FullStream full;
  const Outcome r = run(makeFiles("full"), {"--dry-run"}, "SELECT * FROM pay", &full);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("无法写出运行结果"), std::string::npos) << r.err;
}

// A stop reaches into the SQL a row is running: a query of a billion steps
// ends within moments, and nothing is written.
TEST_P(BatchOnBoth, AStopInterruptsTheStatementRunning) {
  const Files f =
      makeFiles("interrupt",
                "DIM n\r\nn = DoSQL(\"WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 "
                "FROM c WHERE x < 1000000000) SELECT count(*) FROM c\")\r\nwage = n\r\n",
                "pay.db", GetParam());
  std::atomic<bool> stop{false};
  std::string error;
  std::optional<BatchDatabase> db =
      openBatchDatabase(f.db, "SELECT * FROM pay", true, &stop, error);
  ASSERT_TRUE(db) << error;
  BatchJob job;
  job.script = fromUtf8(readFile(f.script));
  job.jobs = 2;
  job.openWorker = db->openWorker;
  job.stop = &stop;
  const auto started = std::chrono::steady_clock::now();
  std::jthread stopper([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stop = true;
  });
  const BatchSummary s = db->shared ? db->shared(job) : runBatch(db->table, job, db->writer.get());
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
  EXPECT_TRUE(s.interrupted);
  EXPECT_FALSE(s.committed);
  db.reset();
  EXPECT_EQ(wages(f.db), kUnchanged);
}

// The demo's month computed with the workers sharing what they read and
// with every statement run: the same table, value for value, and most
// statements answered from what another row read.
TEST(BatchCommand, SharedReadsComputeTheSameMonth) {
  korvex::testing::ScratchDir dir;
  std::string error, script;
  const std::string shared = dir.file("shared.db"), unshared = dir.file("unshared.db");
  ASSERT_TRUE(createDemoDatabase(shared, {.employees = 30, .months = 2}, error)) << error;
  std::filesystem::copy_file(shared, unshared);
  std::vector<std::filesystem::path> formulas(
      std::filesystem::directory_iterator(KORVEX_PAYROLL_EXAMPLES), {});
  std::sort(formulas.begin(), formulas.end());
  for (const auto& f : formulas) script += readFile(f) + "\r\n";
  std::ofstream(dir.file("month.bas"), std::ios::binary) << script;
  const auto month = [&](const std::string& db, std::string_view reuse) {
    const std::string_view record = "SELECT * FROM [工资表2025年02月]";
    const Outcome r =
        korvex(std::vector<std::string_view>{"batch", dir.file("month.bas"), "--db", db, "--record",
                                             record, "--jobs", "2", "--json", reuse});
    EXPECT_EQ(r.status, 0) << r.out << r.err;
    std::string table;
    for (const auto& row :
         need(need(SqliteDatabase::open(db)).query(u"SELECT * FROM [工资表2025年02月] ORDER BY 1"))
             .rows) {
      for (const Value& v : row) table += korvex::testing::describe(v) + "|";
    }
    return std::pair(table, r.out);
  };
  const auto [withShared, sharedReport] = month(shared, "--json");
  const auto [withoutShared, unsharedReport] = month(unshared, "--no-reuse");
  EXPECT_EQ(withShared, withoutShared);
  EXPECT_NE(withShared.find("Currency:"), std::string::npos);  // wages were written
  EXPECT_EQ(unsharedReport.find("\"reused\""), std::string::npos) << unsharedReport;
  const std::size_t sent = sharedReport.find("\"statements\": "),
                    reused = sharedReport.find("\"reused\": ");
  ASSERT_NE(reused, std::string::npos) << sharedReport;
  EXPECT_GT(std::stol(sharedReport.substr(reused + 10)) * 2,
            std::stol(sharedReport.substr(sent + 14)));
}

// A script's own SQL cannot write, whatever it tries: the connections it
// reaches, also one it opens with "use NAME", open the file read-only.
// The rows' connections only read, whatever a script sends to undo that.
TEST_P(BatchOnBoth, ScriptsCannotWriteBehindTheBatch) {
  using Attempt = std::pair<const char*, const char*>;  // script, refusal
  const std::vector<Attempt> attempts =
      onServer()
          ? std::vector<
                Attempt>{{"DIM n\r\nn = DoSQL(\"SET default_transaction_read_only = off\")\r\n"
                          "n = DoSQL(\"UPDATE pay SET wage = 99\")\r\n",
                          "cannot execute UPDATE in a read-only transaction"},
                         {"DIM n\r\nn = DoSQL(\"SET default_transaction_read_only = off\" & vbCrLf "
                          "& "
                          "\"ABORT\" & vbCrLf & \"UPDATE pay SET wage = 98\")\r\n",
                          "cannot execute UPDATE in a read-only transaction"},
                         {"DIM n\r\nn = DoSQL(\"COMMIT AND CHAIN\" & vbCrLf & \"SET "
                          "transaction_read_only = "
                          "off\" & vbCrLf & \"UPDATE pay SET wage = 97\")\r\n",
                          "transaction read-write mode must be set before any query"}}
          : std::vector<Attempt>{
                {"DIM n\r\nn = DoSQL(\"PRAGMA query_only = 0\")\r\nn = DoSQL(\"UPDATE pay SET "
                 "wage = 99\")\r\n",
                 "readonly database"},
                {"DIM n\r\nn = DoSQL(\"use pay\" & vbCrLf & \"UPDATE pay SET wage = 98\")\r\n",
                 "readonly database"}};
  for (const auto& [script, refusal] : attempts) {
    for (const std::string_view mode : {"--dry-run", "--json"}) {
      SCOPED_TRACE(std::string(script) + " " + std::string(mode));
      const Files f = makeFiles("readonly", script, "pay.db", GetParam());
      const Outcome r = run(f, {mode});
      EXPECT_EQ(r.status, 1) << r.err;
      EXPECT_NE(r.out.find(refusal), std::string::npos) << r.out;
      EXPECT_EQ(wages(f.db), kUnchanged);
    }
  }
}

// Refused before any row is computed (exit 2, the reason, nothing written):
// a database another connection is writing (a dry run needs no lock), a
// script the engine cannot split into lines, a record whose rows cannot be
// traced back to one table's rows.
TEST(BatchCommand, RefusedBeforeComputing) {
  const Files locked = makeFiles("locked");
  SqliteDatabase other = need(SqliteDatabase::open(locked.db));
  need(other.beginWriting());
  const struct {
    Files f;
    const char* record;
    const char* reason;
  } kCases[] = {
      {locked, "SELECT * FROM pay", "无法写入数据库: database is locked"},
      {makeFiles("long", "wage = 1" + std::string(40000, ' ') + "\r\n"), "SELECT * FROM pay",
       "脚本无法分行: 溢出"},
      {makeFiles("self_join"),
       "SELECT p.code, p.pieces, q.wage FROM pay p JOIN pay q ON q.rowid = p.rowid + 1",
       "--record 的行不能追溯到同一个表的行"},
  };
  for (const auto& c : kCases) {
    const Outcome r = run(c.f, {}, c.record);
    EXPECT_EQ(r.status, 2) << c.reason;
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find(c.reason), std::string::npos) << r.err;
    EXPECT_EQ(wages(c.f.db), kUnchanged);
  }
  EXPECT_EQ(run(locked, {"--dry-run"}).status, 1);  // E4's row fails, as in every run
  need(other.rollback());
}

// The server's claims name rows by their places in one table: a record of
// a parent table, whose rows lie in several, is refused.
TEST_P(BatchOnBoth, RowsOfSeveralTablesAreRefused) {
  if (!onServer()) GTEST_SKIP() << "a file has no inherited tables";
  const Files f = makeFiles("inherited", kPayScript, "pay.db", GetParam());
  need(need(PostgresDatabase::open(f.db))
           .execute("CREATE TABLE pay_more (PRIMARY KEY (code)) INHERITS (pay);"
                    "INSERT INTO pay_more VALUES ('E7', 70, 0)"));
  const Outcome r = run(f, {}, "SELECT * FROM pay WHERE code IN ('E1', 'E7')");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("--record 的行来自多个表"), std::string::npos) << r.err;
  EXPECT_EQ(wages(f.db), kUnchanged + "E7=0.000000 ");
}

}  // namespace
}  // namespace korvex::cli
