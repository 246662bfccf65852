// The Stack: LIFO with a 1-based list view, errors reported on its engine.
#include "engine/stack.hpp"

#include <gtest/gtest.h>

#include "korvex/engine.hpp"
#include "values/runtime_error.hpp"

namespace korvex {
namespace {

std::int32_t intOf(const Value& v) { return v.longValue(); }

TEST(Stack, PopsInReverseOrderPeeksAndReadsAsAList) {
  BasicEngine engine;
  Stack st(&engine);
  st.Push(Value::string(u"bottom"));
  st.Push(Value::lng(2));
  st.Push(Value::lng(3));
  EXPECT_EQ(st.GetLine(1).stringValue(), u"bottom");
  EXPECT_EQ(intOf(st.GetLine(3)), 3);
  EXPECT_EQ(intOf(st.GetPopValue()), 3);
  EXPECT_EQ(st.StackSize(), 3);
  EXPECT_EQ(intOf(st.Pop()), 3);
  EXPECT_EQ(intOf(st.Pop()), 2);
  EXPECT_EQ(st.Pop().stringValue(), u"bottom");
  EXPECT_EQ(st.StackSize(), 0);
  EXPECT_EQ(engine.ErrNum(), 0);
}

struct MisuseCase {
  const char* name;
  int itemsBefore;
  std::int32_t number;
  std::u16string_view text;
  Value (*op)(Stack&);
};

TEST(Stack, MisuseIsReportedOnTheEngineAndChangesNothing) {
  const MisuseCase cases[] = {
      {"pop empty", 0, 18, u"表达式或语句结构错:\r\n对空堆栈执行'Pop'方法",
       [](Stack& s) { return s.Pop(); }},
      {"pop after all popped", -2, 18, u"表达式或语句结构错:\r\n对空堆栈执行'Pop'方法",
       [](Stack& s) { return s.Pop(); }},
      {"peek empty", 0, 20, u"对空堆栈执行'GetPopValue'方法",
       [](Stack& s) { return s.GetPopValue(); }},
      {"line of empty", 0, 19, u"对空堆栈执行'GetLine'方法", [](Stack& s) { return s.GetLine(1); }},
      {"line past the top", 2, 21, u"堆栈索引超出范围:'GetLine'方法",
       [](Stack& s) { return s.GetLine(3); }},
  };
  for (const MisuseCase& c : cases) {
    BasicEngine engine;
    Stack st(&engine);
    const int pushes = c.itemsBefore < 0 ? -c.itemsBefore : c.itemsBefore;
    for (int i = 0; i < pushes; ++i) st.Push(Value::lng(i));
    if (c.itemsBefore < 0) {
      for (int i = 0; i < pushes; ++i) st.Pop();
    }
    const std::int16_t sizeBefore = st.StackSize();
    const Value v = c.op(st);
    EXPECT_TRUE(v.isEmpty()) << c.name;
    EXPECT_EQ(engine.ErrNum(), c.number) << c.name;
    EXPECT_EQ(engine.ErrMsg(), c.text) << c.name;
    EXPECT_EQ(st.StackSize(), sizeBefore) << c.name;
  }
}

TEST(Stack, IndexBelowOneIsASubscriptFault) {
  BasicEngine engine;
  Stack st(&engine);
  st.Push(Value::lng(1));
  try {
    st.GetLine(0);
    FAIL() << "expected a subscript fault";
  } catch (const vb::RuntimeError& e) {
    EXPECT_EQ(e.number(), vb::kSubscript);
  }
  EXPECT_EQ(engine.ErrNum(), 0);
}

TEST(Stack, TheItemAfter32767Overflows) {
  Stack st;
  for (int i = 0; i < 32767; ++i) st.Push(Value{});
  EXPECT_EQ(st.StackSize(), 32767);
  try {
    st.Push(Value{});
    FAIL() << "expected an overflow";
  } catch (const vb::RuntimeError& e) {
    EXPECT_EQ(e.number(), vb::kOverflow);
  }
  EXPECT_EQ(st.StackSize(), 32767);
}

TEST(Stack, EngineFlagMembersWorkOnTheStatementStack) {
  BasicEngine engine;
  engine.PushStmtFlag(Value::string(u"If"));
  engine.PushStmtFlag(Value::string(u"Do While"));
  EXPECT_EQ(engine.StmtFlagCount(), 2);
  EXPECT_EQ(engine.GetpopValueStmtFlag().stringValue(), u"Do While");
  EXPECT_EQ(engine.PopStmtFlag().stringValue(), u"Do While");
  EXPECT_EQ(engine.PopStmtFlag().stringValue(), u"If");
  EXPECT_TRUE(engine.PopStmtFlag().isEmpty());
  EXPECT_EQ(engine.ErrNum(), 18);
}

}  // namespace
}  // namespace korvex
