// CallFunction: from a class identity to its descriptor.
#include "functions/function_call.hpp"
#include "functions/function_descriptors.hpp"

namespace korvex {
namespace {

using namespace fn;

// The general functions; the data-source classes (cells, SQL, wage domain)
// are not here and answer as unavailable.
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
    // clang-format on
    default:
      return nullptr;
  }
}

// A class that is not available fails like a bad argument list, named as
// the script wrote it.
std::int32_t unavailable(std::u16string_view scriptName, std::u16string_view argText,
                         BasicEngine& engine) {
  const FunctionDescriptor desc{scriptName, 0, 0, {}, nullptr};
  Paras none;
  return Call(desc, argText, engine, none).countError();
}

}  // namespace

std::int32_t CallFunction(FunctionClass cls, std::u16string_view scriptName,
                          std::u16string_view argText, Value& result, BasicEngine& engine) {
  const FunctionDescriptor* desc = descriptorOf(cls);
  if (desc == nullptr) return unavailable(scriptName, argText, engine);
  return Invoke(*desc, argText, result, engine);
}

}  // namespace korvex
