// Throughput of the run loop: a 100,000-iteration DO WHILE loop whose body
// does arithmetic, a string operation and a block IF, reporting lines run per
// second; and the workloads of bench/*.bas (the ones compare.sh sets against
// Lua), each run by an embedded engine, for profiling.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <iterator>
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

// One bench/ script, read once: a fresh engine per run, as a host runs a
// formula, SetCodeBlock and Execute.
void BM_Script(benchmark::State& state, const char* file) {
  std::ifstream in(std::string(KORVEX_BENCH_DIR) + "/" + file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  if (bytes.empty()) {
    state.SkipWithError("the benchmark script cannot be read");
    return;
  }
  const std::u16string script = korvex::fromUtf8(bytes);
  for (auto _ : state) {
    korvex::BasicEngine engine;
    engine.SetCodeBlock(script);
    engine.Execute();
    if (engine.ErrNum() != 0) {
      state.SkipWithError("the benchmark script failed");
      break;
    }
    benchmark::DoNotOptimize(engine.GetVarValue(u"I"));
  }
}
BENCHMARK_CAPTURE(BM_Script, loop, "loop.bas")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Script, strings, "strings.bas")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Script, formula, "formula.bas")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
