#!/usr/bin/env bash
# Builds the kit and runs the whole test suite under a sanitizer:
#   scripts/sanitize.sh address     AddressSanitizer with UBSan (and leak checks)
#   scripts/sanitize.sh thread      ThreadSanitizer
# Extra arguments go to ctest. Any report fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."

kind=${1:?usage: scripts/sanitize.sh address|thread [ctest arguments]}
shift
case "$kind" in
  address) sanitizers=address,undefined ;;
  thread) sanitizers=thread ;;
  *) echo "unknown sanitizer '$kind' (address or thread)" >&2; exit 2 ;;
esac

OBOLO_SETUP_EXTRA="chromium ${OBOLO_SETUP_EXTRA:-}" scripts/setup.sh
if [[ ! -d tests/browser/node_modules/playwright-core ]]; then
  (cd tests/browser && npm ci --no-audit --no-fund --loglevel=error)
fi

build=build-$kind
# -O1 with line tables only: what the sanitizers need for exact reports and
# readable stacks, and quicker to build than -O2 -g.
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DCMAKE_C_FLAGS_DEBUG="-O1 -g1" \
  -DOBOLO_SANITIZE="$sanitizers" >/dev/null
cmake --build "$build" -j "$(nproc)"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan-suppressions.txt:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions=$PWD/scripts/tsan-suppressions.txt"
OBOLO_REQUIRE_BROWSER=1 ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 600 "$@"
