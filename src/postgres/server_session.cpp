#include "postgres/server_session.hpp"

#include <poll.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>

#include "postgres/server_cells.hpp"
#include "sqlite/field_types.hpp"
#include "sqlite/sql_rewrite.hpp"
#include "sqlite/sql_tokens.hpp"
#include "values/text_scan.hpp"

namespace korvex::ds {

namespace {

// What the session needs before the first payroll text: dates read and
// written in ISO form (and month first where a text is ambiguous), and the
// payroll database's functions the server lacks or has with another
// meaning, in the session's own schema so that nothing is left behind.
// Its transactions wait on the scripts by design (a run's, a group's, the
// batch's snapshot): a site's limit on idle transactions must not end them.
constexpr std::string_view kSessionSetup = R"SQL(
SET datestyle = 'ISO, MDY';
SET client_encoding = 'UTF8';
SET client_min_messages = warning;
SET idle_in_transaction_session_timeout = 0;
CREATE FUNCTION pg_temp.korvex_year(date) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(year FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_year(timestamp) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(year FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_year(text) RETURNS integer LANGUAGE sql STABLE
  AS 'SELECT extract(year FROM $1::timestamp)::integer';
CREATE FUNCTION pg_temp.korvex_month(date) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(month FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_month(timestamp) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(month FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_month(text) RETURNS integer LANGUAGE sql STABLE
  AS 'SELECT extract(month FROM $1::timestamp)::integer';
CREATE FUNCTION pg_temp.korvex_day(date) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(day FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_day(timestamp) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT extract(day FROM $1)::integer';
CREATE FUNCTION pg_temp.korvex_day(text) RETURNS integer LANGUAGE sql STABLE
  AS 'SELECT extract(day FROM $1::timestamp)::integer';
CREATE FUNCTION pg_temp.korvex_length(bigint) RETURNS integer LANGUAGE plpgsql IMMUTABLE
  AS 'BEGIN IF $1 < 0 THEN RAISE EXCEPTION ''Invalid length parameter passed to the function.''; END IF; RETURN $1; END';
CREATE FUNCTION pg_temp.korvex_left(text, bigint) RETURNS text LANGUAGE sql IMMUTABLE
  AS 'SELECT left($1, pg_temp.korvex_length($2))';
CREATE FUNCTION pg_temp.korvex_left(numeric, bigint) RETURNS text LANGUAGE sql IMMUTABLE
  AS 'SELECT left($1::text, pg_temp.korvex_length($2))';
CREATE FUNCTION pg_temp.korvex_right(text, bigint) RETURNS text LANGUAGE sql IMMUTABLE
  AS 'SELECT right($1, pg_temp.korvex_length($2))';
CREATE FUNCTION pg_temp.korvex_right(numeric, bigint) RETURNS text LANGUAGE sql IMMUTABLE
  AS 'SELECT right($1::text, pg_temp.korvex_length($2))';
CREATE FUNCTION pg_temp.korvex_len(text) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT length(rtrim($1, '' ''))';
CREATE FUNCTION pg_temp.korvex_len(numeric) RETURNS integer LANGUAGE sql IMMUTABLE
  AS 'SELECT length($1::text)';
CREATE FUNCTION pg_temp.korvex_getdate() RETURNS timestamp LANGUAGE sql STABLE
  AS 'SELECT localtimestamp(0)';
)SQL";

// The payroll types kept as domains: a money amount to four places, a bit
// as a small number. Made once per database; a session racing another
// finds it made.
constexpr std::string_view kDomains = R"SQL(DO $$BEGIN
  IF to_regtype('public.korvex_money') IS NULL THEN
    CREATE DOMAIN public.korvex_money AS numeric(19,4);
  END IF;
  IF to_regtype('public.korvex_bit') IS NULL THEN
    CREATE DOMAIN public.korvex_bit AS smallint;
  END IF;
EXCEPTION WHEN duplicate_object OR unique_violation THEN NULL;
END$$)SQL";

std::string lowerAscii(std::u16string_view name) {
  std::string out = toUtf8(name);
  for (char& c : out) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return out;
}

std::string numberText(double d) {
  std::array<char, 32> buffer{};
  const auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), d);
  return ec == std::errc{} ? std::string(buffer.data(), end) : std::string("0");
}

// Only a select list of plain names can come from one table's columns
// alone: anything with parentheses is an expression, which no row holds.
bool plainSelectList(std::string_view sql, std::size_t from) {
  for (const SqlToken& t : sqlTokens(sql.substr(0, from))) {
    if (t.kind == SqlTokenKind::Symbol && sql[t.begin] == '(') return false;
  }
  return true;
}

// Row identity on the server: where the row lies, the transaction that
// wrote it last and its table. A row found by all three is the row read,
// unchanged since: an update moves it, so a write never lands on a row
// that merely took another's place.
constexpr std::array<std::u16string_view, 3> kIdentity{u"ctid", u"xmin", u"tableoid"};
constexpr std::string_view kIdentityColumns = ", ctid, xmin, tableoid ";

// A statement that leaves something in the session beyond its transaction
// (a search path, a temporary table, a prepared statement): the next
// connection, which expects a session as new, must not get it.
bool changesSession(std::string_view statement) {
  const std::string word = firstWord(statement);
  for (std::string_view w : {"SET", "RESET", "DISCARD", "PREPARE", "DECLARE", "LISTEN", "LOAD"}) {
    if (word == w) return true;
  }
  for (const SqlToken& t : sqlTokens(statement)) {
    if (t.kind != SqlTokenKind::Word) continue;
    const std::string_view w = statement.substr(t.begin, t.size);
    if (isWord(w, "TEMP") || isWord(w, "TEMPORARY")) return true;
  }
  return false;
}

}  // namespace

ServerSession::ServerSession(const std::string& connection, std::u16string_view catalog,
                             const SqliteAccess& access)
    : connection_(connection), interrupt_(access.interrupt) {
  const bool readOnly = access.readOnly;
  const std::string database = toUtf8(catalog);
  // A server that stops answering (its machine gone, the network cut) is
  // found out in about a minute, not after the system's two hours of
  // silence; the connection string may say otherwise, as it comes after.
  const char* keys[] = {"connect_timeout",
                        "keepalives_idle",
                        "keepalives_interval",
                        "keepalives_count",
                        "dbname",
                        catalog.empty() ? nullptr : "dbname",
                        nullptr};
  const char* values[] = {"15", "30", "10", "3", connection.c_str(), database.c_str(), nullptr};
  conn_ = PQconnectdbParams(keys, values, 1);
  if (conn_ == nullptr || PQstatus(conn_) != CONNECTION_OK) {
    std::string why = conn_ != nullptr ? PQerrorMessage(conn_) : "out of memory";
    while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
    PQfinish(conn_);
    conn_ = nullptr;
    throw DbError(fromUtf8(why));
  }
  // The server's notices (a warning of a script's BEGIN inside the run's
  // transaction, ...) are no business of the command's output.
  PQsetNoticeProcessor(
      conn_, [](void*, const char*) {}, nullptr);
  try {
    execute(kSessionSetup);
    if (readOnly) execute("SET default_transaction_read_only = on");
    const ResultSet name = runExact("SELECT current_database()", {}, 0);
    catalog_ = name.rows.at(0).at(0).stringValue();
    // A read-only session reads inside a read-only transaction of its own,
    // begun again whenever it ends, which no statement of a script can
    // switch to writing; with a snapshot another session exported, in that
    // snapshot (only the database it is of can take it). The scripts'
    // transactions become savepoints inside it.
    // (Its first query comes with it: before that, a statement could still
    // switch the transaction to writing.)
    if (readOnly) {
      readOnlyBegin_ = "BEGIN READ ONLY; SELECT 1";
      if (!access.snapshot.empty() && catalog.empty()) {
        std::string quoted = "'";
        for (char c : access.snapshot) quoted += c == '\'' ? std::string("''") : std::string(1, c);
        readOnlyBegin_ =
            "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY; SET TRANSACTION SNAPSHOT " + quoted +
            "'; SELECT 1";
        snapshot_ = access.snapshot;
        reuse_ = access.reuse;
      }
      execute(readOnlyBegin_);
      enclosing_ = true;
    }
  } catch (...) {
    PQfinish(conn_);
    conn_ = nullptr;
    throw;
  }
}

ServerSession::~ServerSession() { PQfinish(conn_); }

bool ServerSession::reusable() const noexcept {
  if (PQstatus(conn_) != CONNECTION_OK || userOpen_ || queryOnly_ || settingsChanged_) {
    return false;
  }
  const PGTransactionStatusType state = PQtransactionStatus(conn_);
  return readOnlyBegin_.empty() ? state == PQTRANS_IDLE && !enclosing_ : state == PQTRANS_INTRANS;
}

void ServerSession::fail(const PGresult* result) const {
  const char* primary = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
  std::string why = primary != nullptr ? primary : PQerrorMessage(conn_);
  // A lost server says so over several lines of its own: the first is enough.
  const bool lost = PQstatus(conn_) != CONNECTION_OK;
  if (lost) why = why.substr(0, why.find('\n'));
  while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
  throw DbError(fromUtf8(lost ? "与数据库服务器的连接已断开: " + why : why));
}

bool ServerSession::inTransaction() const { return PQtransactionStatus(conn_) != PQTRANS_IDLE; }

void ServerSession::execute(std::string_view sql) {
  Result r(PQexec(conn_, std::string(sql).c_str()), PQclear);
  const ExecStatusType status = PQresultStatus(r.get());
  if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_EMPTY_QUERY) {
    fail(r.get());
  }
}

// One statement with its parameters bound (never pasted): integers and
// reals with their types, text and NULL as untyped values that take the
// type the statement gives them, as a quoted literal would; a parameter
// the statement does not use as text, which it ignores.
ServerSession::Result ServerSession::send(std::string_view sql,
                                          std::span<const SqlParameter> params) {
  const std::vector<bool> used = placeholdersUsed(sql);
  const std::size_t count = used.size();
  std::vector<std::string> texts(count);
  std::vector<const char*> values(count, nullptr);
  std::vector<Oid> types(count, 0);
  for (std::size_t i = 0; i < count; ++i) {
    const SqlParameter p = i < params.size() ? params[i] : SqlParameter{nullptr};
    if (const auto* n = std::get_if<long long>(&p)) {
      texts[i] = std::to_string(*n);
      types[i] = kServerInt8;
    } else if (const auto* d = std::get_if<double>(&p)) {
      texts[i] = numberText(*d);
      types[i] = kServerFloat8;
    } else if (const auto* s = std::get_if<std::string>(&p)) {
      texts[i] = *s;
    } else if (const auto* b = std::get_if<SqlBlob>(&p)) {
      static constexpr char kDigits[] = "0123456789abcdef";
      texts[i] = "\\x";
      for (unsigned char c : b->bytes) texts[i] += {kDigits[c >> 4], kDigits[c & 15]};
      types[i] = kServerBytea;
    }
    if (!std::holds_alternative<std::nullptr_t>(p)) values[i] = texts[i].c_str();
    if (!used[i]) types[i] = 25;  // text
  }
  if (interrupt_ != nullptr && interrupt_->load()) throw DbError(u"interrupted");
  Result r(nullptr, PQclear);
  if (interrupt_ == nullptr) {
    r.reset(PQexecParams(conn_, std::string(sql).c_str(), static_cast<int>(count), types.data(),
                         values.data(), nullptr, nullptr, 0));
  } else if (PQsendQueryParams(conn_, std::string(sql).c_str(), static_cast<int>(count),
                               types.data(), values.data(), nullptr, nullptr, 0) == 1) {
    r = awaitResult();
  }
  const ExecStatusType status = PQresultStatus(r.get());
  if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_EMPTY_QUERY) {
    fail(r.get());
  }
  return r;
}

