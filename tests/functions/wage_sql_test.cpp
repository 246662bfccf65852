// The wage functions' SQL texts, character for character: the payroll
// database and its stored reports depend on their exact form.
#include "functions/wage/wage_sql.hpp"

#include <gtest/gtest.h>

#include "values/calendar.hpp"

namespace korvex::fn::wage {
namespace {

struct SqlCase {
  const char* form;
  std::u16string actual;
  std::u16string_view expected;
};

double day(int y, int m, int d) { return static_cast<double>(vb::daysFromCivil(y, m, d)); }

const Period kMarch{true, 2005, 3, 0, 0};
const Period kRange{false, 0, 0, day(2005, 3, 1), day(2005, 3, 31)};

TEST(WageSql, TextsAreSentExactly) {
  const SqlCase cases[] = {
      {"total", departmentWageSql(false, u"基本工资", wageTableName(2005, 3), u"01"),
       u"select sum(基本工资) as WA_Total  from [工资表2005年03月] Where left(部门编号,2)='01'"},
      {"average", departmentWageSql(true, u"应发工资", wageTableName(2005, 12), u"010"),
       u"select avg(应发工资) as WA_AVG  from [工资表2005年12月] Where left(部门编号,3)='010'"},
      {"piece month", pieceWageSql(kMarch, u""),
       u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (YEAR(日期) = 2005) AND (MONTH(日期) "
       u"= 3) "},
      {"piece month code", pieceWageSql(kMarch, u"A01"),
       u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (YEAR(日期) = 2005) AND (MONTH(日期) "
       u"= 3)  AND 工号='A01'"},
      {"piece range code", pieceWageSql(kRange, u"A01"),
       u"select sum(工资合计) as 合计 from WA_JobData where  (日期 BETWEEN '03/01/2005' and "
       u"'03/31/2005') rtrim(工号)='A01' "},
      {"dept piece month", departmentPieceWageSql(kMarch, u"01"),
       u"select sum(工资合计) as 合计 from WA_JobData where  month(日期)=3 year(日期)=2005 and "
       u"部门编号 like '01%' "},
      {"dept piece range", departmentPieceWageSql(kRange, u""),
       u"select sum(工资合计) as 合计 from WA_JobData where  (日期 BETWEEN '03/01/2005' and "
       u"'03/31/2005') and 部门编号 like '%' "},
      {"process month", processPieceWageSql(kMarch, u"衬衫", u"02", u"A01"),
       u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (产品名称 = '衬衫') AND (cWkIndex = "
       u"'02') AND (YEAR(日期) = 2005) AND (MONTH(日期) = 3)  AND 工号='A01'"},
      {"process month no process", processPieceWageSql(kMarch, u"衬衫", u"", u""),
       u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE (产品名称 = '衬衫') AND (YEAR(日期) "
       u"= 2005) AND (MONTH(日期) = 3) "},
      {"process range", processPieceWageSql(kRange, u"衬衫", u"缝制", u""),
       u"SELECT  SUM(nTotalPrice) AS 合计 FROM WA_JobData WHERE (日期 BETWEEN '03/01/2005' and "
       u"'03/31/2005') AND (产品名称 = '衬衫') AND (工序名称 = '缝制') "},
      {"process range no process", processPieceWageSql(kRange, u"衬衫", u"", u"A01"),
       u"SELECT  SUM(工资合计) AS 合计 FROM WA_JobData WHERE (日期 BETWEEN '03/01/2005' and "
       u"'03/31/2005') AND (产品名称 = '衬衫')  AND 工号='A01'"},
      {"value month product", outputValueSql(kMarch, u"衬衫"),
       u"SELECT 产品名称 AS 产品名称, SUM(计件数量 * 单位产值) AS 产值  From WA_JobData WHERE "
       u"(产品名称 = '衬衫') AND (YEAR(日期) = 2005) AND (MONTH(日期) = 3) "},
      {"value month", outputValueSql(kMarch, u""),
       u"SELECT SUM(计件数量 * 单位产值) AS 产值  From WA_JobData WHERE (YEAR(日期) = 2005) AND "
       u"(MONTH(日期) = 3) "},
      {"value range product", outputValueSql(kRange, u"衬衫"),
       u"SELECT 产品名称 AS 产品名称, SUM(计件数量 * 单位产值) AS 产值  From WA_JobData  WHERE "
       u"(产品名称 = '衬衫') AND (日期 BETWEEN '03/01/2005' and '03/31/2005') "},
      {"value range", outputValueSql(kRange, u""),
       u"SELECT SUM(计件数量 * 单位产值) AS 产值  From WA_JobData  WHERE 日期 BETWEEN '03/01/2005' "
       u"and '03/31/2005') "},
      {"assessment", assessmentSql(u"加班", day(2005, 3, 1), day(2005, 3, 31), u"A01"),
       u"select sum(考核数量) as 合计 from WA_KaoHe where  (日期 BETWEEN '03/01/2005' and "
       u"'03/31/2005') and 考核项目 ='加班' and rtrim(工号)='A01' "},
      {"substitute", substituteWageSql(day(1999, 12, 5), day(2000, 1, 9), u""),
       u"select sum(工资合计) as 合计 from WA_JobData where  (日期 BETWEEN '12/05/1999' and "
       u"'01/09/2000') and 是否顶班 = 1 "},
      {"employee", employeePropertySql(u"O'K"), u"select * from Employes where cCode='O'K'"},
      {"count", employeeCountSql(u"01", false, false),
       u"select count(*) from Employes where cDeptCode like '01%' and bLeave<>1  and dGZTFTime is "
       u"null "},
      {"count all", employeeCountSql(u"01", true, true),
       u"select count(*) from Employes where cDeptCode like '01%'"},
      {"count left", employeeCountSql(u"", false, true),
       u"select count(*) from Employes where cDeptCode like '%' and dGZTFTime is null "},
      {"product by code", productPropertySql(u"1002", true, 2005, 3),
       u"select * from WA_WorkClass where 产品编号='1002' and 年 = 2005 and 月 = 3"},
      {"product by name", productPropertySql(u"衬衫", false, 2005, 11),
       u"select * from WA_WorkClass where 产品名称='衬衫' and 年 = 2005 and 月 = 11"},
      {"turnout range", turnoutSql(kRange, u"衬衫", u"04"),
       u"SELECT SUM(计件数量) AS 产量 FROM WA_JobData WHERE (产品名称 = '衬衫') AND (cWkIndex = "
       u"'04') AND (日期 BETWEEN '03/01/2005' and '03/31/2005') GROUP BY 产品名称, cWkIndex Having "
       u"Exists (SELECT * FROM wa_workindex w WHERE w.产品名称 = WA_JobData.产品名称 AND "
       u"w.cWkIndex = WA_JobData.cWkIndex AND w.bEnd = 1)"},
  };
  for (const SqlCase& c : cases) EXPECT_EQ(c.actual, c.expected) << c.form;
}

}  // namespace
}  // namespace korvex::fn::wage
