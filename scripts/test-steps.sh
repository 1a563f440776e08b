# The steps of test.sh, one function each, and what runs and counts them. Sourced, not run.

unit_programs=(wire platform logging registration config hid sim mobiflight mapping app simulation cockpit)

# Runs one step with its output in a file; shows the file's end when it fails.
run_step() {
  local step=$1 log=build/test-logs/$1.log begun=$SECONDS result=ok status
  printf '%-12s ' "$step"
  # Not with "||" behind it, which would switch off "set -e" inside: only a step's last command could then fail it.
  (set -e; "step_$step") </dev/null >"$log" 2>&1
  status=$?
  [ "$status" -eq 0 ] || result=FAILED
  count_tests "$log"
  if [ "$result" = ok ] && [ "$step_passed" -eq 0 ]; then
    result="FAILED (nothing was tested)"
  fi
  if [ "$result" != ok ]; then
    broken+=("$step")
    [ "$step_failed" -gt 0 ] || step_failed=1
  fi
  passed=$((passed + step_passed)) failed=$((failed + step_failed))
  printf '%5d passed %3d failed %4d s  %s\n' "$step_passed" "$step_failed" $((SECONDS - begun)) "$result"
  [ "$result" = ok ] || { echo "--- the end of $log"; grep -aE '^\[  FAILED  \]|error:|warning:|FAILED' "$log" | head -n 20; tail -n 40 "$log"; }
}

# Adds up what the test programs say: GoogleTest's and CTest's closing lines, and "check: N passed, N failed" lines.
count_tests() {
  read -r step_passed step_failed < <(awk '
    /^\[  PASSED  \] [0-9]+ tests?\.?/ { passed += $4 }
    /^\[  FAILED  \] [0-9]+ tests?, listed below/ { failed += $4 }
    /tests failed out of [0-9]+/ { passed += $NF - $4; failed += $4 }
    /^check: [0-9]+ passed, [0-9]+ failed$/ { passed += $2; failed += $4 }
    END { print passed + 0, failed + 0 }' "$1")
}

build_preset() { # preset, targets…
  local preset=$1
  shift
  cmake --preset "$preset" && cmake --build --preset "$preset" "${@/#/--target=}"
}

unit_targets() { printf -- '%s-tests\n' "${unit_programs[@]}"; }

run_unit_programs() { # preset, then environment settings
  local preset=$1 failures=0 name
  shift
  for name in "${unit_programs[@]}"; do
    echo "== $name-tests ($preset)"
    env "$@" "build/$preset/unit/$name-tests" --gtest_brief=1 || failures=$((failures + 1))
  done
  return "$((failures > 0))"
}

step_style() {
  cmake --preset linux
  scripts/check-style.sh
}

step_linux() {
  build_preset linux
  test -x build/linux/VantrelBridgeHID
  echo "check: 1 passed, 0 failed"
}

step_unit() {
  # shellcheck disable=SC2046
  build_preset linux $(unit_targets)
  run_unit_programs linux
}

step_schemas() {
  build_preset linux config-verdict
  scripts/check-schemas.sh
}

step_docs() { scripts/check-docs.sh; }

step_scenarios() {
  build_preset linux virtual-cockpit
  ctest --test-dir build/linux -R '^scenario-' -j6 --output-on-failure
}

step_browser() {
  local preset failures=0
  for preset in linux asan tsan; do
    scripts/browser-tests.sh "$preset" || failures=$((failures + 1))
  done
  return "$((failures > 0))"
}

step_asan() {
  # shellcheck disable=SC2046
  build_preset asan $(unit_targets)
  run_unit_programs asan ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
}

step_tsan() {
  # The deadlock detector checks the lock order of docs/architecture.md. It knows what one object's mutexes were taken
  # under in that object's life, so the demo's flight is played too: one bridge that uses nearly all of them.
  local options=detect_deadlocks=1:halt_on_error=1:second_deadlock_stack=1
  # shellcheck disable=SC2046
  build_preset tsan $(unit_targets) virtual-cockpit
  TSAN_OPTIONS=$options ctest --test-dir build/tsan -R '^scenario-demo-flight$' --output-on-failure
  run_unit_programs tsan TSAN_OPTIONS="$options"
}

step_windows() {
  build_preset windows
  scripts/check-windows-executable.sh
}

step_wine() {
  # shellcheck disable=SC2046
  build_preset windows $(unit_targets) windows-process-tests
  scripts/run-under-wine.sh "${unit_programs[@]/%/-tests}" windows-process-tests
}

step_fuzz() {
  build_preset fuzz
  scripts/run-fuzzers.sh 5
}

step_soak() {
  build_preset linux soak
  build/linux/tests/soak/soak
}

step_system() { scripts/system-tests.sh; }

step_system_wine() { scripts/system-tests.sh --windows; }

step_bench() { scripts/run-benchmarks.sh --check; }
