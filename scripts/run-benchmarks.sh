#!/usr/bin/env bash
# Builds and runs the benchmarks of the optimised build.
#   run-benchmarks.sh           all figures
#   run-benchmarks.sh --check   a shorter run that fails when a command is lost or a goal is missed by far
set -euo pipefail
cd "$(dirname "$0")/.."

minimum=0.5 flood=1000000 check=()
if [ "${1:-}" = "--check" ]; then
  minimum=0.1 check=(--check)
fi
cmake --preset linux >/dev/null
cmake --build --preset linux --target micro-bench --target latency-bench --target latency-bridge --target latency-floor --target pace-bench
bench=build/linux/tests/bench
passed=0 failed=0

mkdir -p build/test-logs
"$bench/micro-bench" --benchmark_min_time=$minimum --benchmark_format=csv 2>/dev/null | tee build/test-logs/micro-bench.csv |
  awk -F, '/^"/ { gsub(/"/, "", $1); printf "%-46s %14.1f %s\n", $1, $3, $5 }'

# The JSON reader beside its peer, file by file; the factor leaves room for a busy machine.
if awk -F, '
  /^"parseJson/ { gsub(/"/, "", $1); split($1, part, "/"); key = part[2] "/" part[3]
    if (part[1] == "parseJson") ours[key] = $4; else peer[key] = $4 }
  END { for (key in ours) { files++; printf "JSON %s: %.2f times the peer'"'"'s speed\n", key, peer[key] / ours[key]
          if (peer[key] * 1.25 < ours[key]) slow++ }
        exit !(files > 0 && slow == 0) }' build/test-logs/micro-bench.csv; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
fi

# An edit of EXE.xml: a file a hundred times as long may take a hundred times as long, and as much again on a busy machine.
if awk -F, '
  /^"registerAddon\// { gsub(/"/, "", $1); split($1, part, "/"); shape = part[2]; shapes[shape] = 1
    if (part[3] == "bytes:100000") small[shape] = $4; else large[shape] = $4 }
  END { for (shape in shapes) { count++; printf "EXE.xml %s: 100 times the bytes, %.0f times the time\n", shape, large[shape] / small[shape]
          if (!(large[shape] < 200 * small[shape])) slow++ }
        exit !(count > 0 && slow == 0) }' build/test-logs/micro-bench.csv; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
fi

if "$bench/latency-bench" --reports $flood "${check[@]}"; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
fi
if "$bench/pace-bench"; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
fi
echo "check: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
