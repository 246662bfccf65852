#include <array>

#include "korvex/batch.hpp"
#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/sqlite.hpp"

namespace korvex {

namespace {

constexpr int kWriterCacheMiB = 64;
constexpr int kWorkerCacheMiB = 32;

// A field that would not take its value: the failure says which field and
// what value.
DispatchResult failedField(const DispatchResult& item, const Value& value, DispatchResult failure) {
  std::u16string name = u"?";
  if (item.ok()) {
    const DispatchResult n = item.value.objectValue()->getProperty(u"Name", {});
    if (n.ok() && n.value.isString()) name = n.value.stringValue();
  }
  const Converted<std::u16string> text = toText(value);
  failure.description = u"字段 " + name + u" = " +
                        (text ? *text.value : std::u16string(u"(无法显示的值)")) + u": " +
                        failure.description;
  return failure;
}

// Puts the rows' assignments back through a record set of the record query
// on the writing connection, so that a row goes back to its table exactly
// as a script's own Update would, all inside the transaction opened before
// the query ran.
class RecordsetWriter final : public BatchWriter {
 public:
  RecordsetWriter(SqliteDatabase database, ObjectRef recordset)
      : database_(std::move(database)), recordset_(std::move(recordset)) {}
  ~RecordsetWriter() override { rollback(); }
  RecordsetWriter(const RecordsetWriter&) = delete;
  RecordsetWriter& operator=(const RecordsetWriter&) = delete;

  DispatchResult write(std::size_t row, std::span<const FieldWrite> writes,
                       std::size_t& changed) override {
    for (; position_ < row; ++position_) {
      if (DispatchResult moved = recordset_->callMethod(u"MoveNext", {}); !moved.ok()) {
        return moved;
      }
    }
    const DispatchResult fields = recordset_->getProperty(u"Fields", {});
    if (!fields.ok()) return fields;
    changed = 0;
    for (const FieldWrite& w : writes) {
      const std::array<Value, 1> index{Value::lng(static_cast<std::int32_t>(w.column))};
      const DispatchResult item = fields.value.objectValue()->getProperty(u"Item", index);
      DispatchResult set = item;
      if (item.ok()) set = item.value.objectValue()->setProperty(u"Value", {}, w.value);
      if (!set.ok()) {
        (void)recordset_->callMethod(u"CancelUpdate", {});
        return failedField(item, w.value, std::move(set));
      }
      // Counted as the field keeps it: 25 put into a money field holding 25
      // changes nothing.
      const ObjectRef field = item.value.objectValue();
      const DispatchResult now = field->getProperty(u"Value", {});
      const DispatchResult before = field->getProperty(u"OriginalValue", {});
      if (!now.ok() || !before.ok() || !sameValue(now.value, before.value)) ++changed;
    }
    return recordset_->callMethod(u"Update", {});
  }

  DispatchResult commit() override {
    if (!open_) return DispatchResult::success();
    if (const DatabaseResult<> done = database_.commit(); !done.ok()) {
      return done.error().dispatchResult();
    }
    open_ = false;
    return DispatchResult::success();
  }

  void rollback() noexcept override {
    if (!open_) return;
    open_ = false;
    // A refused rollback needs no answer: the transaction is gone either
    // way, as SQLite drops it with the connection.
    (void)database_.rollback();
  }

 private:
  SqliteDatabase database_;
  ObjectRef recordset_;
  std::size_t position_ = 0;
  bool open_ = true;
};

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
  db.writer = std::make_unique<RecordsetWriter>(std::move(database), std::move(recordset));

  if (reuse) db.reuse = makeSqliteReuse();
  const std::u16string connect = dataSource(path);
  db.openWorker = [connect, stop, shared = db.reuse]() -> BatchJob::EngineSetup {
    // The factory goes to the engines even without a connection: the rows
    // then fail for want of one, as they would anywhere. Every database its
    // objects open ("use NAME" included) is opened for reading only, which
    // no statement of a script can undo; a stop ends the statement running.
    // They all read the state committed before the batch, so what one has
    // read answers the others.
    auto factory = sqliteObjectFactory(
        nullptr,
        {.readOnly = true, .interrupt = stop, .reuse = shared, .cacheMiB = kWorkerCacheMiB});
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
