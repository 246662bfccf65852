// A month's payroll on 10,000 employees: `korvex batch` running a formula
// that calls three wage functions for every employee and writes three wage
// items back, next to the same three queries and the same update sent
// straight to SQLite with prepared statements. Reports rows per second.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/demo_database.hpp"
#include "korvex/batch.hpp"

namespace {

constexpr int kEmployees = 10000;

// Two months from January 2025: January is closed, February is the month
// being computed.
const std::string& demoDatabase() {
  static const std::string path = [] {
    const auto file = std::filesystem::temp_directory_path() / "korvex_batch_bench.db";
    std::filesystem::remove(file);
    korvex::cli::DemoSettings settings;
    settings.employees = kEmployees;
    settings.months = 2;
    std::string error;
    if (!korvex::cli::createDemoDatabase(file.string(), settings, error)) {
      std::fprintf(stderr, "korvex_bench: %s\n", error.c_str());
      std::exit(1);
    }
    return file.string();
  }();
  return path;
}

constexpr const char* kRecord = "SELECT * FROM [工资表2025年02月]";

// The formula with the wage functions, and the same three SQL texts sent
// through DoSQL.
constexpr std::u16string_view kWageFormula =
    u"DIM 岗位\r\n"
    u"岗位 = _员工属性(工号, \"岗位\")\r\n"
    u"计件工资 = _计件工资额(年, 月, 工号)\r\n"
    u"基本工资 = 2200\r\n"
    u"If 岗位 = \"主管\" Then 基本工资 = 3500\r\n"
    u"保底补差 = 0\r\n"
    u"If _员工工资项目值(年, 月 - 1, 工号, \"应发工资\", 0) > 基本工资 + 计件工资 Then 保底补差 = "
    u"100\r\n";

constexpr std::u16string_view kSqlFormula =
    u"DIM 岗位\r\n"
    u"岗位 = DoSQL(\"select cGangWei from Employes where cCode='\" & 工号 & \"'\")\r\n"
    u"计件工资 = DoSQL(\"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (YEAR(日期) = \" & "
    u"年 "
    u"& \") AND (MONTH(日期) = \" & 月 & \")  AND 工号='\" & 工号 & \"'\")\r\n"
    u"基本工资 = 2200\r\n"
    u"If 岗位 = \"主管\" Then 基本工资 = 3500\r\n"
    u"保底补差 = DoSQL(\"select [应发工资] as WA_Value from [工资表2025年01月] Where (工号 = '\" & "
    u"工号 & \"')\")\r\n";

void BM_PayrollBatch(benchmark::State& state) {
  const std::string& path = demoDatabase();
  std::size_t rows = 0;
  for (auto _ : state) {
    std::string error;
    std::optional<korvex::BatchDatabase> db =
        korvex::openBatchDatabase(path, kRecord, true, nullptr, error);
    if (!db) {
      state.SkipWithError(error.c_str());
      break;
    }
    korvex::BatchJob job;
    job.script = std::u16string(state.range(1) == 0 ? kWageFormula : kSqlFormula);
    job.jobs = static_cast<unsigned>(state.range(0));
    job.openWorker = db->openWorker;
    const korvex::BatchSummary summary = korvex::runBatch(db->table, job, db->writer.get());
    if (summary.failed != 0 || !summary.committed) {
      state.SkipWithError("the payroll batch failed");
      break;
    }
    rows += summary.done;
  }
  state.counters["rows"] =
      benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsRate);
}
// Arguments: threads, formula (0 wage functions, 1 DoSQL).
BENCHMARK(BM_PayrollBatch)
    ->Args({1, 0})
    ->Args({2, 0})
    ->Args({1, 1})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The same work without the engine: three prepared queries and one update
// per employee, in one transaction.
void BM_PayrollDirectSqlite(benchmark::State& state) {
  const std::string& path = demoDatabase();
  sqlite3* db = nullptr;
  sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  std::vector<std::string> codes;
  sqlite3_stmt* list = nullptr;
  sqlite3_prepare_v2(db, "SELECT 工号 FROM [工资表2025年02月]", -1, &list, nullptr);
  while (sqlite3_step(list) == SQLITE_ROW) {
    codes.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(list, 0)));
  }
  sqlite3_finalize(list);

  const char* texts[] = {
      "select * from Employes where cCode=?",
      "SELECT SUM(工资合计) FROM WA_JobData WHERE 工号 = ? AND 日期 BETWEEN '2025-02-01' AND "
      "'2025-02-28'",
      "select 应发工资 from [工资表2025年01月] Where 工号 = ?",
      "UPDATE [工资表2025年02月] SET 基本工资 = ?, 计件工资 = ?, 保底补差 = ? WHERE 工号 = ?",
  };
  sqlite3_stmt* stmts[4] = {};
  for (int i = 0; i < 4; ++i) sqlite3_prepare_v2(db, texts[i], -1, &stmts[i], nullptr);
  int position = -1;  // the column of the employee's post
  for (int c = 0; c < sqlite3_column_count(stmts[0]); ++c) {
    if (std::string(sqlite3_column_name(stmts[0], c)) == "cGangWei") position = c;
  }

  std::size_t rows = 0;
  for (auto _ : state) {
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    for (const std::string& code : codes) {
      double values[3] = {};
      for (int i = 0; i < 3; ++i) {
        sqlite3_bind_text(stmts[i], 1, code.c_str(), -1, SQLITE_STATIC);
        if (sqlite3_step(stmts[i]) == SQLITE_ROW) {
          if (i == 0) {
            const auto* post =
                reinterpret_cast<const char*>(sqlite3_column_text(stmts[0], position));
            values[0] = post != nullptr && std::string(post) == "主管" ? 1 : 0;
          } else {
            values[i] = sqlite3_column_double(stmts[i], 0);
          }
        }
        sqlite3_reset(stmts[i]);
      }
      const double base = values[0] != 0 ? 3500 : 2200;
      sqlite3_bind_double(stmts[3], 1, base);
      sqlite3_bind_double(stmts[3], 2, values[1]);
      sqlite3_bind_double(stmts[3], 3, values[2] > base + values[1] ? 100 : 0);
      sqlite3_bind_text(stmts[3], 4, code.c_str(), -1, SQLITE_STATIC);
      sqlite3_step(stmts[3]);
      sqlite3_reset(stmts[3]);
      ++rows;
    }
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
  }
  for (sqlite3_stmt* s : stmts) sqlite3_finalize(s);
  sqlite3_close(db);
  state.counters["rows"] =
      benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_PayrollDirectSqlite)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
