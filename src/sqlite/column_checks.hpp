// Statements prepared with their filters rewritten (sql_rewrite.hpp) where
// the stored values of the columns they test allow it: each column is
// checked by a query on the database, and the answer kept until the
// database may have changed.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "korvex/sqlite.hpp"
#include "sqlite/sql_rewrite.hpp"

struct sqlite3;

namespace korvex::ds {

/// Registers on a connection what the checks ask: KORVEX_ISO_DATE(v), 1
/// when v is a date stored as ISO text, and KORVEX_ROLLBACKS(), the value
/// of `*rollbacks`: how many rollbacks (of transactions and to savepoints)
/// the connection has done, counted by its owner. False if SQLite refused.
bool registerColumnCheckFunctions(sqlite3* db, const std::int64_t* rollbacks);

/// Prepares statements as SqliteDatabase::prepareNext does; a statement
/// whose filters can be rewritten is prepared rewritten. The text as written
/// is prepared first: its failure is the one reported, and it is what runs
/// when the rewritten text does not compile.
class FilterRewrites {
 public:
  DatabaseResult<std::optional<SqliteStatement>> prepareNext(SqliteDatabase& db,
                                                             std::string_view& sql);

 private:
  bool holds(SqliteDatabase& db, std::string_view table, std::string_view column, ColumnKind kind);
  std::optional<bool> check(SqliteDatabase& db, std::string_view table, std::string_view column,
                            ColumnKind kind);
  void forgetIfChanged(SqliteDatabase& db);

  // What changes when the database may have: commits of other connections,
  // the schemas, this connection's changes and its rollbacks.
  std::optional<SqliteStatement> version_;
  std::optional<std::array<long long, 5>> seen_;
  bool current_ = false;  // seen_ was read for the statement being prepared
  std::map<std::tuple<std::string, std::string, ColumnKind>, bool> known_;
};

}  // namespace korvex::ds