// The result of the statement sent, waiting in short steps so that a
// raised interrupt cancels it (the server then answers with an error).
ServerSession::Result ServerSession::awaitResult() {
  bool cancelled = false;
  while (PQisBusy(conn_) == 1) {
    pollfd ready{PQsocket(conn_), POLLIN, 0};
    (void)::poll(&ready, 1, 50);
    if (PQconsumeInput(conn_) == 0) break;
    if (!cancelled && interrupt_->load()) {
      cancelled = true;
      if (PGcancel* cancel = PQgetCancel(conn_)) {
        char why[256];
        (void)PQcancel(cancel, why, sizeof why);
        PQfreeCancel(cancel);
      }
    }
  }
  Result first(PQgetResult(conn_), PQclear);
  // The connection takes the next statement only once every result is read.
  while (PGresult* more = PQgetResult(conn_)) PQclear(more);
  return first;
}

// Inside a transaction a failed statement would leave the whole
// transaction unusable; the payroll database undoes only the statement.
// A savepoint around it does the same here.
ServerSession::Result ServerSession::guarded(std::string_view sql,
                                             std::span<const SqlParameter> params) {
  // A statement of a script (ABORT, COMMIT AND CHAIN) may have ended a
  // read-only session's transaction.
  if (!readOnlyBegin_.empty() && !inTransaction()) {
    execute(readOnlyBegin_);
    userOpen_ = false;
  }
  if (!inTransaction()) return send(sql, params);
  if (!readOnlyBegin_.empty() && !userOpen_) {
    // A read-only session has nothing to undo: after a failure it begins
    // again (in the same snapshot), which costs less than a savepoint
    // around every statement.
    try {
      Result r = send(sql, params);
      // A script's COMMIT AND CHAIN began a transaction of its own, which
      // it could still switch to writing: it is replaced at once.
      const std::string_view ended = PQcmdStatus(r.get());
      if (ended == "COMMIT" || ended == "ROLLBACK") {
        if (inTransaction()) execute("ROLLBACK");
        execute(readOnlyBegin_);
      }
      return r;
    } catch (const DbError&) {
      execute("ROLLBACK");
      execute(readOnlyBegin_);
      throw;
    }
  }
  execute("SAVEPOINT korvex_statement");
  try {
    Result r = send(sql, params);
    execute("RELEASE SAVEPOINT korvex_statement");
    return r;
  } catch (const DbError&) {
    execute("ROLLBACK TO SAVEPOINT korvex_statement; RELEASE SAVEPOINT korvex_statement");
    throw;
  }
}

