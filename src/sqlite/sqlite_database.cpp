// The one owner of SQLite connections and statements: the data-access
// objects' backend runs on it, and so does every host that fills a database.
#include <sqlite3.h>
#include <sys/stat.h>

#include <cctype>
#include <unordered_set>
#include <utility>

#include "korvex/sqlite.hpp"
#include "sqlite/column_checks.hpp"
#include "sqlite/objects.hpp"
#include "sqlite/sql_dialect.hpp"
#include "sqlite/sqlite_functions.hpp"

namespace korvex {

struct SqliteHandle {
  SqliteHandle(sqlite3* db, std::string path) : db(db), path(std::move(path)) {}
  ~SqliteHandle() {
    sqlite3_finalize(dataVersion);
    sqlite3_close_v2(db);
  }
  SqliteHandle(const SqliteHandle&) = delete;
  SqliteHandle& operator=(const SqliteHandle&) = delete;

  DatabaseFailure failure() const { return {fromUtf8(sqlite3_errmsg(db))}; }

  sqlite3* db;
  std::string path;
  // The functions whose answer depends on their arguments and rows alone
  // (lower case), and whether the statement being prepared calls another
  // or runs a pragma.
  std::unordered_set<std::string> steadyFunctions;
  bool unsteady = false;
  sqlite3_stmt* dataVersion = nullptr;  // "PRAGMA data_version", once asked
  // Rollbacks of transactions and to savepoints: what kept answers about
  // the data were computed from may be undone.
  std::int64_t rollbacks = 0;
  // The statement being prepared begins or ends a transaction.
  SqliteStatement::Control control = SqliteStatement::Control::None;
  // A host's transaction encloses the users' (beginEnclosing), and whether
  // they have one open inside it.
  bool enclosing = false;
  bool userOpen = false;
};

namespace {

std::string text(const char* p) { return p == nullptr ? std::string() : std::string(p); }

}  // namespace

DispatchResult DatabaseFailure::dispatchResult() const { return ds::providerError(message); }

// ---- statements --------------------------------------------------------------

SqliteStatement::SqliteStatement(std::shared_ptr<SqliteHandle> db, sqlite3_stmt* statement) noexcept
    : db_(std::move(db)),
      statement_(statement),
      steady_(!db_->unsteady && sqlite3_stmt_readonly(statement) != 0 &&
              sqlite3_column_count(statement) > 0),
      control_(db_->control) {}

SqliteStatement::SqliteStatement(SqliteStatement&& other) noexcept
    : db_(other.db_),
      statement_(std::exchange(other.statement_, nullptr)),
      steady_(other.steady_),
      control_(other.control_) {}

bool SqliteStatement::readsOnly() const noexcept { return sqlite3_stmt_readonly(statement_) != 0; }

SqliteStatement::~SqliteStatement() { sqlite3_finalize(statement_); }

int SqliteStatement::parameterCount() const noexcept {
  return sqlite3_bind_parameter_count(statement_);
}

std::string_view SqliteStatement::parameterName(int index) const noexcept {
  const char* name = sqlite3_bind_parameter_name(statement_, index);
  return name == nullptr ? std::string_view() : std::string_view(name);
}

DatabaseResult<> SqliteStatement::bind(int index, const SqlParameter& value) {
  int rc = SQLITE_OK;
  if (const auto* n = std::get_if<long long>(&value)) {
    rc = sqlite3_bind_int64(statement_, index, *n);
  } else if (const auto* d = std::get_if<double>(&value)) {
    rc = sqlite3_bind_double(statement_, index, *d);
  } else if (const auto* s = std::get_if<std::string>(&value)) {
    rc = sqlite3_bind_text(statement_, index, s->data(), static_cast<int>(s->size()),
                           SQLITE_TRANSIENT);
  } else if (const auto* b = std::get_if<SqlBlob>(&value)) {
    rc = sqlite3_bind_blob(statement_, index, b->bytes.data(), static_cast<int>(b->bytes.size()),
                           SQLITE_TRANSIENT);
  } else {
    rc = sqlite3_bind_null(statement_, index);
  }
  if (rc != SQLITE_OK) return db_->failure();
  return {};
}

DatabaseResult<> SqliteStatement::run(std::initializer_list<SqlParameter> parameters) {
  DatabaseResult<> outcome;
  int i = 1;
  for (const SqlParameter& p : parameters) {
    if (outcome = bind(i++, p); !outcome.ok()) break;
  }
  while (outcome.ok()) {
    const DatabaseResult<bool> row = step();
    if (!row.ok()) {
      outcome = row.error();
    } else if (!row.value()) {
      break;
    }
  }
  reset();
  sqlite3_clear_bindings(statement_);
  return outcome;
}

DatabaseResult<bool> SqliteStatement::step() {
  const int rc = sqlite3_step(statement_);
  if (rc == SQLITE_ROW) return true;
  if (rc != SQLITE_DONE) return db_->failure();
  return false;
}

void SqliteStatement::reset() noexcept { sqlite3_reset(statement_); }

int SqliteStatement::columnCount() const noexcept { return sqlite3_column_count(statement_); }

std::string SqliteStatement::columnName(int column) const {
  return text(sqlite3_column_name(statement_, column));
}
std::string SqliteStatement::declaredType(int column) const {
  return text(sqlite3_column_decltype(statement_, column));
}
std::string SqliteStatement::tableName(int column) const {
  return text(sqlite3_column_table_name(statement_, column));
}
std::string SqliteStatement::originName(int column) const {
  return text(sqlite3_column_origin_name(statement_, column));
}

SqlCell SqliteStatement::cell(int column) const {
  switch (sqlite3_column_type(statement_, column)) {
    case SQLITE_INTEGER:
      return sqlite3_column_int64(statement_, column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement_, column);
    case SQLITE_TEXT: {
      const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
      return std::string(p, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
    }
    case SQLITE_BLOB: {
      const auto* p = static_cast<const char*>(sqlite3_column_blob(statement_, column));
      return SqlBlob{
          std::string(p, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)))};
    }
    default:
      return nullptr;
  }
}

