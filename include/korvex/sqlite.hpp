// The data-access objects on SQLite, for hosts that hand the engine a real
// database (library korvex_sqlite).
//
// The objects answer the late-bound members of the platform's data-access
// library: a Connection (ConnectionString, Open, Close, State, Execute,
// Properties("Initial Catalog"), BeginTrans/CommitTrans/RollbackTrans), a
// Recordset (Fields, EOF, BOF, the moves, RecordCount, State, Open, Edit,
// Update, ...) and a Command with Parameters. A connection string names the
// database file ("Data Source=PATH" or the bare path); the file must exist.
// A value in double quotes ("Data Source=\"a;b.db\"", "" for a quote in it)
// is taken as written; dataSource(path) writes one for any file name.
//
//   auto log = std::make_shared<korvex::SqlLog>();
//   auto objects = korvex::sqliteObjectFactory(log);
//   korvex::DispatchResult c = korvex::openConnection(*objects, korvex::dataSource("pay.db"));
//   if (!c.ok()) { /* c.description says why */ }
//   engine.SetObjectFactory(objects);        // functions create theirs here
//   engine.SetParent(korvex::connectParent(c.value.objectValue()));
//   engine.Execute();
//   for (auto& sql : log->texts()) ...        // every SQL text the run sent
//
// The database itself is open to the host too, through SqliteDatabase: a
// handle on one SQLite file for setting up data, transactions of its own
// around a run, or queries in the payroll dialect.
//
// Nothing declared here throws. An operation that can fail returns a
// DatabaseResult: its value, or the DatabaseFailure that stopped it, with
// the database's message. Only running out of memory escapes, as the
// standard library's std::bad_alloc.
//
//   korvex::DatabaseResult<korvex::SqliteDatabase> opened = korvex::SqliteDatabase::open("pay.db");
//   if (!opened.ok()) { /* opened.error().message says why */ }
//   korvex::SqliteDatabase& db = opened.value();
//   korvex::DatabaseResult<> done = db.begin();
//   if (done.ok()) done = db.execute("INSERT INTO Department VALUES ('01', NULL)");
//   if (done.ok()) done = db.commit();
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/value.hpp"

struct sqlite3_stmt;

namespace korvex {

/// The SQL texts the objects were given to run, in order, exactly as
/// written (before any adaptation to the database's dialect). Thread-safe:
/// engines on several threads may share one log.
class SqlLog {
 public:
  void add(std::u16string_view sql) {
    const std::lock_guard<std::mutex> lock(mutex_);
    texts_.emplace_back(sql);
  }
  /// A copy of the texts so far.
  std::vector<std::u16string> texts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return texts_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::u16string> texts_;
};

/// Results of reading statements kept to answer the same statement with
/// the same values again, shared by connections that see one committed
/// state of one database (a batch's workers); thread-safe. Only statements
/// that read and call no function whose answer can change (the clock,
/// random numbers) are answered from it, and everything kept is dropped
/// when the database may have changed: a commit by another connection, or
/// a statement that writes on one sharing it.
class SqliteReuse;
std::shared_ptr<SqliteReuse> makeSqliteReuse(std::size_t budgetBytes = std::size_t{64} << 20);

struct SqliteReuseCounts {
  std::uint64_t sent = 0;    // statements the sharing connections were asked to run
  std::uint64_t reused = 0;  // of those, answered from the kept results
};
SqliteReuseCounts reuseCounts(const SqliteReuse& reuse) noexcept;

/// How the objects of a factory open their databases.
struct SqliteAccess {
  /// Every database is opened for reading only (by the open flags, which
  /// no statement can undo): what a host hands scripts that must not write.
  bool readOnly = false;
  /// Once this flag is raised (from any thread or a signal handler), the
  /// statement running on any of those databases stops with an error, and
  /// so does every statement started after. Must outlive the databases.
  const std::atomic<bool>* interrupt = nullptr;
  /// Read results shared with other connections (none: every statement
  /// runs).
  std::shared_ptr<SqliteReuse> reuse;
  /// The page cache of each connection, in MiB (0: SQLite's default).
  int cacheMiB = 0;
  /// On a database server, with readOnly: a snapshot another session
  /// exported (pg_export_snapshot) that every session reads in, one
  /// repeatable-read transaction each, so that all of them see one state
  /// and may share what they read (`reuse`). Empty: every statement sees
  /// what is committed when it runs, and nothing is shared.
  std::string snapshot;
};

/// Makes "Connection", "Recordset" and "Command" objects (names matched
/// case-insensitively) on SQLite. Every object it makes, and every object
/// those make, records its SQL texts in `log` when one is given, and opens
/// its databases as `access` says.
std::shared_ptr<ObjectFactory> sqliteObjectFactory(std::shared_ptr<SqlLog> log = nullptr,
                                                   SqliteAccess access = {});

/// Creates a Connection with the factory and opens it; the result's value
/// is the open connection, or the failure says why.
DispatchResult openConnection(ObjectFactory& factory, std::u16string_view connectionString);

/// The connection string that names exactly the file `path` (UTF-8),
/// whatever characters its name holds.
std::u16string dataSource(std::string_view path);

/// A connection string as it may be shown to scripts and in messages: the
/// value of a password=... setting and the password of a postgresql://
/// address replaced by "***", the rest as written.
std::string shownConnection(std::string_view connection);

/// A host object whose member "Connect" is the given connection: what a
/// host hands the engine as its Parent.
ObjectRef connectParent(ObjectRef connection);

// ---- the database underneath ------------------------------------------------

/// A failure reported by the database, in its own words.
struct DatabaseFailure {
  std::u16string message;
  /// The failure as the data-access objects report it: the provider's
  /// number with this message.
  DispatchResult dispatchResult() const;
};

/// The outcome of an operation on the database: its value, or the failure
/// that stopped it. Reading value() of a failure, or error() of a success,
/// ends the program.
template <class T = void>
class [[nodiscard]] DatabaseResult {
 public:
  DatabaseResult(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  DatabaseResult(DatabaseFailure failure) : state_(std::in_place_index<1>, std::move(failure)) {}

  bool ok() const noexcept { return state_.index() == 0; }
  T& value() & noexcept { return check(0), *std::get_if<0>(&state_); }
  const T& value() const& noexcept { return check(0), *std::get_if<0>(&state_); }
  T&& value() && noexcept { return check(0), std::move(*std::get_if<0>(&state_)); }
  const DatabaseFailure& error() const noexcept { return check(1), *std::get_if<1>(&state_); }

 private:
  void check(std::size_t index) const noexcept {
    if (state_.index() != index) std::abort();
  }

  std::variant<T, DatabaseFailure> state_;
};

/// The outcome of an operation that gives nothing back but may fail.
template <>
class [[nodiscard]] DatabaseResult<void> {
 public:
  DatabaseResult() noexcept = default;
  DatabaseResult(DatabaseFailure failure) : failure_(std::move(failure)) {}

