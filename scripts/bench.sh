#!/usr/bin/env bash
# Builds obolo-bench, obolo-bench-phone and obolo-bench-trust-store (Release)
# and runs them once: every figure with its reference or floor, repeated, then
# tables of medians, ratios and round trips side by side. Installs what it
# needs first.
#
#   OBOLO_BENCH_REPETITIONS        repetitions of each loopback benchmark (default 9)
#   OBOLO_BENCH_PHONE_REPETITIONS  repetitions of each mobile-link benchmark (default 3)
#   OBOLO_BUILD_DIR                build directory (default build-bench)
#   OBOLO_BENCH_JOBS               parallel build jobs (default 2)
#   --markdown                     (first argument) prints the tables in Markdown
# Other arguments go to all three programs (for example --benchmark_filter=Decode).
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
cmake --build "$build" -j "${OBOLO_BENCH_JOBS:-2}" --target obolo-bench obolo-bench-phone obolo-bench-trust-store >&2

# Benchmarks with a repetition count of their own (the slow ones) keep it.
run() {
  local program=$1 repetitions=$2 results=$3
  shift 3
  "$build/bench/$program" \
    --benchmark_repetitions="$repetitions" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_report_aggregates_only=true \
    --benchmark_format=json \
    "$@" >"$results"
}
results="$build/bench-results.json"
phone_results="$build/bench-phone-results.json"
trust_results="$build/bench-trust-store-results.json"
echo "Running obolo-bench, ${OBOLO_BENCH_REPETITIONS:-9} repetitions of each benchmark in random order..." >&2
run obolo-bench "${OBOLO_BENCH_REPETITIONS:-9}" "$results" "$@"
echo "Running obolo-bench-phone (a mobile link through delaying relays)..." >&2
run obolo-bench-phone "${OBOLO_BENCH_PHONE_REPETITIONS:-3}" "$phone_results" "$@"
echo "Running obolo-bench-trust-store (new connections and the system's certificates)..." >&2
run obolo-bench-trust-store "${OBOLO_BENCH_REPETITIONS:-9}" "$trust_results" "$@"

compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
echo
echo "Machine: $(lscpu | sed -n 's/^Model name: *//p' | head -n1), $(nproc) cores; kernel $(uname -r);" \
  "$("${compiler:-c++}" --version | head -n1)"
echo "Date: $(date -u '+%Y-%m-%d %H:%M UTC'); results: $results, $phone_results, $trust_results"
echo
python3 bench/bench_table.py "$results" "$phone_results" "$trust_results" "${format[@]}"
