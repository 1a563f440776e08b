#!/usr/bin/env bash
# Holds schemas/, config/ and tests/schemas/gallery against an independent validator and the program's own verdict.
#   check-schemas.sh [CONFIG-VERDICT]   the program that gives it; build/linux/tests/schemas/config-verdict if not named
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in -h | --help) sed -n '2,3s/^# \{0,1\}//p' "$0"; exit 0 ;; esac
verdict=$(realpath "${1:-build/linux/tests/schemas/config-verdict}")
test -x "$verdict" || { echo "check-schemas: $verdict isn't built" >&2; exit 1; }

# Only what the lock file names, and none of the packages' own scripts.
if [ ! tests/schemas/node_modules/.package-lock.json -nt tests/schemas/package-lock.json ]; then
  npm ci --prefix tests/schemas --ignore-scripts --no-audit --no-fund --loglevel=error
fi
node tests/schemas/check.mjs "$verdict"
