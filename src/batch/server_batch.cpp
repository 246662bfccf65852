#include "server_batch.hpp"

#include <unistd.h>

#include <chrono>
#include <mutex>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/postgres.hpp"
#include "recordset_writer.hpp"

namespace korvex {

namespace {

constexpr std::size_t kGroupRows = 16;

// The claims of every batch of every month, and the open ones of a run in
// order; made by the first batch (a table of the first version of the
// claims gains who did each row).
constexpr std::string_view kClaimTable =
    "CREATE TABLE IF NOT EXISTS korvex_claims (run text NOT NULL, row_key text NOT NULL, "
    "done boolean NOT NULL DEFAULT false, done_by text, PRIMARY KEY (run, row_key)); "
    "ALTER TABLE korvex_claims ADD COLUMN IF NOT EXISTS done_by text; "
    "CREATE INDEX IF NOT EXISTS korvex_claims_open ON korvex_claims (run, row_key) WHERE NOT done";

// Who did a row: the machine and the process.
std::u16string processName() {
  char host[256] = {};
  if (::gethostname(host, sizeof host - 1) != 0) host[0] = '\0';
  return fromUtf8(std::string(host) + ":" + std::to_string(::getpid()));
}

std::u16string text(std::string_view s) { return fromUtf8(s); }

std::u16string quoted(std::u16string_view name) {
  std::u16string out = u"\"";
  for (char16_t c : name) out += c == u'"' ? std::u16string(u"\"\"") : std::u16string(1, c);
  return out + u"\"";
}

// The key text of a row: its primary key's columns as text, joined. A key
// of one text column is that column, which its index finds.
std::u16string keyExpression(const std::vector<std::u16string>& key) {
  if (key.size() == 1) return quoted(key[0]) + u"::text";
  std::u16string out = u"concat_ws(chr(31)";
  for (const std::u16string& column : key) out += u", " + quoted(column) + u"::text";
  return out + u")";
}

// A text array parameter ({"a","b"}) of the given texts.
Value textArray(const std::vector<std::u16string>& items) {
  std::u16string out = u"{";
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) out += u',';
    out += u'"';
    for (char16_t c : items[i]) {
      if (c == u'"' || c == u'\\') out += u'\\';
      out += c;
    }
    out += u'"';
  }
  return Value::string(out + u"}");
}

// Read-only sessions for the workers, kept between the groups: a thread
// takes one for its rows and gives it back when it ends.
class WorkerSessions : public std::enable_shared_from_this<WorkerSessions> {
 public:
  WorkerSessions(std::string connection, SqliteAccess access)
      : connection_(std::move(connection)), access_(std::move(access)) {
    access_.readOnly = true;
  }

  BatchJob::EngineSetup take() {
    std::unique_ptr<Slot> slot;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (!idle_.empty()) {
        slot = std::move(idle_.back());
        idle_.pop_back();
      }
    }
    if (!slot) slot = open();
    std::shared_ptr<Slot> held(slot.release(), [self = shared_from_this()](Slot* s) {
      const std::lock_guard<std::mutex> lock(self->mutex_);
      self->idle_.emplace_back(s);
    });
    return [held](BasicEngine& engine) {
      engine.SetObjectFactory(held->factory);
      if (held->parent) engine.SetParent(held->parent);
    };
  }

 private:
  struct Slot {
    std::shared_ptr<ObjectFactory> factory;
    ObjectRef parent;
  };

  // Every session the scripts' objects open only reads; without a
  // connection the rows fail for want of one, as they would anywhere.
  std::unique_ptr<Slot> open() const {
    auto slot = std::make_unique<Slot>();
    slot->factory = postgresObjectFactory(nullptr, access_);
    if (DispatchResult c = openConnection(*slot->factory, fromUtf8(connection_)); c.ok()) {
      slot->parent = connectParent(c.value.objectValue());
    }
    return slot;
  }

  std::string connection_;
  SqliteAccess access_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Slot>> idle_;
};

// What a claimed group needs to know of the record query: its table, the
// columns it shows (by the table's names) and the table's primary key.
struct Shape {
  std::u16string run;
  std::u16string table;  // as the server writes it, with its schema where needed
  std::vector<std::u16string> fieldNames;
  std::vector<std::u16string> origins;
  std::vector<std::u16string> key;
};

class SharedMonth {
 public:
  SharedMonth(PostgresDatabase db, Shape shape, const std::atomic<bool>* stop)
      : db_(std::move(db)), shape_(std::move(shape)), stop_(stop) {}

