// The variable table through the engine's members: upper-cased names, table
// order, error 5 for missing names, error 24 / the duplicate box for
// existing ones, and sharing with a child engine.
#include "engine/symbol_table.hpp"

#include <gtest/gtest.h>

#include <memory>

#include "facade/context_of.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

std::vector<std::u16string> names(const BasicEngine& engine) {
  std::vector<std::u16string> out;
  for (const auto& [name, value] : engine.Variables()) out.push_back(name);
  return out;
}

TEST(SymbolTable, NamesAreUpperCasedAndWritingMovesTheVariableToTheEnd) {
  BasicEngine engine;
  engine.SetSysVar(u"Rate", Value::lng(1));
  engine.SetSysVar(u"b", Value::lng(2));
  engine.SetSysVar(u"工资x", Value::lng(3));  // only ASCII letters are upper-cased
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"RATE", u"B", u"工资X"}));
  engine.SetSysVar(u"RATE", Value::lng(10));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"B", u"工资X", u"RATE"}));
  engine.Vaule(u"b", Value::lng(20));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"工资X", u"RATE", u"B"}));
  EXPECT_EQ(describe(engine.GetVarValue(u"rate")), "Long:10");
  EXPECT_EQ(describe(engine.GetVarValue(u"B")), "Long:20");
  // Asking never reports an error.
  EXPECT_TRUE(engine.IsVarDefined(u"rAtE"));
  EXPECT_FALSE(engine.IsVarDefined(u"y"));
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(engine.ErrMsg(), u"");
}

TEST(SymbolTable, AnExistingNameIsRefusedWithErrorOrBoxAndChangesNothing) {
  Harness h;
  Context& ctx = contextOf(h.engine);
  EXPECT_EQ(ctx.defineSymbol(u"a", Value::lng(1)), 0);
  EXPECT_EQ(ctx.defineSymbol(u"A", Value::lng(9)), 24);
  EXPECT_EQ(describe(ctx.symbolValue(u"a")), "Long:1");
  EXPECT_TRUE(h.messages().empty());

  SymbolTable table(&ctx);
  table.Add(u"v", Value::lng(1));
  table.Add(u"V", Value::lng(2));
  EXPECT_EQ(table.Count(), 1);
  EXPECT_EQ(describe(table.value(u"v")), "Long:1");
  EXPECT_EQ(h.messages(), std::vector<std::string>{"符号或变量已定义"});
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_EQ(table.find(u"x"), nullptr);
}

TEST(SymbolTable, ANestedFrameSharesTheTableAndItsErrorsGoToTheHostsFrame) {
  BasicEngine engine;
  engine.SetSysVar(u"x", Value::lng(1));
  Context& ctx = contextOf(engine);
  Frame tail(true);
  ctx.inFrame(tail, [&] {
    EXPECT_TRUE(ctx.symbolDefined(u"X"));
    ctx.symbols().setValue(u"x", Value::lng(2));
    ctx.setSymbol(u"y", Value::lng(3));
    EXPECT_TRUE(ctx.symbolValue(u"missing").isEmpty());
    EXPECT_EQ(ctx.errNum(), 0);
  });
  EXPECT_EQ(engine.ErrNum(), 5);
  EXPECT_EQ(engine.ErrMsg(), u"变量未定义 'MISSING'");
  engine.Vaule(u"ghost", Value::lng(1));  // assigning a missing name stores nothing
  EXPECT_EQ(engine.ErrMsg(), u"变量未定义 'GHOST'");
  EXPECT_FALSE(engine.IsVarDefined(u"ghost"));
  EXPECT_EQ(describe(engine.GetVarValue(u"x")), "Long:2");
  EXPECT_EQ(describe(engine.GetVarValue(u"y")), "Long:3");

  SymbolTable orphan(nullptr);  // nobody to report to: only Empty
  EXPECT_TRUE(orphan.value(u"gone").isEmpty());
}

}  // namespace
}  // namespace korvex::testing
