#include "sqlite/column_checks.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <utility>
#include <variant>

#include "sqlite/field_types.hpp"
#include "values/text_scan.hpp"

namespace korvex::ds {

namespace {

// 1 when the value is text "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS" holding a
// valid date (as YEAR reads it), else 0: text of that form compares as its
// date does.
void isoDate(sqlite3_context* ctx, int, sqlite3_value** argv) {
  bool iso = false;
  if (sqlite3_value_type(argv[0]) == SQLITE_TEXT) {
    const auto* p = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    const std::string_view s(p, static_cast<std::size_t>(sqlite3_value_bytes(argv[0])));
    constexpr std::string_view form = "0000-00-00 00:00:00";
    iso = s.size() == 10 || s.size() == 19;
    for (std::size_t i = 0; iso && i < s.size(); ++i) {
      iso = form[i] == '0' ? s[i] >= '0' && s[i] <= '9' : s[i] == form[i];
    }
    iso = iso && parseDateText(fromUtf8(s)).has_value();
  }
  sqlite3_result_int(ctx, iso ? 1 : 0);
}

void rollbacks(sqlite3_context* ctx, int, sqlite3_value**) {
  sqlite3_result_int64(ctx, *static_cast<const std::int64_t*>(sqlite3_user_data(ctx)));
}

std::string lower(std::string_view name) {
  std::string out(name);
  for (char& c : out) c = c >= 'A' && c <= 'Z' ? char(c + 32) : c;
  return out;
}

std::string quoted(std::string_view name) { return doubleQuoted(name); }

}  // namespace

bool registerColumnCheckFunctions(sqlite3* db, const std::int64_t* rollbacks) {
  return sqlite3_create_function(db, "KORVEX_ROLLBACKS", 0, SQLITE_UTF8,
                                 const_cast<std::int64_t*>(rollbacks), ds::rollbacks, nullptr,
                                 nullptr) == SQLITE_OK &&
         sqlite3_create_function(db, "KORVEX_ISO_DATE", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                 nullptr, isoDate, nullptr, nullptr) == SQLITE_OK;
}

DatabaseResult<std::optional<SqliteStatement>> FilterRewrites::prepareNext(SqliteDatabase& db,
                                                                           std::string_view& sql) {
  const std::string_view text = sql;
  DatabaseResult<std::optional<SqliteStatement>> written = db.prepareNext(sql);
  if (!written.ok() || !written.value()) return written;
  current_ = false;
  const std::optional<std::string> rewritten =
      rewriteFilters(text.substr(0, text.size() - sql.size()),
                     [&](std::string_view table, std::string_view column, ColumnKind kind) {
                       return holds(db, table, column, kind);
                     });
  if (!rewritten) return written;
  DatabaseResult<SqliteStatement> st = db.prepare(*rewritten);
  if (!st.ok()) return written;
  return std::optional<SqliteStatement>(std::move(st).value());
}

bool FilterRewrites::holds(SqliteDatabase& db, std::string_view table, std::string_view column,
                           ColumnKind kind) {
  if (!current_) forgetIfChanged(db);
  auto key = std::make_tuple(lower(table), lower(column), kind);
  if (const auto known = known_.find(key); known != known_.end()) return known->second;
  const std::optional<bool> answer = check(db, table, column, kind);
  // A check that failed (interrupted, locked) is no answer to keep.
  if (answer && seen_) known_.emplace(std::move(key), *answer);
  return answer.value_or(false);
}

void FilterRewrites::forgetIfChanged(SqliteDatabase& db) {
  current_ = true;
  if (!version_) {
    DatabaseResult<SqliteStatement> st = db.prepare(
        "SELECT (SELECT data_version FROM pragma_data_version),"
        " (SELECT schema_version FROM main.pragma_schema_version),"
        " (SELECT schema_version FROM temp.pragma_schema_version), total_changes(),"
        " KORVEX_ROLLBACKS()");
    if (!st.ok()) {
      seen_.reset();
      known_.clear();
      return;
    }
    version_.emplace(std::move(st).value());
  }
  std::optional<std::array<long long, 5>> now;
  if (const DatabaseResult<bool> row = version_->step(); row.ok() && row.value()) {
    now.emplace();
    for (int i = 0; i < 5; ++i) {
      const SqlCell cell = version_->cell(i);
      const auto* n = std::get_if<long long>(&cell);
      (*now)[static_cast<std::size_t>(i)] = n != nullptr ? *n : -1;
    }
  }
  version_->reset();  // an open statement would keep the schema from changing
  if (!now || now != seen_) known_.clear();
  seen_ = now;
}

// The column is one of a table of the main database (not a view or a
// virtual table, nor one a temporary table hides), and no value of it is of
// another kind. Nothing when a query failed.
std::optional<bool> FilterRewrites::check(SqliteDatabase& db, std::string_view table,
                                          std::string_view column, ColumnKind kind) {
  DatabaseResult<SqliteStatement> tables = db.prepare(
      "SELECT schema = 'main' AND type = 'table' FROM pragma_table_list"
      " WHERE name = ?1 COLLATE NOCASE AND schema IN ('main', 'temp')");
  if (!tables.ok() || !tables.value().bind(1, std::string(table)).ok()) return std::nullopt;
  bool plain = false;
  for (;;) {
    const DatabaseResult<bool> row = tables.value().step();
    if (!row.ok()) return std::nullopt;
    if (!row.value()) break;
    const SqlCell cell = tables.value().cell(0);
    plain = cell == SqlCell{1LL};
    if (!plain) return false;
  }
  if (!plain) return false;
  DatabaseResult<SqliteStatement> columns =
      db.prepare("SELECT 1 FROM pragma_table_info(?1, 'main') WHERE name = ?2 COLLATE NOCASE");
  if (!columns.ok() || !columns.value().bind(1, std::string(table)).ok() ||
      !columns.value().bind(2, std::string(column)).ok()) {
    return std::nullopt;
  }
  const DatabaseResult<bool> found = columns.value().step();
  if (!found.ok()) return std::nullopt;
  if (!found.value()) return false;
  const std::string c = quoted(column);
  const std::string other = kind == ColumnKind::IsoDates
                                ? "NOT KORVEX_ISO_DATE(" + c + ")"
                                : "(typeof(" + c + ") <> 'text' OR " + c + " GLOB '* ')";
  DatabaseResult<SqliteStatement> values =
      db.prepare("SELECT 1 FROM main." + quoted(table) + " WHERE " + c + " IS NOT NULL AND " +
                 other + " LIMIT 1");
  if (!values.ok()) return std::nullopt;
  const DatabaseResult<bool> any = values.value().step();
  if (!any.ok()) return std::nullopt;
  return !any.value();
}

}  // namespace korvex::ds
