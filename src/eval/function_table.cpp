// The fixed name table of the evaluator, looked up through a hash map that is
// built once.
#include "eval/function_table.hpp"

#include <array>
#include <unordered_map>

namespace korvex::eval {

namespace {

struct Row {
  std::u16string_view key;  // upper-cased, as names are compared
  NameEntry entry;
};

constexpr Row fn(std::u16string_view key, std::u16string_view name, FunctionClass cls) {
  return {key, {NameKind::Function, static_cast<std::uint8_t>(cls), name}};
}
constexpr Row in(std::u16string_view key, InlineOp op) {
  return {key, {NameKind::Inline, static_cast<std::uint8_t>(op), key}};
}
constexpr Row co(std::u16string_view key, std::u16string_view name, ConstantId id) {
  return {key, {NameKind::Constant, static_cast<std::uint8_t>(id), name}};
}

using FC = FunctionClass;

// clang-format off
constexpr Row kRows[] = {
    // The cell functions come before everything else.
    fn(u"GETCELL", u"GETCELL", FC::GetCell),
    fn(u"SETCELL", u"SETCELL", FC::SetCell),
    fn(u"SETCELLFORMULA", u"SetCellFormula", FC::SetCellFormula),
    // Constants.
    co(u"CRLF", u"CRLF", ConstantId::CrLf),
    co(u"VBCRLF", u"vbCrLf", ConstantId::CrLf),
    co(u"EMPTY", u"EMPTY", ConstantId::Empty),
    co(u"NULL", u"NULL", ConstantId::Null),
    co(u"TRUE", u"TRUE", ConstantId::True),
    co(u"FALSE", u"FALSE", ConstantId::False),
    co(u"EOF", u"EOF", ConstantId::Eof),
    co(u"BOF", u"BOF", ConstantId::Bof),
    // General functions.
    in(u"ABS", InlineOp::Abs),
    fn(u"ASC", u"ASC", FC::Asc),
    fn(u"ATN", u"ATN", FC::Atn),
    fn(u"CDBL", u"CDbl", FC::CDbl),
    fn(u"CDATE", u"CDate", FC::CDate),
    fn(u"CHR", u"CHR", FC::Chr),
    fn(u"CLNG", u"CLng", FC::CInt32),
    fn(u"COS", u"COS", FC::Cos),
    fn(u"CSTR", u"CSTR", FC::CStr),
    fn(u"DATE", u"DATE", FC::Date),
    fn(u"DAY", u"DAY", FC::Day),
    fn(u"EXECUTESQL", u"ExecuteSQL", FC::ExecuteSQL),
    fn(u"DOSQL", u"DoSQL", FC::ExecuteSQL),
    fn(u"DOSQLEX", u"DoSqlEx", FC::DoSqlEx),
    fn(u"FORMAT", u"Format", FC::Format),
    fn(u"EXP", u"EXP", FC::Exp),
    fn(u"GETVAR", u"GetVar", FC::GetVar),
    fn(u"HEX", u"HEX", FC::Hex),
    fn(u"HOUR", u"HOUR", FC::Hour),
    fn(u"ISEMPTY", u"IsEmpty", FC::IsEmpty),
    fn(u"INPUT", u"Input", FC::Input),
    fn(u"ISNUMERIC", u"IsNumeric", FC::IsNumeric),
    fn(u"ISVAREXIST", u"IsVarExist", FC::IsVarExist),
    fn(u"LBOUND", u"LBound", FC::LBound),
    fn(u"LCASE", u"LCase", FC::LCase),
    fn(u"LEFT", u"LEFT", FC::Left),
    in(u"LEN", InlineOp::Len),
    fn(u"MAXDAY", u"MaxDay", FC::MaxDay),
    fn(u"MID", u"MID", FC::Mid),
    fn(u"MINUTE", u"Minute", FC::Minute),
    fn(u"MONTH", u"MONTH", FC::Month),
    fn(u"RIGHT", u"RIGHT", FC::Right),
    fn(u"ROUND", u"ROUND", FC::Round),
    fn(u"SETVAR", u"SetVar", FC::SetVar),
    fn(u"SIN", u"SIN", FC::Sin),
    in(u"SQR", InlineOp::Sqr),
    fn(u"TAN", u"TAN", FC::Tan),
    fn(u"UBOUND", u"UBound", FC::UBound),
    fn(u"UCASE", u"UCase", FC::UCase),
    fn(u"WEEKDAYNAME", u"WeekDayName", FC::WeekDayName),
    in(u"YEAR", InlineOp::Year),
    fn(u"TIME", u"TIME", FC::Time),
    in(u"TRIM", InlineOp::Trim),
    in(u"INT", InlineOp::Int),
    // Domain functions. Four of them exist only in the underscore form.
    fn(u"NUM2CHINESE", u"Num2Chinese", FC::Num2Chinese),
    fn(u"大写", u"大写", FC::Num2Chinese),
    fn(u"_员工属性", u"_员工属性", FC::EmployesProperty),
    fn(u"员工属性", u"员工属性", FC::EmployesProperty),
    fn(u"_员工人数", u"_员工人数", FC::EmployesCount),
    fn(u"员工人数", u"员工人数", FC::EmployesCount),
    fn(u"_产品属性", u"_产品属性", FC::ProductProperty),
    fn(u"产品属性", u"产品属性", FC::ProductProperty),
    fn(u"_部门计件工资额", u"_部门计件工资额", FC::WA_JJSumByDept),
    fn(u"部门计件工资额", u"部门计件工资额", FC::WA_JJSumByDept),
    fn(u"_班组工资", u"_班组工资", FC::WA_CalcByWorkGroup),
    fn(u"班组工资", u"班组工资", FC::WA_CalcByWorkGroup),
    fn(u"_部门平均工资", u"_部门平均工资", FC::WA_AVG),
    fn(u"部门平均工资", u"部门平均工资", FC::WA_AVG),
    fn(u"_部门工资合计", u"_部门工资合计", FC::WA_Total),
    fn(u"_员工工资项目值", u"_员工工资项目值", FC::WA_GetFieldValue),
    fn(u"_产品产值", u"_产品产值", FC::WA_Value),
    fn(u"_顶班工资合计", u"_顶班工资合计", FC::WA_DingBanHj),
    fn(u"_考核项目合计", u"_考核项目合计", FC::WA_KaoHe_Hj),
    fn(u"考核项目合计", u"考核项目合计", FC::WA_KaoHe_Hj),
    fn(u"_产品产量", u"_产品产量", FC::WA_Turnout),
    fn(u"产品产量", u"产品产量", FC::WA_Turnout),
    fn(u"_工序产量", u"_工序产量", FC::WA_Turnout_Index),
    fn(u"工序产量", u"工序产量", FC::WA_Turnout_Index),
    fn(u"_工序计件工资额", u"_工序计件工资额", FC::WA_jjSum_Index),
    fn(u"工序计件工资额", u"工序计件工资额", FC::WA_jjSum_Index),
    fn(u"_计件工资额", u"_计件工资额", FC::WA_JJgzSum),
    fn(u"计件工资额", u"计件工资额", FC::WA_JJgzSum),
};
// clang-format on

using Map = std::unordered_map<std::u16string_view, NameEntry>;

Map buildMap() {
  Map m;
  m.reserve(std::size(kRows) * 2);
  // The first row of a name wins, as the table is searched in order.
  for (const Row& r : kRows) m.emplace(r.key, r.entry);
  return m;
}

}  // namespace

const NameEntry* lookupName(std::u16string_view upperName) noexcept {
  static const Map map = buildMap();
  const auto it = map.find(upperName);
  return it == map.end() ? nullptr : &it->second;
}

}  // namespace korvex::eval
