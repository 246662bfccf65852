// The wage functions on a real database: known totals, fallbacks, the
// unknown-property error, the silent failures and the argument checks.
#include <vector>

#include "database_fixture.hpp"

namespace korvex::testing {
namespace {

class WageFunctions : public DatabaseTest {
 protected:
  void SetUp() override {
    DatabaseTest::SetUp();
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
        "insert into WA_WorkClass values ('1002', '齿轮', 2005, 3, 500, 0);"
        "create table korvex_procedures (name text primary key, body text);"
        "insert into korvex_procedures values ('CalcByWorkGroup', 'select (select sum(工资合计) "
        "from WA_JobData where 工号 = :p0 and 日期 between date(:p1) and date(:p2)) + "
        "1000 * length(:p3) + length(:p4)');");
  }
};

struct Case {
  const char* expression;
  const char* result;  // Describe() of the value, or the error message
  std::int32_t errNum = 0;
};

TEST_F(WageFunctions, ResultsOnARealDatabase) {
  const std::vector<Case> cases = {
      {"_计件工资额(2005, 3)", "Double:300"},
      {"_计件工资额(2005, 3, \"001\")", "Double:230"},
      {"_计件工资额(2005, 5, \"001\")", "Double:0"},
      {"_计件工资额(#3/1/2005#, #3/31/2005#)", "Double:300"},
      {"_部门计件工资额(#3/1/2005#, #4/30/2005#, \"01\")", "Double:260"},
      {"_工序计件工资额(2005, 3, \"齿轮\")", "Double:230"},
      {"_工序计件工资额(2005, 3, \"齿轮\", \"02\")", "Double:80"},
      {"_工序计件工资额(#3/1/2005#, #4/30/2005#, \"齿轮\", \"磨削\")", "Double:170"},
      {"_产品产值(2005, 3)", "Double:155"},
      {"_产品产值(2005, 3, \"轴\")", "Double:35"},
      {"_产品产值(#3/1/2005#, #4/30/2005#, \"齿轮\")", "Double:150"},
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
  for (const Case& c : cases) {
    const Outcome o = evaluate(c.expression);
    EXPECT_EQ(o.errNum, c.errNum) << c.expression << ": " << o.errMsg;
    EXPECT_EQ(c.errNum != 0 ? o.errMsg : o.value, c.result) << c.expression;
  }
}

// The malformed texts reach the database, which rejects them; properties
// and counts swallow database failures.
TEST_F(WageFunctions, DatabaseFailures) {
  for (const char* e :
       {"_计件工资额(#3/1/2005#, #3/31/2005#, \"001\")", "_部门计件工资额(2005, 3, \"01\")",
        "_产品产值(#3/1/2005#, #3/31/2005#)", "_部门工资合计(2005, 7, \"01\", \"基本工资\")"}) {
    const Outcome o = evaluate(e);
    EXPECT_NE(o.errNum, 0) << e;
    EXPECT_EQ(sent().size(), 1U) << e;
  }
  exec("drop table Employes; drop table korvex_procedures");
  EXPECT_EQ(evaluate("_员工人数(\"01\", True, True)").value, "Double:0");
  EXPECT_EQ(evaluate("_员工属性(\"001\", \"姓名\")").value, "Null:");
  const Outcome o = evaluate("_班组工资(\"001\", #3/1/2005#, #3/31/2005#)");
  EXPECT_NE(o.errNum, 0);
}

// The message names the call as written: 6 for a wrong count or range,
// 4 for a wrong type.
TEST_F(WageFunctions, ArgumentsAreCheckedInOrderBeforeAnyQuery) {
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
