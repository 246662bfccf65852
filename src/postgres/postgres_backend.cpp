// The database server behind the data-access objects.
#include <string>

#include "host/object_members.hpp"
#include "korvex/postgres.hpp"
#include "postgres/server_session.hpp"
#include "postgres/session_pool.hpp"
#include "sqlite/objects.hpp"

namespace korvex::ds {

namespace {

class ServerBackend final : public Backend {
 public:
  explicit ServerBackend(std::shared_ptr<ServerSession> session) : session_(std::move(session)) {}

  const std::shared_ptr<ServerSession>& session() const noexcept { return session_; }

  ResultSet run(std::u16string_view sql, std::span<const Value> params) override {
    return session_->run(sql, params);
  }
  ResultSet runExact(std::u16string_view sql, std::span<const SqlParameter> params,
                     std::size_t identity) override {
    return session_->runExact(toUtf8(sql), params, identity);
  }
  void begin() override { session_->userTransaction(TransactionWord::Begin); }
  void commit() override { session_->userTransaction(TransactionWord::Commit); }
  void rollback() override { session_->userTransaction(TransactionWord::Rollback); }

  // A stored procedure is a server function of that name taking the input
  // parameters in order and giving the outputs as the columns of its row.
  std::optional<ResultSet> procedure(std::u16string_view name,
                                     std::span<const Value> inputs) override {
    return session_->callFunction(name, inputs);
  }

  std::u16string adapt(std::u16string_view sql) const override { return adaptForServer(sql).sql; }
  std::u16string placeholder(std::size_t i) const override {
    const std::string n = std::to_string(i + 1);
    return u"$" + std::u16string(n.begin(), n.end());
  }
  std::u16string catalog() const override { return session_->catalog(); }

 private:
  std::shared_ptr<ServerSession> session_;
};

class ServerFactory final : public ObjectFactory {
 public:
  ServerFactory(std::shared_ptr<SqlLog> log, SqliteAccess access)
      : log_(std::move(log)), access_(std::move(access)) {}

  ObjectRef create(std::u16string_view className) override {
    if (host::equalsNoCase(className, u"Connection")) {
      return std::make_shared<Connection>(
          log_, access_,
          [pool = pool_](std::u16string_view connection, std::u16string_view catalog,
                         const SqliteAccess& access) {
            return std::make_shared<ServerBackend>(pool->take(toUtf8(connection), catalog, access));
          });
    }
    if (host::equalsNoCase(className, u"Recordset")) return std::make_shared<Recordset>();
    if (host::equalsNoCase(className, u"Command")) return std::make_shared<Command>();
    return nullptr;
  }

 private:
  std::shared_ptr<SqlLog> log_;
  SqliteAccess access_;
  // The sessions its connections leave behind, for the next ones.
  std::shared_ptr<SessionPool> pool_ = std::make_shared<SessionPool>();
};

template <class F>
DatabaseResult<> attempt(F&& f) {
  try {
    f();
    return {};
  } catch (const DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

}  // namespace

}  // namespace korvex::ds

namespace korvex {

bool namesDatabaseServer(std::string_view database) { return ds::namesServer(database); }

std::shared_ptr<ObjectFactory> postgresObjectFactory(std::shared_ptr<SqlLog> log,
                                                     SqliteAccess access) {
  return std::make_shared<ds::ServerFactory>(std::move(log), std::move(access));
}

PostgresDatabase::PostgresDatabase(std::shared_ptr<ds::ServerSession> session) noexcept
    : session_(std::move(session)) {}

DatabaseResult<PostgresDatabase> PostgresDatabase::open(const std::string& connection,
                                                        const std::atomic<bool>* interrupt) {
  SqliteAccess access;
  access.interrupt = interrupt;
  try {
    return PostgresDatabase(std::make_shared<ds::ServerSession>(connection, u"", access));
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

DatabaseResult<> PostgresDatabase::execute(std::string_view sql) {
  return ds::attempt([&] { session_->execute(sql); });
}

DatabaseResult<> PostgresDatabase::run(std::string_view sql, std::span<const SqlParameter> params) {
  return ds::attempt([&] { session_->runExact(sql, params, 0); });
}

DatabaseResult<SqlResult> PostgresDatabase::query(std::u16string_view sql,
                                                  std::span<const Value> params) {
  try {
    return session_->run(sql, params);
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

DatabaseResult<SqliteDatabase::TextKind> PostgresDatabase::inspect(std::u16string_view sql) {
  try {
    return session_->inspect(sql);
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

DatabaseResult<std::vector<std::u16string>> PostgresDatabase::columnNames(std::u16string_view sql) {
  try {
    return session_->columnNames(sql);
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

ObjectRef PostgresDatabase::recordset(SqlResult result) {
  return std::make_shared<ds::Recordset>(std::move(result),
                                         std::make_shared<ds::ServerBackend>(session_));
}

DatabaseResult<> PostgresDatabase::begin() {
  return ds::attempt([&] { session_->begin(); });
}
DatabaseResult<> PostgresDatabase::beginEnclosing() {
  return ds::attempt([&] { session_->beginEnclosing(); });
}
DatabaseResult<> PostgresDatabase::commit() {
  return ds::attempt([&] { session_->commit(); });
}
DatabaseResult<> PostgresDatabase::rollback() {
  return ds::attempt([&] { session_->rollback(); });
}
DatabaseResult<> PostgresDatabase::setQueryOnly(bool on) {
  return ds::attempt([&] { session_->setQueryOnly(on); });
}

DatabaseResult<std::string> PostgresDatabase::exportSnapshot() {
  try {
    return session_->exportSnapshot();
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

std::optional<PostgresDatabase> postgresDatabaseOf(const ObjectRef& connection) {
  const auto* c = dynamic_cast<const ds::Connection*>(connection.get());
  auto* backend = c == nullptr ? nullptr : dynamic_cast<ds::ServerBackend*>(c->backend().get());
  if (backend == nullptr) return std::nullopt;
  return PostgresDatabase(backend->session());
}

}  // namespace korvex