// ---- the database ----------------------------------------------------------------

namespace {

// SQLite marks the functions that answer alike for alike arguments; of its
// own, the date and time functions are marked so too but read the clock
// when asked for 'now'. Its aggregates are steady but carry no mark.
bool learnSteadyFunctions(SqliteHandle& h) {
  sqlite3_stmt* list = nullptr;
  const char* sql =
      "SELECT DISTINCT lower(name) FROM pragma_function_list WHERE "
      "(flags & 0x800 AND name NOT IN ('date', 'time', 'datetime', 'julianday', 'strftime', "
      "'unixepoch', 'timediff')) OR (builtin AND type IN ('a', 'w'))";
  if (sqlite3_prepare_v2(h.db, sql, -1, &list, nullptr) != SQLITE_OK) return false;
  while (sqlite3_step(list) == SQLITE_ROW) {
    h.steadyFunctions.emplace(reinterpret_cast<const char*>(sqlite3_column_text(list, 0)));
  }
  return sqlite3_finalize(list) == SQLITE_OK;
}

// Asked while a statement is prepared, for each thing it does; it allows
// everything, notes what makes the statement's answer unsteady and counts
// rollbacks to savepoints (which call no hook), when prepared: before they
// run.
int watchStatement(void* data, int action, const char* operation, const char* function, const char*,
                   const char*) {
  auto& h = *static_cast<SqliteHandle*>(data);
  if (action == SQLITE_SAVEPOINT && operation != nullptr &&
      std::string_view(operation) == "ROLLBACK") {
    ++h.rollbacks;
  }
  if (action == SQLITE_PRAGMA) h.unsteady = true;
  if (action == SQLITE_TRANSACTION && operation != nullptr) {
    const std::string_view op(operation);
    h.control = op == "BEGIN"    ? SqliteStatement::Control::Begin
                : op == "COMMIT" ? SqliteStatement::Control::Commit
                                 : SqliteStatement::Control::Rollback;
  }
  if (action == SQLITE_FUNCTION && function != nullptr) {
    std::string name(function);
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (!h.steadyFunctions.contains(name)) h.unsteady = true;
  }
  return SQLITE_OK;
}

}  // namespace

