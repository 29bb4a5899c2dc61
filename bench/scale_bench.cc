// Figure 14: how cost grows with the number of paywalls. 1, 10, 100 and 1000
// paywalls are loaded at once on one host screen against the bench's sandbox,
// by obolo-bench-scale-host in a process of its own, so its memory is the
// kit's alone (the sandbox runs here). Reported: the time from the first
// Obolo to every paywall's decision (its card shown) and per paywall; the
// child's peak resident memory once every logo has landed, and what each
// paywall adds over the same program with none; the most threads it ran.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_environment.h"

extern char** environ;

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
  const std::string program = OBOLO_BENCH_SCALE_HOST_PROGRAM;
  const std::string count = std::to_string(paywalls);
  const std::string logo = BenchEnvironment::logoUrl();
  std::vector<char*> argv = {const_cast<char*>(program.c_str()), const_cast<char*>(count.c_str()),
                             const_cast<char*>(logo.c_str()), nullptr};
  int out[2];
  if (pipe(out) != 0) return run;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  posix_spawn_file_actions_addclose(&actions, out[1]);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  std::string printed;
  if (spawned == 0) {
    char buffer[256];
    ssize_t got = 0;
    while ((got = read(out[0], buffer, sizeof buffer)) > 0) printed.append(buffer, static_cast<size_t>(got));
  }
  close(out[0]);
  if (spawned != 0) return run;
  int status = 0;
  if (waitpid(pid, &status, 0) != pid) return run;
  run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0 &&
           std::sscanf(printed.c_str(), "%lf %ld %ld", &run.seconds, &run.peak_kib, &run.threads) == 3;
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
