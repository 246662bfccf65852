#include "database.hpp"

#include <array>

#include "database_options.hpp"

namespace korvex::cli {

bool DatabaseSession::attach(const RunOptions& options, BasicEngine& engine, std::string& error) {
  if (options.traceSql) log_ = std::make_shared<SqlLog>();
  const std::shared_ptr<ObjectFactory> objects = sqliteObjectFactory(log_);
  engine.SetObjectFactory(objects);
  if (options.db.empty()) return true;

  ObjectRef connect;
  if (!openDatabaseOption(*objects, options.db, connect, error)) return false;
  engine.SetParent(connectParent(connect));

  if (options.record) {
    // A connection of the SQLite factory, open: it always has a database.
    if (!checkRecordQuery(*databaseOf(connect), *options.record, error)) return false;
    const std::array<Value, 1> sql{Value::string(fromUtf8(*options.record))};
    DispatchResult rs = connect->callMethod(u"Execute", sql);
    if (!rs.ok()) {
      error = "--record " + *options.record + ": " + toUtf8(rs.description);
      return false;
    }
    engine.SetRecordSet(rs.value.objectValue());
    if (engine.ErrNum() != 0) {
      error = "--record " + *options.record + ": " + toUtf8(engine.ErrMsg());
      return false;
    }
  }
  // The command's own query is not part of what the script sent.
  if (log_) firstTraced_ = log_->texts().size();
  return true;
}

std::optional<std::vector<std::u16string>> DatabaseSession::traced() const {
  if (!log_) return std::nullopt;
  const auto& all = log_->texts();
  return std::vector<std::u16string>(all.begin() + static_cast<std::ptrdiff_t>(firstTraced_),
                                     all.end());
}

}  // namespace korvex::cli
