// Throughput of the run loop: a 100,000-iteration DO WHILE loop whose body
// does arithmetic, a string operation and a block IF. Reports lines run per
// second.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "korvex/engine.hpp"

namespace {

constexpr std::u16string_view kLoopScript =
    u"DIM i, t, s, n\r\n"
    u"i = 0\r\n"
    u"n = 0\r\n"
    u"Do While i < 100000\r\n"
    u"  i = i + 1\r\n"
    u"  t = i * 3 + 7 / 2\r\n"
    u"  s = \"No.\" & i\r\n"
    u"  If LEN(s) > 5 Then\r\n"
    u"    n = n + 1\r\n"
    u"  Else\r\n"
    u"    n = n - 1\r\n"
    u"  End If\r\n"
    u"Loop\r\n";

void BM_RunLoop(benchmark::State& state) {
  std::int64_t lines = 0;
  for (auto _ : state) {
    korvex::BasicEngine engine;
    engine.SetCodeBlock(std::u16string(kLoopScript));
    engine.SetLineHook([&lines](std::int16_t) {
      ++lines;
      return true;
    });
    engine.Execute();
    if (engine.ErrNum() != 0) {
      state.SkipWithError("the benchmark script failed");
      break;
    }
    benchmark::DoNotOptimize(engine.GetVarValue(u"N"));
  }
  state.counters["lines"] =
      benchmark::Counter(static_cast<double>(lines), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RunLoop)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
