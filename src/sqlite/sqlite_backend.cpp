// The SQLite backend: the embedded default database of the data-access
// objects.
#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "korvex/sqlite.hpp"
#include "sqlite/backend.hpp"
#include "sqlite/column_checks.hpp"
#include "sqlite/field_types.hpp"
#include "sqlite/objects.hpp"
#include "sqlite/read_reuse.hpp"
#include "sqlite/sql_dialect.hpp"
#include "sqlite/sql_tokens.hpp"
#include "sqlite/sqlite_functions.hpp"
#include "values/text_scan.hpp"

namespace korvex::ds {

namespace {

// The index of parameter ":pN" (N from 0), or `position` for "?" and any
// other name.
std::size_t parameterSlot(const SqliteStatement& st, int index) {
  const std::string_view name = st.parameterName(index);
  if (name.starts_with(":p")) {
    std::size_t n = 0;
    const char* end = name.data() + name.size();
    const auto [ptr, ec] = std::from_chars(name.data() + 2, end, n);
    if (ec == std::errc{} && ptr == end) return n;
  }
  return static_cast<std::size_t>(index - 1);
}

bool equalsAsciiNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; };
           return lower(x) == lower(y);
         });
}

std::string quotedName(std::string_view name) { return doubleQuoted(name); }

class SqliteBackend final : public Backend {
 public:
  explicit SqliteBackend(SqliteDatabase db, std::shared_ptr<SqliteReuse> reuse = nullptr)
      : db_(std::move(db)), reuse_(std::move(reuse)) {}

  SqliteDatabase& database() noexcept { return db_; }

  ResultSet run(std::u16string_view sql, std::span<const Value> params) override {
    const std::string text = toUtf8(adapt(sql));
    std::string_view rest = text;
    ResultSet result;
    while (!rest.empty()) {
      const std::string_view statement = rest;
      // Prepared with index-friendly filters where the stored values allow
      // (column_checks.hpp); errors and the SQL log keep the text as written.
      std::optional<SqliteStatement> st = valueOrThrow(rewrites_.prepareNext(db_, rest));
      if (!st) continue;  // blanks or a comment
      const std::string_view own = statement.substr(0, statement.size() - rest.size());
      if (st->control() != SqliteStatement::Control::None) {
        // BEGIN, COMMIT, ROLLBACK: inside a host's transaction, if one is open.
        if (st->control() == SqliteStatement::Control::Rollback && reuse_) reuse_->forget();
        valueOrThrow(db_.userTransaction(st->control()));
        result = ResultSet{};
        continue;
      }
      const std::vector<SqlParameter> values = boundValues(*st, params);
      result = reuse_ ? answerOrReuse(*st, own, values) : answer(*st, own, values);
    }
    return result;
  }

  ResultSet runExact(std::u16string_view sql, std::span<const SqlParameter> params,
                     std::size_t identity) override {
    SqliteStatement st = valueOrThrow(db_.prepare(toUtf8(sql)));
    const bool writes = reuse_ && !st.readsOnly();
    if (writes) reuse_->forget();
    bind(st, params);
    ResultSet result = step(st, identity);
    if (writes) reuse_->forget();
    return result;
  }

  void begin() override { valueOrThrow(db_.userTransaction(SqliteStatement::Control::Begin)); }
  void commit() override { valueOrThrow(db_.userTransaction(SqliteStatement::Control::Commit)); }
  void rollback() override {
    if (reuse_) reuse_->forget();  // what was kept may hold what is undone
    valueOrThrow(db_.userTransaction(SqliteStatement::Control::Rollback));
  }

