#include "batch_command.hpp"

#include <unistd.h>

#include <csignal>
#include <iostream>

#include "batch_report.hpp"
#include "joined_script.hpp"
#include "korvex/batch.hpp"
#include "korvex/engine.hpp"
#include "output.hpp"
#include "presets.hpp"
#include "run_command.hpp"

namespace korvex::cli {

namespace {

// Ctrl-C or a kill stops the batch: the SQL statements running are
// interrupted, no new rows start and nothing is committed. A second signal ends the process at
// once, which leaves the database as it was too, since the writes were never committed.
std::atomic<bool> gStop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void onStopSignal(int signal) {
  if (gStop.load()) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    return;
  }
  gStop.store(true);
}

class StopSignals {
 public:
  StopSignals() {
    gStop.store(false);
    interrupt_ = std::signal(SIGINT, onStopSignal);
    terminate_ = std::signal(SIGTERM, onStopSignal);
  }
  ~StopSignals() {
    std::signal(SIGINT, interrupt_ == SIG_ERR ? SIG_DFL : interrupt_);
    std::signal(SIGTERM, terminate_ == SIG_ERR ? SIG_DFL : terminate_);
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  void (*interrupt_)(int) = SIG_DFL;
  void (*terminate_)(int) = SIG_DFL;
};

int usageError(std::ostream& err, const std::string& message) {
  err << "korvex: " << message << '\n';
  return kExitUsage;
}

}  // namespace

int runBatchCommand(const BatchOptions& options, std::istream& in, std::ostream& out,
                    std::ostream& err) {
  std::string error;
  JoinedScript script;
  for (const std::string& path : options.scripts) {
    const std::optional<std::string> bytes = readScriptBytes(path, in, error);
    if (!bytes) return usageError(err, error);
    script.add(path.substr(path.find_last_of('/') + 1),
               decodeScript(*bytes, options.encoding, &err));
  }
  std::optional<BatchDatabase> db = openBatchDatabase(
      options.database, options.record, !options.dryRun, &gStop, error, options.reuse);
  if (!db) return usageError(err, error);

  BatchJob job;
  job.script = script.text();
  job.jobs = options.jobs;
  job.locale = Locale::byName(options.locale);
  job.openWorker = db->openWorker;
  {
    // Evaluated once, with the database at hand but no current row.
    BasicEngine engine;
    engine.SetLocale(*job.locale);
    if (const BatchJob::EngineSetup setup = db->openWorker()) setup(engine);
    if (!evaluatePresets(engine, options.presets, error, [&job](std::u16string name, Value value) {
          job.presets.emplace_back(std::move(name), std::move(value));
        })) {
      return usageError(err, error);
    }
    // A script the engine cannot split into lines (too long for its 16-bit
    // positions) would fail every row alike: refuse it before computing.
    // Stopped at its first line, the probe runs nothing of the script.
    engine.SetCodeBlock(job.script);
    engine.SetLineHook([](std::int16_t) { return false; });
    engine.Execute();
    if (engine.ErrNum() != 0) return usageError(err, "脚本无法分行: " + toUtf8(engine.ErrMsg()));
  }

  ProgressBar progress(err, &err == &std::cerr && ::isatty(STDERR_FILENO) == 1);
  job.progress = [&progress](std::size_t done, std::size_t total) { progress.update(done, total); };
  BatchSummary summary;
  {
    StopSignals signals;
    job.stop = &gStop;
    summary = db->shared ? db->shared(job)
                         : runBatch(db->table, job, options.dryRun ? nullptr : db->writer.get());
  }
  if (db->reuse) summary.statements = reuseCounts(*db->reuse);
  // With several files, a line is told as the line of the file it is in.
  for (RowFailure& f : summary.failures) {
    if (script.files() < 2 || f.line <= 0) continue;
    const auto [file, line] = script.locate(f.line);
    f.file = std::string(file);
    f.line = line;
  }
  progress.finish();

  if (!writeOutcome(out, err, options.json ? summaryJson(summary) + '\n' : summaryText(summary))) {
    return kExitUsage;
  }
  if (summary.interrupted) return kExitInterrupted;
  const bool written = summary.dryRun || summary.committed;
  return summary.failed == 0 && written ? kExitSuccess : kExitScriptFailed;
}

}  // namespace korvex::cli