SqliteDatabase::SqliteDatabase(std::shared_ptr<SqliteHandle> handle) noexcept
    : handle_(std::move(handle)) {}

DatabaseResult<SqliteDatabase> SqliteDatabase::open(const std::string& path, Mode mode) {
  int flags = mode == Mode::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (mode == Mode::Create) {
    flags |= SQLITE_OPEN_CREATE;
  } else if (struct stat info{}; ::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    // SQLite would make an empty file of a mistyped name.
    return DatabaseFailure{u"数据库文件不存在: " + fromUtf8(path)};
  }
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
  if (rc != SQLITE_OK) {
    std::u16string message = fromUtf8(db == nullptr ? sqlite3_errstr(rc) : sqlite3_errmsg(db));
    sqlite3_close_v2(db);
    return DatabaseFailure{std::move(message)};
  }
  auto handle = std::make_shared<SqliteHandle>(db, path);
  sqlite3_busy_timeout(db, 2000);
  if (!ds::registerPayrollFunctions(db)) return handle->failure();
  if (!learnSteadyFunctions(*handle) || !ds::registerColumnCheckFunctions(db, &handle->rollbacks)) {
    return handle->failure();
  }
  sqlite3_set_authorizer(db, watchStatement, handle.get());
  sqlite3_rollback_hook(
      db, [](void* h) { ++static_cast<SqliteHandle*>(h)->rollbacks; }, handle.get());
  return SqliteDatabase(std::move(handle));
}

const std::string& SqliteDatabase::path() const noexcept { return handle_->path; }

DatabaseResult<> SqliteDatabase::execute(std::string_view sql) {
  const std::string statements(sql);
  if (sqlite3_exec(handle_->db, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    return handle_->failure();
  }
  return {};
}

DatabaseResult<SqliteStatement> SqliteDatabase::prepare(std::string_view sql) {
  handle_->unsteady = false;
  handle_->control = SqliteStatement::Control::None;
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(handle_->db, sql.data(), static_cast<int>(sql.size()), &statement,
                         nullptr) != SQLITE_OK) {
    return handle_->failure();
  }
  return SqliteStatement(handle_, statement);
}

DatabaseResult<std::optional<SqliteStatement>> SqliteDatabase::prepareNext(std::string_view& sql) {
  handle_->unsteady = false;
  handle_->control = SqliteStatement::Control::None;
  sqlite3_stmt* statement = nullptr;
  const char* tail = nullptr;
  if (sqlite3_prepare_v2(handle_->db, sql.data(), static_cast<int>(sql.size()), &statement,
                         &tail) != SQLITE_OK) {
    return handle_->failure();
  }
  sql.remove_prefix(static_cast<std::size_t>(tail - sql.data()));
  if (statement == nullptr) return std::optional<SqliteStatement>();
  return std::optional<SqliteStatement>(SqliteStatement(handle_, statement));
}

std::int64_t SqliteDatabase::changes() const noexcept { return sqlite3_changes64(handle_->db); }

DatabaseResult<SqliteDatabase::TextKind> SqliteDatabase::inspect(std::u16string_view sql) {
  const std::string adapted = toUtf8(ds::adaptSql(sql, ds::kRenamedFunctions));
  std::string_view rest = adapted;
  std::optional<SqliteStatement> first;
  while (!first && !rest.empty()) {
    DatabaseResult<std::optional<SqliteStatement>> next = prepareNext(rest);
    if (!next.ok()) return next.error();
    if (next.value()) first.emplace(std::move(*next.value()));
  }
  if (!first) return TextKind::Nothing;
  if (sqlite3_stmt_readonly(first->statement_) == 0) return TextKind::Writes;
  // Whatever follows counts as a statement unless it is only blanks,
  // comments and semicolons: even one that does not compile.
  while (!rest.empty()) {
    DatabaseResult<std::optional<SqliteStatement>> next = prepareNext(rest);
    if (!next.ok() || next.value()) return TextKind::Several;
  }
  return first->columnCount() > 0 ? TextKind::Query : TextKind::Other;
}

