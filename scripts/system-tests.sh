#!/usr/bin/env bash
# Builds the bridge, the virtual simulator and the system tests, and runs them on a real HID stack: on this machine's
# where root runs this and it has /dev/uhid, else in the small test machine.
#   system-tests.sh [TEST OPTION...]             this system's build
#   system-tests.sh --windows [TEST OPTION...]   the Windows build under Wine: with a SimConnect.dll, then without one
#                                                over TCP and over the simulator's pipe; in two test machines at once
# Test options are GoogleTest's, such as --gtest_filter=Session.*; the result files are build/linux/system-tests*.xml.
set -euo pipefail
cd "$(dirname "$0")/.."

build=$PWD/build/linux
prefix=$PWD/build/wine-hid
windows=""
if [ "${1:-}" = --windows ]; then
  shift
  windows=yes
fi

[ -e "$build/build.ninja" ] || cmake --preset linux >/dev/null
cmake --build --preset linux --target VantrelBridgeHID virtual-simulator system-tests
if [ -n "$windows" ]; then
  [ -e build/windows/build.ninja ] || cmake --preset windows >/dev/null
  cmake --build --preset windows --target VantrelBridgeHID virtual-simulator simconnect-dll hid-watch
  scripts/vm/make-wine-prefix.sh "$prefix"
fi

share=$(mktemp -d "$build/system-tests.XXXXXX")
halves=()
clean_up() {
  [ "${#halves[@]}" -eq 0 ] || kill "${halves[@]}" 2>/dev/null || true
  rm -rf "$share"
}
trap clean_up EXIT
tests=("$build/tests/system/system-tests" "$@" "--gtest_output=xml:$share/")
on_wine=(scripts/vm/run-under-wine-hid.sh "$prefix")
code=0

if [ -w /dev/uhid ] && [ "$(id -u)" -eq 0 ]; then
  if [ -n "$windows" ]; then
    "${on_wine[@]}" all "${tests[@]}" || code=$?
  else
    "${tests[@]}" || code=$?
  fi
elif [ -z "$windows" ]; then
  scripts/vm/run-in-vm.sh --time 300 --share "$share" "${tests[@]}" || code=$?
else
  # A machine of software alone does one thing at a time, so one for each of two processors.
  for half in first second; do
    mkdir "$share/$half"
    scripts/vm/run-in-vm.sh --time 1500 --memory 3072 --share "$share/$half" \
      "${on_wine[@]}" "$half" "${tests[@]/#--gtest_output=*/--gtest_output=xml:$share/$half/}" >"$share/$half.log" 2>&1 &
    halves+=($!)
  done
  wait "${halves[0]}" || code=$?
  wait "${halves[1]}" || code=$?
  halves=()
  cat "$share/first.log" "$share/second.log"
fi
find "$share" -name 'system-tests*.xml' -exec cp {} "$build/" \;
exit "$code"
