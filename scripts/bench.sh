#!/usr/bin/env bash
# Builds obolo-bench (Release) and runs it once: every figure with its
# reference, repeated, then a table of medians and ratios side by side.
# Installs what it needs first.
#
#   OBOLO_BENCH_REPETITIONS  repetitions of each benchmark (default 9)
#   OBOLO_BUILD_DIR          build directory (default build-bench)
#   OBOLO_BENCH_JOBS         parallel build jobs (default 2)
#   --markdown               (first argument) prints the table in Markdown
# Other arguments go to obolo-bench (for example --benchmark_filter=Decode).
set -euo pipefail
cd "$(dirname "$0")/.."

format=()
if [[ "${1:-}" == "--markdown" ]]; then
  format=(--markdown)
  shift
fi

OBOLO_SETUP_EXTRA="python3 ${OBOLO_SETUP_EXTRA:-}" scripts/setup.sh >&2
build=${OBOLO_BUILD_DIR:-build-bench}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DOBOLO_BUILD_BENCH=ON -DOBOLO_BUILD_TESTS=OFF \
  ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "${OBOLO_BENCH_JOBS:-2}" --target obolo-bench >&2

repetitions=${OBOLO_BENCH_REPETITIONS:-9}
results="$build/bench-results.json"
echo "Running obolo-bench, ${repetitions} repetitions of each benchmark in random order (a few minutes)..." >&2
"$build/bench/obolo-bench" \
  --benchmark_repetitions="$repetitions" \
  --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true \
  --benchmark_format=json \
  "$@" >"$results"

compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
echo
echo "Machine: $(lscpu | sed -n 's/^Model name: *//p' | head -n1), $(nproc) cores; kernel $(uname -r);" \
  "$("${compiler:-c++}" --version | head -n1)"
echo "Date: $(date -u '+%Y-%m-%d %H:%M UTC'); results: $results"
echo
python3 bench/bench_table.py "$results" "${format[@]}"
