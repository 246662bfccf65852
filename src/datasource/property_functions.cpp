// Employee and product properties and the head count of a department.
#include "datasource/wage_sql.hpp"

namespace korvex::ds {

std::u16string employeePropertySql(std::u16string_view code) {
  return u"select * from Employes where cCode='" + std::u16string(code) + u"'";
}

std::u16string employeeCountSql(std::u16string_view dept, bool countStopped, bool countLeft) {
  std::u16string sql =
      u"select count(*) from Employes where cDeptCode like '" + std::u16string(dept) + u"%'";
  if (!countLeft) sql += u" and bLeave<>1 ";
  if (!countStopped) sql += u" and dGZTFTime is null ";
  return sql;
}

std::u16string productPropertySql(std::u16string_view product, bool byCode, std::int16_t year,
                                  std::int16_t month) {
  return std::u16string(byCode ? u"select * from WA_WorkClass where 产品编号='"
                               : u"select * from WA_WorkClass where 产品名称='") +
         std::u16string(product) + u"' and 年 = " + decimal(year) + u" and 月 = " + decimal(month);
}

}  // namespace korvex::ds
