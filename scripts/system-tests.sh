#!/usr/bin/env bash
# Builds the bridge, the virtual simulator and the system tests, and runs them on a real HID stack: on this machine's
# where root runs this and it has /dev/uhid, else in the small test machine. Arguments go to the tests, such as
# --gtest_filter=Session.*; the result file is build/linux/system-tests.xml.
set -euo pipefail
cd "$(dirname "$0")/.."

build=$PWD/build/linux
[ -e "$build/build.ninja" ] || cmake --preset linux >/dev/null
cmake --build --preset linux --target VantrelBridgeHID virtual-simulator system-tests

run=("$build/tests/system/system-tests" "$@")
if [ -w /dev/uhid ] && [ "$(id -u)" -eq 0 ]; then
  exec "${run[@]}" "--gtest_output=xml:$build/system-tests.xml"
fi
share=$(mktemp -d "$build/system-tests.XXXXXX")
trap 'rm -rf "$share"' EXIT
code=0
scripts/vm/run-in-vm.sh --time 300 --share "$share" "${run[@]}" "--gtest_output=xml:$share/system-tests.xml" || code=$?
[ ! -e "$share/system-tests.xml" ] || cp "$share/system-tests.xml" "$build/"
exit "$code"
