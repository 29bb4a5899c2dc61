#!/usr/bin/env bash
# Writes the README's pictures, docs/card.png, docs/splash.png and
# docs/wallet.png: three steps of the demo's purchase, drawn by the kit's
# renderer (obolo-demo --snapshots).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
build=${OBOLO_BUILD_DIR:-build}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo ${OBOLO_CMAKE_ARGS:-} >/dev/null
cmake --build "$build" -j "$(nproc)" --target obolo-demo

pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT
"$build/demo/obolo-demo" --snapshots "$pictures"
mkdir -p docs
for step in card splash wallet; do
  cp "$(ls "$pictures"/*-"$step".png | head -n 1)" "docs/$step.png"
  echo "docs/$step.png"
done
