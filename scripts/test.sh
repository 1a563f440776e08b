#!/usr/bin/env bash
# Sets up, builds and tests everything, and ends with a summary and 0 or 1.
#   test.sh           all rings: style, docs, unit (native, sanitizers, Wine), schemas, scenarios, browser, fuzz, soak,
#                     system, bench
#   test.sh --quick   the native unit ring alone
#   test.sh --list    the steps' names
#   test.sh STEP...   only these steps, after the set-up
# Each step's output lies in build/test-logs/STEP.log.
set -uo pipefail
cd "$(dirname "$0")/.."
. scripts/test-steps.sh

all_steps=(style docs linux unit schemas scenarios asan tsan browser windows wine fuzz soak system system_wine bench)
case "${1:-}" in
  -h | --help) sed -n '2,8s/^# \{0,1\}//p' "$0"; exit 0 ;;
  --list) printf '%s\n' "${all_steps[@]}"; exit 0 ;;
  --quick) steps=(unit) setup=(scripts/setup.sh --build) ;;
  "") steps=("${all_steps[@]}") setup=(scripts/setup.sh) ;;
  -*) echo "test.sh: unknown option $1 (see --help)" >&2; exit 2 ;;
  *)
    steps=("$@") setup=(scripts/setup.sh)
    for step in "${steps[@]}"; do
      printf '%s\n' "${all_steps[@]}" | grep -qx -- "$step" || { echo "test.sh: unknown step $step (see --list)" >&2; exit 2; }
    done
    ;;
esac

mkdir -p build/test-logs
started=$SECONDS
"${setup[@]}" || { echo "test.sh: set-up failed" >&2; exit 1; }

passed=0 failed=0 broken=()
for step in "${steps[@]}"; do
  run_step "$step"
done

echo
printf 'test.sh: %d steps in %d min %02d s\n' "${#steps[@]}" $(((SECONDS - started) / 60)) $(((SECONDS - started) % 60))
[ "${#broken[@]}" -eq 0 ] || echo "test.sh: failed: ${broken[*]}"
echo "$passed passed, $failed failed"
[ "${#broken[@]}" -eq 0 ] && [ "$failed" -eq 0 ]
