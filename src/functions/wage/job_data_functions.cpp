// Job-data wage aggregates: department wage totals and averages from a
// monthly wage table, piece-rate wages and output values from WA_JobData.
#include "functions/families.hpp"
#include "functions/wage/wage_sql.hpp"
#include "values/ops.hpp"

namespace korvex::fn::wage {
namespace {

std::u16string yearMonth(const Period& p) {
  return u"(YEAR(日期) = " + decimal(p.year) + u") AND (MONTH(日期) = " + decimal(p.month) + u") ";
}

std::u16string between(const Period& p) {
  return u"日期 BETWEEN '" + monthDayYear(p.start) + u"' and '" + monthDayYear(p.end) + u"'";
}

}  // namespace

std::u16string departmentWageSql(bool average, std::u16string_view item, std::u16string_view table,
                                 std::u16string_view dept) {
  std::u16string sql = average ? u"select avg(" : u"select sum(";
  sql += item;
  sql += average ? u") as WA_AVG  from [" : u") as WA_Total  from [";
  sql += table;
  sql += u"] Where left(部门编号," + decimal(static_cast<long long>(dept.size())) + u")='";
  sql += dept;
  return sql + u"'";
}

std::u16string pieceWageSql(const Period& p, std::u16string_view code) {
  std::u16string sql;
  if (p.byMonth) {
    sql = u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE " + yearMonth(p);
    if (!code.empty()) sql += u" AND 工号='" + std::u16string(code) + u"'";
  } else {
    sql = u"select sum(工资合计) as 合计 from WA_JobData where  (" + between(p) + u")";
    // No "and" before the code: the text has always been sent like this.
    if (!code.empty()) sql += u" rtrim(工号)='" + std::u16string(code) + u"' ";
  }
  return sql;
}

std::u16string departmentPieceWageSql(const Period& p, std::u16string_view dept) {
  std::u16string sql = u"select sum(工资合计) as 合计 from WA_JobData where ";
  if (p.byMonth) {
    // Month and year without a connective between them: kept as sent.
    sql += u" month(日期)=" + decimal(p.month) + u" year(日期)=" + decimal(p.year);
  } else {
    sql += u" (" + between(p) + u")";
  }
  return sql + u" and 部门编号 like '" + std::u16string(dept) + u"%' ";
}

std::u16string processPieceWageSql(const Period& p, std::u16string_view product,
                                   std::u16string_view process, std::u16string_view code) {
  const std::u16string productTest = u"(产品名称 = '" + std::u16string(product) + u"') ";
  std::u16string sql;
  if (p.byMonth) {
    // By month the process is an index; by range it is a process name and
    // the price total is summed.
    sql = u"SELECT  SUM(工资合计) AS 合计  From WA_JobData WHERE " + productTest;
    if (!process.empty()) sql += u"AND (cWkIndex = '" + std::u16string(process) + u"') ";
    sql += u"AND " + yearMonth(p);
  } else {
    sql =
        process.empty() ? u"SELECT  SUM(工资合计) AS 合计 " : u"SELECT  SUM(nTotalPrice) AS 合计 ";
    sql += u"FROM WA_JobData WHERE (" + between(p) + u") AND " + productTest;
    if (!process.empty()) sql += u"AND (工序名称 = '" + std::u16string(process) + u"') ";
  }
  if (!code.empty()) sql += u" AND 工号='" + std::u16string(code) + u"'";
  return sql;
}

std::u16string outputValueSql(const Period& p, std::u16string_view product) {
  const std::u16string head =
      product.empty() ? u"SELECT SUM(计件数量 * 单位产值) AS 产值 "
                      : u"SELECT 产品名称 AS 产品名称, SUM(计件数量 * 单位产值) AS 产值 ";
  const std::u16string productTest = u"(产品名称 = '" + std::u16string(product) + u"')";
  if (p.byMonth) {
    return head + u" From WA_JobData WHERE " + (product.empty() ? u"" : productTest + u" AND ") +
           yearMonth(p);
  }
  // Without a product the range loses its opening parenthesis.
  if (product.empty()) return head + u" From WA_JobData  WHERE " + between(p) + u") ";
  return head + u" From WA_JobData  WHERE " + productTest + u" AND (" + between(p) + u") ";
}

// ---- The functions. ----

namespace {

using fn::Call;
constexpr ArgCheck A = ArgCheck::Any;

Value total(const Call& call, const std::u16string& sql, std::u16string_view field) {
  return Value::dbl(queryTotal(call, sql, field));
}

// Year and month: numeric (else 4), then not below 0 (else 6).
std::int32_t departmentWage(Call& call, Value& result, bool average) {
  for (std::size_t i = 1; i <= 2; ++i) {
    if (!vb::isNumeric(call.arg(i), call.locale())) return call.typeError();
    if (vb::toDouble(call.arg(i), call.locale()) < 0) return call.countError();
  }
  std::u16string dept, item;
  if (const std::int32_t e = readText(call, 3, dept)) return e;
  if (const std::int32_t e = readText(call, 4, item)) return e;
  const std::u16string table = wageTableName(vb::toInteger(call.arg(1), call.locale()),
                                             vb::toInteger(call.arg(2), call.locale()));
  result =
      total(call, departmentWageSql(average, item, table, dept), average ? u"WA_AVG" : u"WA_Total");
  return 0;
}

std::int32_t departmentTotal(Call& call, Value& result) {
  return departmentWage(call, result, false);
}
std::int32_t departmentAverage(Call& call, Value& result) {
  return departmentWage(call, result, true);
}

// An optional argument converted to text whatever its type.
std::u16string optionalText(const Call& call, std::size_t i) {
  return i <= call.count() ? vb::toString(call.arg(i), call.locale()) : std::u16string();
}

std::int32_t pieceWage(Call& call, Value& result) {
  Period p;
  if (const std::int32_t e = readPeriod(call, 1, p)) return e;
  result = total(call, pieceWageSql(p, optionalText(call, 3)), u"合计");
  return 0;
}

std::int32_t departmentPieceWage(Call& call, Value& result) {
  Period p;
  std::u16string dept;
  if (const std::int32_t e = readPeriod(call, 1, p)) return e;
  if (const std::int32_t e = readText(call, 3, dept)) return e;
  result = total(call, departmentPieceWageSql(p, dept), u"合计");
  return 0;
}

std::int32_t processPieceWage(Call& call, Value& result) {
  Period p;
  std::u16string product, process, code;
  if (const std::int32_t e = readPeriod(call, 1, p)) return e;
  if (const std::int32_t e = readText(call, 3, product)) return e;
  if (const std::int32_t e = readText(call, 4, process)) return e;
  if (const std::int32_t e = readText(call, 5, code)) return e;
  result = total(call, processPieceWageSql(p, product, process, code), u"合计");
  return 0;
}

std::int32_t outputValue(Call& call, Value& result) {
  Period p;
  if (const std::int32_t e = readPeriod(call, 1, p)) return e;
  result = total(call, outputValueSql(p, optionalText(call, 3)), u"产值");
  return 0;
}

// Four of them exist only in the underscore form.
// The reference's samples: the texts the builders above make for them.
std::vector<SqlExample> departmentTotalSql() {
  return {{u"_部门工资合计(2025, 3, \"01\", \"应发工资\")",
           departmentWageSql(false, u"应发工资", wageTableName(2025, 3), u"01")}};
}
std::vector<SqlExample> departmentAverageSql() {
  return {{u"_部门平均工资(2025, 3, \"01\", \"应发工资\")",
           departmentWageSql(true, u"应发工资", wageTableName(2025, 3), u"01")}};
}
std::vector<SqlExample> pieceWageExamples() {
  return periodExamples(u"_计件工资额", u", \"00001\"",
                        [](const Period& p) { return pieceWageSql(p, u"00001"); });
}
std::vector<SqlExample> departmentPieceWageExamples() {
  return periodExamples(u"_部门计件工资额", u", \"0101\"",
                        [](const Period& p) { return departmentPieceWageSql(p, u"0101"); });
}
std::vector<SqlExample> processPieceWageExamples() {
  std::vector<SqlExample> out = periodExamples(
      u"_工序计件工资额", u", \"男式衬衫\", \"04\", \"00001\"",
      [](const Period& p) { return processPieceWageSql(p, u"男式衬衫", u"04", u"00001"); });
  // By range the process is a name, not an index.
  out.push_back(
      periodExamples(u"_工序计件工资额", u", \"男式衬衫\", \"缝合\"", [](const Period& p) {
        return processPieceWageSql(p, u"男式衬衫", u"缝合", u"");
      }).back());
  return out;
}
std::vector<SqlExample> outputValueExamples() {
  std::vector<SqlExample> out =
      periodExamples(u"_产品产值", u", \"男式衬衫\"",
                     [](const Period& p) { return outputValueSql(p, u"男式衬衫"); });
  for (SqlExample& e :
       periodExamples(u"_产品产值", u"", [](const Period& p) { return outputValueSql(p, u""); })) {
    out.push_back(std::move(e));
  }
  return out;
}

constexpr std::u16string_view kPeriodTest = u"年和月不都是数值, 也不都是日期";

// Four of them exist only in the underscore form.
// clang-format off
constexpr fn::FunctionEntry kTable[] = {
    {{u"_部门工资合计"}, 4, 4, {A, A, A}, departmentTotal,
     {u"年, 月, 部门编号, 工资项目", ResultKind::Number,
      u"该月工资表中编号以 部门编号 开头的部门的 工资项目 之和",
      u"年或月不是数值 (小于 0 时为错误 6); 部门编号或工资项目不是字符串", departmentTotalSql}},
    {{u"_部门平均工资", u"部门平均工资"}, 4, 4, {A, A, A}, departmentAverage,
     {u"年, 月, 部门编号, 工资项目", ResultKind::Number,
      u"该月工资表中编号以 部门编号 开头的部门的 工资项目 平均值",
      u"年或月不是数值 (小于 0 时为错误 6); 部门编号或工资项目不是字符串", departmentAverageSql}},
    {{u"_计件工资额", u"计件工资额"}, 2, 3, {A, A, A}, pieceWage,
     {u"年或开始日期, 月或结束日期[, 工号]", ResultKind::Number,
      u"计件工资 (WA_JobData 的工资合计) 之和: 一个月或一段日期, 可限于一名员工",
      kPeriodTest, pieceWageExamples}},
    {{u"_部门计件工资额", u"部门计件工资额"}, 3, 3, {A, A, A}, departmentPieceWage,
     {u"年或开始日期, 月或结束日期, 部门编号", ResultKind::Number,
      u"编号以 部门编号 开头的部门的计件工资之和",
      u"年和月不都是数值, 也不都是日期; 部门编号不是字符串", departmentPieceWageExamples}},
    {{u"_工序计件工资额", u"工序计件工资额"}, 3, 5, {A, A, A}, processPieceWage,
     {u"年或开始日期, 月或结束日期, 产品名称[, 工序[, 工号]]", ResultKind::Number,
      u"一种产品 (一道工序) 的计件工资之和; 按月时工序为序号 cWkIndex, 按日期时为工序名称",
      u"年和月不都是数值, 也不都是日期; 产品名称、工序或工号不是字符串",
      processPieceWageExamples}},
    {{u"_产品产值"}, 2, 3, {A, A, A}, outputValue,
     {u"年或开始日期, 月或结束日期[, 产品名称]", ResultKind::Number,
      u"产值 (计件数量 * 单位产值) 之和, 全部产品或一种产品", kPeriodTest, outputValueExamples}},
};
// clang-format on

}  // namespace

Family jobDataFunctions() noexcept { return kTable; }

}  // namespace korvex::fn::wage