DatabaseResult<> SqliteDatabase::begin() { return execute("BEGIN"); }
DatabaseResult<> SqliteDatabase::beginWriting() {
  // A file the process may not write opens read-only without a word.
  if (sqlite3_db_readonly(handle_->db, "main") == 1) {
    return DatabaseFailure{u"数据库文件只读, 不能写入: " + fromUtf8(handle_->path)};
  }
  return execute("BEGIN IMMEDIATE");
}
DatabaseResult<> SqliteDatabase::commit() {
  handle_->enclosing = handle_->userOpen = false;
  return execute("COMMIT");
}
DatabaseResult<> SqliteDatabase::rollback() {
  handle_->enclosing = handle_->userOpen = false;
  return execute("ROLLBACK");
}

DatabaseResult<> SqliteDatabase::beginEnclosing() {
  DatabaseResult<> begun = begin();
  if (begun.ok()) handle_->enclosing = true;
  return begun;
}

DatabaseResult<> SqliteDatabase::userTransaction(SqliteStatement::Control control) {
  using Control = SqliteStatement::Control;
  SqliteHandle& h = *handle_;
  if (!h.enclosing) {
    return execute(control == Control::Begin    ? "BEGIN"
                   : control == Control::Commit ? "COMMIT"
                                                : "ROLLBACK");
  }
  // Inside the host's transaction: a savepoint of the users' own, failing
  // as a transaction of theirs would.
  if (control == Control::Begin) {
    if (h.userOpen) return DatabaseFailure{u"cannot start a transaction within a transaction"};
    DatabaseResult<> done = execute("SAVEPOINT korvex_user");
    h.userOpen = done.ok();
    return done;
  }
  if (!h.userOpen) {
    return DatabaseFailure{control == Control::Commit
                               ? u"cannot commit - no transaction is active"
                               : u"cannot rollback - no transaction is active"};
  }
  DatabaseResult<> done =
      execute(control == Control::Commit ? "RELEASE korvex_user"
                                         : "ROLLBACK TO korvex_user; RELEASE korvex_user");
  if (done.ok()) h.userOpen = false;
  return done;
}

DatabaseResult<> SqliteDatabase::setQueryOnly(bool on) {
  return execute(on ? "PRAGMA query_only = 1" : "PRAGMA query_only = 0");
}

namespace {

// Asked every few thousand steps of a statement: a nonzero answer stops it
// with SQLITE_INTERRUPT. An atomic load is all a signal may have raised.
int stopWhenRaised(void* flag) {
  return static_cast<const std::atomic<bool>*>(flag)->load(std::memory_order_relaxed) ? 1 : 0;
}

}  // namespace

void SqliteDatabase::interruptWhen(const std::atomic<bool>* flag) noexcept {
  if (flag == nullptr) {
    sqlite3_progress_handler(handle_->db, 0, nullptr, nullptr);
  } else {
    sqlite3_progress_handler(handle_->db, 4096, stopWhenRaised,
                             const_cast<std::atomic<bool>*>(flag));
  }
}

DatabaseResult<> SqliteDatabase::setCacheMiB(int mib) {
  return execute("PRAGMA cache_size = -" + std::to_string(mib * 1024));
}

DatabaseResult<long long> SqliteDatabase::dataVersion() {
  sqlite3_stmt*& st = handle_->dataVersion;
  if (st == nullptr &&
      sqlite3_prepare_v2(handle_->db, "PRAGMA data_version", -1, &st, nullptr) != SQLITE_OK) {
    return handle_->failure();
  }
  const int rc = sqlite3_step(st);
  const long long version = rc == SQLITE_ROW ? sqlite3_column_int64(st, 0) : -1;
  sqlite3_reset(st);
  if (rc != SQLITE_ROW) return handle_->failure();
  return version;
}

}  // namespace korvex
