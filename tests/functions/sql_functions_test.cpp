// DoSQL, DoSqlEx and "_员工工资项目值" on a real database: results, the exact
// SQL texts sent, and the failure paths.
#include <optional>
#include <vector>

#include "database_fixture.hpp"
#include "facade/context_of.hpp"
#include "functions/source_query.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {
namespace {

using SqlFunctions = BothBackends;
using SqlFunctionsOnFile = DatabaseTest;
KORVEX_ON_BOTH_BACKENDS(SqlFunctions);

struct Case {
  const char* expression;
  std::int32_t errNum;
  const char* result;  // describe() of the value, or the error message
  std::vector<std::string> sent;
  const char* serverResult = nullptr;  // where the server's message differs
};

TEST_P(SqlFunctions, ResultsMessagesAndTextsSent) {
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
      {"DoSQL(12)", 30, "函数:DoSQL\r\nnear \"12\": syntax error", {"12"},
       "函数:DoSQL\r\nsyntax error at or near \"12\""},
      {"DoSQL(\"go\")", 30, "函数:DoSQL\r\n对象变量或 With 块变量未设置", {}},
      // One statement that fails half-way changes nothing.
      {"DoSQL(\"insert into 工资表2005年03月 select '003', 姓名, 基本工资, 入职日期, 在职, 工龄, "
       "系数 from 工资表2005年03月\")", 30, "函数:DoSQL\r\nUNIQUE constraint failed: 工资表2005年03月.工号", {dup},
       "函数:DoSQL\r\nduplicate key value violates unique constraint \"工资表2005年03月_pkey\""},
      {"DoSqlEx(\"select nosuch\")", 30, "函数:DoSqlEx\r\nno such column: nosuch", {"select nosuch"},
       "函数:DoSqlEx\r\ncolumn \"nosuch\" does not exist"},
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
    EXPECT_EQ(c.errNum == 0 ? o.value : o.errMsg,
              onServer() && c.serverResult ? c.serverResult : c.result)
        << c.expression;
    EXPECT_EQ(sent(), c.sent) << c.expression;
  }
  EXPECT_EQ(toUtf8(vb::toString(scalar("select count(*) || '/' || max(工龄) from 工资表2005年03月"),
                                Locale::zhCN())),
            "2/5000000000");
}

// "use NAME" names another file beside the database, or another database
// of the same server.
TEST_P(SqlFunctions, UseLineMovesOnlyDoSqlExToTheOtherDatabase) {
  const std::string name = onServer() ? "korvex_other" : "other";
  std::optional<PostgresDatabase> admin;
  std::u16string other;
  if (onServer()) {
    admin.emplace(need(PostgresDatabase::open(testServer())));
    need(admin->execute("DROP DATABASE IF EXISTS korvex_other WITH (FORCE)"));
    need(admin->execute("CREATE DATABASE korvex_other"));
    other = fromUtf8(testServer() + " dbname=korvex_other");
  } else {
    other = fromUtf8(createFile(name));
  }
  DispatchResult c = openConnection(*objects_, other);
  ASSERT_TRUE(c.ok()) << toUtf8(c.description);
  const std::array<Value, 1> sql{
      Value::string(u"create table t (v text); insert into t values ('x')")};
  ASSERT_TRUE(c.value.objectValue()->callMethod(u"Execute", sql).ok());

  const std::string script = "(\"use " + name + "\" & CRLF & \"select v from t\")";
  Outcome o = evaluate("DoSQL" + script);
  EXPECT_EQ(o.errMsg, onServer() ? "函数:DoSQL\r\nrelation \"t\" does not exist"
                                 : "函数:DoSQL\r\nno such table: t");
  engine_.SetErrNum(0);
  const Value v = engine_.Evaluate(fromUtf8("DoSqlEx" + script));
  ASSERT_EQ(engine_.ErrNum(), 0) << toUtf8(engine_.ErrMsg());
  ASSERT_TRUE(v.isArray());
  EXPECT_EQ(v.arrayValue().elements().at(0).stringValue(), u"x");
  if (admin) need(admin->execute("DROP DATABASE korvex_other WITH (FORCE)"));
}

