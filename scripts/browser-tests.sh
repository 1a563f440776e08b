#!/usr/bin/env bash
# Tests the virtual cockpit's page in a real browser.
#   browser-tests.sh [BUILD_PRESET]  builds virtual-cockpit in that preset (linux; asan and tsan check it while it is driven)
#   browser-tests.sh --program FILE  tests a program that is built already
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-linux}" in
  -h | --help) sed -n '2,4s/^# \{0,1\}//p' "$0"; exit 0 ;;
  --program) program=$(realpath "${2:?--program needs a file}") ;;
  -*) echo "browser-tests.sh: unknown option $1 (see --help)" >&2; exit 2 ;;
  *)
    preset=${1:-linux}
    cmake --preset "$preset" && cmake --build --preset "$preset" --target=virtual-cockpit
    program=$PWD/build/$preset/virtual-cockpit
    ;;
esac

cd tests/browser
if [ ! node_modules/.package-lock.json -nt package-lock.json ]; then
  npm ci --ignore-scripts --no-audit --no-fund --loglevel=error
fi

export VIRTUAL_COCKPIT=$program
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
result=0
output=$(mktemp)
trap 'rm -f "$output"' EXIT
node --test --test-reporter=tap ./*.test.js | tee "$output" || result=$?
count() { awk -v name="$1" '$1 == "#" && $2 == name { print $3 }' "$output"; }
echo "check: $(count pass) passed, $(($(count fail) + $(count cancelled))) failed"
[ "$result" -eq 0 ]