  // The file keeps a procedure as SQL text in the table korvex_procedures
  // (name, body): the body reads the inputs as :p0, :p1, ... in order.
  std::optional<ResultSet> procedure(std::u16string_view name,
                                     std::span<const Value> inputs) override {
    std::u16string body;
    try {
      const std::array<Value, 1> key{Value::string(name)};
      const ResultSet found = run(u"SELECT body FROM korvex_procedures WHERE name = ?1", key);
      if (!found.rows.empty() && found.rows[0][0].isString()) body = found.rows[0][0].stringValue();
    } catch (const DbError&) {
      // No procedure table: no procedures.
    }
    if (body.empty()) return std::nullopt;
    return run(body, inputs);
  }

  std::u16string adapt(std::u16string_view sql) const override {
    return adaptSql(sql, kRenamedFunctions);
  }
  std::u16string placeholder(std::size_t i) const override {
    const std::string n = std::to_string(i + 1);
    return u"?" + std::u16string(n.begin(), n.end());
  }

  std::u16string catalog() const override {
    const std::string& path = db_.path();
    std::string name = path.substr(path.find_last_of('/') + 1);
    if (const auto dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) {
      name.resize(dot);
    }
    return fromUtf8(name);
  }

 private:
  // What each placeholder of the statement takes, in order.
  static std::vector<SqlParameter> boundValues(const SqliteStatement& st,
                                               std::span<const Value> params) {
    std::vector<SqlParameter> values;
    const int count = st.parameterCount();
    for (int i = 1; i <= count; ++i) {
      const std::size_t slot = parameterSlot(st, i);
      values.push_back(slot < params.size() ? parameterOf(params[slot]) : SqlParameter{nullptr});
    }
    return values;
  }

