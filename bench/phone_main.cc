// obolo-bench-phone: the kit on a mobile link, in round trips. The kit reaches
// the sandbox through delaying relays (bench/delay_relay.h); every figure is
// reported beside the least number of round trips the protocol allows.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/bench_environment.h"
#include "bench/phone_link.h"
#include "platform/main_loop.h"

int main(int argc, char** argv) {
  // This thread is the kit's main thread.
  obolo::MainLoop::main();

  // "--first-card=MS": a child run of figure 11d, which measures the first
  // card of this new process and prints it.
  constexpr std::string_view kFirstCard = "--first-card=";
  if (argc == 2 && std::string_view(argv[1]).starts_with(kFirstCard)) {
    std::string error;
    if (!obolo::bench::BenchEnvironment::SetUp(error, /*through_relays=*/true)) return 1;
    const int status = obolo::bench::MeasureFirstCardOfProcess(std::atoi(argv[1] + kFirstCard.size()));
    obolo::bench::BenchEnvironment::TearDown();
    return status;
  }

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
