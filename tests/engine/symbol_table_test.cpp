// The variable table through the engine's members: upper-cased names, table
// order, error 5 for missing names, error 24 / the duplicate box for
// existing ones, and sharing with a child engine.
#include "engine/symbol_table.hpp"

#include <gtest/gtest.h>

#include <memory>

#include "engine/engine_services.hpp"
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
  EXPECT_FALSE(services::SymbolDefined(engine, u"y"));
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(engine.ErrMsg(), u"");
}

TEST(SymbolTable, MissingNamesReportErrorFiveWithTheUpperCasedName) {
  BasicEngine reader, writer;
  EXPECT_TRUE(reader.GetVarValue(u"nope").isEmpty());
  EXPECT_EQ(reader.ErrNum(), 5);
  EXPECT_EQ(reader.ErrMsg(), u"变量未定义 'NOPE'");
  writer.Vaule(u"ghost", Value::lng(1));
  EXPECT_EQ(writer.ErrNum(), 5);
  EXPECT_EQ(writer.ErrMsg(), u"变量未定义 'GHOST'");
  EXPECT_TRUE(writer.Variables().empty());
}

TEST(SymbolTable, AnExistingNameIsRefusedWithErrorOrBoxAndChangesNothing) {
  Harness h;
  EXPECT_EQ(services::DefineSymbol(h.engine, u"a", Value::lng(1)), 0);
  EXPECT_EQ(services::DefineSymbol(h.engine, u"A", Value::lng(9)), 24);
  EXPECT_EQ(describe(services::SymbolValue(h.engine, u"a")), "Long:1");
  EXPECT_TRUE(h.messages().empty());

  SymbolTable table(&h.engine);
  table.Add(u"v", Value::lng(1));
  table.Add(u"V", Value::lng(2));
  EXPECT_EQ(table.Count(), 1);
  EXPECT_EQ(describe(table.value(u"v")), "Long:1");
  EXPECT_EQ(h.messages(), std::vector<std::string>{"符号或变量已定义"});
  EXPECT_EQ(h.engine.ErrNum(), 0);

  table.Delete(u"missing");
  EXPECT_EQ(table.Count(), 1);
  table.Delete(u"v");
  EXPECT_EQ(table.Count(), 0);
  EXPECT_EQ(table.find(u"V"), nullptr);
}

TEST(SymbolTable, ChildSharesTheTableErrorsGoToItsOwnerWhileThereIsOne) {
  auto parent = std::make_unique<BasicEngine>();
  parent->SetSysVar(u"x", Value::lng(1));
  BasicEngine child;
  services::ShareStateOf(child, *parent);
  EXPECT_TRUE(child.IsVarDefined(u"X"));
  child.Vaule(u"x", Value::lng(2));
  child.SetSysVar(u"y", Value::lng(3));
  EXPECT_TRUE(child.GetVarValue(u"missing").isEmpty());
  EXPECT_EQ(child.ErrNum(), 0);
  EXPECT_EQ(parent->ErrNum(), 5);
  EXPECT_EQ(parent->ErrMsg(), u"变量未定义 'MISSING'");
  EXPECT_EQ(describe(parent->GetVarValue(u"x")), "Long:2");
  EXPECT_EQ(describe(parent->GetVarValue(u"y")), "Long:3");

  parent.reset();  // the table outlives the engine that created it
  EXPECT_EQ(describe(child.GetVarValue(u"y")), "Long:3");
  EXPECT_TRUE(child.GetVarValue(u"gone").isEmpty());  // nobody left to report to
  EXPECT_EQ(child.ErrNum(), 0);
}

}  // namespace
}  // namespace korvex::testing