  static void bind(SqliteStatement& st, std::span<const SqlParameter> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
      valueOrThrow(st.bind(static_cast<int>(i + 1), values[i]));
    }
  }

  // One statement's rows, with their row identities where they have them.
  ResultSet answer(SqliteStatement& st, std::string_view own,
                   std::span<const SqlParameter> values) {
    std::vector<std::string> identity;
    if (std::optional<SqliteStatement> traced = withIdentity(st, own, identity)) {
      bind(*traced, values);
      ResultSet result = step(*traced, identity.size());
      if (result.rowIdentities.size() == result.rows.size()) {
        for (const std::string& column : identity) result.identity.push_back(fromUtf8(column));
      }
      return result;
    }
    bind(st, values);
    return step(st);
  }

  // The statement answered from the shared results where it may be: a
  // steady statement asked before, the database unchanged since.
  ResultSet answerOrReuse(SqliteStatement& st, std::string_view own,
                          std::span<const SqlParameter> values) {
    reuse_->countSent();
    if (!st.steady()) {
      // What a statement writes may change what any kept result says,
      // while it runs and after.
      const bool writes = !st.readsOnly();
      if (writes) reuse_->forget();
      ResultSet result = answer(st, own, values);
      if (writes) reuse_->forget();
      return result;
    }
    // Another connection's commit makes everything kept stale.
    const long long version = valueOrThrow(db_.dataVersion());
    if (version != seenVersion_) {
      if (seenVersion_ >= 0) reuse_->forget();
      seenVersion_ = version;
    }
    const std::string key = SqliteReuse::keyOf(db_.path() + '\0' + std::string(own), values);
    std::uint64_t generation = 0;
    if (std::optional<ResultSet> kept = reuse_->find(key, generation)) return std::move(*kept);
    ResultSet result = answer(st, own, values);
    reuse_->keep(key, result, generation);
    return result;
  }

  // The statement reading the same rows with, at the end, the columns that
  // tell apart the rows of the one table all its columns come from: the
  // row identity or, for a table without one, its primary key (named in
  // `identity`). None when the rows are not rows of one table: the columns
  // come from several, from none (sums, constants), or the identity cannot
  // be named once (a join, a table joined with itself: each instance has one).
  std::optional<SqliteStatement> withIdentity(const SqliteStatement& st, std::string_view sql,
                                              std::vector<std::string>& identity) {
    const int columns = st.columnCount();
    if (columns == 0) return std::nullopt;
    const std::string table = st.tableName(0);
    for (int i = 0; i < columns; ++i) {
      if (table.empty() || st.tableName(i) != table || st.originName(i).empty()) {
        return std::nullopt;
      }
    }
    const std::optional<std::size_t> at = selectListEnd(sql);
    if (!at) return std::nullopt;
    identity = identityOf(table);
    if (identity.empty()) return std::nullopt;
    std::string text(sql.substr(0, *at));
    for (const std::string& column : identity) text += ", " + quotedName(column);
    text += " ";
    text += sql.substr(*at);
    DatabaseResult<SqliteStatement> traced = db_.prepare(text);
    if (!traced.ok()) return std::nullopt;
    SqliteStatement& t = traced.value();
    const int hidden = static_cast<int>(identity.size());
    if (t.columnCount() != columns + hidden) return std::nullopt;
    for (int i = 0; i < hidden; ++i) {
      if (t.tableName(columns + i) != table) return std::nullopt;
    }
    for (int i = 0; i < columns; ++i) {
      if (t.tableName(i) != table || t.originName(i) != st.originName(i)) {
        return std::nullopt;
      }
    }
    return std::move(traced).value();
  }

  // What tells a table's rows apart: its row identity or, for a table
  // without one, its primary key; empty when neither can be named. Looked
  // up once per table while the schema stays as it was (scripts may create
  // and drop tables), since every query of one table's columns asks.
  const std::vector<std::string>& identityOf(const std::string& table) {
    if (!schemaVersion_) schemaVersion_.emplace(valueOrThrow(db_.prepare("PRAGMA schema_version")));
    valueOrThrow(schemaVersion_->step());
    const SqlCell version = schemaVersion_->cell(0);
    schemaVersion_->reset();  // an open statement would keep the schema from changing
    const long long* v = std::get_if<long long>(&version);
    if (v == nullptr || *v != identitiesVersion_) {
      identities_.clear();
      identitiesVersion_ = v != nullptr ? *v : -1;
    }
    auto known = identities_.find(table);
    if (known == identities_.end()) known = identities_.emplace(table, lookUpIdentity(table)).first;
    return known->second;
  }

  std::vector<std::string> lookUpIdentity(const std::string& table) {
    std::vector<std::string> identity;
    std::vector<std::string> names;
    std::vector<std::pair<long long, std::string>> keys;
    SqliteStatement info =
        valueOrThrow(db_.prepare("PRAGMA table_info(" + quotedName(table) + ")"));
    while (valueOrThrow(info.step())) {
      // cid, name, type, notnull, dflt_value, pk
      const SqlCell name = info.cell(1), pk = info.cell(5);
      if (const auto* n = std::get_if<std::string>(&name)) names.push_back(*n);
      if (const auto* k = std::get_if<long long>(&pk); k && *k > 0 && !names.empty()) {
        keys.emplace_back(*k, names.back());
      }
    }
    // The row identity goes by three names; a column may take any of them.
    for (std::string_view alias : {"_rowid_", "rowid", "oid"}) {
      if (std::none_of(names.begin(), names.end(),
                       [&](const std::string& n) { return equalsAsciiNoCase(n, alias); })) {
        if (db_.prepare("SELECT " + std::string(alias) + " FROM " + quotedName(table)).ok()) {
          identity = {std::string(alias)};
        }
        break;
      }
    }
    if (identity.empty()) {
      std::sort(keys.begin(), keys.end());
      for (auto& k : keys) identity.push_back(std::move(k.second));
    }
    return identity;
  }

  // The rows of a statement; its last `hidden` columns are the row
  // identity, kept apart from the columns the result shows.
  ResultSet step(SqliteStatement& st, std::size_t hidden = 0) const {
    ResultSet result;
    const int hiddenColumns = static_cast<int>(hidden);
    const int columns = st.columnCount() - hiddenColumns;
    result.hasRows = columns > 0;
    // Whether a column's first stored value that is not Null is a BLOB.
    std::vector<std::optional<bool>> blob(static_cast<std::size_t>(std::max(columns, 0)));
    for (int i = 0; i < columns; ++i) {
      Column c;
      c.name = fromUtf8(st.columnName(i));
      c.type = typeOfDeclared(st.declaredType(i));
      c.table = fromUtf8(st.tableName(i));
      c.origin = fromUtf8(st.originName(i));
      result.columns.push_back(std::move(c));
    }
    bool traced = hidden > 0;
    while (valueOrThrow(st.step())) {
      if (traced) {
        std::vector<SqlCell> id;
        for (int i = 0; i < hiddenColumns; ++i) id.push_back(st.cell(columns + i));
        // A view's or a subquery's rows have no identity of their own.
        traced = std::none_of(id.begin(), id.end(), [](const SqlCell& c) {
          return std::holds_alternative<std::nullptr_t>(c);
        });
        result.rowIdentities.push_back(std::move(id));
      }
      std::vector<Value> row;
      row.reserve(static_cast<std::size_t>(columns));
      for (int i = 0; i < columns; ++i) {
        SqlCell cell = st.cell(i);
        std::optional<bool>& first = blob[static_cast<std::size_t>(i)];
        if (!first && !std::holds_alternative<std::nullptr_t>(cell)) {
          first = std::holds_alternative<SqlBlob>(cell);
        }
        row.push_back(storedCell(std::move(cell)));
      }
      result.rows.push_back(std::move(row));
    }
    if (!traced) result.rowIdentities.clear();
    result.changed = columns > 0 ? 0 : db_.changes();
    settleColumnTypes(result, blob);
    return result;
  }

  SqliteDatabase db_;
  std::shared_ptr<SqliteReuse> reuse_;
  long long seenVersion_ = -1;  // the data version when last asked
  FilterRewrites rewrites_;
  std::optional<SqliteStatement> schemaVersion_;
  std::unordered_map<std::string, std::vector<std::string>> identities_;
  long long identitiesVersion_ = -1;
};

}  // namespace

