// Output of a product, or of one step of its process, counted where the
// process ends: the piece counts of WA_JobData are grouped by product and
// process index, and only a group whose index is marked as the product's
// last step (wa_workindex.bEnd = 1) is kept. A product thus counts each
// finished piece once, however many steps it went through.
#include "functions/families.hpp"
#include "functions/wage/wage_sql.hpp"

namespace korvex::fn::wage {

std::u16string turnoutSql(const Period& p, std::u16string_view product,
                          std::u16string_view process) {
  std::u16string sql = u"SELECT SUM(计件数量) AS 产量 FROM WA_JobData WHERE (产品名称 = '" +
                       std::u16string(product) + u"') ";
  if (!process.empty()) sql += u"AND (cWkIndex = '" + std::u16string(process) + u"') ";
  if (p.byMonth) {
    sql += u"AND (YEAR(日期) = " + decimal(p.year) + u") AND (MONTH(日期) = " + decimal(p.month) +
           u") ";
  } else {
    sql +=
        u"AND (日期 BETWEEN '" + monthDayYear(p.start) + u"' and '" + monthDayYear(p.end) + u"') ";
  }
  return sql +
         u"GROUP BY 产品名称, cWkIndex Having Exists (SELECT * FROM wa_workindex w "
         u"WHERE w.产品名称 = WA_JobData.产品名称 AND w.cWkIndex = WA_JobData.cWkIndex "
         u"AND w.bEnd = 1)";
}

// ---- The functions. ----

namespace {

using fn::Call;
constexpr ArgCheck A = ArgCheck::Any;

// Period, product and (for a process) the process index, all tested as the
// piece-rate functions test theirs.
std::int32_t turnout(Call& call, Value& result) {
  Period p;
  std::u16string product, process;
  if (const std::int32_t e = readPeriod(call, 1, p)) return e;
  if (const std::int32_t e = readText(call, 3, product)) return e;
  if (const std::int32_t e = readText(call, 4, process)) return e;
  result = Value::dbl(queryTotal(call, turnoutSql(p, product, process), u"产量"));
  return 0;
}

// The reference's samples: the texts the builder above makes for them.
std::vector<SqlExample> productTurnoutExamples() {
  return periodExamples(u"_产品产量", u", \"男式衬衫\"",
                        [](const Period& p) { return turnoutSql(p, u"男式衬衫", u""); });
}
std::vector<SqlExample> processTurnoutExamples() {
  return periodExamples(u"_工序产量", u", \"男式衬衫\", \"04\"",
                        [](const Period& p) { return turnoutSql(p, u"男式衬衫", u"04"); });
}

// clang-format off
constexpr fn::FunctionEntry kTable[] = {
    {{u"_产品产量", u"产品产量"}, 3, 3, {A, A, A}, turnout,
     {u"年或开始日期, 月或结束日期, 产品名称", ResultKind::Number,
      u"一种产品完工的件数: 只计末道工序 (wa_workindex.bEnd = 1) 的计件数量",
      u"年和月不都是数值, 也不都是日期; 产品名称不是字符串", productTurnoutExamples}},
    {{u"_工序产量", u"工序产量"}, 4, 4, {A, A, A}, turnout,
     {u"年或开始日期, 月或结束日期, 产品名称, 工序", ResultKind::Number,
      u"一道工序 (序号 cWkIndex) 的产量; 该工序不是末道工序时为 0",
      u"年和月不都是数值, 也不都是日期; 产品名称或工序不是字符串", processTurnoutExamples}},
};
// clang-format on

}  // namespace

Family turnoutFunctions() noexcept { return kTable; }

}  // namespace korvex::fn::wage
