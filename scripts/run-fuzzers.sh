#!/usr/bin/env bash
# Runs each fuzz target for a bounded time on a copy of its corpus: run-fuzzers.sh [SECONDS]
set -uo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-15}
passed=0 failed=0
mkdir -p build/test-logs
work=$(mktemp -d build/fuzz-run.XXXXXX)
trap 'rm -rf "$work"' EXIT
for target in build/fuzz/fuzz/*_fuzz; do
  name=$(basename "$target")
  seeds=tests/fuzz/corpus/$name
  if [ ! -d "$seeds" ]; then
    echo "$name: no corpus in $seeds"
    failed=$((failed + 1))
    continue
  fi
  mkdir -p "$work/$name"
  # The new finds go to the first folder; what stands in the repository is only read.
  if "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -artifact_prefix="build/crash-$name-" -print_final_stats=1 \
    "$work/$name" "$seeds" >"build/test-logs/fuzz-$name.txt" 2>&1; then
    passed=$((passed + 1))
    echo "$name: $(sed -n 's/^stat::number_of_executed_units: *//p' "build/test-logs/fuzz-$name.txt") runs, nothing found"
  else
    failed=$((failed + 1))
    tail -n 40 "build/test-logs/fuzz-$name.txt"
  fi
done
echo "check: $passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
