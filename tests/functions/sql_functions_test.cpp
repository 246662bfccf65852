// DoSQL, DoSqlEx and "_员工工资项目值" on a real database: results, the exact
// SQL texts sent, and the failure paths.
#include <vector>

#include "database_fixture.hpp"
#include "facade/context_of.hpp"
#include "functions/source_query.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {
namespace {

using SqlFunctions = DatabaseTest;

struct Case {
  const char* expression;
  std::int32_t errNum;
  const char* result;  // describe() of the value, or the error message
  std::vector<std::string> sent;
};

TEST_F(SqlFunctions, ResultsMessagesAndTextsSent) {
  const std::string upd = "update 工资表2005年03月 set 工龄 = 5 where 工号 = '001'";
  const std::string dup =
      "insert into 工资表2005年03月 select '003', 姓名, 基本工资, 入职日期, "
      "在职, 工龄, 系数 from 工资表2005年03月";
  const std::string item = "select [基本工资] as WA_Value from [工资表2005年";
  // clang-format off
  const std::vector<Case> cases = {
      {"DoSQL(\"update 工资表2005年03月 set 工龄 = 5 where 工号 = '001'\")", 0, "Empty:", {upd}},
      {"ExecuteSQL(\"select 姓名 from 工资表2005年03月 where 工号 = 'x'\")", 0, "Null:",
       {"select 姓名 from 工资表2005年03月 where 工号 = 'x'"}},
      {"DoSQL(\"select 5, 6\")", 0, "Long:5", {"select 5, 6"}},
      // Lines are cut at CR LF, CR or LF, trimmed; go and empty lines are skipped.
      {"DoSQL(\" select 1 \" & CRLF & \"go\" & Chr(13) & \"GO\" & Chr(10) & Chr(10) & \"select 2\")",
       0, "Long:2", {"select 1", "select 2"}},
      {"DoSQL(12)", 30, "函数:DoSQL\r\nnear \"12\": syntax error", {"12"}},
      {"DoSQL(\"go\")", 30, "函数:DoSQL\r\n对象变量或 With 块变量未设置", {}},
      // One statement that fails half-way changes nothing.
      {"DoSQL(\"insert into 工资表2005年03月 select '003', 姓名, 基本工资, 入职日期, 在职, 工龄, "
       "系数 from 工资表2005年03月\")", 30, "函数:DoSQL\r\nUNIQUE constraint failed: 工资表2005年03月.工号", {dup}},
      {"DoSqlEx(\"select nosuch\")", 30, "函数:DoSqlEx\r\nno such column: nosuch", {"select nosuch"}},
      {"DoSQL()", 6, "错误的参数表达式或参数个数{函数:DoSQL()}", {}},
      {"_员工工资项目值(2005, 3, \"001\", \"基本工资\", 0)", 0, "Currency:3000.5",
       {item + "03月] Where (工号 = '001')"}},
      // A Null item, a missing monthly table: the default, silently.
      {"_员工工资项目值(2005, 3, \"0012\", \"基本工资\", \"无\")", 0, "String:无",
       {item + "03月] Where (工号 = '0012')"}},
      {"_员工工资项目值(2005, 12, \"001\", \"基本工资\", 0)", 0, "Double:0",
       {item + "12月] Where (工号 = '001')"}},
      {"_员工工资项目值(\"x\", 3, \"001\", \"a\", 0)", 4, "类型不匹配", {}},
      {"_员工工资项目值(2005, 3, 1, \"a\", 0)", 4, "类型不匹配", {}},
      {"_员工工资项目值(2005, -1, \"001\", \"a\", 0)", 6,
       "错误的参数表达式或参数个数{函数:_员工工资项目值(2005, -1, \"001\", \"a\", 0)}", {}},
      {"_员工工资项目值(2005, 3, \"001\", \"a\")", 6,
       "错误的参数表达式或参数个数{函数:_员工工资项目值(2005, 3, \"001\", \"a\")}", {}},
  };
  // clang-format on
  for (const Case& c : cases) {
    const Outcome o = evaluate(c.expression);
    EXPECT_EQ(o.errNum, c.errNum) << c.expression;
    EXPECT_EQ(c.errNum == 0 ? o.value : o.errMsg, c.result) << c.expression;
    EXPECT_EQ(sent(), c.sent) << c.expression;
  }
  EXPECT_EQ(toUtf8(vb::toString(scalar("select count(*) || '/' || max(工龄) from 工资表2005年03月"),
                                Locale::zhCN())),
            "2/5000000000");
}

TEST_F(SqlFunctions, UseLineMovesOnlyDoSqlExToTheOtherDatabase) {
  const std::string other = createFile("other");
  DispatchResult c = openConnection(*objects_, fromUtf8(other));
  ASSERT_TRUE(c.ok());
  const std::array<Value, 1> sql{
      Value::string(u"create table t (v text); insert into t values ('x')")};
  ASSERT_TRUE(c.value.objectValue()->callMethod(u"Execute", sql).ok());

  const char* script = "(\"use other\" & CRLF & \"select v from t\")";
  Outcome o = evaluate(std::string("DoSQL") + script);
  EXPECT_EQ(o.errMsg, "函数:DoSQL\r\nno such table: t");
  engine_.SetErrNum(0);
  const Value v = engine_.Evaluate(fromUtf8(std::string("DoSqlEx") + script));
  ASSERT_EQ(engine_.ErrNum(), 0) << toUtf8(engine_.ErrMsg());
  ASSERT_TRUE(v.isArray());
  EXPECT_EQ(v.arrayValue().elements().at(0).stringValue(), u"x");
}

TEST_F(SqlFunctions, ObjectsComeOnlyFromTheHostsFactory) {
  EXPECT_NE(fn::createObject(contextOf(engine_), u"Recordset"), nullptr);
  for (const bool withFactory : {true, false}) {
    if (!withFactory) engine_.SetObjectFactory(nullptr);
    const char16_t* className = withFactory ? u"Spreadsheet" : u"Connection";
    try {
      fn::createObject(contextOf(engine_), className);
      ADD_FAILURE() << "created " << toUtf8(className);
    } catch (const vb::RuntimeError& e) {
      EXPECT_EQ(e.number(), 429) << toUtf8(className);
    }
  }
}

TEST_F(SqlFunctions, DoSqlExArrayHasSpareRowAndColumn) {
  exec("update 工资表2005年03月 set 在职 = NULL where 工号 = '0012'");
  const auto run = [&](const char* flag) {
    const Value v = engine_.Evaluate(fromUtf8(
        std::string("DoSqlEx(\"select 工号, 在职, 工龄 from 工资表2005年03月 order by 工号\"") +
        flag + ")"));
    EXPECT_EQ(engine_.ErrNum(), 0) << toUtf8(engine_.ErrMsg());
    std::vector<std::string> cells;
    if (!v.isArray()) return cells;
    const Array& a = v.arrayValue();
    EXPECT_EQ(a.ubound(1), 3);
    cells.push_back(std::to_string(a.ubound(0)));
    for (const Value& e : a.elements()) cells.push_back(describe(e));
    return cells;
  };
  const std::vector<std::string> withHeader = {
      "3",         "String:工号", "String:在职", "String:工龄",  "Empty:",    "String:'001",
      "String:是", "Long:4",      "Empty:",      "String:'0012", "String:否", "Double:5000000000",
      "Empty:",    "Empty:",      "Empty:",      "Empty:",       "Empty:"};
  EXPECT_EQ(run(", TRUE"), withHeader);
  // Only a Boolean sets the header flag.
  const std::vector<std::string> plain = run(", 1");
  ASSERT_EQ(plain.size(), 13u);
  EXPECT_EQ(plain[0], "2");
  EXPECT_EQ(plain[1], "String:'001");
  // A statement without rows leaves an array that was never dimensioned.
  const Value none = engine_.Evaluate(u"DoSqlEx(\"delete from 工资表2005年03月 where 1 = 0\")");
  ASSERT_TRUE(none.isArray());
  EXPECT_EQ(none.arrayValue().dimensions(), 0u);
}

}  // namespace
}  // namespace korvex::testing
