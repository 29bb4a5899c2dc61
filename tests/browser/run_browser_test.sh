#!/usr/bin/env bash
# Runs the login page's browser test against the obolo-sandbox program given as
# the first argument. Exits 77 (CTest's "skipped") when node or Chromium is not
# installed; fails when playwright-core is not installed ("npm ci" here).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
program="${1:?usage: run_browser_test.sh PATH-TO-obolo-sandbox}"
chromium="${OBOLO_CHROMIUM:-/usr/bin/chromium}"

# scripts/test.sh installs both and sets OBOLO_REQUIRE_BROWSER, so there a
# missing browser fails the run instead of skipping the test.
skip=77
[[ -n "${OBOLO_REQUIRE_BROWSER:-}" ]] && skip=1
if ! command -v node >/dev/null 2>&1; then
  echo "SKIPPED: node is not installed, so the login page's browser test cannot run"
  exit $skip
fi
if [[ ! -x "$chromium" ]]; then
  echo "SKIPPED: $chromium is not installed (Debian package chromium), so the login page's browser test cannot run"
  exit $skip
fi
if [[ ! -d "$here/node_modules/playwright-core" ]]; then
  echo "playwright-core is not installed: run 'npm ci' in $here" >&2
  exit 1
fi

export OBOLO_SANDBOX_PROGRAM="$program"
export OBOLO_CHROMIUM="$chromium"
exec node --test "$here/login_page.test.mjs"
