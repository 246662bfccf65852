#include <array>

#include "host/object_members.hpp"
#include "korvex/sqlite.hpp"
#include "sqlite/objects.hpp"

namespace korvex {

namespace {

class SqliteFactory final : public ObjectFactory {
 public:
  SqliteFactory(std::shared_ptr<SqlLog> log, SqliteAccess access)
      : log_(std::move(log)), access_(access) {}

  ObjectRef create(std::u16string_view className) override {
    if (host::equalsNoCase(className, u"Connection"))
      return std::make_shared<ds::Connection>(log_, access_);
    if (host::equalsNoCase(className, u"Recordset")) return std::make_shared<ds::Recordset>();
    if (host::equalsNoCase(className, u"Command")) return std::make_shared<ds::Command>();
    return nullptr;
  }

 private:
  std::shared_ptr<SqlLog> log_;
  SqliteAccess access_;
};

class ConnectParent final : public host::PropertyObject {
 public:
  explicit ConnectParent(ObjectRef connection) : connection_(std::move(connection)) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value>) override {
    if (host::equalsNoCase(name, u"Connect"))
      return DispatchResult::success(Value::object(connection_));
    return memberNotFound(name);
  }

 private:
  ObjectRef connection_;
};

}  // namespace

std::shared_ptr<ObjectFactory> sqliteObjectFactory(std::shared_ptr<SqlLog> log,
                                                   SqliteAccess access) {
  return std::make_shared<SqliteFactory>(std::move(log), access);
}

DispatchResult openConnection(ObjectFactory& factory, std::u16string_view connectionString) {
  ObjectRef connection = factory.create(u"Connection");
  if (!connection) return memberNotFound(u"Connection");
  const std::array<Value, 1> args{Value::string(connectionString)};
  DispatchResult opened = connection->callMethod(u"Open", args);
  if (!opened.ok()) return opened;
  return DispatchResult::success(Value::object(std::move(connection)));
}

ObjectRef connectParent(ObjectRef connection) {
  return std::make_shared<ConnectParent>(std::move(connection));
}

}  // namespace korvex
