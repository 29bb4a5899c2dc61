// Figure 14: how cost grows with the number of paywalls. 1, 10, 100 and 1000
// paywalls are loaded at once on one host screen against the bench's sandbox,
// by obolo-bench-scale-host in a process of its own, so its memory is the
// kit's alone (the sandbox runs here). Reported: the time from the first
// Obolo to every paywall's decision (its card shown) and per paywall; the
// child's peak resident memory once every logo has landed, and what each
// paywall adds over the same program with none; the most threads it ran.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_environment.h"
#include "bench/child_process.h"

namespace obolo::bench {
namespace {

struct HostRun {
  bool ok = false;
  double seconds = 0;
  long peak_kib = 0;
  long threads = 0;
};

HostRun RunHost(int paywalls) {
  HostRun run;
  const auto printed =
      RunToEnd({OBOLO_BENCH_SCALE_HOST_PROGRAM, std::to_string(paywalls), BenchEnvironment::logoUrl()});
  run.ok = printed && std::sscanf(printed->c_str(), "%lf %ld %ld", &run.seconds, &run.peak_kib, &run.threads) == 3;
  return run;
}

void BM_Scale_Paywalls(benchmark::State& state) {
  const int paywalls = static_cast<int>(state.range(0));
  const HostRun alone = RunHost(0);
  if (!alone.ok) {
    state.SkipWithError("the scale host did not run");
    return;
  }
  HostRun run;
  for (auto _ : state) {
    run = RunHost(paywalls);
    if (!run.ok) {
      state.SkipWithError("the paywalls did not all decide");
      return;
    }
    state.SetIterationTime(run.seconds);
  }
  state.counters["per_paywall_us"] = run.seconds * 1e6 / paywalls;
  state.counters["peak_rss_kib"] = static_cast<double>(run.peak_kib);
  state.counters["alone_rss_kib"] = static_cast<double>(alone.peak_kib);
  state.counters["added_kib_per_paywall"] = static_cast<double>(run.peak_kib - alone.peak_kib) / paywalls;
  state.counters["threads"] = static_cast<double>(run.threads);
  state.counters["alone_threads"] = static_cast<double>(alone.threads);
}
BENCHMARK(BM_Scale_Paywalls)
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Arg(1000)
    ->Iterations(1)
    ->Repetitions(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace obolo::bench
