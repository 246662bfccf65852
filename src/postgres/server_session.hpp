// One connection to the database server and what the data-access objects
// do on it: the payroll texts adapted and run statement by statement, the
// rows read with the field types of the columns they come from, the
// transactions of the host and of the scripts.
#pragma once

#include <libpq-fe.h>

#include <atomic>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"
#include "postgres/server_dialect.hpp"
#include "sqlite/backend.hpp"
#include "sqlite/read_reuse.hpp"
#include "sqlite/sql_rewrite.hpp"

namespace korvex::ds {

class ServerSession {
 public:
  /// Connects to `connection` (a postgresql:// address or key=value
  /// settings), to the database `catalog` when it is not empty, and
  /// prepares the session for the payroll texts; read-only sessions
  /// refuse every write, and with a snapshot read in it and share what
  /// they read (SqliteAccess). Throws DbError.
  ServerSession(const std::string& connection, std::u16string_view catalog,
                const SqliteAccess& access);
  ~ServerSession();
  ServerSession(const ServerSession&) = delete;
  ServerSession& operator=(const ServerSession&) = delete;

  const std::string& connection() const noexcept { return connection_; }
  /// Whether the session is as it was when it was opened, fit for the next
  /// connection: no transaction of the host's or the scripts' open (a
  /// session reading a snapshot still in it), nothing switched to reading
  /// only, no setting or temporary object of a script's left in it, the
  /// connection to the server sound.
  bool reusable() const noexcept;
  const std::u16string& catalog() const noexcept { return catalog_; }

  /// Runs a payroll text (adapted, one statement after the other, each
  /// one undone alone when it fails); the last statement's result.
  ResultSet run(std::u16string_view sql, std::span<const Value> params);
  /// Runs one statement exactly as written; the last `identity` columns of
  /// its rows come back in rowIdentities.
  ResultSet runExact(std::string_view sql, std::span<const SqlParameter> params,
                     std::size_t identity);
  /// Runs statements as written, without parameters or results.
  void execute(std::string_view sql);
  /// The result of the server function `name` called with `inputs`;
  /// nullopt when the server has no function of that name.
  std::optional<ResultSet> callFunction(std::u16string_view name, std::span<const Value> inputs);
  /// What a payroll text holds, as the server reads it, without running it.
  SqliteDatabase::TextKind inspect(std::u16string_view sql);
  /// The column names of a payroll query's first statement, compiled only.
  std::vector<std::u16string> columnNames(std::u16string_view sql);

  /// A transaction statement of the scripts: run as it is, or as a
  /// savepoint inside the host's enclosing transaction.
  void userTransaction(TransactionWord word);
  /// The host's transactions.
  void begin();
  void beginEnclosing();
  void commit();
  void rollback();
  /// While on, every statement is refused that would write.
  void setQueryOnly(bool on);
  /// Begins a read-only repeatable-read transaction; its snapshot's name.
  std::string exportSnapshot();

 private:
  using Result = std::unique_ptr<PGresult, void (*)(PGresult*)>;
  struct TableInfo {
    std::u16string name;
    std::map<int, std::pair<std::u16string, std::string>> columns;  // number: name, type
  };

  Result send(std::string_view sql, std::span<const SqlParameter> params);
  Result awaitResult();
  Result guarded(std::string_view sql, std::span<const SqlParameter> params);
  ResultSet statement(std::string_view sql, std::span<const SqlParameter> params);
  ResultSet rowsOf(const PGresult* result, std::size_t hidden);
  ResultSet reusedOrRun(std::string_view sql, std::span<const SqlParameter> params);
  bool holds(std::string_view table, std::string_view column, ColumnKind kind);
  const TableInfo& table(unsigned oid);
  bool inTransaction() const;
  void makeDomains();
  [[noreturn]] void fail(const PGresult* result) const;
  Result describe(std::string_view statement);

  PGconn* conn_ = nullptr;
  std::string connection_;
  std::u16string catalog_;
  bool enclosing_ = false;
  bool userOpen_ = false;
  bool queryOnly_ = false;
  bool domains_ = false;
  bool settingsChanged_ = false;  // by a script: the session is not for another
  // Reads shared with the sessions of the same snapshot.
  std::string snapshot_;
  std::string readOnlyBegin_;  // what begins a read-only session's transaction
  // Raised from elsewhere: the statement running is cancelled, and every
  // statement after it refused.
  const std::atomic<bool>* interrupt_ = nullptr;
  std::shared_ptr<SqliteReuse> reuse_;
  std::unordered_map<unsigned, TableInfo> tables_;
  std::map<std::tuple<std::string, std::string, ColumnKind>, bool> columnKinds_;
};

}  // namespace korvex::ds
