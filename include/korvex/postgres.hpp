// The data-access objects on a PostgreSQL server (library korvex_postgres):
// the same Connection, Recordset and Command as on a SQLite file, for a
// payroll kept on a database server.
//
// A connection string is the server's own: a postgresql:// address
// ("postgresql://clerk@db.example/payroll") or key=value settings
// ("host=db.example dbname=payroll user=clerk"). The scripts' SQL is the
// payroll database's and is adapted on the way (see README, "On a database
// server"); a server error reaches the script as the server's message.
//
//   auto objects = korvex::postgresObjectFactory(log);
//   korvex::DispatchResult c = korvex::openConnection(*objects, u"host=/run/pg dbname=payroll");
//   engine.SetObjectFactory(objects);
//   engine.SetParent(korvex::connectParent(c.value.objectValue()));
//
// Nothing declared here throws: failures come back as DatabaseResult or
// DispatchResult values, as for SQLite.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"

namespace korvex {

namespace ds {
class ServerSession;
}

/// Whether `database` names a server rather than a file: a postgresql://
/// (or postgres://) address, or key=value settings with a host, dbname or
/// service.
bool namesDatabaseServer(std::string_view database);

/// Makes "Connection", "Recordset" and "Command" objects whose connections
/// open databases on a PostgreSQL server; `access` as for SQLite (readOnly
/// makes every session refuse writes; the other settings are the embedded
/// database's own and are ignored).
std::shared_ptr<ObjectFactory> postgresObjectFactory(std::shared_ptr<SqlLog> log = nullptr,
                                                     SqliteAccess access = {});

/// One session on a server's database, for the host's own transactions
/// and queries around the scripts. Copies share the session.
class PostgresDatabase {
 public:
  /// While `interrupt` is raised, the statement running is cancelled and
  /// every statement after it refused.
  static DatabaseResult<PostgresDatabase> open(const std::string& connection,
                                               const std::atomic<bool>* interrupt = nullptr);

  /// Runs statements (one or more, separated by ";") as written.
  DatabaseResult<> execute(std::string_view sql);
  /// Runs one statement as written, its parameters bound exactly as given
  /// to $1, $2, ...
  DatabaseResult<> run(std::string_view sql, std::span<const SqlParameter> params);
  /// Runs a payroll SQL text as Connection.Execute does.
  DatabaseResult<SqlResult> query(std::u16string_view sql, std::span<const Value> params = {});
  /// What a payroll SQL text holds, without running it.
  DatabaseResult<SqliteDatabase::TextKind> inspect(std::u16string_view sql);
  /// The names of the columns a payroll query returns, compiled but not run.
  DatabaseResult<std::vector<std::u16string>> columnNames(std::u16string_view sql);
  /// An open Recordset holding a result; its Update writes on this session.
  ObjectRef recordset(SqlResult result);

  DatabaseResult<> begin();
  /// As SqliteDatabase::beginEnclosing: the scripts' transactions become
  /// savepoints inside it.
  DatabaseResult<> beginEnclosing();
  DatabaseResult<> commit();
  DatabaseResult<> rollback();
  /// While on, every statement that would write is refused.
  DatabaseResult<> setQueryOnly(bool on);
  /// Begins a repeatable-read transaction that only reads and exports its
  /// snapshot for other sessions to read in (SqliteAccess::snapshot); the
  /// snapshot lasts until the transaction ends.
  DatabaseResult<std::string> exportSnapshot();

 private:
  friend std::optional<PostgresDatabase> postgresDatabaseOf(const ObjectRef& connection);
  explicit PostgresDatabase(std::shared_ptr<ds::ServerSession> session) noexcept;
  std::shared_ptr<ds::ServerSession> session_;
};

/// The session an open Connection of postgresObjectFactory works on;
/// nullopt for a closed connection or any other object.
std::optional<PostgresDatabase> postgresDatabaseOf(const ObjectRef& connection);

}  // namespace korvex
