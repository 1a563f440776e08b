#!/usr/bin/env bash
# Runs unit test programs of the Windows build, once built, under Wine in a prefix of their own.
#   run-under-wine.sh NAME...   such as wire-tests
set -uo pipefail
. "$(dirname "$0")/lib.sh"
no_other_options "$@"
[ $# -gt 0 ] || usage_error "no program named"

start_wine
trap end_wine EXIT

mkdir -p build/test-logs
failures=0
for name in "$@"; do
  echo "== $name.exe"
  output=build/test-logs/wine-$name.txt
  timeout 900 wine "build/windows/unit/$name.exe" --gtest_brief=1 --gtest_color=no >"$output" 2>&1 || failures=$((failures + 1))
  tr -d '\r' <"$output"
done
exit "$((failures > 0))"
