// CPU time of the whole process (every thread: the client's, the HTTP
// session's and the in-process sandbox's), for figures whose wall time on a
// shared machine depends on when the scheduler runs each thread.

#ifndef OBOLO_BENCH_PROCESS_CPU_H_
#define OBOLO_BENCH_PROCESS_CPU_H_

#include <benchmark/benchmark.h>
#include <time.h>

namespace obolo::bench {

inline double ProcessCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Adds "process_cpu_us": process CPU time per iteration since `start`, in
// microseconds.
inline void ReportProcessCpu(benchmark::State& state, double start) {
  if (state.iterations() == 0) return;
  state.counters["process_cpu_us"] =
      (ProcessCpuSeconds() - start) * 1e6 / static_cast<double>(state.iterations());
}

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_PROCESS_CPU_H_
