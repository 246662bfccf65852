// Assessment totals, substitute-shift wages and the work-group wage.
#include <array>

#include "functions/families.hpp"
#include "functions/source_query.hpp"
#include "functions/wage/wage_sql.hpp"
#include "values/ops.hpp"

namespace korvex::fn::wage {
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

// ---- The functions. ----

namespace {

using fn::Call;
constexpr ArgCheck A = ArgCheck::Any;

bool isDate(const Call& call, std::size_t i) { return vb::isDate(call.arg(i), call.locale()); }
double dateOf(const Call& call, std::size_t i) { return vb::toDate(call.arg(i), call.locale()); }

Value total(const Call& call, const std::u16string& sql) {
  return Value::dbl(queryTotal(call, sql, u"合计"));
}

std::int32_t assessmentTotal(Call& call, Value& result) {
  std::u16string item, code;
  if (const std::int32_t e = readText(call, 1, item)) return e;
  if (!isDate(call, 2) || !isDate(call, 3)) return call.typeError();
  if (const std::int32_t e = readText(call, 4, code)) return e;
  result = total(call, assessmentSql(item, dateOf(call, 2), dateOf(call, 3), code));
  return 0;
}

std::int32_t substituteWage(Call& call, Value& result) {
  std::u16string code;
  if (!isDate(call, 1) || !isDate(call, 2)) return call.typeError();
  if (const std::int32_t e = readText(call, 3, code)) return e;
  result = total(call, substituteWageSql(dateOf(call, 1), dateOf(call, 2), code));
  return 0;
}

// The host database's procedure computes the group wage; the engine only
// hands it the employee, the range and two texts of its own meaning, and
// reads back the output parameter.
std::int32_t workGroupWage(Call& call, Value& result) {
  std::u16string code, first, second;
  if (!call.arg(1).isString() || !isDate(call, 2) || !isDate(call, 3)) return call.typeError();
  if (const std::int32_t e = readText(call, 4, first)) return e;
  if (const std::int32_t e = readText(call, 5, second)) return e;
  code = call.arg(1).stringValue();
  Context& ctx = call.context();
  const ObjectRef command = createObject(ctx, u"Command");
  setMember(command, u"ActiveConnection", Value::object(hostConnection(ctx)));
  setMember(command, u"CommandType", Value::lng(4));
  setMember(command, u"CommandText", Value::string(u"CalcByWorkGroup"));
  const ObjectRef parameters = objectOf(getMember(command, u"Parameters"));
  const auto append = [&](std::int32_t direction, std::int32_t type, std::int32_t size,
                          const Value& value) {
    const std::array<Value, 5> args{Value::string(u""), Value::lng(type), Value::lng(direction),
                                    Value::lng(size), value};
    const std::array<Value, 1> parameter{callMember(command, u"CreateParameter", args)};
    callMember(parameters, u"Append", parameter);
  };
  append(1, 200, 10, Value::string(code));
  append(1, 7, 0, Value::date(dateOf(call, 2)));
  append(1, 7, 0, Value::date(dateOf(call, 3)));
  append(1, 200, 30, Value::string(first));
  append(1, 200, 30, Value::string(second));
  append(3, 5, 0, Value{});
  callMember(command, u"Execute");
  const std::array<Value, 1> last{Value::lng(5)};
  const ObjectRef output = objectOf(getMember(parameters, u"Item", last));
  result = Value::dbl(vb::toDouble(getMember(output, u"Value"), call.locale()));
  return 0;
}

// The reference's samples: the texts the builders above make for them.
std::vector<SqlExample> assessmentExamples() {
  const Period march = samplePeriods().back().period;
  return {{u"_考核项目合计(\"出勤天数\", #2025-03-01#, #2025-03-31#, \"00001\")",
           assessmentSql(u"出勤天数", march.start, march.end, u"00001")}};
}
std::vector<SqlExample> substituteWageExamples() {
  const Period march = samplePeriods().back().period;
  return {{u"_顶班工资合计(#2025-03-01#, #2025-03-31#, \"00001\")",
           substituteWageSql(march.start, march.end, u"00001")}};
}
// Not a text: the command's procedure and its parameters, as appended above.
std::vector<SqlExample> workGroupExamples() {
  return {{u"_班组工资(\"00001\", #2025-03-01#, #2025-03-31#)",
           u"存储过程 CalcByWorkGroup (工号 varchar(10), 开始日期, 结束日期, 文本1 varchar(30), "
           u"文本2 varchar(30), 输出: 工资 double); 结果为输出参数"}};
}

// clang-format off
constexpr fn::FunctionEntry kTable[] = {
    {{u"_考核项目合计", u"考核项目合计"}, 3, 4, {A, A, A}, assessmentTotal,
     {u"考核项目, 开始日期, 结束日期[, 工号]", ResultKind::Number,
      u"WA_KaoHe 中一段日期内 考核项目 的考核数量之和, 可限于一名员工",
      u"考核项目或工号不是字符串; 开始或结束日期不是日期", assessmentExamples}},
    {{u"_顶班工资合计"}, 2, 3, {A, A, A}, substituteWage,
     {u"开始日期, 结束日期[, 工号]", ResultKind::Number,
      u"一段日期内顶班 (是否顶班 = 1) 的计件工资之和, 可限于一名员工",
      u"开始或结束日期不是日期; 工号不是字符串", substituteWageExamples}},
    {{u"_班组工资", u"班组工资"}, 3, 5, {A, A, A}, workGroupWage,
     {u"工号, 开始日期, 结束日期[, 文本1[, 文本2]]", ResultKind::Number,
      u"数据库的存储过程 CalcByWorkGroup 算出的班组工资; 两个文本的含义由该过程决定",
      u"工号或文本不是字符串; 开始或结束日期不是日期", workGroupExamples}},
};
// clang-format on

}  // namespace

Family assessmentFunctions() noexcept { return kTable; }

}  // namespace korvex::fn::wage
