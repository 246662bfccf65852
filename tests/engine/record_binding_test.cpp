// The current record through the engine: cached and live field-name tests,
// reading and changing fields, the moves and BOF/EOF, and how failures of
// the host object surface (error 102 with the host's description).
#include <gtest/gtest.h>

#include <memory>

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

}  // namespace
}  // namespace korvex::testing
