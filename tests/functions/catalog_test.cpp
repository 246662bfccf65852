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

// The name the messages show, the one other name a script may use for it,
// and the fixed marker a few show instead of the call.
struct Expected {
  const char16_t* display;
  const char16_t* alias = nullptr;
  const char16_t* fixedSuffix = nullptr;
};

// clang-format off
const Expected kExpected[] = {
    {u"GetCell"}, {u"SetCell"}, {u"SetCellFormula"}, {u"Left"}, {u"Right"}, {u"Asc"}, {u"Chr"},
    {u"CStr"}, {u"LCase"}, {u"UCase"}, {u"Hex"}, {u"Format"}, {u"MID", nullptr, u"{MID()}"},
    {u"Round"}, {u"Atn"}, {u"Cos"}, {u"Sin"}, {u"Tan"}, {u"Exp"}, {u"CLng"}, {u"CDbl"}, {u"CDate"},
    {u"IsNumeric"}, {u"IsEmpty"}, {u"Date"}, {u"Time"}, {u"Day"}, {u"Month"}, {u"Hour"},
    {u"Minute"}, {u"WeekDayName"}, {u"MaxDay"}, {u"SetVar"}, {u"GetVar"}, {u"IsVarExist"},
    {u"Input"}, {u"LBound"}, {u"UBound"}, {u"大写", u"num2chinese"}, {u"DoSQL", u"executesql"},
    {u"DoSqlEx"}, {u"_员工工资项目值"}, {u"_部门工资合计"}, {u"_部门平均工资", u"部门平均工资"},
    {u"_计件工资额", u"计件工资额"}, {u"_部门计件工资额", u"部门计件工资额"},
    {u"_工序计件工资额", u"工序计件工资额"}, {u"_产品产值"}, {u"_考核项目合计", u"考核项目合计"},
    {u"_顶班工资合计"}, {u"_班组工资", u"班组工资"}, {u"_员工属性", u"员工属性"},
    {u"_员工人数", u"员工人数"}, {u"_产品属性", u"产品属性"}, {u"_产品产量", u"产品产量"},
    {u"_工序产量", u"工序产量"},
};
// clang-format on

const Expected* expectedFor(std::u16string_view name) {
  const std::u16string upper = upperName(name);
  const auto it = std::find_if(std::begin(kExpected), std::end(kExpected), [&](const Expected& e) {
    return upperName(e.display) == upper || (e.alias != nullptr && upperName(e.alias) == upper);
  });
  return it == std::end(kExpected) ? nullptr : it;
}

TEST(Catalog, EveryScriptNameResolvesToItsEntryAndIsExpected) {
  std::size_t names = 0, expected = 0;
  for (const Expected& e : kExpected) expected += e.alias != nullptr ? 2 : 1;
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
  EXPECT_EQ(names, expected);
}

TEST(Catalog, FailingCallsShowTheDisplayName) {
  // A trailing comma fails the argument list of every function, whatever
  // its counts, before any argument is evaluated; the names are written in
  // lower case.
  const std::u16string args = u"(1,)";
  for (const Expected& e : kExpected) {
    std::u16string message = u"错误的参数表达式或参数个数";
    message += e.fixedSuffix != nullptr ? std::u16string(e.fixedSuffix)
                                        : u"{函数:" + std::u16string(e.display) + args + u"}";
    for (const char16_t* name : {e.display, e.alias}) {
      if (name == nullptr) continue;
      const Outcome got = EvaluateFresh(toUtf8(lowerAscii(name) + args));
      EXPECT_EQ(got.errNum, 6) << u8(name);
      EXPECT_EQ(got.errMsg, toUtf8(message)) << u8(name);
    }
  }
}

}  // namespace
}  // namespace korvex::testing
