// A month's batch for any host: one script run for every row of a table,
// each row with an engine of its own, computed on worker threads, the rows'
// field assignments handed to a single writer in row order; and the SQLite
// side of it: the rows of a record query, a read-only connection for every
// worker, and the writer that puts the rows back in one transaction (library
// korvex_batch).
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/locale.hpp"
#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"

namespace korvex {

class BasicEngine;

/// The rows of a batch, read once before the first row runs.
struct BatchTable {
  std::vector<std::u16string> fieldNames;
  std::vector<std::vector<Value>> rows;
};

/// One field a row's script assigned, with its final value.
struct FieldWrite {
  std::size_t column = 0;
  Value value;
};

/// Where the rows' assignments go. `write` is called from one thread, in
/// row order, only for rows whose script succeeded and assigned something;
/// it writes all of the row or, on failure, none of it, and counts in
/// `changed` the fields whose stored value it changed. Nothing becomes
/// visible before `commit`; `rollback` drops everything written.
class BatchWriter {
 public:
  virtual ~BatchWriter() = default;
  virtual DispatchResult write(std::size_t row, std::span<const FieldWrite> writes,
                               std::size_t& changed) = 0;
  virtual DispatchResult commit() = 0;
  virtual void rollback() noexcept = 0;
};

struct RowFailure {
  std::size_t row = 0;      // from 1, in the table's order
  std::u16string key;       // the row's first field as text
  std::int32_t errNum = 0;  // the script's error, or the database's
  std::int32_t line = 0;    // the script line; 0 when writing back failed
  std::u16string message;
  std::string file;  // with several script files, the one the line is in
};

/// What a row's script computed for the fields it assigned.
struct RowFields {
  std::size_t row = 0;  // from 1
  std::u16string key;
  std::vector<std::pair<std::u16string, Value>> fields;  // name, value
};

struct BatchSummary {
  std::size_t rows = 0;           // rows of the table
  std::size_t done = 0;           // rows run (all of them unless interrupted)
  std::size_t failed = 0;         // rows whose script or write-back failed
  std::size_t changedRows = 0;    // successful rows that changed a field
  std::size_t changedFields = 0;  // the fields whose value changed
  bool dryRun = false;            // computed only, no writer
  bool committed = false;         // the writer committed every write
  bool interrupted = false;       // stopped early: nothing was written
  std::u16string error;           // why the commit failed
  double seconds = 0;
  /// The rows' statements: how many were sent, how many answered from the
  /// results other rows read; nullopt when nothing was shared.
  std::optional<SqliteReuseCounts> statements;
  std::vector<RowFailure> failures;  // in row order
  /// A dry run's rows that changed fields, with the values computed.
  std::vector<RowFields> computed;
  /// A month shared with other processes (on a database server): the rows
  /// of the whole query; `rows` and `done` count the rows this process
  /// claimed and ran.
  std::optional<std::size_t> sharedRows;
};

struct BatchJob {
  std::u16string script;
  /// Variables every row's engine starts with.
  std::vector<std::pair<std::u16string, Value>> presets;
  unsigned jobs = 1;
  /// The locale every row's engine formats and reads numbers and dates in.
  const Locale* locale = &Locale::zhCN();
  /// Called once on each worker thread, on that thread; what it returns
  /// prepares each engine of that thread before its row runs (hands over
  /// a Parent with a connection of the thread's own). May be empty.
  using EngineSetup = std::function<void(BasicEngine&)>;
  std::function<EngineSetup()> openWorker;
  /// Called on the writing thread after each row with (rows done, rows).
  std::function<void(std::size_t, std::size_t)> progress;
  /// Raised from elsewhere (a signal handler) to stop the batch.
  const std::atomic<bool>* stop = nullptr;
};

/// Runs the batch. Without a writer (a dry run) nothing is written; with
/// one, the writes are committed at the end unless the batch was stopped.
BatchSummary runBatch(const BatchTable& table, const BatchJob& job, BatchWriter* writer);

struct BatchDatabase {
  BatchTable table;
  /// For BatchJob::openWorker: opens a read-only connection on the calling
  /// thread and hands it to the engines as Parent.Connect.
  std::function<BatchJob::EngineSetup()> openWorker;
  /// Writes on a connection of its own, through a record set of the query.
  std::unique_ptr<BatchWriter> writer;
  /// The read results the workers share; none when switched off.
  std::shared_ptr<SqliteReuse> reuse;
  /// On a database server, a batch that writes shares the month with any
  /// other process running it: this claims the rows in small groups
  /// through the database, runs each group (runBatch, on `job`) and
  /// commits its writes and its claim together, until no row is left. It
  /// stands for `table` and `writer`, which it leaves empty.
  std::function<BatchSummary(const BatchJob& job)> shared;
};

/// Opens the SQLite file `path` (it must exist), or the server's database
/// a connection string names (isServerDatabase), and runs `recordQuery`, one
/// statement that only reads; `forWriting` takes the write lock first (a
/// batch that will write back). nullopt with `error` set (one line, for a
/// usage error) when any of it fails. Raising `stop` interrupts the SQL
/// statement that runs on any of its connections at the time. With `reuse`
/// the workers answer a statement another has run from its result.
std::optional<BatchDatabase> openBatchDatabase(const std::string& path,
                                               const std::string& recordQuery, bool forWriting,
                                               const std::atomic<bool>* stop, std::string& error,
                                               bool reuse = true);

/// Opens the SQLite file `path` (it must exist; the name is a path, never a
/// connection string) as a Connection of `objects`; the open connection,
/// or false with a one-line reason in `error`. A `path` that names no file
/// but a database server (namesDatabaseServer) is opened as that server's
/// connection string, with `objects` of postgresObjectFactory.
bool openDatabaseFile(ObjectFactory& objects, const std::string& path, ObjectRef& connection,
                      std::string& error);

/// Whether `database` (a --db value) is a server's connection string: it
/// names one and no file of that name exists.
bool isServerDatabase(const std::string& database);
/// The objects that open `database`: the server's for a server's
/// connection string, SQLite's for a file.
std::shared_ptr<ObjectFactory> objectFactoryFor(const std::string& database,
                                                std::shared_ptr<SqlLog> log = nullptr,
                                                SqliteAccess access = {});

/// Refuses a record query that is not exactly one statement reading rows,
/// as `database` compiles it, before any of it runs: false with a one-line
/// reason in `error`.
bool checkRecordQuery(SqliteDatabase database, const std::string& sql, std::string& error);
bool checkRecordQuery(PostgresDatabase database, const std::string& sql, std::string& error);

}  // namespace korvex