const ServerSession::TableInfo& ServerSession::table(unsigned oid) {
  auto known = tables_.find(oid);
  if (known != tables_.end()) return known->second;
  const std::array<SqlParameter, 1> key{std::to_string(oid)};
  Result r = send(
      "SELECT c.relname, a.attnum, a.attname, format_type(a.atttypid, a.atttypmod) "
      "FROM pg_class c JOIN pg_attribute a ON a.attrelid = c.oid "
      "WHERE c.oid = $1 AND a.attnum > 0 AND NOT a.attisdropped",
      key);
  TableInfo info;
  for (int row = 0; row < PQntuples(r.get()); ++row) {
    info.name = fromUtf8(PQgetvalue(r.get(), row, 0));
    info.columns[std::atoi(PQgetvalue(r.get(), row, 1))] = {fromUtf8(PQgetvalue(r.get(), row, 2)),
                                                            PQgetvalue(r.get(), row, 3)};
  }
  return tables_.emplace(oid, std::move(info)).first->second;
}

ResultSet ServerSession::rowsOf(const PGresult* r, std::size_t hidden) {
  ResultSet result;
  const int fields = PQnfields(r);
  const int columns = std::max(0, fields - static_cast<int>(hidden));
  result.hasRows = PQresultStatus(r) == PGRES_TUPLES_OK && columns > 0;
  std::vector<std::optional<bool>> binary(static_cast<std::size_t>(columns));
  for (int i = 0; i < columns; ++i) {
    Column c;
    c.name = fromUtf8(PQfname(r, i));
    c.type = 0;
    if (const Oid oid = PQftable(r, i); oid != InvalidOid) {
      const TableInfo& info = table(oid);
      const auto column = info.columns.find(PQftablecol(r, i));
      if (column != info.columns.end()) {
        c.table = info.name;
        c.origin = column->second.first;
        c.type = typeOfServerDeclared(column->second.second);
      }
    }
    result.columns.push_back(std::move(c));
  }
  const int rows = PQntuples(r);
  for (int row = 0; row < rows; ++row) {
    std::vector<Value> values;
    values.reserve(static_cast<std::size_t>(columns));
    for (int i = 0; i < columns; ++i) {
      if (PQgetisnull(r, row, i)) {
        values.push_back(Value::null());
        continue;
      }
      const std::string_view text(PQgetvalue(r, row, i),
                                  static_cast<std::size_t>(PQgetlength(r, row, i)));
      SqlCell cell = cellOf(PQftype(r, i), text);
      std::optional<bool>& first = binary[static_cast<std::size_t>(i)];
      if (!first) first = std::holds_alternative<SqlBlob>(cell);
      values.push_back(storedCell(std::move(cell)));
    }
    result.rows.push_back(std::move(values));
    if (hidden > 0) {
      std::vector<SqlCell> id;
      for (int i = columns; i < fields; ++i) {
        if (PQgetisnull(r, row, i)) {
          id.emplace_back(nullptr);
        } else {
          id.emplace_back(std::string(PQgetvalue(r, row, i)));
        }
      }
      result.rowIdentities.push_back(std::move(id));
    }
  }
  if (!result.hasRows) {
    const char* changed = PQcmdTuples(const_cast<PGresult*>(r));
    result.changed = changed != nullptr ? std::atoll(changed) : 0;
  }
  settleColumnTypes(result, binary);
  return result;
}

