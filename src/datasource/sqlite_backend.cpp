// The SQLite backend: the embedded default database of the data-access
// objects.
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include "datasource/backend.hpp"
#include "datasource/field_types.hpp"
#include "datasource/sql_dialect.hpp"
#include "datasource/sqlite_functions.hpp"

namespace korvex::ds {

namespace {

std::u16string utf16(const char* text) { return text == nullptr ? u"" : fromUtf8(text); }

class Statement {
 public:
  explicit Statement(sqlite3_stmt* st) : st_(st) {}
  ~Statement() { sqlite3_finalize(st_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  sqlite3_stmt* get() const noexcept { return st_; }

 private:
  sqlite3_stmt* st_;
};

Value storedCell(sqlite3_stmt* st, int i) {
  switch (sqlite3_column_type(st, i)) {
    case SQLITE_INTEGER: {
      const sqlite3_int64 n = sqlite3_column_int64(st, i);
      if (n >= std::numeric_limits<std::int32_t>::min() &&
          n <= std::numeric_limits<std::int32_t>::max()) {
        return Value::lng(static_cast<std::int32_t>(n));
      }
      return Value::dbl(static_cast<double>(n));
    }
    case SQLITE_FLOAT:
      return Value::dbl(sqlite3_column_double(st, i));
    case SQLITE_TEXT: {
      const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
      return Value::string(fromUtf8(std::string_view(p, sqlite3_column_bytes(st, i))));
    }
    case SQLITE_BLOB: {
      // Binary data: one character per byte.
      const auto* p = static_cast<const unsigned char*>(sqlite3_column_blob(st, i));
      std::u16string bytes(p, p + sqlite3_column_bytes(st, i));
      return Value::string(std::move(bytes));
    }
    default:
      return Value::null();
  }
}

// The index of parameter ":pN" (N from 0), or `position` for "?" and any
// other name.
std::size_t parameterSlot(sqlite3_stmt* st, int index) {
  const char* name = sqlite3_bind_parameter_name(st, index);
  if (name != nullptr && name[0] == ':' && name[1] == 'p') {
    std::size_t n = 0;
    const char* end = name + std::char_traits<char>::length(name);
    const auto [ptr, ec] = std::from_chars(name + 2, end, n);
    if (ec == std::errc{} && ptr == end) return n;
  }
  return static_cast<std::size_t>(index - 1);
}

class SqliteBackend final : public Backend {
 public:
  SqliteBackend(sqlite3* db, std::string path) : db_(db), path_(std::move(path)) {}
  ~SqliteBackend() override { sqlite3_close_v2(db_); }

  ResultSet run(std::u16string_view sql, std::span<const Value> params) override {
    const std::string text = toUtf8(adapt(sql));
    const char* p = text.c_str();
    const char* end = p + text.size();
    ResultSet result;
    while (p < end) {
      sqlite3_stmt* raw = nullptr;
      const char* tail = nullptr;
      if (sqlite3_prepare_v2(db_, p, static_cast<int>(end - p), &raw, &tail) != SQLITE_OK) {
        fail();
      }
      p = tail;
      if (raw == nullptr) continue;  // blanks or a comment
      Statement st(raw);
      bind(raw, params);
      result = step(raw);
    }
    return result;
  }

  void begin() override { exec("BEGIN"); }
  void commit() override { exec("COMMIT"); }
  void rollback() override { exec("ROLLBACK"); }

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
    std::string name = path_.substr(path_.find_last_of('/') + 1);
    if (const auto dot = name.find_last_of('.'); dot != std::string::npos && dot > 0) {
      name.resize(dot);
    }
    return fromUtf8(name);
  }

 private:
  [[noreturn]] void fail() const { throw DbError(utf16(sqlite3_errmsg(db_))); }

  void exec(const char* sql) {
    if (sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail();
  }

  void bind(sqlite3_stmt* st, std::span<const Value> params) const {
    const int count = sqlite3_bind_parameter_count(st);
    for (int i = 1; i <= count; ++i) {
      const std::size_t slot = parameterSlot(st, i);
      const Value v = slot < params.size() ? params[slot] : Value::null();
      int rc = SQLITE_OK;
      switch (v.type()) {
        case VarType::Integer:
          rc = sqlite3_bind_int(st, i, v.integerValue());
          break;
        case VarType::Long:
          rc = sqlite3_bind_int(st, i, v.longValue());
          break;
        case VarType::Double: {
          const double d = v.doubleValue();
          // Whole numbers bind as integers, so that they compare with
          // integer columns and stay exact.
          if (d == static_cast<double>(static_cast<sqlite3_int64>(d)) && d > -9e15 && d < 9e15) {
            rc = sqlite3_bind_int64(st, i, static_cast<sqlite3_int64>(d));
          } else {
            rc = sqlite3_bind_double(st, i, d);
          }
          break;
        }
        case VarType::String: {
          const std::string s = toUtf8(v.stringValue());
          rc = sqlite3_bind_text(st, i, s.data(), static_cast<int>(s.size()), SQLITE_TRANSIENT);
          break;
        }
        default:
          rc = sqlite3_bind_null(st, i);
          break;
      }
      if (rc != SQLITE_OK) fail();
    }
  }

  ResultSet step(sqlite3_stmt* st) const {
    ResultSet result;
    const int columns = sqlite3_column_count(st);
    result.hasRows = columns > 0;
    for (int i = 0; i < columns; ++i) {
      Column c;
      c.name = utf16(sqlite3_column_name(st, i));
      const char* declared = sqlite3_column_decltype(st, i);
      c.type = typeOfDeclared(declared == nullptr ? "" : declared);
      c.table = utf16(sqlite3_column_table_name(st, i));
      c.origin = utf16(sqlite3_column_origin_name(st, i));
      result.columns.push_back(std::move(c));
    }
    for (;;) {
      const int rc = sqlite3_step(st);
      if (rc == SQLITE_DONE) break;
      if (rc != SQLITE_ROW) fail();
      std::vector<Value> row;
      row.reserve(static_cast<std::size_t>(columns));
      for (int i = 0; i < columns; ++i) row.push_back(storedCell(st, i));
      result.rows.push_back(std::move(row));
    }
    result.changed = columns > 0 ? 0 : sqlite3_changes64(db_);
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

  sqlite3* db_;
  std::string path_;
};

}  // namespace

std::shared_ptr<Backend> openSqlite(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
    throw DbError(u"数据库文件不存在: " + fromUtf8(path));
  }
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
  if (rc != SQLITE_OK) {
    std::u16string message = utf16(db == nullptr ? sqlite3_errstr(rc) : sqlite3_errmsg(db));
    sqlite3_close_v2(db);
    throw DbError(std::move(message));
  }
  sqlite3_busy_timeout(db, 2000);
  if (!registerPayrollFunctions(db)) {
    std::u16string message = utf16(sqlite3_errmsg(db));
    sqlite3_close_v2(db);
    throw DbError(std::move(message));
  }
  return std::make_shared<SqliteBackend>(db, path);
}

std::string sqliteCatalogPath(const std::string& currentPath, std::u16string_view catalog) {
  const auto slash = currentPath.find_last_of('/');
  const std::string dir = slash == std::string::npos ? "" : currentPath.substr(0, slash + 1);
  return dir + toUtf8(catalog) + ".db";
}

}  // namespace korvex::ds
