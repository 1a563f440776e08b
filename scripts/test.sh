#!/usr/bin/env bash
# Sets up, builds and tests everything, and ends with a summary and 0 or 1.
#   test.sh           all steps, two at a time: docs/testing.md says what each of them proves
#   test.sh --quick   the native unit tests only, unoptimised
#   test.sh --list    the steps' names
#   test.sh STEP...   only these steps, after the set-up
# Each step's output is in build/test-logs/STEP.log.
set -uo pipefail
. "$(dirname "$0")/lib.sh"
. scripts/test-steps.sh

case "${1:-}" in
  --list) printf '%s\n' "${all_steps[@]}"; exit 0 ;;
  --quick) steps=(quick) setup=(scripts/setup.sh --build) ;;
  "") steps=("${all_steps[@]}") setup=(scripts/setup.sh) ;;
  *)
    no_other_options "$@"
    steps=("$@") setup=(scripts/setup.sh)
    for step in "${steps[@]}"; do
      is_in "$step" "${all_steps[@]}" || usage_error "unknown step $step"
    done
    ;;
esac

results=build/test-logs
mkdir -p "$results"
rm -f "$results"/*.result
started=$SECONDS
"${setup[@]}" || die "set-up failed"

run_lanes

broken=()
for step in "${steps[@]}"; do
  read -r step_passed step_failed <"$results/$step.result" || { step_passed=0 step_failed=1; }
  passed=$((passed + step_passed)) failed=$((failed + step_failed))
  [ "$step_failed" -eq 0 ] || broken+=("$step")
done

echo
printf 'test.sh: %d steps in %d min %02d s\n' "${#steps[@]}" $(((SECONDS - started) / 60)) $(((SECONDS - started) % 60))
[ "${#broken[@]}" -eq 0 ] || echo "test.sh: failed: ${broken[*]}"
echo "$passed passed, $failed failed"
[ "${#broken[@]}" -eq 0 ] && [ "$failed" -eq 0 ]