// One statement of a payroll text. A query of plain columns of one table
// reads each row's identity along, so that its record set can write the
// row back; when that reading fails (a view, a subquery, names that two
// tables share), the statement runs as written.
ResultSet ServerSession::statement(std::string_view sql, std::span<const SqlParameter> params) {
  const std::string word = firstWord(sql);
  if (word == "CREATE" || word == "ALTER" || word == "DROP") {
    tables_.clear();
    columnKinds_.clear();
  }
  if (const std::optional<std::size_t> from = selectListEnd(sql);
      from && plainSelectList(sql, *from)) {
    std::string traced(sql.substr(0, *from));
    traced += kIdentityColumns;
    traced += sql.substr(*from);
    std::optional<Result> read;
    try {
      read.emplace(guarded(traced, params));
    } catch (const DbError&) {
    }
    if (read) {
      ResultSet result = rowsOf(read->get(), kIdentity.size());
      const bool oneTable =
          !result.columns.empty() &&
          std::all_of(result.columns.begin(), result.columns.end(), [&](const Column& c) {
            return !c.origin.empty() && c.table == result.columns[0].table;
          });
      const bool identified =
          std::all_of(result.rowIdentities.begin(), result.rowIdentities.end(), [](const auto& id) {
            return std::none_of(id.begin(), id.end(), [](const SqlCell& c) {
              return std::holds_alternative<std::nullptr_t>(c);
            });
          });
      if (oneTable && identified) {
        result.identity.assign(kIdentity.begin(), kIdentity.end());
      } else {
        result.rowIdentities.clear();
      }
      return result;
    }
  }
  return rowsOf(guarded(sql, params).get(), 0);
}

