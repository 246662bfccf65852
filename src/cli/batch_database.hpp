// The database side of `korvex batch`: the rows of the record query, a
// connection of its own for every worker thread, and the writer that puts
// the rows' assignments back in one transaction.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "batch_runner.hpp"
#include "korvex/sqlite.hpp"

namespace korvex::cli {

struct BatchDatabase {
  BatchTable table;
  /// For BatchJob::openWorker: opens a read-only connection on the calling
  /// thread and hands it to the engines as Parent.Connect.
  std::function<BatchJob::EngineSetup()> openWorker;
  /// Writes on a connection of its own, through a record set of the query.
  std::unique_ptr<BatchWriter> writer;
  /// The read results the workers share; none when switched off.
  std::shared_ptr<SqliteReuse> reuse;
};

/// Opens the SQLite file `path` (it must exist) and runs `recordQuery`, one
/// statement that only reads; `forWriting` takes the write lock first (a
/// batch that will write back). nullopt with `error` set (one line, for a
/// usage error) when any of it fails. Raising `stop` interrupts the SQL
/// statement that runs on any of its connections at the time. With `reuse`
/// the workers answer a statement another has run from its result.
std::optional<BatchDatabase> openBatchDatabase(const std::string& path,
                                               const std::string& recordQuery, bool forWriting,
                                               const std::atomic<bool>* stop, std::string& error,
                                               bool reuse = true);

}  // namespace korvex::cli
