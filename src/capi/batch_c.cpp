// The C interface's batch: the library's runner and its SQLite side behind
// one call, the outcome kept in a handle the host frees.
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "korvex.h"
#include "korvex/batch.hpp"
#include "korvex/engine.hpp"

struct korvex_batch {
  korvex::BatchSummary summary;
  std::vector<std::string> messages;  // the failures' texts, UTF-8
  std::string error;
};

extern "C" {

korvex_status korvex_batch_run(const char* dbPath, const char* recordSql, size_t recordLength,
                               const char* script, size_t scriptLength, unsigned jobs, int dryRun,
                               korvex_batch** batch) {
  if (dbPath == nullptr || recordSql == nullptr || script == nullptr || batch == nullptr ||
      jobs < 1 || jobs > 64) {
    return KORVEX_E_ARGUMENT;
  }
  *batch = nullptr;
  try {
    auto out = std::make_unique<korvex_batch>();
    const auto text = [](const char* p, size_t n) {
      return n == KORVEX_NTS ? std::string(p) : std::string(p, n);
    };
    std::optional<korvex::BatchDatabase> db = korvex::openBatchDatabase(
        dbPath, text(recordSql, recordLength), dryRun == 0, nullptr, out->error);
    if (!db) {
      *batch = out.release();
      return KORVEX_E_REFUSED;
    }
    korvex::BatchJob job;
    job.script = korvex::fromUtf8(text(script, scriptLength));
    job.jobs = jobs;
    job.openWorker = db->openWorker;
    out->summary = db->shared
                       ? db->shared(job)
                       : korvex::runBatch(db->table, job, dryRun != 0 ? nullptr : db->writer.get());
    for (const korvex::RowFailure& f : out->summary.failures) {
      out->messages.push_back(korvex::toUtf8(f.message));
    }
    if (!out->summary.error.empty()) out->error = korvex::toUtf8(out->summary.error);
    *batch = out.release();
    return KORVEX_OK;
  } catch (const std::bad_alloc&) {
    return KORVEX_E_MEMORY;
  } catch (...) {
    return KORVEX_E_INTERNAL;
  }
}

korvex_status korvex_batch_summary_get(const korvex_batch* batch, korvex_batch_summary* out) {
  if (batch == nullptr || out == nullptr) return KORVEX_E_ARGUMENT;
  const korvex::BatchSummary& s = batch->summary;
  *out = {s.rows, s.done, s.failed, s.changedRows, s.changedFields, s.committed ? 1 : 0};
  return KORVEX_OK;
}

korvex_status korvex_batch_failure(const korvex_batch* batch, size_t index, size_t* row,
                                   int32_t* errorNumber, int32_t* line, const char** message,
                                   size_t* messageLength) {
  if (batch == nullptr) return KORVEX_E_ARGUMENT;
  if (index >= batch->summary.failures.size()) return KORVEX_E_NOT_FOUND;
  const korvex::RowFailure& f = batch->summary.failures[index];
  if (row != nullptr) *row = f.row;
  if (errorNumber != nullptr) *errorNumber = f.errNum;
  if (line != nullptr) *line = f.line;
  if (message != nullptr) *message = batch->messages[index].c_str();
  if (messageLength != nullptr) *messageLength = batch->messages[index].size();
  return KORVEX_OK;
}

const char* korvex_batch_error(const korvex_batch* batch) {
  return batch == nullptr ? "" : batch->error.c_str();
}

void korvex_batch_free(korvex_batch* batch) { delete batch; }

}  // extern "C"