std::shared_ptr<Backend> openSqlite(const std::string& path, SqliteAccess access) {
  SqliteDatabase db = valueOrThrow(SqliteDatabase::open(
      path, access.readOnly ? SqliteDatabase::Mode::ReadOnly : SqliteDatabase::Mode::Existing));
  db.interruptWhen(access.interrupt);
  if (access.cacheMiB > 0) valueOrThrow(db.setCacheMiB(access.cacheMiB));
  return std::make_shared<SqliteBackend>(std::move(db), std::move(access.reuse));
}

std::string sqliteCatalogPath(const std::string& currentPath, std::u16string_view catalog) {
  const auto slash = currentPath.find_last_of('/');
  const std::string dir = slash == std::string::npos ? "" : currentPath.substr(0, slash + 1);
  return dir + toUtf8(catalog) + ".db";
}

}  // namespace korvex::ds

namespace korvex {

DatabaseResult<SqlResult> SqliteDatabase::query(std::u16string_view sql,
                                                std::span<const Value> params) {
  try {
    return ds::SqliteBackend(*this).run(sql, params);
  } catch (const ds::DbError& e) {
    return DatabaseFailure{e.message()};
  }
}

ObjectRef SqliteDatabase::recordset(SqlResult result) {
  return std::make_shared<ds::Recordset>(std::move(result),
                                         std::make_shared<ds::SqliteBackend>(*this));
}

std::optional<SqliteDatabase> databaseOf(const ObjectRef& connection) {
  const auto* c = dynamic_cast<const ds::Connection*>(connection.get());
  auto* backend = c == nullptr ? nullptr : dynamic_cast<ds::SqliteBackend*>(c->backend().get());
  if (backend == nullptr) return std::nullopt;
  return backend->database();
}

}  // namespace korvex
