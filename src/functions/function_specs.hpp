// The descriptors of the general built-in function classes, one per class,
// defined by the family files (string, numeric, conversion, date, variable,
// array, Chinese amount).
#pragma once

#include "functions/protocol.hpp"

namespace korvex::fn {

// Strings.
extern const FunctionSpec kLeft, kRight, kAsc, kChr, kCStr, kLCase, kUCase, kHex, kFormat, kMid;
// Numbers.
extern const FunctionSpec kRound, kAtn, kCos, kSin, kTan, kExp;
// Conversions and tests.
extern const FunctionSpec kCLng, kCDbl, kCDate, kIsNumeric, kIsEmpty;
// Dates.
extern const FunctionSpec kDate, kTime, kDay, kMonth, kHour, kMinute, kWeekDayName, kMaxDay;
// Variables and input.
extern const FunctionSpec kSetVar, kGetVar, kIsVarExist, kInput;
// Arrays.
extern const FunctionSpec kLBound, kUBound;
// Amounts in Chinese capitals.
extern const FunctionSpec kNum2Chinese;

}  // namespace korvex::fn
