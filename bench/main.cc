// obolo-bench: the kit's speed and memory, each figure next to a reference
// measured in the same run (see bench/RESULTS.md and scripts/bench.sh).

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "bench/bench_environment.h"
#include "platform/main_loop.h"

int main(int argc, char** argv) {
  // This thread is the kit's main thread: the time-to-card benchmark runs the
  // main loop here.
  obolo::MainLoop::main();

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  std::string error;
  if (!obolo::bench::BenchEnvironment::SetUp(error)) {
    std::fprintf(stderr, "obolo-bench: %s\n", error.c_str());
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  obolo::bench::BenchEnvironment::TearDown();
  return 0;
}
