// A whole month's payroll: the nine formulas of examples/payroll/ joined in
// file order (as scripts/setup.sh joins them), run as one script for every
// employee of the open month of a demo database (three months from January
// 2025, March open), through the functions `korvex batch` uses. Every
// iteration computes the month on a fresh copy of the database. Arguments:
// employees, worker threads. Reports rows per second.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "cli/demo_database.hpp"
#include "cli/run_command.hpp"
#include "korvex/batch.hpp"

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& message) {
  std::fprintf(stderr, "korvex_bench: %s\n", message.c_str());
  std::exit(1);
}

// The formulas' files in name order, each followed by a line break.
const std::u16string& monthScript() {
  static const std::u16string script = [] {
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::directory_iterator(fs::path(KORVEX_BENCH_DIR) / ".." / "examples" / "payroll")) {
      if (entry.path().extension() == ".bas") files.push_back(entry.path());
    }
    if (files.empty()) fail("no formulas in examples/payroll");
    std::sort(files.begin(), files.end());
    std::string bytes;
    for (const fs::path& file : files) {
      std::ifstream in(file, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      bytes += text.str() + "\n";
    }
    return korvex::cli::decodeScript(bytes, korvex::cli::Encoding::Utf8);
  }();
  return script;
}

struct Demo {
  std::string path;
  std::string recordQuery;  // the open month's wage table
};

// One demo database per number of employees, made on first use.
const Demo& demoDatabase(int employees) {
  static std::map<int, Demo> made;
  if (const auto it = made.find(employees); it != made.end()) return it->second;
  const fs::path file =
      fs::temp_directory_path() / ("korvex_month_bench_" + std::to_string(employees) + ".db");
  fs::remove(file);
  korvex::cli::DemoSettings settings;
  settings.employees = employees;
  settings.months = 3;
  std::string error;
  const auto summary = korvex::cli::createDemoDatabase(file.string(), settings, error);
  if (!summary) fail(error);
  return made[employees] = {file.string(), "SELECT * FROM [" + summary->lastWageTable + "]"};
}

void BM_PayrollMonth(benchmark::State& state) {
  const Demo& demo = demoDatabase(static_cast<int>(state.range(0)));
  const std::u16string& script = monthScript();
  const fs::path copy = fs::temp_directory_path() / "korvex_month_bench_run.db";
  std::size_t rows = 0;
  for (auto _ : state) {
    state.PauseTiming();
    fs::copy_file(demo.path, copy, fs::copy_options::overwrite_existing);
    state.ResumeTiming();
    std::string error;
    std::optional<korvex::BatchDatabase> db =
        korvex::openBatchDatabase(copy.string(), demo.recordQuery, true, nullptr, error);
    if (!db) {
      state.SkipWithError(error.c_str());
      break;
    }
    korvex::BatchJob job;
    job.script = script;
    job.jobs = static_cast<unsigned>(state.range(1));
    job.openWorker = db->openWorker;
    const korvex::BatchSummary summary = korvex::runBatch(db->table, job, db->writer.get());
    if (summary.failed != 0 || !summary.committed || summary.done == 0) {
      state.SkipWithError("the month's batch failed");
      break;
    }
    rows += summary.done;
  }
  fs::remove(copy);
  state.counters["rows"] =
      benchmark::Counter(static_cast<double>(rows), benchmark::Counter::kIsRate);
}
// A month takes seconds to minutes: one run of each.
BENCHMARK(BM_PayrollMonth)
    ->ArgNames({"employees", "jobs"})
    ->ArgsProduct({{200, 1000}, {1, 2}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
