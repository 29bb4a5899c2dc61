#!/usr/bin/env bash
# Builds the kit and runs the whole test suite. Installs what it needs first.
#   scripts/test.sh            the suite, in build/
# Extra arguments go to ctest (for example -R Paywall).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

build=${OBOLO_BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
