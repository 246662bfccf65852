#include "cli/batch_database.hpp"

#include <array>
#include <filesystem>

#include "datasource/objects.hpp"
#include "korvex/datasource.hpp"
#include "korvex/engine.hpp"

namespace korvex::cli {

namespace {

std::u16string connectionString(const std::string& path) {
  return u"Data Source=" + fromUtf8(path);
}

// Statements on a connection whose statements must not change anything:
// the workers' (a script's own SQL cannot write behind the batch's
// transaction) and the record query's.
void setQueryOnly(ds::Backend& backend, bool on) {
  backend.run(on ? u"PRAGMA query_only = 1" : u"PRAGMA query_only = 0");
}

// Puts the rows' assignments back through a record set of the record query
// on the writing connection, so that a row goes back to its table exactly
// as a script's own Update would, all inside the transaction opened before
// the query ran.
class RecordsetWriter final : public BatchWriter {
 public:
  RecordsetWriter(std::shared_ptr<ds::Backend> backend, ObjectRef recordset)
      : backend_(std::move(backend)), recordset_(std::move(recordset)) {}
  ~RecordsetWriter() override { rollback(); }
  RecordsetWriter(const RecordsetWriter&) = delete;
  RecordsetWriter& operator=(const RecordsetWriter&) = delete;

  DispatchResult write(std::size_t row, std::span<const FieldWrite> writes) override {
    for (; position_ < row; ++position_) {
      if (DispatchResult moved = recordset_->callMethod(u"MoveNext", {}); !moved.ok()) {
        return moved;
      }
    }
    const DispatchResult fields = recordset_->getProperty(u"Fields", {});
    if (!fields.ok()) return fields;
    for (const FieldWrite& w : writes) {
      const std::array<Value, 1> index{Value::lng(static_cast<std::int32_t>(w.column))};
      DispatchResult field = fields.value.objectValue()->getProperty(u"Item", index);
      if (field.ok()) field = field.value.objectValue()->setProperty(u"Value", {}, w.value);
      if (!field.ok()) {
        (void)recordset_->callMethod(u"CancelUpdate", {});
        return field;
      }
    }
    return recordset_->callMethod(u"Update", {});
  }

  DispatchResult commit() override {
    if (!open_) return DispatchResult::success();
    try {
      backend_->commit();
      open_ = false;
      return DispatchResult::success();
    } catch (const ds::DbError& e) {
      return ds::providerError(e.message());
    }
  }

  void rollback() noexcept override {
    if (!open_) return;
    open_ = false;
    try {
      backend_->rollback();
    } catch (...) {
      // The transaction is gone either way: SQLite drops it with the
      // connection.
    }
  }

 private:
  std::shared_ptr<ds::Backend> backend_;
  ObjectRef recordset_;
  std::size_t position_ = 0;
  bool open_ = true;
};

}  // namespace

std::optional<BatchDatabase> openBatchDatabase(const std::string& path,
                                               const std::string& recordQuery, std::string& error) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    error = "数据库文件 '" + path + "' 不存在";
    return std::nullopt;
  }
  auto objects = sqliteObjectFactory();
  DispatchResult opened = openConnection(*objects, connectionString(path));
  if (!opened.ok()) {
    error = "无法打开数据库 '" + path + "': " + toUtf8(opened.description);
    return std::nullopt;
  }
  const ObjectRef connection = opened.value.objectValue();
  const std::shared_ptr<ds::Backend> backend = static_cast<ds::Connection&>(*connection).backend();

  BatchDatabase db;
  ds::ResultSet result;
  try {
    backend->begin();
    setQueryOnly(*backend, true);
    result = backend->run(fromUtf8(recordQuery));
    setQueryOnly(*backend, false);
  } catch (const ds::DbError& e) {
    error = "--record 的查询失败: " + toUtf8(e.message());
    return std::nullopt;
  }
  if (!result.hasRows) {
    error = "--record 的语句不返回行: '" + recordQuery + "'";
    return std::nullopt;
  }
  for (const ds::Column& c : result.columns) db.table.fieldNames.push_back(c.name);
  db.table.rows = result.rows;
  db.writer = std::make_unique<RecordsetWriter>(
      backend, std::make_shared<ds::Recordset>(std::move(result), backend));

  const std::u16string connect = connectionString(path);
  db.openWorker = [connect]() -> BatchJob::EngineSetup {
    auto factory = sqliteObjectFactory();
    DispatchResult c = openConnection(*factory, connect);
    if (!c.ok()) return nullptr;  // the rows then fail for want of a connection
    try {
      setQueryOnly(*static_cast<ds::Connection&>(*c.value.objectValue()).backend(), true);
    } catch (const ds::DbError&) {
      return nullptr;
    }
    return [factory, parent = connectParent(c.value.objectValue())](BasicEngine& engine) {
      engine.SetObjectFactory(factory);
      engine.SetParent(parent);
    };
  };
  return db;
}

}  // namespace korvex::cli
