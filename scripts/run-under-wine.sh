#!/usr/bin/env bash
# Runs unit test programs of the Windows build, once built, under Wine in a prefix of their own, two at a time.
#   run-under-wine.sh NAME...   such as wire-tests
set -uo pipefail
. "$(dirname "$0")/lib.sh"
no_other_options "$@"
[ $# -gt 0 ] || usage_error "no program named"

start_wine
trap end_wine EXIT

mkdir -p build/test-logs
run_program() { # name
  timeout 900 wine "build/windows/unit/$1.exe" --gtest_brief=1 --gtest_color=no >"build/test-logs/wine-$1.txt" 2>&1
}
export -f run_program

code=0
printf '%s\n' "$@" | xargs -P2 -I{} bash -c 'run_program {}' || code=1
for name in "$@"; do
  echo "== $name.exe"
  tr -d '\r' <"build/test-logs/wine-$name.txt"
done
exit "$code"