  bool ok() const noexcept { return !failure_.has_value(); }
  const DatabaseFailure& error() const noexcept {
    if (!failure_) std::abort();
    return *failure_;
  }

 private:
  std::optional<DatabaseFailure> failure_;
};

/// The bytes of a stored BLOB.
struct SqlBlob {
  std::string bytes;
  friend bool operator==(const SqlBlob&, const SqlBlob&) = default;
};

/// A value bound to a statement parameter: NULL, an integer, a real, text
/// (UTF-8 bytes, not checked) or a BLOB, stored exactly as given.
using SqlParameter = std::variant<std::nullptr_t, long long, double, std::string, SqlBlob>;
/// A stored value as read from a row.
using SqlCell = std::variant<std::nullptr_t, long long, double, std::string, SqlBlob>;

struct SqlColumn {
  std::u16string name;
  std::int32_t type = 202;  // the field type code the Recordset reports
  // Where the column comes from; both empty for an expression column.
  std::u16string table;
  std::u16string origin;
};

/// The outcome of a statement text as the data-access objects see it: the
/// rows hold script values of the columns' field types.
struct SqlResult {
  bool hasRows = false;  // false: the statement returns no rows (closed result)
  std::vector<SqlColumn> columns;
  std::vector<std::vector<Value>> rows;
  std::int64_t changed = 0;  // rows the last statement inserted, updated or deleted
  /// Where each row is stored, when every row is one row of the one table
  /// its columns come from: the table's columns that tell its rows apart
  /// (the row identity, or a primary key) and each row's values of them,
  /// exactly as stored. Empty when the rows cannot be traced back (a join,
  /// a sum, a view, ...).
  std::vector<std::u16string> identity;
  std::vector<std::vector<SqlCell>> rowIdentities;
};

struct SqliteHandle;

/// One prepared statement of a SqliteDatabase.
class SqliteStatement {
 public:
  SqliteStatement(SqliteStatement&& other) noexcept;
  SqliteStatement& operator=(SqliteStatement&&) = delete;
  ~SqliteStatement();

  int parameterCount() const noexcept;
  /// The name of parameter `index` (from 1) as written (":p0", "?2"); empty
  /// for a bare "?".
  std::string_view parameterName(int index) const noexcept;
  DatabaseResult<> bind(int index, const SqlParameter& value);

  /// Binds `parameters` in order, runs the statement to its end and makes
  /// it ready for the next run, whether it succeeded or not.
  DatabaseResult<> run(std::initializer_list<SqlParameter> parameters);
  /// Steps to the next row: false when there is none left.
  DatabaseResult<bool> step();
  void reset() noexcept;