// Each statement adapted on its own (its "?" placeholders numbered from
// the first, as the payroll database numbers them), with its filters in the
// forms an index serves where the column's values allow it.
ResultSet ServerSession::run(std::u16string_view sql, std::span<const Value> params) {
  const std::string written = toUtf8(sql);
  std::vector<SqlParameter> values;
  for (const Value& v : params) values.push_back(parameterOf(v));
  ResultSet result;
  for (const std::string_view one : serverStatements(written)) {
    const std::optional<std::string> indexed =
        rewriteFilters(one, [this](std::string_view table, std::string_view column,
                                   ColumnKind kind) { return holds(table, column, kind); });
    const ServerText adapted = adaptForServer(fromUtf8(indexed ? *indexed : std::string(one)));
    if (adapted.usesDomains) makeDomains();
    const std::string text = toUtf8(adapted.sql);
    settingsChanged_ = settingsChanged_ || changesSession(text);
    if (const TransactionWord word = transactionWord(text); word == TransactionWord::Ends) {
      // The host's transaction is the run's: ended here, the run's writes
      // before would stay whatever became of the run.
      if (enclosing_ && readOnlyBegin_.empty()) {
        throw DbError(
            u"this statement would end the run's transaction: "
            u"a script ends its own with COMMIT or ROLLBACK");
      }
    } else if (word != TransactionWord::None) {
      userTransaction(word);
      result = ResultSet{};
      continue;
    }
    result = reuse_ ? reusedOrRun(text, values) : statement(text, values);
  }
  return result;
}

