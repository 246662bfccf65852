// Read results shared between connections: which statements may be
// answered from them, and that an answer is never older than the data.
#include <gtest/gtest.h>

#include "database_fixture.hpp"
#include "korvex/sqlite.hpp"

namespace korvex::testing {
namespace {

TEST(Reuse, OnlyStatementsThatReadAndAnswerAlikeAreSteady) {
  ScratchDir dir;
  SqliteDatabase db = need(SqliteDatabase::open(dir.file("s.db"), SqliteDatabase::Mode::Create));
  need(db.execute("CREATE TABLE t (x INT, d TEXT)"));
  const struct {
    const char* sql;
    bool steady;
  } kCases[] = {
      {"SELECT sum(x), count(*), max(d) FROM t WHERE rtrim(d) LIKE '2025%'", true},
      {"SELECT YEAR(d), LEN(d), abs(x) FROM t", true},
      {"SELECT date(d) FROM t", false},  // date('now') reads the clock
      {"SELECT random()", false},
      {"SELECT GETDATE()", false},
      {"SELECT CURRENT_TIMESTAMP", false},
      {"SELECT changes()", false},
      {"PRAGMA data_version", false},
      {"UPDATE t SET x = 1", false},
      {"BEGIN", false},  // changes nothing, but is no question either
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(need(db.prepare(c.sql)).steady(), c.steady) << c.sql;
  }
}

class ReuseOnConnections : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = dir_.file("pay.db");
    SqliteDatabase db = need(SqliteDatabase::open(path_, SqliteDatabase::Mode::Create));
    need(db.execute("CREATE TABLE t (x INT); INSERT INTO t VALUES (1), (2)"));
  }
  // A connection sharing `reuse_`.
  ObjectRef connect(bool readOnly) {
    SqliteAccess access;
    access.readOnly = readOnly;
    access.reuse = reuse_;
    DispatchResult c = openConnection(*sqliteObjectFactory(nullptr, access), dataSource(path_));
    EXPECT_TRUE(c.ok()) << toUtf8(c.description);
    return c.ok() ? c.value.objectValue() : nullptr;
  }
  static std::string sum(const ObjectRef& connection) {
    return describe(fieldOf(executeOn(*connection, "SELECT sum(x) FROM t"), 0));
  }

  ScratchDir dir_;
  std::string path_;
  std::shared_ptr<SqliteReuse> reuse_ = makeSqliteReuse();
};

// A result is kept the second time it is asked and answers the third, on
// any connection sharing it; a write on one of them, or a commit by a
// connection that does not share it, makes the next answer the database's.
TEST_F(ReuseOnConnections, AnswersAreNeverOlderThanTheData) {
  const ObjectRef a = connect(false), b = connect(true);
  EXPECT_EQ(sum(a), "Long:3");
  EXPECT_EQ(sum(b), "Long:3");
  EXPECT_EQ(sum(b), "Long:3");
  EXPECT_EQ(reuseCounts(*reuse_).reused, 1u);

  ASSERT_TRUE(executeOn(*a, "UPDATE t SET x = x * 10").ok());
  EXPECT_EQ(sum(b), "Long:30");
  EXPECT_EQ(sum(a), "Long:30");
  EXPECT_EQ(sum(a), "Long:30");
  EXPECT_EQ(sum(b), "Long:30");  // kept again, and reused

  SqliteDatabase other = need(SqliteDatabase::open(path_));
  need(other.execute("INSERT INTO t VALUES (100)"));
  EXPECT_EQ(sum(b), "Long:130");
  EXPECT_EQ(sum(a), "Long:130");
  const SqliteReuseCounts counts = reuseCounts(*reuse_);
  EXPECT_EQ(counts.sent, 10u);
  EXPECT_EQ(counts.reused, 3u);
}

}  // namespace
}  // namespace korvex::testing
