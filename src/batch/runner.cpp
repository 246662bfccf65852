#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "korvex/batch.hpp"
#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/memory_recordset.hpp"

namespace korvex {

namespace {

struct RowResult {
  std::int32_t errNum = 0;
  std::int32_t line = 0;
  std::u16string message;
  std::vector<FieldWrite> writes;
};

// The results in row order: workers fill slots in any order, the writer
// takes them one after the other.
class ResultQueue {
 public:
  explicit ResultQueue(std::size_t rows) : slots_(rows) {}

  void put(std::size_t row, RowResult result) {
    {
      std::lock_guard lock(mutex_);
      slots_[row] = std::move(result);
    }
    ready_.notify_one();
  }

  /// The result of `row`, or nullopt once `stop` is raised while waiting.
  std::optional<RowResult> take(std::size_t row, const std::atomic<bool>* stop) {
    std::unique_lock lock(mutex_);
    while (!slots_[row]) {
      if (stop != nullptr && stop->load()) return std::nullopt;
      // A signal cannot notify a condition variable: look at `stop` often.
      ready_.wait_for(lock, std::chrono::milliseconds(50));
    }
    std::optional<RowResult> result = std::move(slots_[row]);
    slots_[row].reset();
    return result;
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::vector<std::optional<RowResult>> slots_;
};

bool stopped(const std::atomic<bool>* stop) { return stop != nullptr && stop->load(); }

// One row on a fresh engine whose record set holds that row alone, so that
// nothing (variables, blocks, errors, moves) carries over between rows.
RowResult runRow(const BatchTable& table, std::size_t row, const BatchJob& job,
                 const BatchJob::EngineSetup& setup) {
  BasicEngine engine;
  const auto record = MemoryRecordset::create(table.fieldNames, {table.rows[row]});
  if (setup) setup(engine);
  engine.SetLocale(*job.locale);
  engine.SetRecordSet(record);
  for (const auto& [name, value] : job.presets) engine.SetSysVar(name, value);
  engine.SetLineHook([stop = job.stop](std::int16_t) { return !stopped(stop); });
  engine.SetCodeBlock(job.script);
  engine.Execute();

  RowResult result;
  if (engine.ErrNum() != 0) {
    result.errNum = engine.ErrNum();
    result.line = engine.CurrentLineNum();
    result.message = engine.ErrMsg();
    return result;
  }
  // A field given back the value it was read with changes nothing.
  for (std::size_t column = 0; column < table.fieldNames.size(); ++column) {
    if (record->assigned(0, column) &&
        !sameValue(record->cell(0, column), table.rows[row][column])) {
      result.writes.push_back({column, record->cell(0, column)});
    }
  }
  return result;
}

std::u16string keyOf(const BatchTable& table, std::size_t row) {
  const auto& values = table.rows[row];
  if (values.empty()) return {};
  Converted<std::u16string> text = toText(values.front());
  return text ? std::move(*text.value) : std::u16string();
}

}  // namespace

BatchSummary runBatch(const BatchTable& table, const BatchJob& job, BatchWriter* writer) {
  const auto started = std::chrono::steady_clock::now();
  BatchSummary summary;
  summary.rows = table.rows.size();
  summary.dryRun = writer == nullptr;

  ResultQueue queue(summary.rows);
  std::atomic<std::size_t> nextRow{0};
  std::vector<std::jthread> workers;
  const unsigned jobs = std::max(1u, job.jobs);
  for (unsigned i = 0; i < jobs && i < summary.rows; ++i) {
    workers.emplace_back([&] {
      const BatchJob::EngineSetup setup = job.openWorker ? job.openWorker() : nullptr;
      for (;;) {
        const std::size_t row = nextRow.fetch_add(1);
        if (row >= summary.rows || stopped(job.stop)) break;
        queue.put(row, runRow(table, row, job, setup));
      }
    });
  }

  for (std::size_t row = 0; row < summary.rows; ++row) {
    std::optional<RowResult> result = queue.take(row, job.stop);
    if (!result || stopped(job.stop)) {
      summary.interrupted = true;
      break;
    }
    std::size_t changed = result->writes.size();
    if (result->errNum == 0 && !result->writes.empty() && writer != nullptr) {
      DispatchResult written = writer->write(row, result->writes, changed);
      if (!written.ok()) {
        result->errNum = written.number;
        result->message = std::move(written.description);
      }
    }
    if (result->errNum != 0) {
      ++summary.failed;
      summary.failures.push_back({row + 1,
                                  keyOf(table, row),
                                  result->errNum,
                                  result->line,
                                  std::move(result->message),
                                  {}});
    } else if (changed > 0) {
      ++summary.changedRows;
      summary.changedFields += changed;
      if (writer == nullptr) {
        RowFields& fields = summary.computed.emplace_back();
        fields.row = row + 1;
        fields.key = keyOf(table, row);
        for (FieldWrite& w : result->writes) {
          fields.fields.emplace_back(table.fieldNames[w.column], std::move(w.value));
        }
      }
    }
    summary.done = row + 1;
    if (job.progress) job.progress(summary.done, summary.rows);
  }
  workers.clear();  // joins

  if (stopped(job.stop)) summary.interrupted = true;  // also just before the commit
  if (writer != nullptr) {
    if (summary.interrupted) {
      writer->rollback();
    } else if (DispatchResult committed = writer->commit(); committed.ok()) {
      summary.committed = true;
    } else {
      writer->rollback();
      summary.error = std::move(committed.description);
    }
  }
  summary.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  return summary;
}

}  // namespace korvex
