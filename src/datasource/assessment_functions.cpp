// Assessment totals, substitute-shift wages and the work-group wage.
#include "datasource/wage_sql.hpp"

namespace korvex::ds {
namespace {

std::u16string rangeTotal(std::u16string_view column, std::u16string_view table, double start,
                          double end) {
  return u"select sum(" + std::u16string(column) + u") as 合计 from " + std::u16string(table) +
         u" where  (日期 BETWEEN '" + monthDayYear(start) + u"' and '" + monthDayYear(end) + u"')";
}

std::u16string codeTest(std::u16string_view code) {
  return code.empty() ? u"" : u" and rtrim(工号)='" + std::u16string(code) + u"' ";
}

}  // namespace

std::u16string assessmentSql(std::u16string_view item, double start, double end,
                             std::u16string_view code) {
  return rangeTotal(u"考核数量", u"WA_KaoHe", start, end) + u" and 考核项目 ='" +
         std::u16string(item) + u"'" + codeTest(code);
}

std::u16string substituteWageSql(double start, double end, std::u16string_view code) {
  return rangeTotal(u"工资合计", u"WA_JobData", start, end) + u" and 是否顶班 = 1 " +
         codeTest(code);
}

}  // namespace korvex::ds
