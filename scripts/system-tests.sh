#!/usr/bin/env bash
# Builds the bridge, the virtual simulator and the system tests, and runs them on a real HID stack: on this machine's
# where root runs this and it has /dev/uhid, else in the small test machine.
#   system-tests.sh [TEST OPTION...]             this system's build
#   system-tests.sh --windows [TEST OPTION...]   the Windows build under Wine, in two test machines at once: with a
#                                                SimConnect.dll, then without one over TCP and over the simulator's pipe
# Test options are GoogleTest's, such as --gtest_filter=Session.*; the result files are build/linux/system-tests*.xml.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

build=$PWD/build/linux
prefix=$PWD/build/wine-hid
program=$build/tests/system/system-tests

run_natively() {
  # Leaves out what only Windows has. A filter among the options comes after this one, and the last one counts.
  local tests=("$program" '--gtest_filter=-Windows*' "$@")
  if [ -w /dev/uhid ] && [ "$(id -u)" -eq 0 ]; then
    "${tests[@]}" "--gtest_output=xml:$build/system-tests.xml"
  else
    local code=0
    scripts/vm/run-in-vm.sh --time 1200 --share "$share" "${tests[@]}" "--gtest_output=xml:$share/system-tests.xml" || code=$?
    return "$code"
  fi
}

# One machine for each of two processors, and each with one alone: machines that share them wait for each other's most
# of the time.
run_on_wine() {
  local half code=0
  for half in first second; do
    scripts/vm/run-in-vm.sh --time 3600 --memory 3072 --cpus 1 --share "$share/$half" \
      scripts/vm/run-under-wine-hid.sh "$prefix" "$half" "$share/$half" "$program" "$@" >"$share/$half.log" 2>&1 &
    halves+=($!)
  done
  wait "${halves[0]}" || code=$?
  wait "${halves[1]}" || code=$?
  halves=()
  cat "$share/first.log" "$share/second.log"
  return "$code"
}

runner=run_natively
case "${1:-}" in
  --windows) shift; runner=run_on_wine ;;
  --gtest_*) ;;
  *) at_most 0 "$@" ;;
esac

build_preset linux system-tests
if [ "$runner" = run_on_wine ]; then
  build_preset windows VantrelBridgeHID virtual-simulator simconnect-dll hid-watch vantrel
  scripts/vm/make-wine-prefix.sh "$prefix"
fi

share=$(mktemp -d "$build/system-tests.XXXXXX")
halves=()
clean_up() {
  [ "${#halves[@]}" -eq 0 ] || kill "${halves[@]}" 2>/dev/null || true
  rm -rf "$share"
}
trap clean_up EXIT

code=0
"$runner" "$@" || code=$?
find "$share" -name 'system-tests*.xml' -exec cp {} "$build/" \;
exit "$code"
