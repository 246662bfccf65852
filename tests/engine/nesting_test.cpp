// Deep nesting on a thread with a small stack: a script may nest function
// calls and single-line IF tails only so deep that 1 MiB of stack always
// suffices, and beyond that it ends with error 28 instead of crashing.
#include "engine/nesting.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <string>

#include "korvex/engine.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

void runOnSmallStack(const std::function<void()>& body) {
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, 1 << 20), 0);
  pthread_t thread;
  auto call = [](void* f) -> void* {
    (*static_cast<const std::function<void()>*>(f))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, call, const_cast<std::function<void()>*>(&body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
}

std::u16string repeat(std::u16string_view s, int n) {
  std::u16string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

struct Nesting {
  const char* name;
  std::u16string_view open, inner, close;
  std::u16string_view value;  // of A when nested as deep as allowed
};

// Each kind nested `depth` times around `inner`, assigned to A.
std::u16string script(const Nesting& k, int depth) {
  const bool ifTail = k.open.starts_with(u"If");
  return u"DIM A\r\n" + (ifTail ? repeat(k.open, depth) + std::u16string(k.inner)
                                : u"A = " + repeat(k.open, depth) + std::u16string(k.inner) +
                                      repeat(k.close, depth));
}

const Nesting kKinds[] = {
    {"Hex", u"Hex(", u"1", u")", u"1"},
    {"Left", u"Left(", u"\"abc\"", u", 2)", u"ab"},
    {"Abs", u"Abs(", u"-1", u")", u"1"},
    {"IfTail", u"If 1 Then ", u"A = 7", u"", u"7"},
    {"IfCondition", u"If Abs(Abs(1)) Then ", u"A = 7", u"", u"7"},
};

TEST(Nesting, DeepestAllowedRunsOnOneMebibyteAndDeeperEndsWithError28) {
  for (const Nesting& k : kKinds) {
    // A 32 KB line of it is far too deep.
    const int tooDeep = static_cast<int>(30000 / (k.open.size() + k.close.size()));
    runOnSmallStack([&] {
      BasicEngine engine;
      engine.SetCodeBlock(script(k, tooDeep));
      engine.Execute();
      EXPECT_EQ(engine.ErrNum(), 28) << k.name;
      EXPECT_TRUE(engine.ErrMsg().starts_with(u"堆栈空间溢出")) << k.name;

      // The bound is no leak: the same thread nests as deep as allowed again.
      BasicEngine again;
      again.SetCodeBlock(script(k, NestingLevel::kDeepest - 3));
      again.Execute();
      EXPECT_EQ(again.ErrNum(), 0) << k.name << ": " << toUtf8(again.ErrMsg());
      EXPECT_EQ(vb::toString(again.GetVarValue(u"A"), again.Locale()), k.value) << k.name;
    });
  }
}

TEST(Nesting, ParenthesesAloneNestWithoutBound) {
  runOnSmallStack([] {
    BasicEngine engine;
    engine.SetCodeBlock(u"DIM A\r\nA = " + repeat(u"(", 10000) + u"2" + repeat(u")", 10000));
    engine.Execute();
    EXPECT_EQ(engine.ErrNum(), 0);
    EXPECT_EQ(engine.GetVarValue(u"A").doubleValue(), 2);
  });
}

}  // namespace
}  // namespace korvex
