#include "database.hpp"

#include <array>

#include "korvex/batch.hpp"

namespace korvex::cli {

DatabaseSession::~DatabaseSession() {
  if (database_) std::visit([](auto& db) { (void)db.rollback(); }, *database_);
}

bool DatabaseSession::attach(const RunOptions& options, BasicEngine& engine, std::string& error) {
  if (options.traceSql) log_ = std::make_shared<SqlLog>();
  const std::shared_ptr<ObjectFactory> objects = objectFactoryFor(options.db, log_);
  // The connections the script's functions open themselves ("use NAME")
  // cannot join the run's transaction: in a dry run they only read.
  SqliteAccess readOnly;
  readOnly.readOnly = true;
  engine.SetObjectFactory(options.dryRun ? objectFactoryFor(options.db, log_, readOnly) : objects);
  if (options.db.empty()) return true;

  ObjectRef connect;
  if (!openDatabaseFile(*objects, options.db, connect, error)) return false;
  engine.SetParent(connectParent(connect));
  // An open connection of either factory always has its database.
  if (const std::optional<SqliteDatabase> file = databaseOf(connect)) {
    database_.emplace(*file);
  } else {
    database_.emplace(*postgresDatabaseOf(connect));
  }
  // The run's transaction encloses the script's own: a script that begins
  // and commits works as it always has, and its commit is kept only if the
  // whole run succeeds.
  const DatabaseResult<> begun =
      std::visit([](auto& db) { return db.beginEnclosing(); }, *database_);
  if (!begun.ok()) {
    database_.reset();
    error = "无法开始事务: " + toUtf8(begun.error().message);
    return false;
  }
  if (options.record) {
    const bool checked = std::visit(
        [&](auto& db) { return checkRecordQuery(db, *options.record, error); }, *database_);
    if (!checked) return false;
    // Read where nothing can be written: on a server the check reads only
    // the text, and a function the query calls could still write.
    const std::array<Value, 1> sql{Value::string(fromUtf8(*options.record))};
    const auto queryOnly = [&](bool on) {
      return std::visit([on](auto& db) { return db.setQueryOnly(on); }, *database_);
    };
    DatabaseResult<> guard = queryOnly(true);
    DispatchResult rs =
        guard.ok() ? connect->callMethod(u"Execute", sql) : guard.error().dispatchResult();
    if (guard.ok()) guard = queryOnly(false);
    if (rs.ok() && !guard.ok()) rs = guard.error().dispatchResult();
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
  auto database = std::move(*database_);
  database_.reset();
  const DatabaseResult<> ended =
      std::visit([keep](auto& db) { return keep ? db.commit() : db.rollback(); }, database);
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
