#!/bin/sh
# Compiles every public header installed under PREFIX on its own, the way a
# host includes it (#include <obolo/entry/obolo.h>). A header that needs one
# that was not installed, or that leans on what its includer included first,
# fails here.
#   compile_headers.sh PREFIX CXX
set -eu
prefix=${1:?usage: compile_headers.sh PREFIX CXX}
cxx=${2:?usage: compile_headers.sh PREFIX CXX}

headers=$(cd "$prefix/include" 2>/dev/null && find obolo -name '*.h' | sort)
if [ -z "$headers" ]; then
  echo "no headers under $prefix/include/obolo"
  exit 1
fi
status=0
count=0
for header in $headers; do
  count=$((count + 1))
  if ! printf '#include <%s>\n' "$header" |
    "$cxx" -std=c++20 -Wall -Wextra -Werror -fsyntax-only -I"$prefix/include" -I"$prefix/include/obolo" -x c++ -; then
    echo "does not compile on its own: $header"
    status=1
  fi
done
echo "$count installed headers, each compiled on its own"
exit $status
