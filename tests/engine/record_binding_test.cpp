// The current record through the engine: cached and live field-name tests,
// reading and changing fields, the moves and BOF/EOF, and how failures of
// the host object surface (error 102 with the host's description).
#include <gtest/gtest.h>

#include <memory>

#include "engine/engine_services.hpp"
#include "korvex/engine.hpp"
#include "korvex/memory_recordset.hpp"

namespace korvex {
namespace {

std::shared_ptr<MemoryRecordset> staff() {
  return MemoryRecordset::create(
      {u"Code", u"Name", u"工资"},
      {{Value::string(u"E01"), Value::string(u"Li"), Value::lng(100)},
       {Value::string(u"E02"), Value::string(u"Wang"), Value::lng(200)},
       {Value::string(u"E03"), Value::string(u"Zhao"), Value::lng(300)}});
}

constexpr std::u16string_view kNoCurrent =
    u"BOF 或 EOF 中有一个是“真”，或者当前的记录已被删除，所请求的操作要求一个当前的记录。";

// A record set whose every member fails.
class Broken : public HostObject {
 public:
  DispatchResult getProperty(std::u16string_view, std::span<const Value>) override {
    return DispatchResult::failure(3704, u"对象关闭时，不允许操作。");
  }
  DispatchResult setProperty(std::u16string_view, std::span<const Value>, const Value&) override {
    return DispatchResult::failure(3704, u"对象关闭时，不允许操作。");
  }
  DispatchResult callMethod(std::u16string_view, std::span<const Value>) override {
    return DispatchResult::failure(3704, u"对象关闭时，不允许操作。");
  }
};

TEST(RecordBinding, FieldNamesMatchCaseInsensitivelyLiveAndCached) {
  BasicEngine engine;
  engine.SetRecordSet(staff());
  for (const char16_t* name : {u"code", u"CODE", u"Name", u"工资"}) {
    EXPECT_TRUE(engine.isFieldName(name)) << toUtf8(name);
    EXPECT_TRUE(engine.isFieldNameByArr(name)) << toUtf8(name);
  }
  for (const char16_t* name : {u"Cod", u"Codes", u"x"}) {
    EXPECT_FALSE(engine.isFieldName(name)) << toUtf8(name);
    EXPECT_FALSE(engine.isFieldNameByArr(name)) << toUtf8(name);
  }
  EXPECT_EQ(engine.ErrNum(), 0);
}

TEST(RecordBinding, NoRecordMeansNoFieldsAndNoError) {
  BasicEngine engine;
  engine.SetRecordSet(staff());
  engine.SetRecordSet(nullptr);
  EXPECT_FALSE(engine.isFieldName(u"Code"));
  EXPECT_FALSE(engine.isFieldNameByArr(u"Code"));
  EXPECT_EQ(engine.RecordSet(), nullptr);
  EXPECT_EQ(engine.ErrNum(), 0);
}

TEST(RecordBinding, ReadsFieldsByNameOrIndexOnTheCurrentRow) {
  BasicEngine engine;
  engine.SetRecordSet(staff());
  EXPECT_EQ(engine.GetFieldValue(Value::string(u"name")).stringValue(), u"Li");
  EXPECT_EQ(engine.GetFieldValue(Value::lng(2)).longValue(), 100);
  ASSERT_TRUE(engine.MoveNext());
  EXPECT_EQ(engine.GetFieldValue(Value::string(u"CODE")).stringValue(), u"E02");
  EXPECT_EQ(engine.ErrNum(), 0);

  EXPECT_TRUE(engine.GetFieldValue(Value::string(u"missing")).isEmpty());
  EXPECT_EQ(engine.ErrNum(), 102);
  EXPECT_EQ(engine.ErrMsg(), u"在对应所需名称或序数的集合中未找到项目。");
}

TEST(RecordBinding, ChangeFieldEditsAssignsAndUpdates) {
  auto rs = staff();
  BasicEngine engine;
  engine.SetRecordSet(rs);
  ASSERT_TRUE(engine.MoveLast());
  EXPECT_TRUE(engine.ChangeField(Value::string(u"工资"), Value::lng(333)));
  EXPECT_EQ(rs->cell(2, 2).longValue(), 333);
  EXPECT_EQ(rs->updateCount(), 1u);
  EXPECT_EQ(engine.ErrNum(), 0);

  EXPECT_FALSE(engine.ChangeField(Value::string(u"bonus"), Value::lng(1)));
  EXPECT_EQ(engine.ErrNum(), 102);
  EXPECT_EQ(engine.ErrMsg(),
            u"在对应所需名称或序数的集合中未找到项目。\r\n错误源:BasicEngine/ChangeField.");
  EXPECT_EQ(rs->updateCount(), 1u);
}

TEST(RecordBinding, ChangeFieldWithoutARecordFails) {
  BasicEngine engine;
  EXPECT_FALSE(engine.ChangeField(Value::string(u"x"), Value::lng(1)));
  EXPECT_EQ(engine.ErrNum(), 102);
  EXPECT_EQ(engine.ErrMsg(), u"对象变量或 With 块变量未设置\r\n错误源:BasicEngine/ChangeField.");
}

TEST(RecordBinding, EveryMemberFailsWithoutARecord) {
  using Member = bool (BasicEngine::*)();
  const Member members[] = {&BasicEngine::MoveFirst,    &BasicEngine::MoveNext,
                            &BasicEngine::MovePrevious, &BasicEngine::MoveLast,
                            &BasicEngine::BOF,          &BasicEngine::Eof};
  for (Member m : members) {
    BasicEngine engine;
    EXPECT_FALSE((engine.*m)());
    EXPECT_EQ(engine.ErrNum(), 102);
    EXPECT_EQ(engine.ErrMsg(), u"对象变量或 With 块变量未设置");
  }
}

TEST(RecordBinding, AHostFailureCarriesTheHostsDescription) {
  BasicEngine engine;
  engine.SetRecordSet(std::make_shared<Broken>());
  // Building the name cache failed: the host learns it from ErrNum.
  EXPECT_EQ(engine.ErrNum(), 3704);
  engine.SetErrNum(0);
  EXPECT_FALSE(engine.isFieldName(u"x"));
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_FALSE(engine.MoveFirst());
  EXPECT_EQ(engine.ErrNum(), 102);
  EXPECT_EQ(engine.ErrMsg(), u"对象关闭时，不允许操作。");
}

TEST(RecordBinding, MoveStatementsRunThroughTheRecord) {
  auto rs = staff();
  BasicEngine engine;
  engine.SetRecordSet(rs);
  engine.SetCodeBlock(u"MoveNext\r\n下移指针 ' again\r\nMovePrevious");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(rs->position(), 1);

  engine.SetCodeBlock(u"移至底部\r\nmovenext\r\nMoveNext");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 102);
  EXPECT_EQ(engine.ErrMsg(), std::u16string(kNoCurrent) + u" : 行号 3");
  EXPECT_TRUE(rs->eof());
}

TEST(RecordBinding, AChildEngineSeesTheSameRecord) {
  auto rs = staff();
  BasicEngine parent;
  parent.SetRecordSet(rs);
  BasicEngine child;
  services::ShareStateOf(child, parent);
  EXPECT_EQ(child.RecordSet(), rs);
  EXPECT_TRUE(child.isFieldNameByArr(u"name"));
  EXPECT_TRUE(child.MoveNext());
  EXPECT_EQ(parent.GetFieldValue(Value::string(u"Code")).stringValue(), u"E02");
}

}  // namespace
}  // namespace korvex
