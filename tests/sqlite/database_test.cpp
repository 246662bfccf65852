// The SQLite handle hosts use: parameters stored exactly as bound, texts of
// several statements, the date functions, the query-only switch,
// transactions, and finding the database under an open Connection (the
// batch's write-back through the handle's record sets is the batch tests').
#include <gtest/gtest.h>

#include <functional>

#include "database_fixture.hpp"
#include "korvex/sqlite.hpp"
#include "sqlite/field_types.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

class Database : public ::testing::Test {
 protected:
  std::string newFile(const std::string& name) { return dir_.file(name + ".db"); }
  // "typeof:value" of the one row of a query.
  static std::vector<std::string> stored(SqliteDatabase& db, std::string_view sql) {
    SqliteStatement st = need(db.prepare(sql));
    std::vector<std::string> out;
    while (need(st.step())) {
      for (int i = 0; i < st.columnCount(); ++i) {
        const SqlCell c = st.cell(i);
        std::string text = st.columnName(i) + "=";
        if (const auto* n = std::get_if<long long>(&c)) text += "int " + std::to_string(*n);
        if (const auto* d = std::get_if<double>(&c)) text += "real " + std::to_string(*d);
        if (const auto* s = std::get_if<std::string>(&c)) text += "text " + *s;
        if (const auto* b = std::get_if<SqlBlob>(&c)) text += "blob " + b->bytes;
        if (std::holds_alternative<std::nullptr_t>(c)) text += "null";
        out.push_back(text);
      }
    }
    return out;
  }
  ScratchDir dir_;
};

TEST_F(Database, ParametersAreStoredAsBound) {
  SqliteDatabase db = need(SqliteDatabase::open(newFile("p"), SqliteDatabase::Mode::Create));
  need(db.execute("create table t (a, b, c, d); create table u (x)"));
  need(need(db.prepare("insert into t values (?, ?, ?, ?)"))
           .run({7LL, 160.0, std::string("张三"), nullptr}));
  EXPECT_EQ(stored(db, "select * from t"),
            (std::vector<std::string>{"a=int 7", "b=real 160.000000", "c=text 张三", "d=null"}));
  EXPECT_EQ(stored(db, "select x'4142' as b, year('2005-03-01') as y"),
            (std::vector<std::string>{"b=blob AB", "y=int 2005"}));
}

// YEAR, MONTH and DAY read the stored forms straight from the UTF-8 bytes;
// every text reads as the general date reader reads it.
TEST_F(Database, DatePartsReadEveryTextAsTheGeneralReader) {
  const struct {
    const char* text;
    const char* parts;  // "y-m-d h:m:s", or "" when it is no date
  } cases[] = {
      {"2025-03-01", "2025-3-1 0:0:0"},
      {"2025-03-01 08:30:15", "2025-3-1 8:30:15"},
      {"2024-02-29 23:59:59", "2024-2-29 23:59:59"},
      {"2025-13-01", ""},
      {"2025-02-30", ""},
      {"2025-03-01 24:00:00", ""},
      {"0099-03-01", ""},
      {"2025-03-01x", ""},
      {"2025-03-0x", ""},
      {"2025-03-01 08:30:1x", ""},
      {"2025-03-01 08:30", "2025-3-1 8:30:0"},
      {"2025-03-01T08:30:15", "2025-3-1 8:30:15"},
      {"03/01/2025", "2025-3-1 0:0:0"},
      {"2025/3/1", "2025-3-1 0:0:0"},
      {"2025-3-1", "2025-3-1 0:0:0"},
      {"", ""},
  };
  const auto show = [](const std::optional<vb::DateTimeParts>& p) {
    if (!p) return std::string();
    return std::to_string(p->year) + "-" + std::to_string(p->month) + "-" + std::to_string(p->day) +
           " " + std::to_string(p->hour) + ":" + std::to_string(p->minute) + ":" +
           std::to_string(p->second);
  };
  SqliteDatabase db = need(SqliteDatabase::open(newFile("d"), SqliteDatabase::Mode::Create));
  for (const auto& c : cases) {
    const std::optional<vb::DateTimeParts> fast = ds::parseDateUtf8(c.text);
    EXPECT_EQ(show(fast), c.parts) << c.text;
    EXPECT_EQ(fast, ds::parseDateText(fromUtf8(c.text))) << c.text;
    const auto year = db.query(u"select year('" + fromUtf8(c.text) + u"')");
    if (fast) {
      EXPECT_EQ(need(year).rows.at(0).at(0).longValue(), fast->year) << c.text;
    } else {
      ASSERT_FALSE(year.ok()) << c.text;
      EXPECT_EQ(toUtf8(year.error().message), "Conversion failed when converting date from text.");
    }
  }
  EXPECT_EQ(stored(db, "select month(null) as m, day('2025-03-17 08:00:00') as d"),
            (std::vector<std::string>{"m=null", "d=int 17"}));
}

