#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded number of
# inputs, starting from the seed corpus in fuzz/corpus/.
#   scripts/fuzz.sh [RUNS]     (default 20000 inputs per target)
# Each target also stops after OBOLO_FUZZ_SECONDS (default 60): the slow ones
# (the store's, which writes a SQLite file per input) keep CI's time bounded.
# A crash leaves its input in build-fuzz/crashes/<target>/; turn it into a
# regression test before fixing it.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-20000}
seconds=${OBOLO_FUZZ_SECONDS:-60}

OBOLO_SETUP_EXTRA="clang libclang-rt-14-dev" scripts/setup.sh
build=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOBOLO_BUILD_FUZZ=ON \
  -DOBOLO_BUILD_TESTS=OFF -DOBOLO_SANITIZE=address,undefined >/dev/null
cmake --build "$build" -j "$(nproc)" --target fuzz_targets

# Writes seeds at and past the decoder's nesting and record limits into
# directory $1. (The target itself makes inputs that reach its length limit.)
make_limit_seeds() {
  local dir=$1
  repeat() { local i; for ((i = 0; i < $2; i++)); do printf '%s' "$1"; done; }
  { repeat '{"a":' 64; printf 1; repeat '}' 64; } >"$dir/limit_depth_64"
  { repeat '{"a":' 65; printf 1; repeat '}' 65; } >"$dir/limit_depth_65"
  { printf '{"data":{"recommendations":['; repeat '{},' 4096; printf '{}]}}'; } >"$dir/limit_records_4097"
}

# Fontconfig's font list, which the login screen's text layout loads, is
# reported as leaked at exit; the same narrow suppression as the test runs.
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan-suppressions.txt:print_suppressions=0"

status=0
for target in $(ls "$build"/fuzz | grep '^fuzz_' ); do
  [[ -x "$build/fuzz/$target" ]] || continue
  name=${target#fuzz_}
  corpus="$build/corpus/$name"
  mkdir -p "$corpus" "$build/crashes/$name"
  cp -n fuzz/corpus/"$name"/* "$corpus"/ 2>/dev/null || true
  max_len=4096
  if [[ $name == response_records ]]; then
    # The answer decoder's limits (64 levels of nesting, 4096 records in an
    # array) need inputs longer than 4096 bytes: a larger limit, and seeds at
    # and past each to mutate from. Its 1 MiB length limit is reached by
    # inputs the target repeats (see fuzz/response_records_fuzzer.cc).
    max_len=16384
    make_limit_seeds "$corpus"
  fi
  echo "== $target: $runs inputs of up to $max_len bytes, at most $seconds s"
  if ! "$build/fuzz/$target" -runs="$runs" -max_total_time="$seconds" -max_len="$max_len" -artifact_prefix="$build/crashes/$name/" \
      "$corpus" 2>"$build/$target.log"; then
    echo "$target FAILED; see $build/$target.log"
    tail -n 30 "$build/$target.log"
    status=1
  else
    grep -E '^#[0-9]+.*(DONE|pulse)' "$build/$target.log" | tail -n 1 || true
  fi
done
exit $status
