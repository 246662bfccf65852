// The index-friendly filter rewrites: the texts they make.
#include <gtest/gtest.h>

#include "database_fixture.hpp"
#include "sqlite/sql_rewrite.hpp"

namespace korvex::testing {
namespace {

using ds::ColumnKind;

// Table t's d holds ISO dates and its c codes without trailing blanks; no
// other column allows a rewrite.
bool fakeHolds(std::string_view table, std::string_view column, ColumnKind kind) {
  return table == "t" && column == (kind == ColumnKind::IsoDates ? "d" : "c");
}

TEST(FilterRewrite, TextsOfTheFilters) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"SELECT * FROM t WHERE (YEAR(d) = 2025) AND (MONTH(d) = 3) AND c='1'",
       "SELECT * FROM t WHERE (d >= '2025-03-01' AND d < '2025-04-01') AND c='1'"},
      {"select * from t where month ( d )=12 and Year(d)= 2025 order by 1",
       "select * from t where (d >= '2025-12-01' AND d < '2026-01-01') order by 1"},
      {"SELECT 1 FROM t AS a WHERE x OR YEAR(a.d) = 2024",
       "SELECT 1 FROM t AS a WHERE x OR (a.d >= "
       "'2024-01-01' AND a.d < '2025-01-01')"},
      {"SELECT * FROM [t] WHERE YEAR(\"d\") = 2025 AND MONTH([d]) = 3",
       "SELECT * FROM [t] WHERE (\"d\" >= '2025-03-01' AND \"d\" < '2025-04-01')"},
      {"select sum(v) from t where (d BETWEEN '2025-03-01' and '2025-03-31') and rtrim(c)='0 1' ",
       "select sum(v) from t where (d BETWEEN '2025-03-01' and '2025-03-31') and (c = '0 1' AND "
       "rtrim(c)='0 1') "},
      {"SELECT * FROM t WHERE MONTH(d) = 13 AND YEAR(d) = 2025",
       "SELECT * FROM t WHERE MONTH(d) = 13 AND (d >= '2025-01-01' AND d < '2026-01-01')"},
      {"SELECT * FROM u WHERE k IN (SELECT k FROM t WHERE YEAR(d) = 2025)",
       "SELECT * FROM u WHERE k IN (SELECT k FROM t WHERE (d >= '2025-01-01' AND d < "
       "'2026-01-01'))"},
      // Unchanged: literals, comments, other shapes, other tables.
      {"SELECT 'YEAR(d) = 1' FROM t WHERE x = 'it''s YEAR(d) = 2025'", ""},
      {"SELECT * FROM t WHERE /* YEAR(d) = 2025 */ x = 1 -- and rtrim(c)='1'", ""},
      {"SELECT * FROM t WHERE YEAR(d) = '2025' OR YEAR(d) = 2025 + 1 OR YEAR(d) = 2025.0", ""},
      {"SELECT * FROM t WHERE NOT YEAR(d) = 2025 AND MONTH(d) = 3", ""},
      {"SELECT * FROM t WHERE v BETWEEN 1 AND YEAR(d) = 2025", ""},
      {"SELECT * FROM t WHERE x = rtrim(c) = '1' OR rtrim(c) = '1' || 'x' OR rtrim(e) = '1'", ""},
      {"SELECT * FROM t, u WHERE YEAR(d) = 2025", ""},
      {"SELECT * FROM t JOIN u ON 1 WHERE YEAR(d) = 2025", ""},
      {"SELECT * FROM u WHERE YEAR(d) = 2025", ""},
      {"SELECT * FROM t WHERE EXISTS (SELECT 1 FROM t AS i WHERE YEAR(t.d) = 2025)", ""},
      {"WITH t AS (SELECT 1) SELECT * FROM t WHERE YEAR(d) = 2025", ""},
      {"SELECT YEAR(d) = 2025 FROM t", ""},
      {"UPDATE t SET v = 1 FROM u WHERE YEAR(d) = 2025", ""},
  };
  for (const auto& [sql, expected] : cases) {
    EXPECT_EQ(ds::rewriteFilters(sql, fakeHolds).value_or(""), expected) << sql;
  }
}

}  // namespace
}  // namespace korvex::testing
