// The data-access objects on SQLite: the type mapping both ways, the
// payroll dialect, writing the current row back, stored procedures. The
// cursor and field objects it shares with the in-memory record set are
// tested in recordsets_test.cpp.
#include <vector>

#include "database_fixture.hpp"

namespace korvex::testing {
namespace {

using Objects = DatabaseTest;
using ObjectsOnBoth = BothBackends;
KORVEX_ON_BOTH_BACKENDS(ObjectsOnBoth);

// "Type code describe()" of every field of the current row.
std::vector<std::string> currentRow(const ObjectRef& rs) {
  std::vector<std::string> out;
  const ObjectRef fields = objectOf(rs->getProperty(u"Fields", {}));
  const std::int32_t n = fields->getProperty(u"Count", {}).value.longValue();
  for (std::int32_t i = 0; i < n; ++i) {
    const std::array<Value, 1> index{Value::lng(i)};
    const ObjectRef f = objectOf(fields->getProperty(u"Item", index));
    out.push_back(std::to_string(f->getProperty(u"Type", {}).value.longValue()) + " " +
                  describe(f->getDefault({}).value));
  }
  return out;
}

// The same codes on the server, where 工龄 is a bigint (20: an int there
// holds 32 bits) and a date keeps no time.
TEST_P(ObjectsOnBoth, StoredValuesReadWithTheirFieldTypes) {
  const std::string years = onServer() ? "20 " : "3 ";
  const ObjectRef rs = objectOf(exec("select * from 工资表2005年03月 order by 工号"));
  EXPECT_EQ(currentRow(rs),
            (std::vector<std::string>{"202 String:001", "202 String:张三", "6 Currency:3000.5",
                                      "7 Date:2001/3/15", "11 Boolean:True", years + "Long:4",
                                      "5 Double:1.5"}));
  ASSERT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
  EXPECT_EQ(currentRow(rs),
            (std::vector<std::string>{"202 String:0012", "202 String:李四", "6 Null:",
                                      onServer() ? "7 Date:2005/3/31" : "7 Date:2005/3/31 8:30:00",
                                      "11 Boolean:False", years + "Double:5000000000", "5 Null:"}));
  // Expression columns follow the stored value.
  EXPECT_EQ(currentRow(objectOf(
                exec("select count(*), sum(系数), max(姓名), null from 工资表2005年03月"))),
            (std::vector<std::string>{"3 Long:2", "5 Double:1.5", "202 String:李四", "202 Null:"}));
}

TEST_P(ObjectsOnBoth, PayrollDialectRuns) {
  const ObjectRef rs = objectOf(exec(
      "select year(入职日期), month(入职日期), day(入职日期), left(姓名, 1), Right ('abc', 2), "
      "len('ab  '), isnull(null, 'x'), [工号] from 工资表2005年03月 where 工号 = '001'"));
  EXPECT_EQ(currentRow(rs), (std::vector<std::string>{"3 Long:2001", "3 Long:3", "3 Long:15",
                                                      "202 String:张", "202 String:bc", "3 Long:2",
                                                      "202 String:x", "202 String:001"}));
  // Dates in the payroll forms compare as dates, both ends included; a
  // quoted text that is no date, and LEFT JOIN, stay as they are.
  for (const char* where :
       {"入职日期 between '03/15/2001' and '2005/3/31 08:30'", "入职日期 >= '2001-3-15'",
        "姓名 <> '03/15/2001' and 入职日期 <= '2005-03-31 08:30:01'"}) {
    EXPECT_EQ(describe(scalar(std::string("select count(*) from 工资表2005年03月 where ") + where)),
              "Long:2")
        << where;
  }
  EXPECT_EQ(describe(scalar("select count(*) from 工资表2005年03月 a left join 工资表2005年03月 b "
                            "on a.工号 = b.工号 where '''03/15/2001''' <> '2001-03-15'")),
            "Long:2");
}

TEST_P(ObjectsOnBoth, FieldAssignmentsWriteTheRowBack) {
  engine_.SetRecordSet(objectOf(exec("select * from 工资表2005年03月 order by 工号")));
  engine_.SetCodeBlock(
      u"基本工资 = \"12.25\"\r\n入职日期 = \"2005-5-6\"\r\n在职 = 0\r\n工龄 = 7.6\r\n"
      u"MoveNext\r\n系数 = 2\r\nMoveNext\r\nMSGBOX EOF\r\nMoveNext\r\n");
  engine_.Execute();
  EXPECT_EQ(engine_.ErrNum(), 102);
  EXPECT_EQ(toUtf8(engine_.ErrMsg()),
            "BOF 或 EOF 中有一个是“真”，或者当前的记录已被删除，所请求的操作要求一个当前的记录。 "
            ": 行号 9");
  // Each row as stored (on the server a date holds no time).
  const char* stored =
      onServer() ? "select string_agg(coalesce(基本工资::text, '') || ':' || 入职日期 || ':' || "
                   "在职 || ':' || 工龄 || ':' || coalesce(系数::text, ''), '|' order by 工号) "
                   "from 工资表2005年03月"
                 : "select group_concat(typeof(基本工资) || ':' || ifnull(基本工资, '') || "
                   "':' || 入职日期 || ':' || 在职 || ':' || 工龄 || ':' || ifnull(系数, ''), "
                   "'|') from 工资表2005年03月";
  EXPECT_EQ(toUtf8(vb::toString(scalar(stored), Locale::zhCN())),
            onServer()
                ? "12.2500:2005-05-06:0:8:1.5|:2005-03-31:0:5000000000:2"
                : "real:12.25:2005-05-06:0:8:1.5|null::2005-03-31 08:30:00:0:5000000000:2.0");
  // Text that is no date cannot go into a Date field.
  engine_.SetErrNum(0);
  engine_.SetCodeBlock(u"MoveFirst\r\n入职日期 = \"abc\"\r\n");
  engine_.Execute();
  EXPECT_EQ(engine_.ErrNum(), 102);
}

TEST_F(Objects, UpdateWritesTheRowItWasReadFromOrNothing) {
  // Each case: the table, the record, the change made twice to field `field`
  // of every row in turn (each followed by Update, so the second write
  // finds the row the first wrote), the first refusal and the table's rows
  // afterwards as `contents` shows them.
  using Change = Value (*)(const Value&);
  const Change plusOne = [](const Value& v) {
    return Value::dbl(vb::toDouble(v, Locale::zhCN()) + 1);
  };
  const Change minusOne = [](const Value& v) {
    return Value::dbl(vb::toDouble(v, Locale::zhCN()) - 1);
  };
  const Change same = [](const Value& v) { return v; };
  const Change appendFE = [](const Value& v) { return Value::string(v.stringValue() + u"\xFE"); };
  const std::string untraceable = "无法更新: 记录集的行不能追溯到同一个表的行 (联接或汇总的结果)。";
  const std::string inexact = "无法更新: 字段 v 的值超出脚本数值能精确表示的范围 (±2^53)。";
  struct Case {
    const char* table;
    const char* select;
    const char16_t* field;
    Change change;
    std::string refused;
    const char* contents;
    const char* expected;
  };
  const Case cases[] = {
      // Keys beyond a Double's or a Long's reach.
      {"create table t (k bigint primary key, v int);"
       "insert into t values (9007199254740992, 1), (9007199254740993, 2)",
       "select k, v from t where k > 9007199254740992", u"v", plusOne, "",
       "group_concat(k || ':' || v, '|')", "9007199254740992:1|9007199254740993:4"},
      {"create table t (k integer primary key, v int); insert into t values (3000000000, 1)",
       "select k, v from t", u"v", plusOne, "", "group_concat(k || ':' || v)", "3000000000:3"},
      // A value beyond 2^53 is read as a neighbour: computed from, or put
      // back as it is, it would store another number. Kept as read, it is.
      {"create table t (v bigint); insert into t values (9007199254740993)", "select v from t",
       u"v", minusOne, inexact, "group_concat(v)", "9007199254740993"},
      {"create table t (v bigint); insert into t values (9007199254740993)", "select v from t",
       u"v", same, "", "group_concat(v)", "9007199254740993"},
      {"create table t (v bigint); insert into t values (9007199254740990)", "select v from t",
       u"v", plusOne, inexact, "group_concat(v)", "9007199254740991"},
      // Without a key: a changed row must not be taken for the next one.
      {"create table t (x int); insert into t values (1), (2), (3)", "select x from t", u"x",
       plusOne, "", "group_concat(x, '|')", "3|4|5"},
      {"create table t (a text, b int); insert into t values (null, 1), (null, 1)",
       "select a, b from t", u"b", plusOne, "", "group_concat(ifnull(a, 'null') || b, '|')",
       "null3|null3"},
      // Binary data stays a BLOB, written or not; rows holding it are found.
      {"create table t (data, n int); insert into t values (x'00FF80', 1), (x'00FF80', 2)",
       "select data, n from t", u"n", plusOne, "", "group_concat(typeof(data) || hex(data) || n)",
       "blob00FF803,blob00FF804"},
      {"create table t (data blob); insert into t values (x'00FF80')", "select data from t",
       u"data", same, "", "group_concat(typeof(data) || hex(data))", "blob00FF80"},
      {"create table t (data blob); insert into t values (x'00FF80')", "select data from t",
       u"data", appendFE, "", "group_concat(typeof(data) || hex(data))", "blob00FF80FEFE"},
      // A key that is no valid text is matched by its bytes, not as U+FFFD.
      {"create table t (k text primary key, v int) without rowid;"
       "insert into t values (cast(x'FF' as text), 1), ('\xEF\xBF\xBD', 5)",
       "select k, v from t where v = 1", u"v", plusOne, "", "group_concat(hex(k) || ':' || v)",
       "EFBFBD:5,FF:3"},
      // A changed key: the row identity moves with it.
      {"create table t (k integer primary key); insert into t values (10), (20)", "select k from t",
       u"k", plusOne, "", "group_concat(k)", "12,22"},
      // Rows that are no one row of one table are never written.
      {"create table t (id integer primary key, a int); insert into t values (1, 10), (2, 20)",
       "select t.a, t2.id from t join t as t2 on t2.id = t.id + 1", u"a", plusOne, untraceable,
       "group_concat(a)", "10,20"},
      {"create table t (k text primary key, a int) without rowid; insert into t values ('1', 10)",
       "select t.a, t2.k from t join t as t2 on t2.k = t.k", u"a", plusOne, untraceable,
       "group_concat(a)", "10"},
      {"create table t (a int); insert into t values (1);"
       "create table w (k text primary key) without rowid; insert into w values ('x')",
       "select t.a from t, w", u"a", plusOne, untraceable, "group_concat(a)", "1"},
      {"create table t (b int); insert into t values (1), (2)", "select sum(b) as b from t", u"b",
       plusOne, untraceable, "group_concat(b)", "1,2"},
      {"create table t (b int); insert into t values (1); create view v as select * from t",
       "select b from v", u"b", plusOne, untraceable, "group_concat(b)", "1"},
  };
  for (const Case& c : cases) {
    exec("drop view if exists v; drop table if exists t; drop table if exists w");
    exec(c.table);
    const ObjectRef rs = objectOf(exec(c.select));
    ASSERT_TRUE(rs) << c.select;
    std::string refused;
    while (refused.empty() && !rs->getProperty(u"EOF", {}).value.booleanValue()) {
      const std::array<Value, 1> name{Value::string(c.field)};
      const ObjectRef field = objectOf(rs->getProperty(u"Fields", name));
      for (int twice = 0; twice < 2 && refused.empty(); ++twice) {
        ASSERT_TRUE(field->setProperty(u"Value", {}, c.change(field->getDefault({}).value)).ok());
        const DispatchResult r = rs->callMethod(u"Update", {});
        refused = r.ok() ? "" : toUtf8(r.description);
      }
      if (refused.empty()) {
        EXPECT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
      }
    }
    EXPECT_EQ(refused, c.refused) << c.select;
    EXPECT_EQ(toUtf8(vb::toString(scalar(std::string("select ") + c.contents + " from t"),
                                  Locale::zhCN())),
              c.expected)
        << c.select;
  }
}

// On the server a row is found again by where it lies, the transaction
// that wrote it and its table: a row another session changed since it was
// read is refused, never overwritten, and rows that are no one row of one
// table are never written.
class ObjectsOnServer : public DatabaseTest {
 protected:
  Backend backend() const override { return Backend::Postgres; }
};

TEST_F(ObjectsOnServer, UpdateLandsOnTheRowReadOrNowhere) {
  const std::string untraceable = "无法更新: 记录集的行不能追溯到同一个表的行 (联接或汇总的结果)。";
  const std::string gone = "无法更新: 找不到要更新的行, 它可能已被删除或修改。";
  const struct {
    const char* select;
    const char16_t* field;  // changed by one, twice per row, each time updated
    const char* meanwhile;  // run by another session after the rows were read
    std::string refused;
    const char* expected;  // k:v of every row, by k
  } cases[] = {
      {"select k, v from t order by k", u"v", "", "", "10:102,20:202"},
      // A changed key: the row is found where the first write moved it.
      {"select k from t order by k", u"k", "", "", "12:100,22:200"},
      {"select k, v from t order by k", u"v", "update t set v = 5 where k = 10", gone,
       "10:5,20:200"},
      {"select k, v from t order by k", u"v", "delete from t where k = 10", gone, "20:200"},
      {"select t.v, u.k from t join t u on u.k = t.k", u"v", "", untraceable, "10:100,20:200"},
      {"select v from w", u"v", "", untraceable, "10:100,20:200"},
      {"select sum(v) as v from t", u"v", "", untraceable, "10:100,20:200"},
  };
  for (const auto& c : cases) {
    exec(
        "drop view if exists w; drop table if exists t;"
        "create table t (k int primary key, v int); insert into t values (10, 100), (20, 200);"
        "create view w as select * from t");
    const ObjectRef rs = objectOf(exec(c.select));
    ASSERT_TRUE(rs) << c.select;
    if (*c.meanwhile != '\0') {
      DispatchResult other = openConnection(*objects_, fromUtf8(schema_->connection()));
      ASSERT_TRUE(other.ok());
      executeOn(*other.value.objectValue(), c.meanwhile);
    }
    std::string refused;
    while (refused.empty() && !rs->getProperty(u"EOF", {}).value.booleanValue()) {
      const std::array<Value, 1> name{Value::string(c.field)};
      const ObjectRef f = objectOf(rs->getProperty(u"Fields", name));
      for (int twice = 0; twice < 2 && refused.empty(); ++twice) {
        const Value now = f->getDefault({}).value;
        ASSERT_TRUE(
            f->setProperty(u"Value", {}, Value::dbl(vb::toDouble(now, Locale::zhCN()) + 1)).ok());
        const DispatchResult r = rs->callMethod(u"Update", {});
        refused = r.ok() ? "" : toUtf8(r.description);
      }
      if (refused.empty()) {
        EXPECT_TRUE(rs->callMethod(u"MoveNext", {}).ok());
      }
    }
    EXPECT_EQ(refused, c.refused) << c.select << " / " << c.meanwhile;
    EXPECT_EQ(describe(scalar("select string_agg(k || ':' || v, ',' order by k) from t")),
              std::string("String:") + c.expected)
        << c.select << " / " << c.meanwhile;
  }
}

// A closed connection's session serves the next connection only as new:
// nothing a script set or made in it is left for the next.
TEST_F(ObjectsOnServer, TheNextConnectionFindsNothingTheLastLeft) {
  const std::pair<const char*, const char*> cases[] = {
      {"set application_name = 'korvex_left'",
       "select current_setting('application_name') = 'korvex_left'"},
      {"create temp table korvex_left (x int)",
       "select to_regclass('pg_temp.korvex_left') is not null"},
  };
  for (const auto& [left, found] : cases) {
    Value seen;
    for (const char* sql : {left, found}) {
      DispatchResult c = openConnection(*objects_, fromUtf8(schema_->connection()));
      ASSERT_TRUE(c.ok());
      seen = fieldOf(executeOn(*c.value.objectValue(), sql), 0);
      ASSERT_TRUE(c.value.objectValue()->callMethod(u"Close", {}).ok());
    }
    EXPECT_EQ(describe(seen), "Long:0") << left;  // false
  }
}

TEST_P(ObjectsOnBoth, StoredProceduresAndCatalog) {
  if (onServer()) {
    exec(
        "create function CalcByWorkGroup(code text, k float8, inout o float8, out tag text) "
        "language sql as $$ select sum(基本工资) * k, code || '!' from 工资表2005年03月 "
        "where 工号 = code $$");
  } else {
    exec(
        "create table korvex_procedures (name text primary key, body text);"
        "insert into korvex_procedures values ('CalcByWorkGroup', "
        "'select sum(基本工资) * :p1, :p0 || ''!'' from 工资表2005年03月 where 工号 = :p0')");
  }
  const ObjectRef cmd = objects_->create(u"Command");
  ASSERT_TRUE(cmd);
  ASSERT_TRUE(cmd->setProperty(u"ActiveConnection", {}, Value::object(connection_)).ok());
  ASSERT_TRUE(cmd->setProperty(u"CommandType", {}, Value::lng(4)).ok());
  ASSERT_TRUE(cmd->setProperty(u"CommandText", {}, Value::string(u"CalcByWorkGroup")).ok());
  const ObjectRef params = objectOf(cmd->getProperty(u"Parameters", {}));
  const std::vector<std::array<Value, 5>> parameters = {
      {Value::string(u"code"), Value::lng(200), Value::lng(1), Value::lng(10),
       Value::string(u"001")},
      {Value::string(u"k"), Value::lng(5), Value::lng(1), Value{}, Value::dbl(2)},
      {Value::string(u"out"), Value::lng(5), Value::lng(3), Value{}, Value{}},
      {Value::string(u"tag"), Value::lng(200), Value::lng(2), Value::lng(10), Value{}}};
  for (const auto& arguments : parameters) {
    const ObjectRef p = objectOf(cmd->callMethod(u"CreateParameter", arguments));
    const std::array<Value, 1> one{Value::object(p)};
    ASSERT_TRUE(params->callMethod(u"Append", one).ok());
  }
  // The in-out parameter is an input too (:p2), then an output.
  ASSERT_TRUE(cmd->callMethod(u"Execute", {}).ok());
  std::vector<std::string> values;
  for (std::int32_t i : {2, 3}) {
    const std::array<Value, 1> index{Value::lng(i)};
    values.push_back(
        describe(objectOf(params->getProperty(u"Item", index))->getProperty(u"Value", {}).value));
  }
  EXPECT_EQ(values, (std::vector<std::string>{"Double:6001", "String:001!"}));
  EXPECT_EQ(log_->texts().back(), u"CalcByWorkGroup");

  ASSERT_TRUE(cmd->setProperty(u"CommandText", {}, Value::string(u"Nope")).ok());
  EXPECT_EQ(toUtf8(cmd->callMethod(u"Execute", {}).description), "找不到存储过程 'Nope'。");

  const ObjectRef properties = objectOf(connection_->getProperty(u"Properties", {}));
  EXPECT_EQ(describe(properties->getProperty(u"Count", {}).value), "Long:2");
  const std::array<Value, 1> key{Value::string(u"initial catalog")};
  EXPECT_EQ(
      describe(
          objectOf(connection_->getProperty(u"Properties", key))->getProperty(u"Value", {}).value),
      onServer() ? describe(scalar("select current_database()")) : "String:pay");
}

}  // namespace
}  // namespace korvex::testing
