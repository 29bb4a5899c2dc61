#!/usr/bin/env bash
# Builds obolo-demo and runs it: a headless host app that walks a reader
# through a whole purchase against a sandbox service started inside the demo.
# Installs what it needs first. Arguments go to obolo-demo (try --help).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh >&2
build=${OBOLO_BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)" --target obolo-demo >&2
exec "$build/demo/obolo-demo" "$@"
