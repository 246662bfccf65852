// The current record through the engine: cached and live field-name tests,
// reading and changing fields, the moves and BOF/EOF, and how failures of
// the host object surface (error 102 with the host's description).
#include <gtest/gtest.h>

#include <memory>

#include "engine/symbol_table.hpp"
#include "facade/context_of.hpp"
#include "korvex/memory_recordset.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

std::shared_ptr<MemoryRecordset> staff() {
  return MemoryRecordset::create(
      {u"Code", u"Name", u"工资"},
      {{Value::string(u"E01"), Value::string(u"Li"), Value::lng(100)},
       {Value::string(u"E02"), Value::string(u"Wang"), Value::lng(200)},
       {Value::string(u"E03"), Value::string(u"Zhao"), Value::lng(300)}});
}

constexpr std::string_view kNotFound = "在对应所需名称或序数的集合中未找到项目。";

// A record set whose every member fails.
class Broken : public HostObject {
  static DispatchResult closed() {
    return DispatchResult::failure(3704, u"对象关闭时，不允许操作。");
  }

 public:
  DispatchResult getProperty(std::u16string_view, std::span<const Value>) override {
    return closed();
  }
  DispatchResult setProperty(std::u16string_view, std::span<const Value>, const Value&) override {
    return closed();
  }
  DispatchResult callMethod(std::u16string_view, std::span<const Value>) override {
    return closed();
  }
};

TEST(RecordBinding, FieldNamesMatchCaseInsensitivelyLiveAndCachedWhileARecordIsSet) {
  const std::pair<const char16_t*, bool> names[] = {
      {u"code", true}, {u"CODE", true},   {u"Name", true}, {u"工资", true},
      {u"Cod", false}, {u"Codes", false}, {u"x", false}};
  BasicEngine engine;
  engine.SetRecordSet(staff());
  for (const bool set : {true, false}) {
    if (!set) engine.SetRecordSet(nullptr);
    for (const auto& [name, field] : names) {
      SCOPED_TRACE(u8(name));
      EXPECT_EQ(engine.isFieldName(name), set && field);
      EXPECT_EQ(engine.isFieldNameByArr(name), set && field);
    }
  }
  EXPECT_EQ(engine.RecordSet(), nullptr);
  EXPECT_EQ(engine.ErrNum(), 0);
}

TEST(RecordBinding, ReadsAndChangesFieldsByNameOrIndexOnTheCurrentRow) {
  auto rs = staff();
  Harness h;
  h.engine.SetRecordSet(rs);
  EXPECT_EQ(describe(h.engine.GetFieldValue(Value::string(u"name"))), "String:Li");
  EXPECT_EQ(describe(h.engine.GetFieldValue(Value::lng(2))), "Long:100");
  ASSERT_TRUE(h.engine.MoveNext());
  EXPECT_EQ(describe(h.engine.GetFieldValue(Value::string(u"CODE"))), "String:E02");
  ASSERT_TRUE(h.engine.MoveLast());
  EXPECT_TRUE(h.engine.ChangeField(Value::string(u"工资"), Value::lng(333)));
  EXPECT_EQ(rs->cell(2, 2).longValue(), 333);
  EXPECT_EQ(rs->updateCount(), 1u);
  EXPECT_EQ(h.engine.ErrNum(), 0);

  EXPECT_TRUE(h.engine.GetFieldValue(Value::string(u"missing")).isEmpty());
  EXPECT_EQ(h.engine.ErrNum(), 102);
  EXPECT_EQ(h.errMsg(), kNotFound);
  EXPECT_FALSE(h.engine.ChangeField(Value::string(u"bonus"), Value::lng(1)));
  EXPECT_EQ(h.errMsg(), std::string(kNotFound) + "\r\n错误源:BasicEngine/ChangeField.");
  EXPECT_EQ(rs->updateCount(), 1u);
}

TEST(RecordBinding, EveryMemberFailsWithoutARecord) {
  using Member = bool (BasicEngine::*)();
  for (Member m : {&BasicEngine::MoveFirst, &BasicEngine::MoveNext, &BasicEngine::MovePrevious,
                   &BasicEngine::MoveLast, &BasicEngine::BOF, &BasicEngine::Eof}) {
    Harness h;
    EXPECT_FALSE((h.engine.*m)());
    EXPECT_EQ(h.engine.ErrNum(), 102);
    EXPECT_EQ(h.errMsg(), "对象变量或 With 块变量未设置");
  }
  Harness h;
  EXPECT_FALSE(h.engine.ChangeField(Value::string(u"x"), Value::lng(1)));
  EXPECT_EQ(h.engine.ErrNum(), 102);
  EXPECT_EQ(h.errMsg(), "对象变量或 With 块变量未设置\r\n错误源:BasicEngine/ChangeField.");
}

TEST(RecordBinding, AHostFailureCarriesTheHostsDescription) {
  Harness h;
  h.engine.SetRecordSet(std::make_shared<Broken>());
  // Building the name cache failed: the host learns it from ErrNum.
  EXPECT_EQ(h.engine.ErrNum(), 3704);
  h.engine.SetErrNum(0);
  EXPECT_FALSE(h.engine.isFieldName(u"x"));
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_FALSE(h.engine.MoveFirst());
  EXPECT_EQ(h.engine.ErrNum(), 102);
  EXPECT_EQ(h.errMsg(), "对象关闭时，不允许操作。");
}

TEST(RecordBinding, MoveStatementsRunThroughTheRecord) {
  auto rs = staff();
  Harness h;
  h.engine.SetRecordSet(rs);
  h.run("MoveNext\n下移指针 ' again\nMovePrevious");
  EXPECT_EQ(h.engine.ErrNum(), 0);
  EXPECT_EQ(rs->position(), 1);

  h.run("移至底部\nmovenext\nMoveNext");
  EXPECT_EQ(h.engine.ErrNum(), 102);
  EXPECT_EQ(h.errMsg(),
            "BOF 或 EOF 中有一个是“真”，或者当前的记录已被删除，所请求的操作要求一个当前的记录。"
            " : 行号 3");
  EXPECT_TRUE(rs->eof());
}

// The variable table through the engine's members: upper-cased names, table
// order, error 5 for missing names, error 24 / the duplicate box for
// existing ones, and sharing with a child engine.
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
