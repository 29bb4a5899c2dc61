#!/usr/bin/env bash
# Builds the kit's API reference with Doxygen from the comments of its
# installed public headers, into build-docs/html/ (open index.html). Any
# Doxygen warning (an undocumented public name, a broken reference) fails the
# build. Installs what it needs first.
#   OBOLO_DOCS_DIR   where the reference goes (default build-docs)
set -euo pipefail
cd "$(dirname "$0")/.."

OBOLO_SETUP_EXTRA="doxygen python3 ${OBOLO_SETUP_EXTRA:-}" scripts/setup.sh >&2
out=${OBOLO_DOCS_DIR:-build-docs}
mkdir -p "$out"
out=$(cd "$out" && pwd)

# The public headers, installed as a host receives them (no build needed).
cmake -S . -B "$out/cmake" -DOBOLO_BUILD_TESTS=OFF -DOBOLO_BUILD_DEMO=OFF -DOBOLO_BUILD_SANDBOX=OFF >/dev/null
rm -rf "$out/prefix" "$out/html"
cmake --install "$out/cmake" --prefix "$out/prefix" --component headers >/dev/null

filter=(python3 "$PWD/docs/doc_comments.py")
# Doxygen goes on when its input filter fails; check the filter first.
for header in $(find "$out/prefix/include/obolo" -name '*.h' | sort); do
  "${filter[@]}" "$header" >/dev/null
done

export OBOLO_DOCS_INPUT="$out/prefix/include/obolo"
export OBOLO_DOCS_OUTPUT="$out"
export OBOLO_DOCS_FILTER="${filter[*]}"
export OBOLO_DOCS_PAGES="$PWD/docs/obolo.dox"
OBOLO_VERSION=$(sed -n 's/^project(obolo VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
export OBOLO_VERSION
doxygen docs/Doxyfile
echo "API reference: $out/html/index.html"
