// Figure 5: peak resident memory of a whole demo purchase. obolo-demo (a new
// reader: card, login, card, pay, 5-second splash, wallet, logout, card back)
// runs as a child process, and its peak RSS is read from wait4()'s resource
// usage, which covers that child alone. It is started through
// obolo-bench-peak-rss (bench/peak_rss_launcher.c), since a direct child of
// this program would inherit this program's peak as its floor.
//
// References: obolo-bench-idle (the same libraries and set-up with the
// sandbox started and stopped, but no reader) and obolo-demo --help (the
// program loaded, doing nothing).

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/child_process.h"

namespace obolo::bench {
namespace {

struct ChildRun {
  bool ok = false;
  long peak_rss_kib = 0;
  double seconds = 0;
};

// Runs the program through obolo-bench-peak-rss, which prints its peak RSS;
// ok when the program exits with 0.
ChildRun RunChild(const std::vector<std::string>& arguments) {
  ChildRun run;
  std::vector<std::string> argv{OBOLO_BENCH_PEAK_RSS_PROGRAM};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  const auto start = std::chrono::steady_clock::now();
  const auto printed = RunToEnd(argv);
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.ok = printed.has_value() && !printed->empty();
  if (run.ok) run.peak_rss_kib = std::strtol(printed->c_str(), nullptr, 10);
  return run;
}

void MeasureChild(benchmark::State& state, const std::vector<std::string>& arguments) {
  ChildRun run;
  for (auto _ : state) {
    run = RunChild(arguments);
    if (!run.ok) {
      state.SkipWithError(("the program did not finish cleanly: " + arguments.front()).c_str());
      return;
    }
    state.SetIterationTime(run.seconds);
  }
  state.counters["peak_rss_kib"] = static_cast<double>(run.peak_rss_kib);
}

void BM_PeakRss_DemoPurchase(benchmark::State& state) {
  MeasureChild(state, {OBOLO_DEMO_PROGRAM, "--scenario", "new-reader"});
}
BENCHMARK(BM_PeakRss_DemoPurchase)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_PeakRss_IdleProgram(benchmark::State& state) { MeasureChild(state, {OBOLO_BENCH_IDLE_PROGRAM}); }
BENCHMARK(BM_PeakRss_IdleProgram)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_PeakRss_DemoHelp(benchmark::State& state) { MeasureChild(state, {OBOLO_DEMO_PROGRAM, "--help"}); }
BENCHMARK(BM_PeakRss_DemoHelp)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace obolo::bench
