// The SQLite handle hosts use: parameters stored exactly as bound, texts of
// several statements, the query-only switch, transactions, and finding the
// database under an open Connection.
#include <gtest/gtest.h>

#include <fstream>

#include "korvex/sqlite.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

class Database : public ::testing::Test {
 protected:
  std::string newFile(const std::string& name) { return dir_.file(name + ".db"); }
  // "typeof:value" of the one row of a query.
  static std::vector<std::string> stored(SqliteDatabase& db, std::string_view sql) {
    SqliteStatement st = db.prepare(sql);
    std::vector<std::string> out;
    while (st.step()) {
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
  SqliteDatabase db = SqliteDatabase::open(newFile("p"), SqliteDatabase::Mode::Create);
  db.execute("create table t (a, b, c, d); create table u (x)");
  db.prepare("insert into t values (?, ?, ?, ?)").run({7LL, 160.0, std::string("张三"), nullptr});
  EXPECT_EQ(stored(db, "select * from t"),
            (std::vector<std::string>{"a=int 7", "b=real 160.000000", "c=text 张三", "d=null"}));
  EXPECT_EQ(stored(db, "select x'4142' as b, year('2005-03-01') as y"),
            (std::vector<std::string>{"b=blob AB", "y=int 2005"}));
}

TEST_F(Database, TextsOfSeveralStatementsRunOneByOne) {
  SqliteDatabase db = SqliteDatabase::open(newFile("s"), SqliteDatabase::Mode::Create);
  std::string_view sql = "create table t (v); -- a comment\n insert into t values (1);  ";
  int prepared = 0;
  while (!sql.empty()) {
    if (std::optional<SqliteStatement> st = db.prepareNext(sql)) {
      EXPECT_FALSE(st->step());
      ++prepared;
    }
  }
  EXPECT_EQ(prepared, 2);
  EXPECT_EQ(db.changes(), 1);
  // The payroll dialect: LEFT is SQLite's keyword, the objects' text runs.
  const SqlResult r = db.query(u"select left('abc', 2) as l, count(*) from t");
  ASSERT_EQ(r.rows.size(), 1U);
  EXPECT_EQ(r.rows[0][0].stringValue(), u"ab");
  EXPECT_EQ(r.rows[0][1].longValue(), 1);
}

TEST_F(Database, QueryOnlyRefusesWritesAndRollbackUndoes) {
  SqliteDatabase db = SqliteDatabase::open(newFile("q"), SqliteDatabase::Mode::Create);
  db.execute("create table t (v)");
  db.setQueryOnly(true);
  EXPECT_THROW(db.execute("insert into t values (1)"), DatabaseError);
  db.setQueryOnly(false);
  db.begin();
  db.execute("insert into t values (1)");
  db.rollback();
  EXPECT_EQ(db.query(u"select count(*) from t").rows.at(0).at(0).longValue(), 0);
}

TEST_F(Database, FailuresSayWhy) {
  const std::string missing = newFile("missing");
  try {
    SqliteDatabase::open(missing);
    ADD_FAILURE() << "opened a missing file";
  } catch (const DatabaseError& e) {
    EXPECT_EQ(toUtf8(e.message()), "数据库文件不存在: " + missing);
    EXPECT_EQ(e.failure().description, e.message());
    EXPECT_NE(e.failure().number, 0);
  }
  SqliteDatabase db = SqliteDatabase::open(newFile("f"), SqliteDatabase::Mode::Create);
  try {
    db.prepare("select * from nowhere");
    ADD_FAILURE() << "prepared a query of a missing table";
  } catch (const DatabaseError& e) {
    EXPECT_EQ(toUtf8(e.message()), "no such table: nowhere");
  }
}

TEST_F(Database, AConnectionsDatabaseIsReachable) {
  const std::string path = newFile("c");
  SqliteDatabase::open(path, SqliteDatabase::Mode::Create).execute("create table t (v)");
  auto factory = sqliteObjectFactory();
  const ObjectRef closed = factory->create(u"Connection");
  EXPECT_FALSE(databaseOf(closed).has_value());
  EXPECT_FALSE(databaseOf(factory->create(u"Recordset")).has_value());

  DispatchResult c = openConnection(*factory, fromUtf8(path));
  ASSERT_TRUE(c.ok()) << toUtf8(c.description);
  std::optional<SqliteDatabase> db = databaseOf(c.value.objectValue());
  ASSERT_TRUE(db.has_value());
  db->execute("insert into t values ('x')");
  // A record set of the handle writes where the connection reads.
  const ObjectRef rs = db->recordset(db->query(u"select v from t"));
  const std::array<Value, 1> first{Value::lng(0)};
  const ObjectRef field = rs->getProperty(u"Fields", first).value.objectValue();
  ASSERT_TRUE(field->setProperty(u"Value", {}, Value::string(u"y")).ok());
  ASSERT_TRUE(rs->callMethod(u"Update", {}).ok());
  const std::array<Value, 1> sql{Value::string(u"select v from t")};
  const ObjectRef read = c.value.objectValue()->callMethod(u"Execute", sql).value.objectValue();
  EXPECT_EQ(
      read->getProperty(u"Fields", first).value.objectValue()->getDefault({}).value.stringValue(),
      u"y");
}

}  // namespace
}  // namespace korvex::testing
