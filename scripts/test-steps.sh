# shellcheck shell=bash disable=SC2034,SC2154
# The steps of test.sh, one function each, and what runs and counts them. Sourced, not run; `steps` and
# `results` are test.sh's.

all_steps=(style docs linux unit schemas scenarios asan tsan looks browser_windows browser_asan browser_tsan windows wine fuzz
  soak system system_wine packages bench)
# Two lanes run side by side and take about as long: one mostly compiles, the other mostly runs what the first has built and
# often only waits. A third would keep the two cores no busier. The benchmarks measure, so they come last and have the
# machine to themselves.
build_lane=(quick linux windows asan tsan style fuzz browser_tsan)
run_lane=(docs unit schemas scenarios soak system looks wine browser_windows packages browser_asan system_wine)
alone=(bench)

# The longest first, so that none runs alone at the end.
unit_programs=(companion demo wire registration mapping simulation app mobiflight hid platform logging sim config page text)

# Those of folders without threads have nothing to race.
threaded_programs=(companion demo wire mapping simulation app mobiflight hid platform logging sim page)

is_in() { # word, list...
  local word=$1
  shift
  [[ " $* " == *" $word "* ]]
}

# The steps of the build lane whose programs a step runs. It would build them itself, but two builds in one folder clash.
needs() {
  case "$1" in
    unit | schemas | scenarios | soak | system | looks) echo linux ;;
    wine | browser_windows) echo windows ;;
    browser_asan) echo asan ;;
    browser_tsan) echo tsan ;;
    system_wine | packages) echo linux windows ;;
  esac
}

run_lane() { # steps, of which only those run that the user asked for
  local step need
  for step in "$@"; do
    is_in "$step" "${steps[@]}" || continue
    for need in $(needs "$step"); do
      while is_in "$need" "${steps[@]}" && [ ! -e "$results/$need.result" ]; do sleep 1; done
    done
    run_step "$step"
  done
}

# Each lane is a process group of its own, so that an interrupted test.sh can end all that runs in it.
run_lanes() {
  local lanes=()
  set -m
  run_lane "${build_lane[@]}" &
  lanes+=("$!")
  run_lane "${run_lane[@]}" &
  lanes+=("$!")
  set +m
  # shellcheck disable=SC2064
  trap "kill -- ${lanes[*]/#/-} 2>/dev/null; exit 130" INT TERM HUP
  wait "${lanes[@]}"
  trap - INT TERM HUP
  run_lane "${alone[@]}"
}

# Runs one step with its output in a file, and leaves its counts in another. Prints one line, and the output's end when
# the step fails.
run_step() {
  local step=$1 log=$results/$1.log begun=$SECONDS result=ok status
  # Not with "||" after it, which would switch off "set -e" inside: only a step's last command could then fail it.
  (set -e; "step_$step") </dev/null >"$log" 2>&1
  status=$?
  [ "$status" -eq 0 ] || result=FAILED
  read -r step_passed step_failed < <(count_tests "$log")
  [ "$result" != ok ] || [ "$step_passed" -gt 0 ] || result="FAILED (nothing was tested)"
  [ "$result" = ok ] || [ "$step_failed" -gt 0 ] || step_failed=1
  printf '%-16s %5d passed %3d failed %4d s  %s\n' "$step" "$step_passed" "$step_failed" $((SECONDS - begun)) "$result"
  [ "$result" = ok ] || show_failure "$log"
  echo "$step_passed $step_failed" >"$results/$step.result"
}

show_failure() { # log
  echo "--- the end of $1"
  grep -aE -A 8 ': Failure$|^\[  FAILED  \]|error:|warning:|FAILED' "$1" | head -n 80
  tail -n 40 "$1"
}

