#include <gtest/gtest.h>

#include <tuple>

#include "cli/batch_report.hpp"
#include "cli/batch_runner.hpp"

namespace korvex::cli {
namespace {

using Write = std::tuple<std::size_t, std::size_t, double>;  // row, column, value

class RecordingWriter : public BatchWriter {
 public:
  std::vector<Write> written;
  std::size_t refuseRow = SIZE_MAX;
  bool refuseCommit = false;
  int commits = 0;
  int rollbacks = 0;

  DispatchResult write(std::size_t row, std::span<const FieldWrite> writes) override {
    if (row == refuseRow) return DispatchResult::failure(19, u"约束失败");
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

TEST(Batch, WritesSucceedingRowsInOrderAndReportsFailures) {
  RecordingWriter writer;
  const BatchSummary s = runBatch(employees(5), payJob(), &writer);
  const std::vector<Write> expected{{0, 2, 25}, {1, 2, 50}, {2, 2, 75}, {4, 2, 125}};
  EXPECT_EQ(writer.written, expected);
  EXPECT_EQ(writer.commits, 1);
  // The raised error carries the line of the single-line If's tail (run on
  // its own) and the line of the If.
  const std::string failures =
      R"("error": "", "seconds": 0, "rowsPerSecond": 0, "failures": [{"row": 4, "key": "E4", )"
      R"("errNum": 2000, "line": 3, "message": "件数为负 : 行号 1 : 行号 3"}]})";
  EXPECT_EQ(summary(s),
            R"({"rows": 5, "done": 5, "succeeded": 4, "failed": 1, "changedRows": 4, )"
            R"("changedFields": 4, "dryRun": false, "committed": true, "interrupted": false, )" +
                failures);
  // Without a writer nothing is written, but the changes are counted.
  EXPECT_EQ(summary(runBatch(employees(5), payJob(2), nullptr)),
            R"({"rows": 5, "done": 5, "succeeded": 4, "failed": 1, "changedRows": 4, )"
            R"("changedFields": 4, "dryRun": true, "committed": false, "interrupted": false, )" +
                failures);
}

TEST(Batch, OutcomeDoesNotDependOnTheNumberOfThreads) {
  const BatchTable table = employees(200);
  RecordingWriter one, four;
  const BatchSummary a = runBatch(table, payJob(1), &one);
  const BatchSummary b = runBatch(table, payJob(4), &four);
  EXPECT_EQ(one.written, four.written);
  EXPECT_EQ(one.written.size(), 150u);
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

TEST(BatchReport, JsonSummary) {
  BatchSummary s;
  s.rows = s.done = 3;
  s.failed = 1;
  s.changedRows = s.changedFields = 2;
  s.committed = true;
  s.seconds = 0.5;
  s.failures.push_back({2, u"E\"2", 2000, 3, u"件数为负 : 行号 3"});
  EXPECT_EQ(summaryJson(s),
            R"({"rows": 3, "done": 3, "succeeded": 2, "failed": 1, "changedRows": 2, )"
            R"("changedFields": 2, "dryRun": false, "committed": true, "interrupted": false, )"
            R"("error": "", "seconds": 0.5, "rowsPerSecond": 6, "failures": [{"row": 2, )"
            R"("key": "E\"2", "errNum": 2000, "line": 3, "message": "件数为负 : 行号 3"}]})");
}

}  // namespace
}  // namespace korvex::cli