  int columnCount() const noexcept;
  /// A column's name, declared SQL type, table and column of origin (UTF-8;
  /// empty where there is none).
  std::string columnName(int column) const;
  std::string declaredType(int column) const;
  std::string tableName(int column) const;
  std::string originName(int column) const;
  /// The current row's value of a column.
  SqlCell cell(int column) const;

  /// Whether the statement changes nothing in the database.
  bool readsOnly() const noexcept;
  /// What a statement that begins or ends a transaction does (BEGIN,
  /// COMMIT or END, ROLLBACK without TO); None for any other.
  enum class Control : std::uint8_t { None, Begin, Commit, Rollback };
  Control control() const noexcept { return control_; }
  /// Whether it gives the same rows whenever the data are the same: it
  /// returns rows, changes nothing and calls no function whose answer can
  /// change (the clock, random numbers, the connection's state) and no
  /// pragma.
  bool steady() const noexcept { return steady_; }

 private:
  friend class SqliteDatabase;
  SqliteStatement(std::shared_ptr<SqliteHandle> db, sqlite3_stmt* statement) noexcept;

  std::shared_ptr<SqliteHandle> db_;
  sqlite3_stmt* statement_;
  bool steady_ = false;
  Control control_ = Control::None;
};

/// An open SQLite file. Copies share the one connection, which closes with
/// the last of them.
class SqliteDatabase {
 public:
  enum class Mode { Existing, Create, ReadOnly };

  /// Opens a file for reading and writing: one that must exist already, or
  /// a new one. The payroll dialect's functions (YEAR, LEFT, ISNULL, ...)
  /// are there for every statement.
  static DatabaseResult<SqliteDatabase> open(const std::string& path, Mode mode = Mode::Existing);

  const std::string& path() const noexcept;

  /// Runs statements (one or more, separated by ";") that return no rows,
  /// as written.
  DatabaseResult<> execute(std::string_view sql);
  DatabaseResult<SqliteStatement> prepare(std::string_view sql);
  /// Prepares the first statement of `sql` and leaves the rest in it;
  /// nullopt when that piece holds only blanks or a comment. A failure
  /// leaves `sql` as it was.
  DatabaseResult<std::optional<SqliteStatement>> prepareNext(std::string_view& sql);
  /// Rows changed by the last INSERT, UPDATE or DELETE.
  std::int64_t changes() const noexcept;

  DatabaseResult<> begin();
  /// Begins a transaction that encloses whatever the connection's users do
  /// (the data-access objects, the scripts' SQL): a transaction they begin
  /// while it is open is a savepoint inside it, their commit releases the
  /// savepoint and their rollback undoes it, with the messages of a
  /// transaction of their own. Only commit() or rollback() ends it.
  DatabaseResult<> beginEnclosing();
  /// A transaction statement of the connection's users: run as it is, or
  /// inside the enclosing transaction while there is one.
  DatabaseResult<> userTransaction(SqliteStatement::Control control);
  /// Begins a transaction that holds the write lock from the start: until
  /// it ends no other connection writes. Refused when the file cannot be
  /// written, or another connection holds the lock (after a short wait).
  DatabaseResult<> beginWriting();
  DatabaseResult<> commit();
  DatabaseResult<> rollback();
  /// While on, the connection refuses every statement that would write.
  DatabaseResult<> setQueryOnly(bool on);
  /// From now on a statement of this connection stops with an error soon
  /// after `flag` is raised (nullptr: never). `flag` must outlive the
  /// connection.
  void interruptWhen(const std::atomic<bool>* flag) noexcept;
  /// The page cache of this connection, in MiB.
  DatabaseResult<> setCacheMiB(int mib);
  /// A number that changes when another connection commits a change.
  DatabaseResult<long long> dataVersion();

  /// What a payroll SQL text holds, as the database compiles it (adapted as
  /// query() adapts it) without running any of it.
  enum class TextKind {
    Nothing,  // blanks and comments only
    Query,    // one statement that reads and returns rows
    Other,    // one statement that changes nothing and returns no rows
    Writes,   // its first statement would change the database
    Several,  // another statement follows the first, which changes nothing
  };
  /// A failure when the first statement does not compile.
  DatabaseResult<TextKind> inspect(std::u16string_view sql);

  /// Runs a payroll SQL text exactly as Connection.Execute does (adapted
  /// to SQLite, the parameters bound to its placeholders in order).
  DatabaseResult<SqlResult> query(std::u16string_view sql, std::span<const Value> params = {});
  /// An open Recordset holding a result; its Update writes to this database.
  ObjectRef recordset(SqlResult result);

 private:
  explicit SqliteDatabase(std::shared_ptr<SqliteHandle> handle) noexcept;
  std::shared_ptr<SqliteHandle> handle_;
};

/// The database an open Connection of sqliteObjectFactory works on;
/// nullopt for a closed connection or any other object.
std::optional<SqliteDatabase> databaseOf(const ObjectRef& connection);

}  // namespace korvex