# Adds up what the test programs say: GoogleTest's and CTest's closing lines, and "check: N passed, N failed" lines.
count_tests() {
  awk '
    /^\[  PASSED  \] [0-9]+ tests?\.?/ { passed += $4 }
    /^\[  FAILED  \] [0-9]+ tests?, listed below/ { failed += $4 }
    /tests failed out of [0-9]+/ { passed += $NF - $4; failed += $4 }
    /^check: [0-9]+ passed, [0-9]+ failed$/ { passed += $2; failed += $4 }
    END { print passed + 0, failed + 0 }' "$1"
}

test_units() { # preset, then environment settings
  build_preset "$1" "${unit_programs[@]/%/-tests}"
  run_unit_programs "$@"
}

# Two at a time, since many tests wait. A program that hangs fails.
run_unit_programs() { # preset, then environment settings
  local preset=$1 outputs=$results/unit-$1 code=0
  shift
  mkdir -p "$outputs"
  printf '%s\n' "${unit_programs[@]}" | env "$@" xargs -P2 -I{} bash -c \
    "timeout 900 build/$preset/unit/{}-tests --gtest_brief=1 >$outputs/{}.txt 2>&1" || code=1
  tail -n +1 "$outputs"/*.txt
  return "$code"
}

step_style() { scripts/check-style.sh; }

step_linux() {
  build_preset linux all system-tests plug-in-board
  test -x build/linux/VantrelBridgeHID
  echo "check: 1 passed, 0 failed"
}

step_quick() { test_units quick; }

step_unit() { test_units linux; }

step_schemas() {
  build_preset linux config-verdict vantrel
  scripts/check-schemas.sh
}

step_docs() { scripts/check-docs.sh; }

step_scenarios() {
  build_preset linux vantrel
  ctest --test-dir build/linux -R '^scenario-' -j6 --output-on-failure
}

# What the pages do needn't be shown by the optimised build once more.
step_looks() { scripts/browser-tests.sh --looks; }

step_browser_windows() { scripts/browser-tests.sh windows; }

step_browser_asan() { scripts/browser-tests.sh asan; }

step_browser_tsan() { scripts/browser-tests.sh tsan; }

step_asan() {
  build_preset asan vantrel VantrelBridgeHID fuzzers
  test_units asan ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
}

step_tsan() {
  # The deadlock detector checks the lock order of docs/architecture.md. It knows what one object's mutexes were taken
  # under in that object's life, so the demo's flight is played too: one bridge that uses nearly all of them.
  local options=detect_deadlocks=1:halt_on_error=1:second_deadlock_stack=1
  local unit_programs=("${threaded_programs[@]}")
  build_preset tsan vantrel VantrelBridgeHID
  TSAN_OPTIONS=$options ctest --test-dir build/tsan -R '^scenario-demo-flight$' --output-on-failure
  test_units tsan TSAN_OPTIONS="$options"
}

step_windows() {
  build_preset windows all hid-watch window-texts
  scripts/check-windows-executable.sh
}

step_wine() {
  build_preset windows "${unit_programs[@]/%/-tests}" windows-process-tests
  local code=0
  scripts/run-under-wine.sh "${unit_programs[@]/%/-tests}" || code=1
  # By itself, since only one bridge runs in a Windows session.
  scripts/run-under-wine.sh windows-process-tests || code=1
  return "$code"
}

step_fuzz() {
  build_preset asan fuzzers
  scripts/run-fuzzers.sh 5
}

step_soak() {
  build_preset linux soak
  build/linux/tests/soak/soak
}

step_system() { scripts/system-tests.sh; }

step_system_wine() { scripts/system-tests.sh --windows; }

# The packages' own tests mostly wait, so they run side by side.
step_packages() {
  local packages=build/test-packages test outputs=() code=0
  scripts/package.sh --quick
  for test in check-packages test-linux-packages test-windows-packages test-windows-signing; do
    "scripts/$test.sh" "$packages" >"$results/packages-$test.txt" 2>&1 &
    outputs+=("$!")
  done
  for test in "${outputs[@]}"; do wait "$test" || code=1; done
  cat "$results"/packages-*.txt
  return "$code"
}

step_bench() { scripts/run-benchmarks.sh --check; }
