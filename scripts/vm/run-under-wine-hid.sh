#!/usr/bin/env bash
# Runs the system tests against the Windows build, on Wine's HID stack, which is booted once for all of them:
#   run-under-wine-hid.sh PREFIX all|first|second TEST-PROGRAM [TEST OPTION...]
# Each way to the simulator is a run of its own. All tests run with the DLL. The two ways without it share every other
# part of the bridge with that, so they run what concerns the simulator's side. `first` and `second` are the halves of
# all this.
set -uo pipefail

export WINEPREFIX=$1 WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=' WINELOADER=/usr/lib/wine/wine64
part=$2
shift 2
# Wine hears of boards that come later only from udev.
if ! [ -e /run/udev/control ]; then
  mkdir -p /run/udev
  /lib/systemd/systemd-udevd --daemon --resolve-names=never
fi
wineserver --persistent
trap 'wineserver -k' EXIT
wine cmd /c exit >/dev/null 2>&1

# What only Linux has is left out. A filter among the test options stands behind these, and so counts in their place.
everything='-Linux*:Hidraw*'
simulator_side='BoardEvents.Press*:BoardEvents.Knob*:Lights.Follow*:Lights.SimStatus*:Session.*'
failures=0
run_tests() { # system, filter, then the program and its options
  local system=$1 filter=$2
  shift 2
  echo "== $system"
  BRIDGE_TEST_SYSTEM=$system "$1" "--gtest_filter=$filter" "${@:2}" || failures=$((failures + 1))
}

case "$part" in
  first) export GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=0 ;;
  second) export GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=1 ;;
esac
run_tests windows-dll "$everything" "$@"
unset GTEST_TOTAL_SHARDS GTEST_SHARD_INDEX
[ "$part" = second ] || run_tests windows-tcp "$simulator_side" "$@"
[ "$part" = first ] || run_tests windows-pipe "$simulator_side" "$@"
exit "$((failures > 0))"
