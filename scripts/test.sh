#!/usr/bin/env bash
# Builds the kit and runs the whole test suite, the login page's browser test
# in headless Chromium included. Installs what it needs first (Debian packages,
# and playwright-core from npm for the browser test).
# Extra arguments go to ctest (for example -R Paywall).
set -euo pipefail
cd "$(dirname "$0")/.."

OBOLO_SETUP_EXTRA="chromium nodejs ${OBOLO_SETUP_EXTRA:-}" scripts/setup.sh
if [[ ! -d tests/browser/node_modules/playwright-core ]]; then
  (cd tests/browser && npm ci --no-audit --no-fund --loglevel=error)
fi

build=${OBOLO_BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)"
# The browser is installed above, so its test must run, not skip.
OBOLO_REQUIRE_BROWSER=1 ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
