#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded number of
# inputs, starting from the seed corpus in fuzz/corpus/.
#   scripts/fuzz.sh [RUNS]     (default 20000 inputs per target)
# A crash leaves its input in build-fuzz/crashes/<target>/; turn it into a
# regression test before fixing it.
set -euo pipefail
cd "$(dirname "$0")/.."
runs=${1:-20000}

OBOLO_SETUP_EXTRA="clang libclang-rt-14-dev" scripts/setup.sh
build=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOBOLO_BUILD_FUZZ=ON \
  -DOBOLO_BUILD_TESTS=OFF -DOBOLO_SANITIZE=address,undefined >/dev/null
cmake --build "$build" -j "$(nproc)" --target fuzz_targets

status=0
for target in $(ls "$build"/fuzz | grep '^fuzz_' ); do
  [[ -x "$build/fuzz/$target" ]] || continue
  name=${target#fuzz_}
  corpus="$build/corpus/$name"
  mkdir -p "$corpus" "$build/crashes/$name"
  cp -n fuzz/corpus/"$name"/* "$corpus"/ 2>/dev/null || true
  echo "== $target: $runs inputs"
  if ! "$build/fuzz/$target" -runs="$runs" -max_len=4096 -artifact_prefix="$build/crashes/$name/" \
      "$corpus" 2>"$build/$target.log"; then
    echo "$target FAILED; see $build/$target.log"
    tail -n 30 "$build/$target.log"
    status=1
  else
    grep -E '^#[0-9]+.*(DONE|pulse)' "$build/$target.log" | tail -n 1 || true
  fi
done
exit $status
