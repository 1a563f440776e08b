#!/usr/bin/env bash
# Tests the pages of vantrel in a real browser.
#   browser-tests.sh [PRESET]        builds vantrel and the bridge in that preset (linux by default; asan and tsan check
#                                    them while the browser drives them, without the tests of a page's looks;
#                                    windows runs the tests that depend on the system, under Wine)
#   browser-tests.sh --looks         only tests the pages' looks, with the preset linux
#   browser-tests.sh --program FILE  tests a program that is already built
set -euo pipefail
. "$(dirname "$0")/lib.sh"

looks_only=false
if [ "${1:-}" = --looks ]; then
  looks_only=true
  shift
fi
case "${1:-linux}" in
  --program)
    [ $# -eq 2 ] || usage_error "--program needs a file"
    program=$(callers_path "$2")
    ;;
  *)
    at_most 1 "$@"
    preset=${1:-linux}
    build_preset "$preset" vantrel VantrelBridgeHID
    program=$PWD/build/$preset/vantrel
    [ "$preset" != windows ] || program+=.exe
    ;;
esac

output=$(mktemp)
trap 'rm -f "$output"' EXIT
if [[ $program == *.exe ]]; then
  start_wine
  trap 'rm -f "$output"; end_wine' EXIT
  # The setup page shows this log, in which other tests may have left lines.
  rm -rf "$WINEPREFIX/drive_c/ProgramData/VantrelBridge"
fi

install_node_modules tests/browser
cd tests/browser
tests=(./*.test.js)
[ "$looks_only" = false ] || tests=(./*looks.test.js)
case "${preset:-}" in
  # What a page looks like is the same whatever checks the program.
  asan | tsan) mapfile -t tests < <(printf '%s\n' "${tests[@]}" | grep -v looks) ;;
  # What the pages do is the same on both systems, but for files, processes and the simulator's list of programs.
  windows) tests=(./program.test.js ./setup_guide.test.js) ;;
esac

export VANTREL=$program
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
result=0
node --test --test-reporter=tap "${tests[@]}" | tee "$output" || result=$?
total() { awk -v name="$1" '$1 == "#" && $2 == name { print $3 }' "$output"; }
passed=$(total pass) failed=$(($(total fail) + $(total cancelled)))
report_checks && [ "$result" -eq 0 ]
