// The run loop driving real statements: stopping a script that never ends.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

TEST(RunWithStatements, AHookCanLimitAnEndlessLoop) {
  BasicEngine engine;
  int lines = 0;
  engine.SetLineHook([&](std::int16_t) { return ++lines < 1000; });
  engine.SetCodeBlock(u"Dim n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop");
  engine.Execute();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(lines, 1000);
  EXPECT_GT(vb::toDouble(engine.GetVarValue(u"n"), engine.Locale()), 300);
}

TEST(RunWithStatements, RequestStopFromAnotherThreadEndsAnEndlessLoop) {
  auto ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;
  engine.SetUserInterface(ui);
  std::atomic<int> lines{0};
  engine.SetLineHook([&](std::int16_t) {
    ++lines;
    return true;
  });
  engine.SetCodeBlock(u"Dim n\r\nn = 0\r\nDo While 1\r\nn = n + 1\r\nLoop");
  std::atomic<bool> finished{false};
  std::thread stopper([&] {
    while (lines.load() < 500 && !finished.load()) std::this_thread::yield();
    engine.RequestStop();
  });
  engine.Execute();
  finished.store(true);  // a run that failed early must not leave the thread spinning
  stopper.join();
  EXPECT_EQ(engine.ErrNum(), 0);
  EXPECT_EQ(ui->messages(), (std::vector<std::u16string>{u"确信终止程序吗?"}));
  EXPECT_GE(lines.load(), 500);
}

}  // namespace
}  // namespace korvex