  // Lists the claims of a new run unless one is under way: the rows of the
  // record query as they are now, under the lock that keeps two processes
  // from listing at once.
  DatabaseResult<std::size_t> join() {
    DatabaseResult<> done = db_.begin();
    if (done.ok()) done = db_.execute("SELECT pg_advisory_xact_lock(hashtext('korvex_claims'))");
    if (done.ok()) done = db_.execute(kClaimTable);
    if (!done.ok()) return fail(done.error());
    const std::array<Value, 1> run{Value::string(shape_.run)};
    DatabaseResult<SqlResult> open = db_.query(
        u"SELECT count(*), count(*) FILTER (WHERE NOT done) FROM korvex_claims "
        u"WHERE run = $1",
        run);
    if (!open.ok()) return fail(open.error());
    const auto number = [&](std::size_t column) {
      const Value& v = open.value().rows.at(0).at(column);
      return static_cast<std::size_t>(v.type() == VarType::Long ? v.longValue() : v.doubleValue());
    };
    if (number(1) == 0) {
      // No run under way: every row of the query is open again.
      DatabaseResult<SqlResult> record = db_.query(shape_.run);
      if (!record.ok()) return fail(record.error());
      std::vector<std::u16string> places;
      for (const auto& id : record.value().rowIdentities) {
        places.push_back(fromUtf8(std::get<std::string>(id.at(0))));
      }
      const std::array<Value, 2> rows{Value::string(shape_.run), textArray(places)};
      DatabaseResult<SqlResult> done =
          db_.query(u"DELETE FROM korvex_claims WHERE run = $1", std::span(rows).first(1));
      if (done.ok()) {
        done = db_.query(u"INSERT INTO korvex_claims (run, row_key) SELECT $1, " +
                             keyExpression(shape_.key) + u" FROM " + shape_.table +
                             u" WHERE ctid = ANY(CAST($2 AS tid ARRAY))",
                         rows);
      }
      if (!done.ok()) return fail(done.error());
      // A row another client changed between the two statements is no longer
      // where the query saw it: unclaimed, it would never be computed.
      if (done.value().changed != static_cast<std::int64_t>(places.size())) {
        return fail(DatabaseFailure{u"记录的行在列出时被其他连接修改, 未认领任何行; 请重新运行"});
      }
    }
    if (DatabaseResult<> committed = db_.commit(); !committed.ok()) return committed.error();
    const DatabaseResult<SqlResult> all =
        db_.query(u"SELECT count(*) FROM korvex_claims WHERE run = $1", run);
    if (!all.ok()) return all.error();
    const Value& n = all.value().rows.at(0).at(0);
    return static_cast<std::size_t>(n.type() == VarType::Long ? n.longValue() : n.doubleValue());
  }

  BatchSummary run(const BatchJob& job, std::size_t monthRows) {
    BatchSummary total;
    total.sharedRows = monthRows;
    const auto started = std::chrono::steady_clock::now();
    for (;;) {
      if (stop_ != nullptr && stop_->load()) {
        total.interrupted = true;
        break;
      }
      std::optional<std::vector<std::u16string>> claimed = claim(total);
      if (!claimed) break;  // failed: the error is in the summary
      if (claimed->empty()) {
        (void)db_.rollback();
        total.committed = total.error.empty();
        break;
      }
      if (!group(job, *claimed, total)) break;
    }
    total.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return total;
  }

 private:
  DatabaseFailure fail(DatabaseFailure failure) {
    (void)db_.rollback();
    return failure;
  }

  // A group's statement failed, or was cancelled by the stop.
  void failed(const DatabaseFailure& failure, BatchSummary& total) {
    (void)db_.rollback();
    if (stop_ != nullptr && stop_->load()) {
      total.interrupted = true;
    } else {
      total.error = failure.message;
    }
  }

  // Begins the group's transaction and takes the next open claims no other
  // process holds.
  std::optional<std::vector<std::u16string>> claim(BatchSummary& total) {
    const std::array<Value, 2> args{Value::string(shape_.run),
                                    Value::lng(static_cast<std::int32_t>(kGroupRows))};
    DatabaseResult<> begun = db_.begin();
    DatabaseResult<SqlResult> rows =
        begun.ok() ? db_.query(
                         u"SELECT row_key FROM korvex_claims WHERE run = $1 AND NOT done "
                         u"ORDER BY row_key LIMIT $2 FOR UPDATE SKIP LOCKED",
                         args)
                   : DatabaseResult<SqlResult>(begun.error());
    if (!rows.ok()) {
      failed(rows.error(), total);
      return std::nullopt;
    }
    std::vector<std::u16string> keys;
    for (const auto& row : rows.value().rows) keys.push_back(row.at(0).stringValue());
    return keys;
  }

