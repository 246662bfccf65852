// The SQLite backend: the embedded default database of the data-access
// objects.
#include <algorithm>
#include <charconv>
#include <limits>

#include "korvex/sqlite.hpp"
#include "sqlite/backend.hpp"
#include "sqlite/field_types.hpp"
#include "sqlite/objects.hpp"
#include "sqlite/sql_dialect.hpp"
#include "sqlite/sqlite_functions.hpp"

namespace korvex::ds {

namespace {

Value storedCell(SqlCell cell) {
  if (const auto* n = std::get_if<long long>(&cell)) {
    if (*n >= std::numeric_limits<std::int32_t>::min() &&
        *n <= std::numeric_limits<std::int32_t>::max()) {
      return Value::lng(static_cast<std::int32_t>(*n));
    }
    return Value::dbl(static_cast<double>(*n));
  }
  if (const auto* d = std::get_if<double>(&cell)) return Value::dbl(*d);
  if (const auto* s = std::get_if<std::string>(&cell)) return Value::string(fromUtf8(*s));
  if (const auto* b = std::get_if<SqlBlob>(&cell)) {
    // Binary data: one character per byte.
    std::u16string bytes;
    bytes.reserve(b->bytes.size());
    for (char c : b->bytes) bytes += static_cast<char16_t>(static_cast<unsigned char>(c));
    return Value::string(std::move(bytes));
  }
  return Value::null();
}

SqlParameter parameterOf(const Value& v) {
  switch (v.type()) {
    case VarType::Integer:
      return static_cast<long long>(v.integerValue());
    case VarType::Long:
      return static_cast<long long>(v.longValue());
    case VarType::Double: {
      const double d = v.doubleValue();
      // Whole numbers bind as integers, so that they compare with integer
      // columns and stay exact.
      if (d == static_cast<double>(static_cast<long long>(d)) && d > -9e15 && d < 9e15) {
        return static_cast<long long>(d);
      }
      return d;
    }
    case VarType::String:
      return toUtf8(v.stringValue());
    default:
      return nullptr;
  }
}

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

class SqliteBackend final : public Backend {
 public:
  explicit SqliteBackend(SqliteDatabase db) : db_(std::move(db)) {}

  SqliteDatabase& database() noexcept { return db_; }

  ResultSet run(std::u16string_view sql, std::span<const Value> params) override {
    const std::string text = toUtf8(adapt(sql));
    std::string_view rest = text;
    ResultSet result;
    while (!rest.empty()) {
      std::optional<SqliteStatement> st = valueOrThrow(db_.prepareNext(rest));
      if (!st) continue;  // blanks or a comment
      bind(*st, params);
      result = step(*st);
    }
    return result;
  }

  void begin() override { valueOrThrow(db_.begin()); }
  void commit() override { valueOrThrow(db_.commit()); }
  void rollback() override { valueOrThrow(db_.rollback()); }

  std::u16string adapt(std::u16string_view sql) const override {
    return adaptSql(sql, kRenamedFunctions);
  }
  std::u16string placeholder(std::size_t i) const override {
    const std::string n = std::to_string(i + 1);
    return u"?" + std::u16string(n.begin(), n.end());
  }

  std::vector<std::u16string> primaryKey(std::u16string_view table) override {
    std::u16string quoted = u"PRAGMA table_info(\"";
    for (char16_t c : table) {
      if (c == u'"') quoted += u'"';
      quoted += c;
    }
    quoted += u"\")";
    const ResultSet info = run(quoted, {});
    std::vector<std::pair<std::int32_t, std::u16string>> keys;
    for (const auto& row : info.rows) {
      // cid, name, type, notnull, dflt_value, pk
      if (row.size() >= 6 && row[5].type() == VarType::Long && row[5].longValue() > 0) {
        keys.emplace_back(row[5].longValue(), row[1].stringValue());
      }
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::u16string> names;
    for (auto& k : keys) names.push_back(std::move(k.second));
    return names;
  }
  std::u16string rowIdentity() const override { return u"rowid"; }

  std::u16string catalog() const override {
    const std::string& path = db_.path();
    std::string name = path.substr(path.find_last_of('/') + 1);
    if (const auto dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) {
      name.resize(dot);
    }
    return fromUtf8(name);
  }

 private:
  static void bind(SqliteStatement& st, std::span<const Value> params) {
    const int count = st.parameterCount();
    for (int i = 1; i <= count; ++i) {
      const std::size_t slot = parameterSlot(st, i);
      valueOrThrow(
          st.bind(i, slot < params.size() ? parameterOf(params[slot]) : SqlParameter{nullptr}));
    }
  }

  ResultSet step(SqliteStatement& st) const {
    ResultSet result;
    const int columns = st.columnCount();
    result.hasRows = columns > 0;
    for (int i = 0; i < columns; ++i) {
      Column c;
      c.name = fromUtf8(st.columnName(i));
      c.type = typeOfDeclared(st.declaredType(i));
      c.table = fromUtf8(st.tableName(i));
      c.origin = fromUtf8(st.originName(i));
      result.columns.push_back(std::move(c));
    }
    while (valueOrThrow(st.step())) {
      std::vector<Value> row;
      row.reserve(static_cast<std::size_t>(columns));
      for (int i = 0; i < columns; ++i) row.push_back(storedCell(st.cell(i)));
      result.rows.push_back(std::move(row));
    }
    result.changed = columns > 0 ? 0 : db_.changes();
    // Declared columns convert; an expression column takes the type of its
    // first stored value that is not Null.
    for (std::size_t i = 0; i < result.columns.size(); ++i) {
      Column& c = result.columns[i];
      if (c.type == 0) {
        for (const auto& row : result.rows) {
          if ((c.type = typeOfStored(row[i])) != 0) break;
        }
        if (c.type == 0) c.type = kTypeText;
        continue;
      }
      for (auto& row : result.rows) row[i] = fieldValue(c.type, std::move(row[i]));
    }
    return result;
  }

  SqliteDatabase db_;
};

}  // namespace

std::shared_ptr<Backend> openSqlite(const std::string& path) {
  return std::make_shared<SqliteBackend>(valueOrThrow(SqliteDatabase::open(path)));
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