// Whether the filters on a column may take the forms an index serves: a
// date or timestamp column holds nothing but dates, a char(n) column
// compares without its trailing blanks, and other text columns are asked,
// in a snapshot only (where no one can add a code ending in a blank while
// the answer is kept).
bool ServerSession::holds(std::string_view table, std::string_view column, ColumnKind kind) {
  const auto key = std::tuple(std::string(table), std::string(column), kind);
  if (const auto known = columnKinds_.find(key); known != columnKinds_.end()) return known->second;
  const std::string quotedTable = doubleQuoted(std::string_view(lowerAscii(fromUtf8(table))));
  const std::string name = lowerAscii(fromUtf8(column));
  const std::array<SqlParameter, 2> names{quotedTable, name};
  const Result type = send(
      "SELECT format_type(atttypid, atttypmod) FROM pg_attribute WHERE attrelid = "
      "to_regclass($1) AND attname = $2 AND NOT attisdropped",
      names);
  const std::string declared = PQntuples(type.get()) == 1 ? PQgetvalue(type.get(), 0, 0) : "";
  bool answer = false;
  if (kind == ColumnKind::IsoDates) {
    answer = declared == "date" || declared.starts_with("timestamp");
  } else if (declared.starts_with("character(")) {
    answer = true;
  } else if (!snapshot_.empty() &&
             (declared.starts_with("character varying") || declared == "text")) {
    const Result blanks = send("SELECT NOT EXISTS (SELECT 1 FROM " + quotedTable + " WHERE " +
                                   doubleQuoted(std::string_view(name)) + " LIKE '% ')",
                               {});
    answer = std::string_view(PQgetvalue(blanks.get(), 0, 0)) == "t";
  }
  columnKinds_.emplace(key, answer);
  return answer;
}

// Inside one snapshot a steady query asked again with the same values
// has the same answer, whichever session asks: the sessions of the
// snapshot share it.
ResultSet ServerSession::reusedOrRun(std::string_view sql, std::span<const SqlParameter> params) {
  reuse_->countSent();
  if (!steadyQuery(sql)) return statement(sql, params);
  const std::string key = SqliteReuse::keyOf(snapshot_ + '\0' + std::string(sql), params);
  std::uint64_t generation = 0;
  if (std::optional<ResultSet> kept = reuse_->find(key, generation)) return std::move(*kept);
  ResultSet result = statement(sql, params);
  reuse_->keep(key, result, generation);
  return result;
}

ResultSet ServerSession::runExact(std::string_view sql, std::span<const SqlParameter> params,
                                  std::size_t identity) {
  return rowsOf(guarded(sql, params).get(), identity);
}

void ServerSession::makeDomains() {
  if (domains_) return;
  if (inTransaction()) {
    guarded(kDomains, {});
  } else {
    execute(kDomains);
  }
  domains_ = true;
}

std::optional<ResultSet> ServerSession::callFunction(std::u16string_view name,
                                                     std::span<const Value> inputs) {
  const std::string function = lowerAscii(name);
  const std::array<SqlParameter, 1> key{function};
  if (PQntuples(send("SELECT 1 FROM pg_proc WHERE proname = $1", key).get()) == 0) {
    return std::nullopt;
  }
  std::string sql = "SELECT * FROM " + doubleQuoted(std::string_view(function)) + "(";
  std::vector<SqlParameter> values;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    sql += (i == 0 ? "$" : ", $") + std::to_string(i + 1);
    values.push_back(parameterOf(inputs[i]));
  }
  return rowsOf(guarded(sql + ")", values).get(), 0);
}

SqliteDatabase::TextKind ServerSession::inspect(std::u16string_view sql) {
  using Kind = SqliteDatabase::TextKind;
  const std::string text = toUtf8(adaptForServer(sql).sql);
  const std::vector<std::string_view> statements = serverStatements(text);
  if (statements.empty()) return Kind::Nothing;
  const std::string word = firstWord(statements[0]);
  if (transactionWord(statements[0]) != TransactionWord::None || word == "SHOW" ||
      word == "EXPLAIN") {
    return Kind::Other;
  }
  // Only these read without writing; a query that calls a function which
  // writes is refused when it runs, as the record query runs read-only.
  if (word != "SELECT" && word != "WITH" && word != "VALUES" && word != "TABLE") {
    return Kind::Writes;
  }
  // A query that locks its rows, or a WITH that writes, writes.
  for (const SqlToken& t : sqlTokens(statements[0])) {
    if (t.kind != SqlTokenKind::Word) continue;
    const std::string_view w = statements[0].substr(t.begin, t.size);
    for (std::string_view writes : {"INSERT", "UPDATE", "DELETE", "MERGE", "INTO"}) {
      if (isWord(w, writes)) return Kind::Writes;
    }
  }
  if (statements.size() > 1) return Kind::Several;
  return PQnfields(describe(statements[0]).get()) > 0 ? Kind::Query : Kind::Other;
}