TEST_F(Database, TextsOfSeveralStatementsRunOneByOne) {
  SqliteDatabase db = need(SqliteDatabase::open(newFile("s"), SqliteDatabase::Mode::Create));
  std::string_view sql = "create table t (v); -- a comment\n insert into t values (1);  ";
  int prepared = 0;
  while (!sql.empty()) {
    if (std::optional<SqliteStatement> st = need(db.prepareNext(sql))) {
      EXPECT_FALSE(need(st->step()));
      ++prepared;
    }
  }
  EXPECT_EQ(prepared, 2);
  EXPECT_EQ(db.changes(), 1);
}

TEST_F(Database, QueryOnlyRefusesWritesAndRollbackUndoes) {
  SqliteDatabase db = need(SqliteDatabase::open(newFile("q"), SqliteDatabase::Mode::Create));
  need(db.execute("create table t (v)"));
  need(db.setQueryOnly(true));
  EXPECT_FALSE(db.execute("insert into t values (1)").ok());
  need(db.setQueryOnly(false));
  need(db.begin());
  need(db.execute("insert into t values (1)"));
  need(db.rollback());
  EXPECT_EQ(need(db.query(u"select count(*) from t")).rows.at(0).at(0).longValue(), 0);
}

TEST_F(Database, FailuresSayWhy) {
  const std::string missing = newFile("missing");
  const DatabaseResult<SqliteDatabase> opened = SqliteDatabase::open(missing);
  ASSERT_FALSE(opened.ok()) << "opened a missing file";
  const DatabaseFailure& e = opened.error();
  EXPECT_EQ(toUtf8(e.message), "数据库文件不存在: " + missing);
  EXPECT_EQ(e.dispatchResult().description, e.message);
  EXPECT_NE(e.dispatchResult().number, 0);

  SqliteDatabase db = need(SqliteDatabase::open(newFile("f"), SqliteDatabase::Mode::Create));
  need(db.execute("create table t (v unique); insert into t values (1)"));
  // Failures in the database's words; a failed statement leaves the text
  // where it was and the statement ready for another run.
  const auto why = [](const auto& result) {
    return result.ok() ? std::string("no failure") : toUtf8(result.error().message);
  };
  const std::string kUnique = "UNIQUE constraint failed: t.v";
  const struct {
    const char* operation;
    std::function<std::string()> fail;
    std::string message;
  } cases[] = {
      {"prepare", [&] { return why(db.prepare("select * from nowhere")); },
       "no such table: nowhere"},
      {"prepareNext",
       [&] {
         std::string_view sql = "select * from nowhere; select 1";
         std::string message = why(db.prepareNext(sql));
         // The text stays where it was.
         return sql == "select * from nowhere; select 1" ? message : "moved on";
       },
       "no such table: nowhere"},
      {"rollback", [&] { return why(db.rollback()); },
       "cannot rollback - no transaction is active"},
      {"run",
       [&] {
         SqliteStatement insert = need(db.prepare("insert into t values (?)"));
         const std::string message = why(insert.run({1LL}));
         // The failed run left the statement ready for the next.
         return why(insert.run({2LL})) == "no failure" ? message : "not reset";
       },
       kUnique},
  };
  for (const auto& c : cases) EXPECT_EQ(c.fail(), c.message) << c.operation;
  EXPECT_EQ(need(db.query(u"select count(*) from t")).rows.at(0).at(0).longValue(), 2);
}

TEST_F(Database, AConnectionsDatabaseIsReachable) {
  const std::string path = newFile("c");
  need(
      need(SqliteDatabase::open(path, SqliteDatabase::Mode::Create)).execute("create table t (v)"));
  auto factory = sqliteObjectFactory();
  const ObjectRef closed = factory->create(u"Connection");
  EXPECT_FALSE(databaseOf(closed).has_value());
  EXPECT_FALSE(databaseOf(factory->create(u"Recordset")).has_value());

  DispatchResult c = openConnection(*factory, fromUtf8(path));
  ASSERT_TRUE(c.ok()) << toUtf8(c.description);
  std::optional<SqliteDatabase> db = databaseOf(c.value.objectValue());
  ASSERT_TRUE(db.has_value());
  // The handle works on the connection's own database.
  need(db->execute("insert into t values ('x')"));
  const std::array<Value, 1> sql{Value::string(u"select v from t")};
  const ObjectRef read = c.value.objectValue()->callMethod(u"Execute", sql).value.objectValue();
  EXPECT_FALSE(read->getProperty(u"EOF", {}).value.booleanValue());
}

}  // namespace
}  // namespace korvex::testing
