// Employee and product properties, the head count of a department and one
// item of an employee's monthly wage.
#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>

#include "functions/families.hpp"
#include "functions/source_query.hpp"
#include "functions/wage/wage_sql.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::fn::wage {

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

std::u16string wageItemSql(std::int16_t year, std::int16_t month, std::u16string_view code,
                           std::u16string_view item) {
  return u"select [" + std::u16string(item) + u"] as WA_Value from [" + wageTableName(year, month) +
         u"] Where (工号 = '" + std::u16string(code) + u"')";
}

// ---- The functions. ----

namespace {

using fn::Call;
constexpr ArgCheck A = ArgCheck::Any;

struct Alias {
  std::u16string_view name;  // as a formula writes it, upper case
  std::u16string_view column;
};

// The names a formula may use for the columns of Employes.
constexpr Alias kEmployeeColumns[] = {
    {u"工号", u"cCode"},          {u"姓名", u"cName"},
    {u"性别", u"cSex"},           {u"身份证号", u"cID"},
    {u"部门编号", u"cDeptCode"},  {u"帐号", u"cCardNum"},
    {u"工种", u"cWkClass"},       {u"岗位", u"cGangWei"},
    {u"入职时间", u"dInTime"},    {u"入职日期", u"dInTime"},
    {u"进厂日期", u"dInTime"},    {u"停发日期", u"dGZTFTime"},
    {u"停发时间", u"dGZTFTime"},  {u"工资停发日期", u"dGZTFTime"},
    {u"备注", u"cMemo"},          {u"是否外籍", u"bForeign"},
    {u"开户行编号", u"cBankID"},  {u"首次调动日期", u"dFstMoveDate"},
    {u"学历", u"cEducation"},     {u"职务", u"cZhiWu"},
    {u"生日", u"dBirthday"},      {u"出生日期", u"dBirthday"},
    {u"EMAIL", u"email"},         {u"电子邮件", u"email"},
    {u"家庭住址", u"cHome"},      {u"城市", u"cCity"},
    {u"国籍", u"cCountry"},       {u"办公电话", u"cOffTel"},
    {u"紧急联络人", u"cContact"}, {u"联系人", u"cContact"},
    {u"联络人", u"cContact"},     {u"身高", u"height"},
    {u"体重", u"weight"},         {u"发色", u"HairColor"},
    {u"肤色", u"SkinColor"},      {u"婚姻状况", u"MarriageStatus"},
    {u"离职否", u"bLeave"},       {u"是否离职", u"bLeave"},
    {u"离职", u"bLeave"},
};

[[noreturn]] void unknownProperty(std::u16string_view name) {
  throw vb::RuntimeError(10003, u"不存在的属性名称:" + std::u16string(name));
}

// From here on a failure of the database gives Null, not an error.
Value columnOfFirstRow(Call& call, const std::u16string& sql, std::u16string_view column) {
  return queryFieldOrFallback(call.context(), sql, column, Value::null());
}

std::int32_t employeeProperty(Call& call, Value& result) {
  if (!call.arg(1).isString()) return call.typeError();
  const std::u16string name = vb::toString(call.arg(2), call.locale());
  const std::u16string key = vb::upperCase(name);
  const auto* alias = std::find_if(std::begin(kEmployeeColumns), std::end(kEmployeeColumns),
                                   [&](const Alias& a) { return a.name == key; });
  if (alias == std::end(kEmployeeColumns)) unknownProperty(name);
  result = columnOfFirstRow(call, employeePropertySql(call.arg(1).stringValue()), alias->column);
  return 0;
}

std::int32_t employeeCount(Call& call, Value& result) {
  const auto isBoolean = [&](std::size_t i) { return call.arg(i).type() == VarType::Boolean; };
  if (!call.arg(1).isString() || !isBoolean(2) || !isBoolean(3)) {
    return call.typeError();
  }
  const std::u16string sql = employeeCountSql(call.arg(1).stringValue(), call.arg(2).booleanValue(),
                                              call.arg(3).booleanValue());
  // The count has no name of its own: the first field. Any failure counts 0.
  try {
    const Value count =
        currentField(executeOnHost(call.context(), sql), Value::lng(0), Value::dbl(0));
    result = Value::dbl(vb::toDouble(count, call.locale()));
  } catch (const vb::RuntimeError&) {
    result = Value::dbl(0);
  }
  return 0;
}

// The product's columns, each under its own name, and bStop also as
// 是否停用; read from the table itself so that any property a site added to
// WA_WorkClass can be asked for.
std::unordered_map<std::u16string, std::u16string> productColumns(Call& call) {
  std::unordered_map<std::u16string, std::u16string> names;
  const ObjectRef fields =
      objectOf(getMember(executeOnHost(call.context(), kProductColumnsSql), u"Fields"));
  const std::int32_t count = vb::toLong(getMember(fields, u"Count"), call.locale());
  for (std::int32_t i = 0; i < count; ++i) {
    const std::array<Value, 1> index{Value::lng(i)};
    const std::u16string column = vb::toString(
        getMember(objectOf(getMember(fields, u"Item", index)), u"Name"), call.locale());
    names.emplace(vb::upperCase(column), column);
    if (vb::upperCase(column) == u"BSTOP") names.emplace(u"是否停用", column);
  }
  return names;
}

std::int32_t productProperty(Call& call, Value& result) {
  const Locale& loc = call.locale();
  const std::u16string product = vb::toString(call.arg(1), loc);
  const std::u16string name = vb::toString(call.arg(2), loc);
  const std::int16_t year = vb::toInteger(call.arg(3), loc);
  const std::int16_t month = vb::toInteger(call.arg(4), loc);
  const auto names = productColumns(call);
  const auto column = names.find(vb::upperCase(name));
  if (column == names.end()) unknownProperty(name);
  const bool byCode = vb::isNumeric(call.arg(1), loc);
  result = columnOfFirstRow(call, productPropertySql(product, byCode, year, month), column->second);
  return 0;
}

// Year and month: numeric (else the bare 4), not below 0 (else 6).
std::int32_t periodPart(fn::Call& call, std::size_t i, std::int16_t& out) {
  const Value& v = call.arg(i);
  if (!vb::isNumeric(v, call.locale())) return call.typeError();
  if (vb::toDouble(v, call.locale()) < 0) return call.countError();
  out = vb::toInteger(v, call.locale());
  return 0;
}

std::int32_t wageItem(fn::Call& call, Value& result) {
  std::int16_t year = 0, month = 0;
  if (const std::int32_t e = periodPart(call, 1, year)) return e;
  if (const std::int32_t e = periodPart(call, 2, month)) return e;
  if (!call.arg(3).isString() || !call.arg(4).isString()) return call.typeError();
  const std::u16string& code = call.arg(3).stringValue();
  const std::u16string& item = call.arg(4).stringValue();
  result = queryFieldOrFallback(call.context(), wageItemSql(year, month, code, item), u"WA_Value",
                                call.arg(5));
  return 0;
}

// The reference's samples: the texts the builders above make for them.
std::vector<SqlExample> employeePropertyExamples() {
  return {{u"_员工属性(\"00001\", \"岗位\")", employeePropertySql(u"00001")}};
}
std::vector<SqlExample> employeeCountExamples() {
  return {{u"_员工人数(\"0101\", False, False)", employeeCountSql(u"0101", false, false)},
          {u"_员工人数(\"0101\", True, True)", employeeCountSql(u"0101", true, true)}};
}
std::vector<SqlExample> productPropertyExamples() {
  const std::u16string columns = std::u16string(kProductColumnsSql) + u"\n";
  return {{u"_产品属性(\"1001\", \"定额\", 2025, 3)",
           columns + productPropertySql(u"1001", true, 2025, 3)},
          {u"_产品属性(\"男式衬衫\", \"定额\", 2025, 3)",
           columns + productPropertySql(u"男式衬衫", false, 2025, 3)}};
}
std::vector<SqlExample> wageItemExamples() {
  return {{u"_员工工资项目值(2025, 3, \"00001\", \"基本工资\", 0)",
           wageItemSql(2025, 3, u"00001", u"基本工资")}};
}

// clang-format off
constexpr fn::FunctionEntry kTable[] = {
    {{u"_员工属性", u"员工属性"}, 2, 2, {A, A, A}, employeeProperty,
     {u"工号, 属性名", ResultKind::Any,
      u"员工 (Employes) 的一项属性, 如 岗位、入职日期; 未知属性名为错误 10003, 无此员工得 Null",
      u"工号不是字符串", employeePropertyExamples}},
    {{u"_员工人数", u"员工人数"}, 3, 3, {A, A, A}, employeeCount,
     {u"部门编号, 含停发, 含离职", ResultKind::Number,
      u"编号以 部门编号 开头的部门的员工人数; 含停发、含离职为 True 时也计停发工资、已离职的员工",
      u"部门编号不是字符串; 含停发或含离职不是布尔值", employeeCountExamples}},
    {{u"_产品属性", u"产品属性"}, 4, 4, {A, A, A}, productProperty,
     {u"产品, 属性名, 年, 月", ResultKind::Any,
      u"产品 (WA_WorkClass) 该月的一项属性; 产品为数值时按产品编号, 否则按产品名称",
      {}, productPropertyExamples}},
    {{u"_员工工资项目值"}, 5, 5, {}, wageItem,
     {u"年, 月, 工号, 工资项目, 缺省值", ResultKind::Any,
      u"员工该月工资表中 工资项目 的值; 无此行、值为 Null 或查询失败时得 缺省值",
      u"年或月不是数值 (小于 0 时为错误 6); 工号或工资项目不是字符串", wageItemExamples},
     fn::kPlainTypeMessage},
};
// clang-format on

}  // namespace

Family propertyFunctions() noexcept { return kTable; }

}  // namespace korvex::fn::wage
