// CallFunction: from a class identity to its descriptor.
#include "functions/cell_functions.hpp"
#include "functions/function_call.hpp"
#include "functions/function_descriptors.hpp"
#include "functions/sql_descriptors.hpp"
#include "functions/wage/wage_functions.hpp"

namespace korvex {
namespace {

using namespace fn;

// Every class: the general, SQL, cell and wage-domain functions.
const FunctionDescriptor* descriptorOf(FunctionClass cls) noexcept {
  switch (cls) {
    // clang-format off
    case FunctionClass::Asc: return &kAsc;
    case FunctionClass::Atn: return &kAtn;
    case FunctionClass::CDbl: return &kCDbl;
    case FunctionClass::CDate: return &kCDate;
    case FunctionClass::Chr: return &kChr;
    case FunctionClass::CInt32: return &kCLng;
    case FunctionClass::Cos: return &kCos;
    case FunctionClass::CStr: return &kCStr;
    case FunctionClass::Date: return &kDate;
    case FunctionClass::Day: return &kDay;
    case FunctionClass::Format: return &kFormat;
    case FunctionClass::Exp: return &kExp;
    case FunctionClass::GetVar: return &kGetVar;
    case FunctionClass::Hex: return &kHex;
    case FunctionClass::Hour: return &kHour;
    case FunctionClass::IsEmpty: return &kIsEmpty;
    case FunctionClass::Input: return &kInput;
    case FunctionClass::IsNumeric: return &kIsNumeric;
    case FunctionClass::IsVarExist: return &kIsVarExist;
    case FunctionClass::LBound: return &kLBound;
    case FunctionClass::LCase: return &kLCase;
    case FunctionClass::Left: return &kLeft;
    case FunctionClass::MaxDay: return &kMaxDay;
    case FunctionClass::Mid: return &kMid;
    case FunctionClass::Minute: return &kMinute;
    case FunctionClass::Month: return &kMonth;
    case FunctionClass::Right: return &kRight;
    case FunctionClass::Round: return &kRound;
    case FunctionClass::SetVar: return &kSetVar;
    case FunctionClass::Sin: return &kSin;
    case FunctionClass::Tan: return &kTan;
    case FunctionClass::UBound: return &kUBound;
    case FunctionClass::UCase: return &kUCase;
    case FunctionClass::WeekDayName: return &kWeekDayName;
    case FunctionClass::Time: return &kTime;
    case FunctionClass::Num2Chinese: return &kNum2Chinese;
    case FunctionClass::ExecuteSQL: return &kExecuteSQL;
    case FunctionClass::DoSqlEx: return &kDoSqlEx;
    case FunctionClass::WA_GetFieldValue: return &kWaGetFieldValue;
    case FunctionClass::GetCell: return &kGetCell;
    case FunctionClass::SetCell: return &kSetCell;
    case FunctionClass::SetCellFormula: return &kSetCellFormula;
    case FunctionClass::WA_Total: return &ds::kWaTotal;
    case FunctionClass::WA_AVG: return &ds::kWaAvg;
    case FunctionClass::WA_JJgzSum: return &ds::kWaJJgzSum;
    case FunctionClass::WA_JJSumByDept: return &ds::kWaJJSumByDept;
    case FunctionClass::WA_jjSum_Index: return &ds::kWaJjSumIndex;
    case FunctionClass::WA_Value: return &ds::kWaValue;
    case FunctionClass::WA_KaoHe_Hj: return &ds::kWaKaoHeHj;
    case FunctionClass::WA_DingBanHj: return &ds::kWaDingBanHj;
    case FunctionClass::WA_CalcByWorkGroup: return &ds::kWaCalcByWorkGroup;
    case FunctionClass::EmployesProperty: return &ds::kEmployesProperty;
    case FunctionClass::EmployesCount: return &ds::kEmployesCount;
    case FunctionClass::ProductProperty: return &ds::kProductProperty;
    case FunctionClass::WA_Turnout: return &ds::kWaTurnout;
    case FunctionClass::WA_Turnout_Index: return &ds::kWaTurnoutIndex;
    // clang-format on
    default:
      return nullptr;
  }
}

// The name the data-source classes put into their messages; where a class
// has none of its own, the table's name stands in.
std::u16string_view displayName(FunctionClass cls, std::u16string_view scriptName) noexcept {
  switch (cls) {
    // clang-format off
    case FunctionClass::GetCell: return u"GetCell";
    case FunctionClass::SetCell: return u"SetCell";
    case FunctionClass::SetCellFormula: return u"SetCellFormula";
    case FunctionClass::ExecuteSQL: return u"DoSQL";
    case FunctionClass::DoSqlEx: return u"DoSqlEx";
    case FunctionClass::WA_GetFieldValue: return u"_员工工资项目值";
    case FunctionClass::WA_Total: return u"_部门工资合计";
    case FunctionClass::WA_AVG: return u"_部门平均工资";
    case FunctionClass::WA_JJgzSum: return u"_计件工资额";
    case FunctionClass::WA_JJSumByDept: return u"_部门计件工资额";
    case FunctionClass::WA_jjSum_Index: return u"_工序计件工资额";
    case FunctionClass::WA_Value: return u"_产品产值";
    case FunctionClass::WA_KaoHe_Hj: return u"_考核项目合计";
    case FunctionClass::WA_DingBanHj: return u"_顶班工资合计";
    case FunctionClass::WA_CalcByWorkGroup: return u"_班组工资";
    case FunctionClass::EmployesProperty: return u"_员工属性";
    case FunctionClass::EmployesCount: return u"_员工人数";
    case FunctionClass::ProductProperty: return u"_产品属性";
    case FunctionClass::WA_Turnout: return u"_产品产量";
    case FunctionClass::WA_Turnout_Index: return u"_工序产量";
    // clang-format on
    default:
      return scriptName;
  }
}

// A class that is not available fails like a bad argument list, under the
// name the class would use.
std::int32_t unavailable(FunctionClass cls, std::u16string_view scriptName,
                         std::u16string_view argText, BasicEngine& engine) {
  const FunctionDescriptor desc{displayName(cls, scriptName), 0, 0, {}, nullptr};
  return Call(desc, argText, engine, {}).countError();
}

}  // namespace

std::int32_t CallFunction(FunctionClass cls, std::u16string_view scriptName, const ArgList& args,
                          Value& result, BasicEngine& engine) {
  const FunctionDescriptor* desc = descriptorOf(cls);
  if (desc == nullptr) return unavailable(cls, scriptName, args.text(), engine);
  return Invoke(*desc, args, result, engine);
}

std::int32_t CallFunction(FunctionClass cls, std::u16string_view scriptName,
                          std::u16string_view argText, Value& result, BasicEngine& engine) {
  const ArgList args(argText);
  return CallFunction(cls, scriptName, args, result, engine);
}

}  // namespace korvex
