// The index-friendly filter rewrites: the texts they make, and on a real
// database the same rows as the text as written, even where stored values
// forbid a rewrite and after the data changed under the checks' answers.
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

// Queries run through a Connection, whose answers of the checks last from
// one query to the next.
class RewrittenQueries : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
    need(db().execute(
        "CREATE TABLE t (id INTEGER PRIMARY KEY, d DATE, c TEXT, v INT);"
        "CREATE INDEX t_c ON t (c, d); CREATE INDEX t_d ON t (d);"
        "INSERT INTO t (d, c, v) VALUES ('2025-03-01', '00001', 1), ('2025-03-31 23:59:59', "
        "'00001', 2), ('2025-04-01', '00001', 3), ('2025-02-28', '00002', 4), (NULL, NULL, 5),"
        " ('2024-12-31', '00001', 6);"));
  }
  // The connection's database, where texts run exactly as written.
  SqliteDatabase db() { return *databaseOf(connection_); }
  // The plan of a text: as written, or as the connection runs it.
  std::string plan(const std::string& sql, bool written) {
    const std::string explain = "EXPLAIN QUERY PLAN " + sql;
    if (!written) {
      return toUtf8(fieldOf(exec(explain), 3).stringValue());
    }
    SqliteStatement st = need(db().prepare(explain));
    return need(st.step()) ? std::get<std::string>(st.cell(3)) : "";
  }
  // The rows a filter selects (each v as a bit), as written and as run.
  void expectSameRows(const std::string& filter) {
    const std::string sql = "SELECT sum(1 << v) FROM t WHERE " + filter;
    SqliteStatement st = need(db().prepare(sql));
    ASSERT_TRUE(need(st.step()));
    EXPECT_EQ(scalar(sql).longValue(), std::get<long long>(st.cell(0))) << sql;
  }
};

TEST_F(RewrittenQueries, SameRowsWhateverTheStoredValues) {
  const std::string month = "(YEAR(d) = 2025) AND (MONTH(d) = 3)";
  // Each step changes the data (on this connection or another); then the
  // queries give what the texts as written give, rewritten or not.
  const std::tuple<bool, std::string_view, bool> steps[] = {
      {false, "", true},
      {false, "INSERT INTO t (d, c, v) VALUES ('03/15/2025', '00001 ', 7)", false},
      {false, "DELETE FROM t WHERE v = 7", true},
      {true, "INSERT INTO t (d, c, v) VALUES ('2025-03-16', '00001  ', 8)", true},
      {true, "UPDATE t SET d = '2025-03-16 8:00' WHERE v = 8", false},
      {false, "BEGIN; DELETE FROM t WHERE v = 8", true},
      {false, "ROLLBACK", false},
      {false, "BEGIN; SAVEPOINT s; DELETE FROM t WHERE v = 8", true},
      {false, "ROLLBACK TO s; COMMIT", false},
  };
  for (const auto& [other, change, rewritten] : steps) {
    if (other) {
      SqliteDatabase second = need(SqliteDatabase::open(path_));
      need(second.execute(change));
    } else {
      need(db().execute(change));
    }
    for (const std::string& filter :
         {month, std::string("YEAR(d) = 2024"), std::string("rtrim(c) = '00001' AND v > 0")}) {
      expectSameRows(filter);
    }
    EXPECT_EQ(plan("SELECT v FROM t WHERE " + month, false).starts_with("SEARCH"), rewritten)
        << change;
  }
}

TEST_F(RewrittenQueries, RewrittenFilterUsesAnIndex) {
  const std::string sql =
      "SELECT SUM(v) FROM t WHERE (YEAR(d) = 2025) AND (MONTH(d) = 3) AND rtrim(c) = '00001'";
  EXPECT_EQ(plan(sql, true), "SCAN t");
  EXPECT_EQ(plan(sql, false), "SEARCH t USING INDEX t_c (c=? AND d>? AND d<?)");
}

}  // namespace
}  // namespace korvex::testing
