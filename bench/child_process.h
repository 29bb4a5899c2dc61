// Runs another program to its end and reads what it printed: the benchmarks
// that need a process of their own (peak memory, scale, a first card) use it.

#ifndef OBOLO_BENCH_CHILD_PROCESS_H_
#define OBOLO_BENCH_CHILD_PROCESS_H_

#include <optional>
#include <string>
#include <vector>

namespace obolo::bench {

// Runs `argv` (the program's path first) with this process's environment and
// returns its standard output once it has ended; nothing when it could not be
// started or did not exit with 0.
std::optional<std::string> RunToEnd(const std::vector<std::string>& argv);

}  // namespace obolo::bench

#endif  // OBOLO_BENCH_CHILD_PROCESS_H_
