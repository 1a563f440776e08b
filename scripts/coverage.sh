#!/usr/bin/env bash
# Line and branch coverage of each folder of src/ by the native unit tests.
#   coverage.sh              print the table
#   coverage.sh --json FILE  also write the figures to FILE
#   coverage.sh --lines      also list the lines that no test reaches
#
# Installs gcovr if it is missing, builds the tests with gcov's counters in build/coverage, without optimisation, and
# runs them. Branches that only an exception takes don't count, nor do comparisons that the compiler writes, nor the
# folders named windows, which aren't compiled here. Timing decides whether the tests reach some lines, so two runs may
# differ by a line or two.
# Not part of test.sh or CI.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

json="" lines=""
while [ $# -gt 0 ]; do
  case "$1" in
    --lines) lines=yes; shift ;;
    --json)
      [ $# -ge 2 ] || usage_error "--json needs a file"
      json=$(cd "$OLDPWD" && realpath -m -- "$2"); shift 2 ;;
    *) at_most 0 "$@" ;;
  esac
done

scripts/setup.sh --coverage

build=build/coverage
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic" \
  -DCMAKE_CXX_FLAGS_DEBUG=-O0 >/dev/null
targets=()
for folder in tests/unit/*/; do
  targets+=(--target "$(basename "$folder")-tests")
done
cmake --build "$build" -j "$(nproc)" "${targets[@]}" | tail -n 1

# Counters add up over runs, and those of objects that are no longer built would count too.
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -R '^unit-' --output-on-failure >"$build/tests.log" || {
  cat "$build/tests.log" >&2
  die "the unit tests fail, so the figures would mislead"
}

# gcov leaves its files in its current folder while it works: keep that out of the sources.
(cd "$build" && gcovr --root ../.. --object-directory . --filter ../../src/ --exclude-throw-branches \
  --exclude-unreachable-branches --exclude-lines-by-pattern '.*operator==.* = default;.*' -j "$(nproc)" \
  --json-summary files.json --txt lines.txt .)
python3 scripts/coverage_table.py "$build/files.json" "$(git rev-parse HEAD)" ${json:+"$json"}
# gcovr puts a long name on a line of its own.
[ -z "$lines" ] || awk '/^src/ && NF == 1 { printf "%s", $0; next } 1' "$build/lines.txt" | awk '/^src/ && !/ 100% *$/'
