// The catalog against an independent list of every script name: each name
// of each entry resolves to that entry in any case, and a call that fails
// shows the function's display name (or its fixed marker) in the message.
#include "functions/catalog.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "eval/function_table.hpp"
#include "support.hpp"
#include "values/text_scan.hpp"

namespace korvex::testing {
namespace {

struct Expected {
  const char16_t* name;     // as a script may write it (any case)
  const char16_t* display;  // the name the messages show
  const char16_t* fixedSuffix = nullptr;
};

// clang-format off
const Expected kExpected[] = {
    {u"getcell", u"GetCell"}, {u"setcell", u"SetCell"}, {u"setcellformula", u"SetCellFormula"},
    {u"left", u"Left"}, {u"right", u"Right"}, {u"asc", u"Asc"}, {u"chr", u"Chr"},
    {u"cstr", u"CStr"}, {u"lcase", u"LCase"}, {u"ucase", u"UCase"}, {u"hex", u"Hex"},
    {u"format", u"Format"}, {u"mid", u"MID", u"{MID()}"},
    {u"round", u"Round"}, {u"atn", u"Atn"}, {u"cos", u"Cos"}, {u"sin", u"Sin"}, {u"tan", u"Tan"},
    {u"exp", u"Exp"},
    {u"clng", u"CLng"}, {u"cdbl", u"CDbl"}, {u"cdate", u"CDate"}, {u"isnumeric", u"IsNumeric"},
    {u"isempty", u"IsEmpty"},
    {u"date", u"Date"}, {u"time", u"Time"}, {u"day", u"Day"}, {u"month", u"Month"},
    {u"hour", u"Hour"}, {u"minute", u"Minute"}, {u"weekdayname", u"WeekDayName"},
    {u"maxday", u"MaxDay"},
    {u"setvar", u"SetVar"}, {u"getvar", u"GetVar"}, {u"isvarexist", u"IsVarExist"},
    {u"input", u"Input"}, {u"lbound", u"LBound"}, {u"ubound", u"UBound"},
    {u"大写", u"大写"}, {u"num2chinese", u"大写"},
    {u"dosql", u"DoSQL"}, {u"executesql", u"DoSQL"}, {u"dosqlex", u"DoSqlEx"},
    {u"_员工工资项目值", u"_员工工资项目值"},
    {u"_部门工资合计", u"_部门工资合计"},
    {u"_部门平均工资", u"_部门平均工资"}, {u"部门平均工资", u"_部门平均工资"},
    {u"_计件工资额", u"_计件工资额"}, {u"计件工资额", u"_计件工资额"},
    {u"_部门计件工资额", u"_部门计件工资额"}, {u"部门计件工资额", u"_部门计件工资额"},
    {u"_工序计件工资额", u"_工序计件工资额"}, {u"工序计件工资额", u"_工序计件工资额"},
    {u"_产品产值", u"_产品产值"},
    {u"_考核项目合计", u"_考核项目合计"}, {u"考核项目合计", u"_考核项目合计"},
    {u"_顶班工资合计", u"_顶班工资合计"},
    {u"_班组工资", u"_班组工资"}, {u"班组工资", u"_班组工资"},
    {u"_员工属性", u"_员工属性"}, {u"员工属性", u"_员工属性"},
    {u"_员工人数", u"_员工人数"}, {u"员工人数", u"_员工人数"},
    {u"_产品属性", u"_产品属性"}, {u"产品属性", u"_产品属性"},
    {u"_产品产量", u"_产品产量"}, {u"产品产量", u"_产品产量"},
    {u"_工序产量", u"_工序产量"}, {u"工序产量", u"_工序产量"},
};
// clang-format on

const Expected* expectedFor(std::u16string_view name) {
  const std::u16string upper = upperName(name);
  const auto it = std::find_if(std::begin(kExpected), std::end(kExpected),
                               [&](const Expected& e) { return upperName(e.name) == upper; });
  return it == std::end(kExpected) ? nullptr : it;
}

TEST(Catalog, EveryScriptNameResolvesToItsEntryAndIsExpected) {
  std::size_t names = 0;
  for (const fn::Family family : fn::families()) {
    for (const fn::FunctionEntry& entry : family) {
      for (const std::u16string_view name : entry.names) {
        if (name.empty()) continue;
        ++names;
        EXPECT_NE(expectedFor(name), nullptr) << "unexpected name " << u8(name);
        EXPECT_EQ(fn::findFunction(upperName(name)), &entry) << u8(name);
        const auto seen = eval::lookupName(upperName(name));
        ASSERT_NE(seen, std::nullopt) << u8(name);
        EXPECT_EQ(seen->function, &entry) << u8(name);
      }
    }
  }
  EXPECT_EQ(names, std::size(kExpected));
}

TEST(Catalog, FailingCallsShowTheDisplayName) {
  // A trailing comma fails the argument list of every function, whatever
  // its counts, before any argument is evaluated.
  const std::u16string args = u"(1,)";
  for (const Expected& e : kExpected) {
    std::u16string message = u"错误的参数表达式或参数个数";
    message += e.fixedSuffix != nullptr ? std::u16string(e.fixedSuffix)
                                        : u"{函数:" + std::u16string(e.display) + args + u"}";
    const Outcome got = EvaluateFresh(toUtf8(e.name + args));
    EXPECT_EQ(got.errNum, 6) << u8(e.name);
    EXPECT_EQ(got.errMsg, toUtf8(message)) << u8(e.name);
  }
}

}  // namespace
}  // namespace korvex::testing
