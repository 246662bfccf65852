#include <array>

#include "korvex/batch.hpp"
#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/sqlite.hpp"
#include "recordset_writer.hpp"
#include "server_batch.hpp"

namespace korvex {

namespace {

constexpr int kWriterCacheMiB = 64;
constexpr int kWorkerCacheMiB = 32;

// Runs the record query inside the transaction the writer finishes. The
// workers' connections and the record query's must not change anything: a
// script's own SQL cannot write behind the batch's transaction.
DatabaseResult<SqlResult> recordRows(SqliteDatabase& database, const std::string& recordQuery) {
  if (DatabaseResult<> on = database.setQueryOnly(true); !on.ok()) return on.error();
  DatabaseResult<SqlResult> rows = database.query(fromUtf8(recordQuery));
  if (!rows.ok()) return rows;
  if (DatabaseResult<> off = database.setQueryOnly(false); !off.ok()) return off.error();
  return rows;
}

}  // namespace

std::optional<BatchDatabase> openBatchDatabase(const std::string& path,
                                               const std::string& recordQuery, bool forWriting,
                                               const std::atomic<bool>* stop, std::string& error,
                                               bool reuse) {
  if (isServerDatabase(path)) {
    return openServerBatch(path, recordQuery, forWriting, stop, error, reuse);
  }
  // The writer's cache holds the month's changed pages: spilling them
  // would take the lock that keeps the workers reading.
  SqliteAccess writing;
  writing.interrupt = stop;
  writing.cacheMiB = kWriterCacheMiB;
  auto objects = sqliteObjectFactory(nullptr, writing);
  ObjectRef connection;
  if (!openDatabaseFile(*objects, path, connection, error)) return std::nullopt;
  // A connection of the SQLite factory, open: it always has a database.
  SqliteDatabase database = *databaseOf(connection);
  if (!checkRecordQuery(database, recordQuery, error)) return std::nullopt;

  BatchDatabase db;
  // A batch that will write holds the write lock from here on: a database
  // it cannot write is found out before any row is computed.
  if (DatabaseResult<> begun = forWriting ? database.beginWriting() : database.begin();
      !begun.ok()) {
    error = "无法写入数据库: " + toUtf8(begun.error().message);
    return std::nullopt;
  }
  DatabaseResult<SqlResult> rows = recordRows(database, recordQuery);
  if (!rows.ok()) {
    error = "--record 的查询失败: " + toUtf8(rows.error().message);
    return std::nullopt;
  }
  SqlResult& result = rows.value();
  // Rows the database cannot tell apart could only be written back by a
  // guess: such a record is refused before any row is computed.
  if (forWriting && result.identity.empty() && !result.rows.empty()) {
    error =
        "--record 的行不能追溯到同一个表的行 (联接、汇总或视图的结果), 无法写回; "
        "只计算不写回请用 --dry-run";
    return std::nullopt;
  }
  for (const SqlColumn& c : result.columns) db.table.fieldNames.push_back(c.name);
  db.table.rows = result.rows;
  ObjectRef recordset = database.recordset(std::move(result));
  db.writer = std::make_unique<RecordsetWriter>(
      std::move(recordset), [database]() mutable { return database.commit(); },
      // A refused rollback needs no answer: the transaction is gone either
      // way, as SQLite drops it with the connection.
      [database]() mutable { (void)database.rollback(); });

  if (reuse) db.reuse = makeSqliteReuse();
  const std::u16string connect = dataSource(path);
  db.openWorker = [connect, stop, shared = db.reuse]() -> BatchJob::EngineSetup {
    // The factory goes to the engines even without a connection: the rows
    // then fail for want of one, as they would anywhere. Every database its
    // objects open ("use NAME" included) is opened for reading only, which
    // no statement of a script can undo; a stop ends the statement running.
    // They all read the state committed before the batch, so what one has
    // read answers the others.
    auto factory = sqliteObjectFactory(nullptr, {.readOnly = true,
                                                 .interrupt = stop,
                                                 .reuse = shared,
                                                 .cacheMiB = kWorkerCacheMiB,
                                                 .snapshot = {}});
    ObjectRef parent;
    if (DispatchResult c = openConnection(*factory, connect); c.ok()) {
      parent = connectParent(c.value.objectValue());
    }
    return [factory, parent](BasicEngine& engine) {
      engine.SetObjectFactory(factory);
      if (parent) engine.SetParent(parent);
    };
  };
  return db;
}

}  // namespace korvex
