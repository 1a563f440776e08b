#!/usr/bin/env bash
# Builds and runs the benchmarks of the optimised build. Fails when a command is lost or a goal is missed by far.
#   run-benchmarks.sh           all figures
#   run-benchmarks.sh --check   a shorter run, which measures everything at the same time
set -euo pipefail
. "$(dirname "$0")/lib.sh"

minimum=0.5
check=false
case "${1:-}" in
  --check) minimum=0.1 check=true ;;
  *) at_most 0 "$@" ;;
esac
build_preset linux micro-bench latency-bench pace-bench
bench=build/linux/tests/bench

mkdir -p build/test-logs
# Pace and latency mostly wait. None of the three fails for a figure that the others have disturbed.
if [ "$check" = true ]; then
  "$bench/latency-bench" --check >build/test-logs/latency-bench.txt &
  latency=$!
  "$bench/pace-bench" >build/test-logs/pace-bench.txt &
  pace=$!
fi

"$bench/micro-bench" --benchmark_min_time=$minimum --benchmark_format=csv 2>/dev/null | tee build/test-logs/micro-bench.csv |
  awk -F, '/^"/ { gsub(/"/, "", $1); printf "%-46s %14.1f %s\n", $1, $3, $5 }'

# Compares the JSON reader with its peer, file by file; the factor leaves room for a busy machine.
# shellcheck disable=SC2016
count awk -F, '
  /^"parseJson/ { gsub(/"/, "", $1); split($1, part, "/"); key = part[2] "/" part[3]
    if (part[1] == "parseJson") ours[key] = $4; else peer[key] = $4 }
  END { for (key in ours) { files++; printf "JSON %s: %.2f times the peer'"'"'s speed\n", key, peer[key] / ours[key]
          if (peer[key] * 1.25 < ours[key]) slow++ }
        exit !(files > 0 && slow == 0) }' build/test-logs/micro-bench.csv || true

# An edit of EXE.xml: a file a hundred times as long may take a hundred times as long, and as much again on a busy machine.
# shellcheck disable=SC2016
count awk -F, '
  /^"registerAddon\// { gsub(/"/, "", $1); split($1, part, "/"); shape = part[2]; shapes[shape] = 1
    if (part[3] == "bytes:100000") small[shape] = $4; else large[shape] = $4 }
  END { for (shape in shapes) { count++; printf "EXE.xml %s: 100 times the bytes, %.0f times the time\n", shape, large[shape] / small[shape]
          if (!(large[shape] < 200 * small[shape])) slow++ }
        exit !(count > 0 && slow == 0) }' build/test-logs/micro-bench.csv || true

if [ "$check" = true ]; then
  count wait "$latency" || true
  count wait "$pace" || true
  cat build/test-logs/latency-bench.txt build/test-logs/pace-bench.txt
else
  count "$bench/latency-bench" || true
  count "$bench/pace-bench" || true
fi
report_checks
