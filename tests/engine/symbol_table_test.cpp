// The variable table through the engine's members: upper-cased names, table
// order, error 5 for missing names, error 24 / the duplicate box for
// existing ones, and sharing with a child engine.
#include "engine/symbol_table.hpp"

#include <gtest/gtest.h>

#include <memory>

#include "engine/engine_services.hpp"
#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"

namespace korvex {
namespace {

std::vector<std::u16string> names(const BasicEngine& engine) {
  std::vector<std::u16string> out;
  for (const auto& [name, value] : engine.Variables()) out.push_back(name);
  return out;
}

TEST(SymbolTable, SetSysVarDefinesThenOverwritesCaseInsensitively) {
  BasicEngine engine;
  engine.SetSysVar(u"Rate", Value::lng(1));
  engine.SetSysVar(u"RATE", Value::lng(2));
  ASSERT_EQ(engine.Variables().size(), 1u);
  EXPECT_EQ(engine.Variables()[0].first, u"RATE");
  EXPECT_EQ(engine.GetVarValue(u"rate").longValue(), 2);
  EXPECT_TRUE(engine.IsVarDefined(u"rAtE"));
  // Only ASCII letters are upper-cased; asking never reports an error.
  engine.SetSysVar(u"工资x", Value::lng(5));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"RATE", u"工资X"}));
  EXPECT_FALSE(engine.IsVarDefined(u"y"));
  EXPECT_FALSE(services::SymbolDefined(engine, u"y"));
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(engine.ErrMsg(), u"");
}

TEST(SymbolTable, MissingNamesReportErrorFiveWithTheUpperCasedName) {
  BasicEngine engine;
  EXPECT_TRUE(engine.GetVarValue(u"nope").isEmpty());
  EXPECT_EQ(engine.ErrNum(), 5);
  EXPECT_EQ(engine.ErrMsg(), u"变量未定义 'NOPE'");

  BasicEngine writer;
  writer.Vaule(u"ghost", Value::lng(1));
  EXPECT_EQ(writer.ErrNum(), 5);
  EXPECT_EQ(writer.ErrMsg(), u"变量未定义 'GHOST'");
  EXPECT_FALSE(writer.IsVarDefined(u"ghost"));
  EXPECT_TRUE(writer.Variables().empty());
}

TEST(SymbolTable, DefineSymbolRefusesAnExistingNameWithoutABox) {
  auto ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  EXPECT_EQ(services::DefineSymbol(engine, u"a", Value::lng(1)), 0);
  EXPECT_EQ(services::DefineSymbol(engine, u"A", Value::lng(9)), 24);
  EXPECT_EQ(services::SymbolValue(engine, u"a").longValue(), 1);
  EXPECT_TRUE(ui->messages().empty());
  EXPECT_EQ(engine.ErrNum(), 0);
}

TEST(SymbolTable, DuplicateAddShowsTheBoxAndChangesNothing) {
  auto ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  SymbolTable table(&engine);
  table.Add(u"v", Value::lng(1));
  table.Add(u"V", Value::lng(2));
  EXPECT_EQ(table.Count(), 1);
  EXPECT_EQ(table.value(u"v").longValue(), 1);
  EXPECT_EQ(ui->messages(), (std::vector<std::u16string>{u"符号或变量已定义"}));
  EXPECT_EQ(engine.ErrNum(), 0);

  table.Delete(u"missing");
  EXPECT_EQ(table.Count(), 1);
  table.Delete(u"v");
  EXPECT_EQ(table.Count(), 0);
  EXPECT_EQ(table.find(u"V"), nullptr);
}

TEST(SymbolTable, WritingMovesTheVariableToTheEnd) {
  BasicEngine engine;
  engine.SetSysVar(u"a", Value::lng(1));
  engine.SetSysVar(u"b", Value::lng(2));
  engine.SetSysVar(u"c", Value::lng(3));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"A", u"B", u"C"}));
  engine.Vaule(u"a", Value::lng(10));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"B", u"C", u"A"}));
  engine.SetSysVar(u"B", Value::lng(20));
  EXPECT_EQ(names(engine), (std::vector<std::u16string>{u"C", u"A", u"B"}));
  EXPECT_EQ(engine.GetVarValue(u"A").longValue(), 10);
  EXPECT_EQ(engine.GetVarValue(u"b").longValue(), 20);
}

TEST(SymbolTable, ChildSharesTheTableButErrorsGoToItsOwner) {
  BasicEngine parent;
  parent.SetSysVar(u"x", Value::lng(1));
  {
    BasicEngine child;
    services::ShareStateOf(child, parent);
    EXPECT_TRUE(child.IsVarDefined(u"X"));
    child.Vaule(u"x", Value::lng(2));
    child.SetSysVar(u"y", Value::lng(3));
    // The table still belongs to the engine that created it.
    EXPECT_TRUE(child.GetVarValue(u"missing").isEmpty());
    EXPECT_EQ(child.ErrNum(), 0);
    EXPECT_EQ(parent.ErrNum(), 5);
    EXPECT_EQ(parent.ErrMsg(), u"变量未定义 'MISSING'");
  }
  EXPECT_EQ(parent.GetVarValue(u"x").longValue(), 2);
  EXPECT_EQ(parent.GetVarValue(u"y").longValue(), 3);
}

TEST(SymbolTable, SharedTableOutlivingItsOwnerStillWorks) {
  auto child = std::make_unique<BasicEngine>();
  {
    BasicEngine owner;
    owner.SetSysVar(u"kept", Value::lng(7));
    services::ShareStateOf(*child, owner);
  }
  EXPECT_EQ(child->GetVarValue(u"kept").longValue(), 7);
  EXPECT_TRUE(child->GetVarValue(u"gone").isEmpty());  // nobody left to report to
  EXPECT_EQ(child->ErrNum(), 0);
}

}  // namespace
}  // namespace korvex