  // Reads and locks the claimed rows, runs them and commits their writes
  // with their claims; false when the batch is to stop.
  bool group(const BatchJob& job, const std::vector<std::u16string>& keys, BatchSummary& total) {
    std::u16string select = u"SELECT ";
    for (std::size_t i = 0; i < shape_.origins.size(); ++i) {
      select += (i == 0 ? u"" : u", ") + quoted(shape_.origins[i]);
    }
    const std::u16string key = keyExpression(shape_.key);
    select += u" FROM " + shape_.table + u" WHERE " + key +
              u" = ANY(CAST($1 AS text ARRAY)) ORDER BY " + key + u" FOR UPDATE";
    const std::array<Value, 1> claimed{textArray(keys)};
    DatabaseResult<SqlResult> rows = db_.query(select, claimed);
    if (!rows.ok()) {
      failed(rows.error(), total);
      return false;
    }
    BatchTable table;
    table.fieldNames = shape_.fieldNames;
    table.rows = rows.value().rows;
    const std::array<Value, 3> finished{Value::string(shape_.run), textArray(keys),
                                        Value::string(processName())};
    PostgresDatabase db = db_;
    RecordsetWriter writer(
        db_.recordset(std::move(rows).value()),
        [db, finished]() mutable -> DatabaseResult<> {
          DatabaseResult<SqlResult> marked = db.query(
              u"UPDATE korvex_claims SET done = true, done_by = $3 WHERE run = $1 AND row_key = "
              u"ANY(CAST($2 AS "
              u"text ARRAY))",
              finished);
          if (!marked.ok()) return marked.error();
          return db.commit();
        },
        [db]() mutable { (void)db.rollback(); });
    BatchJob groupJob = job;
    if (job.progress) {
      groupJob.progress = [&](std::size_t done, std::size_t) {
        job.progress(total.done + done, total.sharedRows.value_or(0));
      };
    }
    BatchSummary part = runBatch(table, groupJob, &writer);
    if (part.interrupted) {
      // Rolled back: the group's rows are another process's now.
      total.interrupted = true;
      return false;
    }
    for (RowFailure& f : part.failures) {
      f.row += total.rows;
      total.failures.push_back(std::move(f));
    }
    if (!part.committed) {
      // Rolled back: none of the group's rows counts as done by this process.
      total.error = part.error;
      return false;
    }
    total.rows += part.done;
    total.done += part.done;
    total.failed += part.failed;
    total.changedRows += part.changedRows;
    total.changedFields += part.changedFields;
    return true;
  }

  PostgresDatabase db_;
  Shape shape_;
  const std::atomic<bool>* stop_;
};

// The record's table as a name that reaches it from this session: with
// its schema when another table of that name comes first on the path.
std::optional<std::u16string> tableName(PostgresDatabase& db, const Value& table) {
  const std::array<Value, 1> oid{table};
  DatabaseResult<SqlResult> name = db.query(u"SELECT CAST($1 AS oid)::regclass::text", oid);
  if (!name.ok() || name.value().rows.empty()) return std::nullopt;
  return name.value().rows.at(0).at(0).stringValue();
}

// The primary key of the record's table, by the table's number.
std::optional<std::vector<std::u16string>> primaryKey(PostgresDatabase& db, const Value& table) {
  const std::array<Value, 1> oid{table};
  DatabaseResult<SqlResult> key = db.query(
      u"SELECT a.attname FROM pg_index i JOIN pg_attribute a ON a.attrelid = i.indrelid AND "
      u"a.attnum = ANY(i.indkey) WHERE i.indrelid = $1::oid AND i.indisprimary "
      u"ORDER BY array_position(i.indkey, a.attnum)",
      oid);
  if (!key.ok() || key.value().rows.empty()) return std::nullopt;
  std::vector<std::u16string> names;
  for (const auto& row : key.value().rows) names.push_back(row.at(0).stringValue());
  return names;
}

