// The Stack: LIFO with a 1-based list view, errors reported on its engine.
#include "engine/stack.hpp"

#include <gtest/gtest.h>

#include "support.hpp"

namespace korvex::testing {
namespace {

TEST(Stack, PopsInReverseOrderPeeksAndReadsAsAList) {
  BasicEngine engine;
  Stack st(&engine);
  st.Push(Value::string(u"bottom"));
  st.Push(Value::lng(2));
  st.Push(Value::lng(3));
  EXPECT_EQ(describe(st.GetLine(1)), "String:bottom");
  EXPECT_EQ(describe(st.GetLine(3)), "Long:3");
  EXPECT_EQ(describe(st.GetPopValue()), "Long:3");
  EXPECT_EQ(st.StackSize(), 3);
  EXPECT_EQ(describe(st.Pop()), "Long:3");
  EXPECT_EQ(describe(st.Pop()), "Long:2");
  EXPECT_EQ(describe(st.Pop()), "String:bottom");
  EXPECT_EQ(engine.ErrNum(), 0);
  // Emptied by pops, the stack reports as one never filled.
  EXPECT_TRUE(st.Pop().isEmpty());
  EXPECT_EQ(engine.ErrNum(), 18);
  EXPECT_EQ(st.StackSize(), 0);
}

TEST(Stack, MisuseIsReportedOnTheEngineAndChangesNothing) {
  struct Case {
    int items;
    std::int32_t number;
    const char* text;
    Value (*op)(Stack&);
  };
  const Case cases[] = {
      {0, 18, "表达式或语句结构错:\r\n对空堆栈执行'Pop'方法", [](Stack& s) { return s.Pop(); }},
      {0, 20, "对空堆栈执行'GetPopValue'方法", [](Stack& s) { return s.GetPopValue(); }},
      {0, 19, "对空堆栈执行'GetLine'方法", [](Stack& s) { return s.GetLine(1); }},
      {2, 21, "堆栈索引超出范围:'GetLine'方法", [](Stack& s) { return s.GetLine(3); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    BasicEngine engine;
    Stack st(&engine);
    for (int i = 0; i < c.items; ++i) st.Push(Value::lng(i));
    EXPECT_TRUE(c.op(st).isEmpty());
    EXPECT_EQ(engine.ErrNum(), c.number);
    EXPECT_EQ(u8(engine.ErrMsg()), c.text);
    EXPECT_EQ(st.StackSize(), c.items);
  }
}

// Faults of the platform are thrown, not reported: an index below 1 and the
// item after 32,767.
TEST(Stack, IndexBelowOneAndTheItemAfter32767AreThrownFaults) {
  BasicEngine engine;
  Stack st(&engine);
  st.Push(Value::lng(1));
  EXPECT_EQ(errorOf([&] { st.GetLine(0); }), vb::kSubscript);
  EXPECT_EQ(engine.ErrNum(), 0);

  for (int i = 1; i < 32767; ++i) st.Push(Value{});
  EXPECT_EQ(st.StackSize(), 32767);
  EXPECT_EQ(errorOf([&] { st.Push(Value{}); }), vb::kOverflow);
  EXPECT_EQ(st.StackSize(), 32767);
}

}  // namespace
}  // namespace korvex::testing
