// Name recognition: function names are found in any case and fail as
// functions when misused (which names exist is the catalog test's).
#include "eval/function_table.hpp"

#include <gtest/gtest.h>

#include <string>

#include "engine/script_reader.hpp"
#include "eval/eval.hpp"
#include "facade/context_of.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

using eval::lookupName;
using eval::NameKind;

// One name of each shape: ASCII, mixed case, Chinese alias, an inline
// function, a name with and without its leading "_", a data-layer name.
constexpr const char16_t* kFunctionNames[] = {
    u"ABS",       u"SetCellFormula", u"大写",          u"LEFT",    u"IsVarExist",  u"WeekDayName",
    u"_员工属性", u"员工属性",       u"_部门工资合计", u"DoSqlEx", u"Num2Chinese", u"_计件工资额"};

TEST(FunctionTable, MisusedFunctionsFailAsFunctionsNotAsUnknownNames) {
  // Without its "(" a function name is a missing-parenthesis error; with a
  // list it does not accept it is the function's own error. Never 56.
  for (const char16_t* name : kFunctionNames) {
    const auto entry = lookupName(upperName(name));
    ASSERT_NE(entry, std::nullopt) << toUtf8(name);
    for (const std::u16string& written : {std::u16string(name), lowerAscii(name)}) {
      Harness f;
      Evaluate(contextOf(f.engine), written + u" + 1");
      EXPECT_EQ(f.engine.ErrNum(), 26) << toUtf8(written);

      // The inline functions evaluate their text as one expression, where
      // the comma is an unknown character.
      if (entry->kind == NameKind::Inline) continue;
      Harness g;
      const std::u16string call = written + u"(1, 2, 3, 4, 5, 6, 7, 8, 9, 10)";
      try {
        Evaluate(contextOf(g.engine), call);
      } catch (const vb::RuntimeError&) {
        continue;  // a platform fault is a function's failure too
      }
      EXPECT_NE(g.engine.ErrNum(), 56) << toUtf8(call);
    }
  }
}

}  // namespace
}  // namespace korvex::testing
