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
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

extern char** environ;

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
  std::vector<char*> argv;
  std::string launcher = OBOLO_BENCH_PEAK_RSS_PROGRAM;
  argv.push_back(launcher.data());
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  int out[2];
  if (pipe(out) != 0) return run;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  posix_spawn_file_actions_addclose(&actions, out[1]);

  const auto start = std::chrono::steady_clock::now();
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  std::string printed;
  if (spawned == 0) {
    char buffer[64];
    ssize_t count = 0;
    while ((count = read(out[0], buffer, sizeof buffer)) > 0) printed.append(buffer, static_cast<size_t>(count));
  }
  close(out[0]);
  if (spawned != 0) return run;

  int status = 0;
  if (waitpid(pid, &status, 0) != pid) return run;
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0 && !printed.empty();
  if (run.ok) run.peak_rss_kib = std::strtol(printed.c_str(), nullptr, 10);
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
