// Error paths of the general functions: wrong counts, unreadable lists,
// arguments of the wrong kind and range, with the exact messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "eval/function_table.hpp"
#include "functions/catalog.hpp"
#include "korvex/function_reference.hpp"
#include "support.hpp"
#include "values/text_scan.hpp"

namespace korvex::testing {
namespace {

struct ErrorCase {
  const char* expression;
  std::int32_t errNum;
  const char* errMsg;
};

class FunctionError : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(FunctionError, StoresNumberAndMessage) {
  const ErrorCase& c = GetParam();
  const Outcome got = EvaluateFresh(c.expression);
  EXPECT_EQ(got.errNum, c.errNum) << c.expression;
  EXPECT_EQ(got.errMsg, c.errMsg) << c.expression;
}

// Every function checks its own count through the same descriptor, and the
// message shows the call as written, under the function's display name
// (written, shown; nullptr: as written).
// clang-format off
const std::pair<const char*, const char*> kWrongCounts[] = {
    {R"(LEFT("abc"))", R"(Left("abc"))"}, {R"(Right("abc", 1, 2))", nullptr},
    {R"(LEFT("abc",))", R"(Left("abc",))"}, {"ASC()", "Asc()"}, {"CHR(1, 2)", "Chr(1, 2)"},
    {R"(Format(1, "0", 2))", nullptr}, {"ROUND(1, 2, 3)", "Round(1, 2, 3)"},
    {"EXP(1，2)", "Exp(1，2)"}, {"MaxDay()", nullptr}, {"MaxDay(1, 2, 3)", nullptr},
    {R"(SetVar("a"))", nullptr}, {"Input(1, 2, 3, 4)", nullptr}, {"大写(1, 2)", nullptr},
    {"Num2Chinese()", "大写()"}, {"工序产量(2005, 3)", "_工序产量(2005, 3)"}, {"CSTR()", "CStr()"},
    {"LCase(1,2)", nullptr}, {"UCase()", nullptr}, {"HEX()", "Hex()"}, {"ATN()", "Atn()"},
    {"CLng()", nullptr}, {"IsEmpty()", nullptr}, {"IsNumeric(1, 2)", nullptr}, {"DAY()", "Day()"},
    {"WeekDayName(1, 2)", nullptr}, {"GetVar()", nullptr}, {"Input()", nullptr},
    {"UBound()", nullptr}, {"LBound()", nullptr}, {"IsVarExist()", nullptr},
};
const std::pair<const char*, const char*> kWrongKinds[] = {
    {R"(LEFT("abc", -1))", R"(Left("abc", -1))"}, {R"(LEFT("abc", "x"))", R"(Left("abc", "x"))"},
    {R"(LEFT("abc", "-1"))", R"(Left("abc", "-1"))"},
    {R"(RIGHT("abc", " -2 "))", R"(Right("abc", " -2 "))"},
    {R"(RIGHT("abc", NULL))", R"(Right("abc", NULL))"}, {R"(CHR("x"))", R"(Chr("x"))"},
    {R"(ROUND("x"))", R"(Round("x"))"}, {R"(CLng("abc"))", nullptr}, {R"(CDbl("1x"))", nullptr},
    {R"(CDate("abc"))", nullptr}, {R"(DAY("abc"))", R"(Day("abc"))"}, {"MONTH(5)", "Month(5)"},
    {R"(WeekDayName("x"))", nullptr}, {"MaxDay(5)", nullptr}, {R"(MaxDay("x", 2005))", nullptr},
    {"SetVar(1, 2)", nullptr}, {"GetVar(1)", nullptr}, {"Input(NULL)", nullptr},
    {"LBound(1)", nullptr}, {R"(HEX("x"))", R"(Hex("x"))"}, {R"(SIN("x"))", R"(Sin("x"))"},
    {"IsVarExist(1)", nullptr},
};
// clang-format on

TEST(FunctionErrors, EachFunctionChecksItsOwnCountAndKinds) {
  using Calls = std::span<const std::pair<const char*, const char*>>;
  const auto check = [](Calls calls, std::int32_t errNum, const std::string& text) {
    for (const auto& [written, shown] : calls) {
      const Outcome got = EvaluateFresh(written);
      EXPECT_EQ(got.errNum, errNum) << written;
      EXPECT_EQ(got.errMsg, text + "{函数:" + (shown != nullptr ? shown : written) + "}");
    }
  };
  check(kWrongCounts, 6, "错误的参数表达式或参数个数");
  check(kWrongKinds, 4, "类型不匹配");
}

// The fixed markers, a limit named in the message, no suffix at all.
const ErrorCase kArgumentKinds[] = {
    {R"(MID("abc"))", 6, "错误的参数表达式或参数个数{MID()}"},
    {R"(MID("abc", 1, 2, 3))", 6, "错误的参数表达式或参数个数{MID()}"},
    {R"(MID(12, 1))", 4, "类型不匹配{MID()}"},
    {R"(MID("abc", "x"))", 4, "类型不匹配{MID()}"},
    {R"(MID("abc", 1, "y"))", 4, "类型不匹配{MID()}"},
    {"EXP(710)", 4, "类型不匹配{函数:Exp(710)参数不能大于709.782712893}"},
    {R"(大写("abc"))", 4, "类型不匹配"},
    {"大写(NULL)", 4, "类型不匹配"},
    {R"(GetVar("nope"))", 5, "变量未定义 'NOPE'"},
};
INSTANTIATE_TEST_SUITE_P(ArgumentKinds, FunctionError, ::testing::ValuesIn(kArgumentKinds));

// Faults of the platform's own operations keep their numbers and bare texts.
const ErrorCase kPlatformFaults[] = {
    {"CLng(3000000000)", 6, "溢出"},
    {R"(ASC(""))", 5, "无效的过程调用或参数"},  // no first character
    {"CHR(70000)", 5, "无效的过程调用或参数"},
    {R"(MID("abc", 0))", 5, "无效的过程调用或参数"},
    {"ROUND(1.5, -1)", 5, "无效的过程调用或参数"},
    {"HEX(3000000000)", 6, "溢出"},
};
INSTANTIATE_TEST_SUITE_P(PlatformFaults, FunctionError, ::testing::ValuesIn(kPlatformFaults));

// An argument that fails to evaluate stops the call with the evaluator's
// own error, not a function message; Num2Chinese too, though it does not look
// at the evaluation error before its numeric test.
TEST(FunctionError, EvaluationErrorsPassThroughUnchanged) {
  const Outcome bare = EvaluateFresh("nope");
  ASSERT_NE(bare.errNum, 0);
  for (const char* expression : {"LEFT(nope, 1)", "ROUND(nope)", "CStr(nope)", "UCase(nope)",
                                 "MaxDay(nope, 1)", R"(MID("abc", nope))", "大写(nope)"}) {
    const Outcome got = EvaluateFresh(expression);
    EXPECT_EQ(got.errNum, bare.errNum) << expression;
    EXPECT_EQ(got.errMsg, bare.errMsg) << expression;
  }
}

// The catalog against an independent list of every script name: each name
// of each entry resolves to that entry in any case, and a call that fails
// shows the function's display name (or its fixed marker) in the message.
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

// The reference of every row, found by each of its names: a description,
// a result, and as many required and optional arguments as the row's
// counts (none for a row whose count is not checked); the evaluator's own
// functions the same against the one argument they take.
TEST(Catalog, EveryRowHasAReferenceAgreeingWithItsCounts) {
  const auto agrees = [](const FunctionReference& r, int min, int max) {
    const auto required = std::count_if(r.arguments.begin(), r.arguments.end(),
                                        [](const FunctionArgument& a) { return !a.optional; });
    const auto total = static_cast<int>(r.arguments.size());
    EXPECT_FALSE(r.description.empty()) << u8(r.signature);
    EXPECT_FALSE(r.result.empty()) << u8(r.signature);
    EXPECT_EQ(required, min < 0 ? 0 : min) << u8(r.signature);
    EXPECT_EQ(total, min < 0 ? 0 : max) << u8(r.signature);
  };
  std::size_t rows = 0;
  ASSERT_EQ(fn::familyTitles().size(), fn::families().size());
  for (const fn::Family family : fn::families()) {
    for (const fn::FunctionEntry& entry : family) {
      ++rows;
      const FunctionReference* r = findFunctionReference(entry.displayName());
      ASSERT_NE(r, nullptr) << u8(entry.displayName());
      for (const std::u16string_view name : entry.names) {
        if (name.empty()) continue;
        EXPECT_EQ(findFunctionReference(lowerAscii(std::u16string(name))), r) << u8(name);
      }
      agrees(*r, entry.minArgs, entry.maxArgs);
    }
  }
  for (const eval::InlineFunction& f : eval::inlineFunctions()) {
    ++rows;
    const auto seen = eval::lookupName(f.name);
    ASSERT_TRUE(seen && seen->kind == eval::NameKind::Inline) << u8(f.name);
    agrees(*findFunctionReference(f.name), 1, 1);
  }
  EXPECT_EQ(functionReferences().size(), rows);
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
    // The reference shows the same text, "(…)" standing for the arguments.
    std::u16string shown = findFunctionReference(e.display)->errors.at(0).text;
    if (const auto at = shown.find(u"(…)"); at != std::u16string::npos) shown.replace(at, 3, args);
    EXPECT_EQ(shown, message) << u8(e.display);
  }
}

}  // namespace
}  // namespace korvex::testing
