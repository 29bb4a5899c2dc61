// obolo-bench-phone: the kit on a mobile link, in round trips. The kit reaches
// the sandbox through delaying relays (bench/delay_relay.h); every figure is
// reported beside the least number of round trips the protocol allows.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "bench/bench_environment.h"
#include "platform/main_loop.h"

int main(int argc, char** argv) {
  // This thread is the kit's main thread.
  obolo::MainLoop::main();

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  std::string error;
  if (!obolo::bench::BenchEnvironment::SetUp(error, /*through_relays=*/true)) {
    std::fprintf(stderr, "obolo-bench-phone: %s\n", error.c_str());
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  obolo::bench::BenchEnvironment::TearDown();
  return 0;
}
