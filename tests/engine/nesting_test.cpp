// Deep nesting on a thread with a small stack: a script may nest function
// calls and single-line IF tails only so deep that 1 MiB of stack always
// suffices, and beyond that it ends with error 28 instead of crashing.
#include "engine/nesting.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <string>

#include "support.hpp"

namespace korvex::testing {
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
  std::string_view value;  // of A when nested as deep as allowed
  bool bounded = true;
};

// Each kind nested `depth` times around `inner`, assigned to A.
std::u16string script(const Nesting& k, int depth) {
  const bool ifTail = k.open.starts_with(u"If");
  return u"DIM A\r\n" + (ifTail ? repeat(k.open, depth) + std::u16string(k.inner)
                                : u"A = " + repeat(k.open, depth) + std::u16string(k.inner) +
                                      repeat(k.close, depth));
}

const Nesting kKinds[] = {
    {"Hex", u"Hex(", u"1", u")", "String:1"},
    {"Left", u"Left(", u"\"abc\"", u", 2)", "String:ab"},
    {"Abs", u"Abs(", u"-1", u")", "Double:1"},
    {"IfTail", u"If 1 Then ", u"A = 7", u"", "Double:7"},
    {"IfCondition", u"If Abs(Abs(1)) Then ", u"A = 7", u"", "Double:7"},
    {"Parentheses", u"(", u"2", u")", "Double:2", false},  // alone they nest without bound
};

TEST(Nesting, DeepestAllowedRunsOnOneMebibyteAndDeeperEndsWithError28) {
  for (const Nesting& k : kKinds) {
    SCOPED_TRACE(k.name);
    // A 30,000-character line of it is far too deep.
    const int tooDeep = static_cast<int>(30000 / (k.open.size() + k.close.size()));
    runOnSmallStack([&] {
      Harness deep;
      deep.engine.SetCodeBlock(script(k, tooDeep));
      deep.engine.Execute();
      if (k.bounded) {
        EXPECT_EQ(deep.engine.ErrNum(), 28);
        EXPECT_TRUE(deep.errMsg().starts_with("堆栈空间溢出")) << deep.errMsg();
      } else {
        EXPECT_EQ(deep.outcome(), "A=" + std::string(k.value));
      }
      // The bound is no leak: the same thread nests as deep as allowed again.
      Harness again;
      again.engine.SetCodeBlock(script(k, NestingLevel::kDeepest - 3));
      again.engine.Execute();
      EXPECT_EQ(again.outcome(), "A=" + std::string(k.value));
    });
  }
}

}  // namespace
}  // namespace korvex::testing
