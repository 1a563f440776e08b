#!/usr/bin/env bash
# Runs half of the system tests against the Windows build, in a machine of their own, on Wine's HID stack, which is
# booted once for all of them:
#   run-under-wine-hid.sh PREFIX first|second RESULT-FOLDER TEST-PROGRAM [TEST OPTION...]
# Each way to the simulator is a run of its own. All tests that aren't only for Linux run with the DLL. The two ways
# without it share every other part of the bridge with that, so they run only the sessions, and not the one that is about
# the simulator's process.
set -uo pipefail
. "$(dirname "$0")/../lib.sh"
no_other_options "$@"
[ $# -ge 4 ] || usage_error "too few arguments"

export WINEPREFIX=$1 WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=' WINELOADER=/usr/lib/wine/wine64
half=$2
results=$3
program=$4
shift 4
mkdir -p "$results" /run/udev
# Wine hears of boards that come later only from udev.
/lib/systemd/systemd-udevd --daemon --resolve-names=never
wineserver --persistent
trap 'wineserver -k' EXIT
wine cmd /c exit >/dev/null 2>&1

failures=0
run_tests() { # system, filter, then test options, of which a filter counts in place of ours
  local system=$1 filter=$2 output=$results/$1.txt
  shift 2
  echo "== $system"
  BRIDGE_TEST_SYSTEM=$system "$program" "--gtest_filter=$filter" "$@" \
    "--gtest_output=xml:$results/system-tests-$system-$half.xml" | tee "$output"
  [ "${PIPESTATUS[0]}" -eq 0 ] || failures=$((failures + 1))
  # A filter that fits nothing is no failure to the test program.
  if [ $# -eq 0 ] && ! grep -q '^\[  PASSED  \] [1-9]' "$output"; then
    say "nothing was tested as $system" >&2
    failures=$((failures + 1))
  fi
}

export GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=0
[ "$half" = first ] || GTEST_SHARD_INDEX=1
run_tests windows-dll '-Linux*:Hidraw*' "$@"
unset GTEST_TOTAL_SHARDS GTEST_SHARD_INDEX
without_dll=windows-tcp
[ "$half" = first ] || without_dll=windows-pipe
run_tests "$without_dll" 'Session.*-*SimulatorsProcess' "$@"
exit "$((failures > 0))"