// Compiled, not run: a mistake in it is the server's message (and undoes
// nothing but the compile, inside a transaction).
ServerSession::Result ServerSession::describe(std::string_view statement) {
  const bool inside = inTransaction();
  if (inside) execute("SAVEPOINT korvex_statement");
  Result prepared(PQprepare(conn_, "", std::string(statement).c_str(), 0, nullptr), PQclear);
  if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK) {
    if (inside)
      execute("ROLLBACK TO SAVEPOINT korvex_statement; RELEASE SAVEPOINT korvex_statement");
    fail(prepared.get());
  }
  // Described before anything else runs: any other statement replaces the
  // unnamed one.
  Result described(PQdescribePrepared(conn_, ""), PQclear);
  if (inside) execute("RELEASE SAVEPOINT korvex_statement");
  if (PQresultStatus(described.get()) != PGRES_COMMAND_OK) fail(described.get());
  return described;
}

std::vector<std::u16string> ServerSession::columnNames(std::u16string_view sql) {
  const std::string text = toUtf8(adaptForServer(sql).sql);
  const std::vector<std::string_view> statements = serverStatements(text);
  std::vector<std::u16string> names;
  if (statements.empty()) return names;
  const Result described = describe(statements[0]);
  for (int i = 0; i < PQnfields(described.get()); ++i) {
    names.push_back(fromUtf8(PQfname(described.get(), i)));
  }
  return names;
}

void ServerSession::userTransaction(TransactionWord word) {
  if (!enclosing_) {
    if (word == TransactionWord::Begin) {
      if (inTransaction()) throw DbError(u"cannot start a transaction within a transaction");
      execute("BEGIN");
      return;
    }
    if (!inTransaction()) {
      throw DbError(word == TransactionWord::Commit
                        ? u"cannot commit - no transaction is active"
                        : u"cannot rollback - no transaction is active");
    }
    execute(word == TransactionWord::Commit ? "COMMIT" : "ROLLBACK");
    return;
  }
  // Inside the host's transaction: a savepoint of the scripts' own, failing
  // as a transaction of theirs would.
  if (word == TransactionWord::Begin) {
    if (userOpen_) throw DbError(u"cannot start a transaction within a transaction");
    execute("SAVEPOINT korvex_user");
    userOpen_ = true;
    return;
  }
  if (!userOpen_) {
    throw DbError(word == TransactionWord::Commit ? u"cannot commit - no transaction is active"
                                                  : u"cannot rollback - no transaction is active");
  }
  execute(word == TransactionWord::Commit
              ? "RELEASE SAVEPOINT korvex_user"
              : "ROLLBACK TO SAVEPOINT korvex_user; RELEASE SAVEPOINT korvex_user");
  userOpen_ = false;
}

void ServerSession::begin() { execute("BEGIN"); }

std::string ServerSession::exportSnapshot() {
  execute("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
  // Not under a savepoint: a subtransaction cannot export.
  const Result id = send("SELECT pg_export_snapshot()", {});
  return PQgetvalue(id.get(), 0, 0);
}

void ServerSession::beginEnclosing() {
  execute("BEGIN");
  enclosing_ = true;
}

void ServerSession::commit() {
  enclosing_ = userOpen_ = false;
  queryOnly_ = false;
  execute("COMMIT");
}

void ServerSession::rollback() {
  enclosing_ = userOpen_ = false;
  queryOnly_ = false;
  execute("ROLLBACK");
}

// Inside a transaction, a savepoint that reads only: undoing it afterwards
// puts the transaction back as it was, able to write again.
void ServerSession::setQueryOnly(bool on) {
  if (on == queryOnly_) return;
  if (!inTransaction() && !on) {
    execute("SET default_transaction_read_only = off");
  } else if (!inTransaction()) {
    execute("SET default_transaction_read_only = on");
  } else if (on) {
    execute("SAVEPOINT korvex_query_only; SET LOCAL transaction_read_only = on");
  } else {
    execute("ROLLBACK TO SAVEPOINT korvex_query_only; RELEASE SAVEPOINT korvex_query_only");
  }
  queryOnly_ = on;
}

}  // namespace korvex::ds
