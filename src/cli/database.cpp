#include "database.hpp"

#include <array>

#include "korvex/batch.hpp"

namespace korvex::cli {

DatabaseSession::~DatabaseSession() {
  if (database_) (void)database_->rollback();
}

bool DatabaseSession::attach(const RunOptions& options, BasicEngine& engine, std::string& error) {
  if (options.traceSql) log_ = std::make_shared<SqlLog>();
  const std::shared_ptr<ObjectFactory> objects = sqliteObjectFactory(log_);
  // The connections the script's functions open themselves ("use NAME")
  // cannot join the run's transaction: in a dry run they only read.
  SqliteAccess readOnly;
  readOnly.readOnly = true;
  engine.SetObjectFactory(options.dryRun ? sqliteObjectFactory(log_, readOnly) : objects);
  if (options.db.empty()) return true;

  ObjectRef connect;
  if (!openDatabaseFile(*objects, options.db, connect, error)) return false;
  engine.SetParent(connectParent(connect));
  // A connection of the SQLite factory, open: it always has a database.
  SqliteDatabase database = *databaseOf(connect);
  // The run's transaction encloses the script's own: a script that begins
  // and commits works as it always has, and its commit is kept only if the
  // whole run succeeds.
  if (const DatabaseResult<> begun = database.beginEnclosing(); !begun.ok()) {
    error = "无法开始事务: " + toUtf8(begun.error().message);
    return false;
  }
  database_ = database;
  if (options.record) {
    if (!checkRecordQuery(database, *options.record, error)) return false;
    const std::array<Value, 1> sql{Value::string(fromUtf8(*options.record))};
    DispatchResult rs = connect->callMethod(u"Execute", sql);
    if (!rs.ok()) {
      error = "--record " + *options.record + ": " + toUtf8(rs.description);
      return false;
    }
    const ObjectRef record = rs.value.objectValue();
    const DispatchResult eof = record->getProperty(u"EOF", {});
    if (eof.ok() && eof.value.booleanValue()) {
      error = "--record 的查询没有返回任何行: '" + *options.record + "'";
      return false;
    }
    assigned_ = std::make_shared<AssignedFieldList>();
    engine.SetRecordSet(trackAssignments(record, assigned_));
    if (engine.ErrNum() != 0) {
      error = "--record " + *options.record + ": " + toUtf8(engine.ErrMsg());
      return false;
    }
  }
  // The command's own query is not part of what the script sent.
  if (log_) firstTraced_ = log_->texts().size();
  return true;
}

bool DatabaseSession::finish(bool keep, std::string& error) {
  if (!database_) return true;
  SqliteDatabase database = *database_;
  database_.reset();
  const DatabaseResult<> ended = keep ? database.commit() : database.rollback();
  if (ended.ok()) return true;
  error = std::string(keep ? "无法提交" : "无法回滚") +
          "运行的事务 (脚本自己结束事务时也会如此): " + toUtf8(ended.error().message);
  return false;
}

std::optional<std::vector<std::u16string>> DatabaseSession::traced() const {
  if (!log_) return std::nullopt;
  const auto& all = log_->texts();
  return std::vector<std::u16string>(all.begin() + static_cast<std::ptrdiff_t>(firstTraced_),
                                     all.end());
}

std::optional<AssignedFieldList> DatabaseSession::assigned() const {
  if (!assigned_) return std::nullopt;
  return *assigned_;
}

}  // namespace korvex::cli