TEST_F(SqlFunctionsOnFile, ObjectsComeOnlyFromTheHostsFactory) {
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

TEST_P(SqlFunctions, DoSqlExArrayHasSpareRowAndColumn) {
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

// The wage functions on a real database: known totals, fallbacks, the
// unknown-property error, the silent failures and the argument checks.
class WageFunctions : public BothBackends {
 protected:
  void SetUp() override {
    BothBackends::SetUp();
    if (IsSkipped()) return;
    exec(
        "create table WA_JobData (日期 date, 工号 varchar(10), 部门编号 varchar(10), 产品名称 "
        "nvarchar(20), 工序名称 nvarchar(20), cWkIndex varchar(10), 计件数量 int, 单位产值 money, "
        "工资合计 money, nTotalPrice money, 是否顶班 bit);"
        "insert into WA_JobData values ('2005-03-01', '001', '0101', '齿轮', '车削', '01', 100, "
        "0, 150, 250, 0);"
        "insert into WA_JobData values ('2005-03-31', '001', '0101', '齿轮', '磨削', '02', 40, 3, "
        "80, 120, 1);"
        "insert into WA_JobData values ('2005-04-01', '002', '0102', '齿轮', '磨削', '02', 10, 3, "
        "30, 50, 0);"
        "insert into WA_JobData values ('2005-03-15', '002', '0201', '轴', '车削', '01', 7, 5, 70, "
        "90, 1);"
        "create table wa_workindex (产品名称 nvarchar(20), cWkIndex varchar(10), bEnd bit);"
        "insert into wa_workindex values ('齿轮', '01', 0), ('齿轮', '02', 1), ('轴', '01', 1);"
        "create table WA_KaoHe (日期 date, 工号 char(6), 考核项目 nvarchar(20), 考核数量 float);"
        "insert into WA_KaoHe values ('2005-03-10', '001   ', '加班', 5), ('2005-03-20', '001', "
        "'加班', 2.5), ('2005-03-20', '002', '加班', 4), ('2005-04-02', '001', '加班', 9);"
        "create table 工资表2005年04月 (工号 varchar(10), 部门编号 varchar(10), 基本工资 money);"
        "insert into 工资表2005年04月 values ('001', '0101', 3000), ('002', '0102', 2000), "
        "('003', '02', 1000), ('004', '0103', NULL);"
        "create table Employes (cCode varchar(10), cName nvarchar(20), cDeptCode varchar(10), "
        "dInTime date, dGZTFTime date, email varchar(40), bLeave bit);"
        "insert into Employes values ('001', '张三', '0101', '2001-03-15', NULL, 'z@x.cn', 0), "
        "('002', '李四', '0102', '2004-11-02', '2005-03-01', NULL, 0), "
        "('003', '王五', '01', '2003-01-01', NULL, NULL, 1), "
        "('004', '赵六', '02', '2003-01-01', NULL, NULL, 0);"
        "create table WA_WorkClass (产品编号 varchar(10), 产品名称 nvarchar(20), 年 int, 月 int, "
        "定额 int, bStop bit);"
        "insert into WA_WorkClass values ('1002', '齿轮', 2005, 3, 500, 0);");
    // The work-group procedure: the code's piece wages in the range, plus
    // the texts' lengths, so that every argument shows in the result.
    if (onServer()) {
      exec(
          "create function CalcByWorkGroup(code text, d1 date, d2 date, a text, b text, "
          "inout total float8) language sql as $$ select coalesce((select sum(工资合计) from "
          "WA_JobData where 工号 = code and 日期 between d1 and d2), 0) + 1000 * "
          "coalesce(length(a), 0) + coalesce(length(b), 0) $$");
    } else {
      exec(
          "create table korvex_procedures (name text primary key, body text);"
          "insert into korvex_procedures values ('CalcByWorkGroup', 'select (select "
          "sum(工资合计) from WA_JobData where 工号 = :p0 and 日期 between date(:p1) and "
          "date(:p2)) + 1000 * length(:p3) + length(:p4)');");
    }
  }
};

KORVEX_ON_BOTH_BACKENDS(WageFunctions);

struct WageCase {
  const char* expression;
  const char* result;  // Describe() of the value, or the error message
  std::int32_t errNum = 0;
  // The server refuses the text sent as it is (a column beside a sum
  // without GROUP BY, which SQLite takes from some row): its message.
  const char* serverRefuses = nullptr;
};

TEST_P(WageFunctions, ResultsOnARealDatabase) {
  const char* kUngrouped =
      "column \"wa_jobdata.产品名称\" must appear in the GROUP BY clause or be used in an "
      "aggregate function";
  const std::vector<WageCase> cases = {
      {"_计件工资额(2005, 3)", "Double:300"},
      {"_计件工资额(2005, 3, \"001\")", "Double:230"},
      {"_计件工资额(2005, 5, \"001\")", "Double:0"},
      {"_计件工资额(#3/1/2005#, #3/31/2005#)", "Double:300"},
      {"_部门计件工资额(#3/1/2005#, #4/30/2005#, \"01\")", "Double:260"},
      {"_工序计件工资额(2005, 3, \"齿轮\")", "Double:230"},
      {"_工序计件工资额(2005, 3, \"齿轮\", \"02\")", "Double:80"},
      {"_工序计件工资额(#3/1/2005#, #4/30/2005#, \"齿轮\", \"磨削\")", "Double:170"},
      {"_产品产值(2005, 3)", "Double:155"},
      {"_产品产值(2005, 3, \"轴\")", "Double:35", 0, kUngrouped},
      {"_产品产值(#3/1/2005#, #4/30/2005#, \"齿轮\")", "Double:150", 0, kUngrouped},
      {"_部门工资合计(2005, 4, \"01\", \"基本工资\")", "Double:5000"},
      {"_部门平均工资(2005, 4, \"01\", \"基本工资\")", "Double:2500"},
      {"_顶班工资合计(#3/1/2005#, #3/31/2005#)", "Double:150"},
      {"_顶班工资合计(#3/1/2005#, #3/31/2005#, \"001\")", "Double:80"},
      {"_考核项目合计(\"加班\", #3/1/2005#, #3/31/2005#, \"001\")", "Double:7.5"},
      {"_考核项目合计(\"加班\", #3/1/2005#, #3/31/2005#)", "Double:11.5"},
      {"_班组工资(\"001\", #3/1/2005#, #3/31/2005#, \"ab\", \"xyz\")", "Double:2233"},
      {"_班组工资(\"001\", #3/2/2005#, #3/31/2005#)", "Double:80"},
      {"_员工人数(\"01\", False, False)", "Double:1"},
      {"_员工人数(\"01\", True, False)", "Double:2"},
      {"_员工人数(\"\", True, True)", "Double:4"},
      {"_员工属性(\"002\", \"进厂日期\")", "Date:2004/11/2"},
      {"_员工属性(\"002\", \"入职时间\")", "Date:2004/11/2"},
      {"_员工属性(\"001\", \"Email\")", "String:z@x.cn"},
      {"_员工属性(\"002\", \"电子邮件\")", "Null:"},
      {"_员工属性(\"999\", \"姓名\")", "Null:"},
      {"_产品属性(1002, \"定额\", 2005, 3)", "Long:500"},
      {"_产品属性(\"齿轮\", \"是否停用\", 2005, 3)", "Boolean:False"},
      {"_产品属性(\"齿轮\", \"定额\", 2005, 4)", "Null:"},
      {"_产品产量(2005, 3, \"齿轮\")", "Double:40"},
      {"_产品产量(#3/1/2005#, #4/30/2005#, \"齿轮\")", "Double:50"},
      {"_工序产量(2005, 3, \"轴\", \"01\")", "Double:7"},
      {"_员工属性(\"001\", \"工资\")", "不存在的属性名称:工资", 10003},
      {"_产品属性(\"齿轮\", \"颜色\", 2005, 3)", "不存在的属性名称:颜色", 10003},
  };
  for (const WageCase& c : cases) {
    const Outcome o = evaluate(c.expression);
    if (onServer() && c.serverRefuses != nullptr) {
      EXPECT_EQ(o.errMsg, c.serverRefuses) << c.expression;
      continue;
    }
    EXPECT_EQ(o.errNum, c.errNum) << c.expression << ": " << o.errMsg;
    EXPECT_EQ(c.errNum != 0 ? o.errMsg : o.value, c.result) << c.expression;
  }
}

// The malformed texts reach the database, which rejects them; properties
// and counts swallow database failures.
TEST_P(WageFunctions, DatabaseFailures) {
  for (const char* e :
       {"_计件工资额(#3/1/2005#, #3/31/2005#, \"001\")", "_部门计件工资额(2005, 3, \"01\")",
        "_产品产值(#3/1/2005#, #3/31/2005#)", "_部门工资合计(2005, 7, \"01\", \"基本工资\")"}) {
    const Outcome o = evaluate(e);
    EXPECT_NE(o.errNum, 0) << e;
    EXPECT_EQ(sent().size(), 1U) << e;
  }
  exec(onServer() ? "drop table Employes; drop function CalcByWorkGroup"
                  : "drop table Employes; drop table korvex_procedures");
  EXPECT_EQ(evaluate("_员工人数(\"01\", True, True)").value, "Double:0");
  EXPECT_EQ(evaluate("_员工属性(\"001\", \"姓名\")").value, "Null:");
  const Outcome o = evaluate("_班组工资(\"001\", #3/1/2005#, #3/31/2005#)");
  EXPECT_NE(o.errNum, 0);
}

// The message names the call as written: 6 for a wrong count or range,
// 4 for a wrong type.
TEST_P(WageFunctions, ArgumentsAreCheckedInOrderBeforeAnyQuery) {
  const std::pair<const char*, std::int32_t> cases[] = {
      {"_部门工资合计(-1, \"a\", \"01\", \"x\")", 6},
      {"_部门工资合计(2005, \"a\", \"01\", \"x\")", 4},
      {"_部门平均工资(2005, 3, 1, \"x\")", 4},
      {"_计件工资额(2005)", 6},
      {"_计件工资额(2005, #3/1/2005#)", 4},
      {"_部门计件工资额(2005, 3, 1)", 4},
      {"_工序计件工资额(2005, 3, \"齿轮\", 2)", 4},
      {"_考核项目合计(\"加班\", 2005, #3/1/2005#)", 4},
      {"_顶班工资合计(#3/1/2005#)", 6},
      {"_班组工资(1, #3/1/2005#, #3/31/2005#)", 4},
      {"_班组工资(\"1\", #3/1/2005#, #3/31/2005#, \"a\", 5)", 4},
      {"_员工属性(1, \"姓名\")", 4},
      {"_员工人数(\"01\", 1, False)", 4},
      {"_产品属性(1002, \"定额\", 2005)", 6},
      {"_产品产量(2005, 3, 5)", 4},
      {"_工序产量(2005, 3, \"齿轮\")", 6},
  };
  for (const auto& [expression, errNum] : cases) {
    const Outcome o = evaluate(expression);
    EXPECT_EQ(o.errNum, errNum) << expression;
    EXPECT_EQ(o.errMsg, std::string(errNum == 6 ? "错误的参数表达式或参数个数" : "类型不匹配") +
                            "{函数:" + expression + "}");
    EXPECT_TRUE(sent().empty()) << expression;
  }
}

}  // namespace
}  // namespace korvex::testing
