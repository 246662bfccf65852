// The descriptors of the general built-in function classes, one per class,
// defined by the family files (string, numeric, conversion, date, variable,
// array, Chinese amount).
#pragma once

#include "functions/protocol.hpp"

namespace korvex::fn {

// Strings.
extern const FunctionDescriptor kLeft, kRight, kAsc, kChr, kCStr, kLCase, kUCase, kHex, kFormat,
    kMid;
// Numbers.
extern const FunctionDescriptor kRound, kAtn, kCos, kSin, kTan, kExp;
// Conversions and tests.
extern const FunctionDescriptor kCLng, kCDbl, kCDate, kIsNumeric, kIsEmpty;
// Dates.
extern const FunctionDescriptor kDate, kTime, kDay, kMonth, kHour, kMinute, kWeekDayName, kMaxDay;
// Variables and input.
extern const FunctionDescriptor kSetVar, kGetVar, kIsVarExist, kInput;
// Arrays.
extern const FunctionDescriptor kLBound, kUBound;
// Amounts in Chinese capitals.
extern const FunctionDescriptor kNum2Chinese;

}  // namespace korvex::fn
