#!/usr/bin/env bash
# Records the snapshot tests' reference pictures again, into
# tests/snapshots/reference/, after a change to how the kit's screens look.
# Look at the new pictures (git status lists those that changed) before
# committing them. Extra arguments go to ctest (for example -R Wallet).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
build=${OBOLO_BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)" --target snapshot_test
OBOLO_RECORD_SNAPSHOTS=1 ctest --test-dir "$build" --output-on-failure -j "$(nproc)" -R '^PaywallSnapshotTest\.' "$@"
git status --short tests/snapshots/reference
