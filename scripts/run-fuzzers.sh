#!/usr/bin/env bash
# Runs each fuzz target of the preset "asan", once built, for a bounded time on its corpus.
#   run-fuzzers.sh [SECONDS]   15 for each target by default
set -uo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"

seconds=${1:-15}
mkdir -p build/test-logs
work=$(mktemp -d build/fuzz-run.XXXXXX)
trap 'rm -rf "$work"' EXIT
for target in build/asan/fuzz/*_fuzz; do
  name=$(basename "$target")
  seeds=tests/fuzz/corpus/$name
  if [ ! -d "$seeds" ]; then
    count false || echo "$name: no corpus in $seeds"
    continue
  fi
  mkdir -p "$work/$name"
  # libFuzzer writes what it finds into the first folder and only reads the second.
  if count "$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -artifact_prefix="build/crash-$name-" -print_final_stats=1 \
    "$work/$name" "$seeds" >"build/test-logs/fuzz-$name.txt" 2>&1; then
    echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "build/test-logs/fuzz-$name.txt") runs, nothing found"
  else
    tail -n 40 "build/test-logs/fuzz-$name.txt"
  fi
done
report_checks
