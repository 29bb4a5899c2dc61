#!/usr/bin/env bash
# Proves the installable package from the outside, as an app developer takes it:
#   1. configures the kit for a fresh prefix, builds it and installs it there;
#   2. pkg-config gives its flags from that prefix, and a one-file program
#      compiles and links with them;
#   3. every installed public header compiles on its own, and nothing but the
#      public surface was installed;
#   4. examples/host-app, a project of its own, builds out of tree with
#      find_package(Obolo) and plays one purchase against obolo-sandbox, and
#      fails when the sandbox refuses the payment;
#   5. a project that takes the repository in with add_subdirectory() builds
#      the kit alone (no tests) and links a program against Obolo::obolo.
# Installs what it needs first. Any failure fails the script.
#   OBOLO_BUILD_DIR   build directory of the kit (default build-package)
#   OBOLO_JOBS        parallel build jobs (default: the number of cores)
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD

scripts/setup.sh >&2
jobs=${OBOLO_JOBS:-$(nproc)}
build=${OBOLO_BUILD_DIR:-build-package}
prefix=$source/$build/prefix
work=$(mktemp -d "${TMPDIR:-/tmp}/obolo-package-XXXXXX")
sandbox_pid=""
cleanup() {
  if [[ -n "$sandbox_pid" ]]; then
    kill "$sandbox_pid" 2>/dev/null || true
    wait "$sandbox_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT
step() { echo "== $*"; }

step "1. the kit, configured for $prefix, built and installed"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX="$prefix" \
  -DOBOLO_BUILD_TESTS=OFF -DOBOLO_BUILD_DEMO=OFF -DOBOLO_BUILD_SANDBOX=ON >/dev/null
cmake --build "$build" -j "$jobs" --target obolo obolo-sandbox
rm -rf "$prefix"
cmake --install "$build" >/dev/null
find "$prefix" -type f | sed "s|^$prefix/||" | sort | sed -n '1,200p' | awk '{print "   " $0}' | head -n 12
echo "   ... $(find "$prefix" -type f | wc -l) files"

step "2. pkg-config from the prefix"
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
flags=$(pkg-config --cflags --libs obolo)
echo "   pkg-config --cflags --libs obolo: $flags"
[[ "$(pkg-config --modversion obolo)" == "$(sed -n 's/^project(obolo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)" ]]
cat >"$work/one_file.cc" <<'PROGRAM'
#include <obolo/entry/obolo.h>
#include <obolo/ui/hex_color.h>

#include <iostream>

int main() {
  obolo::Obolo obolo("access-key", "politics", "https://news.example/logo.png",
                     "https://news.example/politics/a", "reader-1", "news.example");
  const obolo::ColorComponents orange = obolo::HexColorComponents("  #ff8800\n");
  std::cout << "category " << obolo::GlobalVariable::shared().category() << ", green " << orange.green * 255 << "\n";
  return orange.green * 255 == 136 ? 0 : 1;
}
PROGRAM
# shellcheck disable=SC2086  # the flags are words
g++ -std=c++20 -Wall -Wextra -Werror "$work/one_file.cc" $flags -o "$work/one_file"
"$work/one_file" | sed 's/^/   /'

step "3. the installed headers"
sh tests/package/compile_headers.sh "$prefix" g++ | sed 's/^/   /'
for private in paywall login sandbox support; do
  if [[ -e "$prefix/include/obolo/$private" ]]; then
    echo "   not public, but installed: include/obolo/$private"
    exit 1
  fi
done

step "4. examples/host-app, built out of tree against the prefix, against obolo-sandbox"
cp -r examples/host-app "$work/host-app"
cmake -S "$work/host-app" -B "$work/host-app-build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/host-app-build" -j "$jobs"
# Starts obolo-sandbox with the given options and points the kit at it with
# the export lines it prints.
start_sandbox() {
  "$build/sandbox/obolo-sandbox" "$@" >"$work/sandbox.out" 2>&1 &
  sandbox_pid=$!
  for _ in $(seq 1 100); do
    grep -q '^export OBOLO_LOGIN_LOGO_URL=' "$work/sandbox.out" && break
    kill -0 "$sandbox_pid" 2>/dev/null || { cat "$work/sandbox.out"; exit 1; }
    sleep 0.1
  done
  eval "$(grep '^export OBOLO_' "$work/sandbox.out")"
  unset OBOLO_BUNDLE_PATH
}
stop_sandbox() {
  kill "$sandbox_pid"
  wait "$sandbox_pid" 2>/dev/null || true
  sandbox_pid=""
}
start_sandbox
(cd "$work" && "$work/host-app-build/host-app") | tee "$work/host-app.out" | sed 's/^/   /'
grep -q "kit resources: $prefix/share/obolo" "$work/host-app.out" || {
  echo "   the installed kit did not find its resources in $prefix/share/obolo"
  exit 1
}
stop_sandbox
# The example's exit status is the purchase's: with tokens that expire as they
# are issued, the payment is refused and the example must fail.
start_sandbox --access-token-lifetime 0 --refresh-token-lifetime 0
status=0
(cd "$work" && "$work/host-app-build/host-app") >"$work/host-app-refused.out" 2>&1 || status=$?
if [[ $status -ne 1 ]]; then
  cat "$work/host-app-refused.out"
  echo "   host-app exited with $status after a refused payment, not 1"
  exit 1
fi
echo "   refused payment: $(tail -n 1 "$work/host-app-refused.out")"
stop_sandbox

step "5. add_subdirectory of the repository"
mkdir -p "$work/consumer"
cat >"$work/consumer/CMakeLists.txt" <<CONSUMER
cmake_minimum_required(VERSION 3.23)
project(consumer LANGUAGES CXX)
add_subdirectory("$source" obolo)
foreach(target obolo_test_support obolo_sandbox obolo-demo)
  if(TARGET \${target})
    message(FATAL_ERROR "add_subdirectory built \${target}, which is not the kit")
  endif()
endforeach()
add_executable(one_file one_file.cc)
target_link_libraries(one_file PRIVATE Obolo::obolo)
CONSUMER
cp "$work/one_file.cc" "$work/consumer/"
# Release: no debug information to write, for the one build ccache cannot share.
cmake -S "$work/consumer" -B "$work/consumer-build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/consumer-build" -j "$jobs" --target one_file >/dev/null
"$work/consumer-build/one_file" | sed 's/^/   /'

echo "The package works: installed, found by pkg-config and CMake, taken in by add_subdirectory."