// A session holding one snapshot open for the workers to read in; its
// transaction only reads and ends with the session.
std::optional<std::pair<PostgresDatabase, std::string>> exportSnapshot(
    const std::string& connection) {
  DatabaseResult<PostgresDatabase> holder = PostgresDatabase::open(connection);
  if (!holder.ok()) return std::nullopt;
  DatabaseResult<std::string> id = holder.value().exportSnapshot();
  if (!id.ok()) return std::nullopt;
  return std::pair{std::move(holder).value(), std::move(id).value()};
}

}  // namespace

std::optional<BatchDatabase> openServerBatch(const std::string& connection,
                                             const std::string& recordQuery, bool forWriting,
                                             const std::atomic<bool>* stop, std::string& error,
                                             bool reuse) {
  // Interrupted by the stop, not only between groups: a row another
  // client holds locked would keep the group waiting.
  DatabaseResult<PostgresDatabase> opened = PostgresDatabase::open(connection, stop);
  if (!opened.ok()) {
    error =
        "无法连接数据库 '" + shownConnection(connection) + "': " + toUtf8(opened.error().message);
    return std::nullopt;
  }
  PostgresDatabase db = std::move(opened).value();
  if (!checkRecordQuery(db, recordQuery, error)) return std::nullopt;
  // The record as it stands, read where nothing can be written.
  DatabaseResult<> begun = db.begin();
  if (begun.ok()) begun = db.setQueryOnly(true);
  DatabaseResult<SqlResult> rows =
      begun.ok() ? db.query(fromUtf8(recordQuery)) : DatabaseResult<SqlResult>(begun.error());
  (void)db.rollback();
  if (!rows.ok()) {
    error = "--record 的查询失败: " + toUtf8(rows.error().message);
    return std::nullopt;
  }
  SqlResult& result = rows.value();
  BatchDatabase batch;
  SqliteAccess access;
  access.interrupt = stop;
  std::shared_ptr<PostgresDatabase> holder;
  if (reuse) {
    // Without a snapshot to share, every statement runs.
    if (auto exported = exportSnapshot(connection)) {
      holder = std::make_shared<PostgresDatabase>(std::move(exported->first));
      access.snapshot = std::move(exported->second);
      access.reuse = batch.reuse = makeSqliteReuse();
    }
  }
  const auto sessions = std::make_shared<WorkerSessions>(connection, std::move(access));
  batch.openWorker = [sessions, holder] { return sessions->take(); };
  for (const SqlColumn& c : result.columns) batch.table.fieldNames.push_back(c.name);
  if (!forWriting) {
    batch.table.rows = std::move(result.rows);
    return batch;
  }
  if (result.rows.empty()) {
    error = "--record 的查询没有返回任何行: '" + recordQuery + "'";
    return std::nullopt;
  }
  if (result.identity.empty()) {
    error =
        "--record 的行不能追溯到同一个表的行 (联接、汇总或视图的结果), 无法写回; "
        "只计算不写回请用 --dry-run";
    return std::nullopt;
  }
  Shape shape;
  shape.run = text(recordQuery);
  shape.fieldNames = batch.table.fieldNames;
  for (const SqlColumn& c : result.columns) shape.origins.push_back(c.origin);
  // The identity is where the row lies, its writer and its table (last).
  // Rows of several tables (partitions, inherited tables) share places, by
  // which the claims are listed: one place could name another table's row.
  const SqlCell& first = result.rowIdentities.at(0).back();
  for (const auto& id : result.rowIdentities) {
    if (id.back() != first) {
      error =
          "--record 的行来自多个表 (分区或继承的表), 多个进程分担的批处理无法认领; "
          "请对其中一个表运行";
      return std::nullopt;
    }
  }
  const Value table = Value::string(fromUtf8(std::get<std::string>(first)));
  const std::optional<std::u16string> name = tableName(db, table);
  if (!name) {
    error = "找不到 --record 的表 " + toUtf8(result.columns.at(0).table);
    return std::nullopt;
  }
  shape.table = *name;
  const std::optional<std::vector<std::u16string>> key = primaryKey(db, table);
  if (!key) {
    error = "表 " + toUtf8(shape.table) + " 没有主键: 多个进程分担的批处理按主键认领行";
    return std::nullopt;
  }
  shape.key = *key;
  auto month = std::make_shared<SharedMonth>(db, std::move(shape), stop);
  const DatabaseResult<std::size_t> joined = month->join();
  if (!joined.ok()) {
    error = "无法认领行: " + toUtf8(joined.error().message);
    return std::nullopt;
  }
  batch.table.fieldNames.clear();
  batch.shared = [month, total = joined.value()](const BatchJob& job) {
    return month->run(job, total);
  };
  return batch;
}

}  // namespace korvex
