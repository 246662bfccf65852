#include "database.hpp"

#include <sys/stat.h>

#include <array>

namespace korvex::cli {

bool DatabaseSession::attach(const RunOptions& options, BasicEngine& engine, std::string& error) {
  if (options.traceSql) log_ = std::make_shared<SqlLog>();
  const std::shared_ptr<ObjectFactory> objects = sqliteObjectFactory(log_);
  engine.SetObjectFactory(objects);
  if (options.db.empty()) return true;

  struct stat info {};
  if (::stat(options.db.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    error = "数据库文件 '" + options.db + "' 不存在";
    return false;
  }
  DispatchResult connection = openConnection(*objects, fromUtf8(options.db));
  if (!connection.ok()) {
    error = "无法打开数据库 '" + options.db + "': " + toUtf8(connection.description);
    return false;
  }
  const ObjectRef connect = connection.value.objectValue();
  engine.SetParent(connectParent(connect));

  if (options.record) {
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
