#!/usr/bin/env bash
# Formatting, clang-tidy, and the rules of the house that a script can see. Needs build/linux/compile_commands.json.
set -uo pipefail
cd "$(dirname "$0")/.."

passed=0 failed=0
check() { # title, command that prints nothing and succeeds when all is well
  local title=$1 output
  shift
  if output=$("$@" 2>&1) && [ -z "$output" ]; then
    passed=$((passed + 1))
    echo "ok: $title"
  else
    failed=$((failed + 1))
    echo "FAILED: $title"
    printf '%s\n' "$output" | head -n 60
  fi
}

sources() { git ls-files -co --exclude-standard -- "$@"; }

formatting() { sources '*.cpp' '*.h' | xargs clang-format --dry-run -Werror; }

tidy() {
  # Only what this machine's compile commands cover: the Windows sources are the cross compiler's.
  sources 'src/*.cpp' 'simulation/*.cpp' | grep -vE '^src/(platform|wire)/windows/' |
    xargs -P2 -n4 clang-tidy -p build/linux --quiet 2>&1 | grep -E 'warning:|error:'
  [ "${PIPESTATUS[2]}" -ne 123 ]
}

no_system_ifdefs() {
  ! grep -nE '#\s*(el)?if.*(_WIN32|__linux__|WIN32|__unix__)' $(sources 'src/*' 'simulation/*' | grep -vE '^src/(platform|wire)/(linux|windows)/')
}

# Of the subsystem that the virtual boards stand in for, they know only what is on the wire.
boards_know_only_reports() {
  ! grep -nE '#include "hid/' $(sources 'simulation/boards/*' 'simulation/simulator/*') |
    grep -vE '#include "hid/(hid_protocol|hex_text)\.h"'
}

# On Windows a path's bytes must be converted first, and std::filesystem gives an open file's old size.
paths_go_through_file_system() {
  ! grep -nE 'std::filesystem|<filesystem>|FileSystem::(fromBytes|toBytes)' \
    $(sources 'src/*' | grep -vE '^src/platform/((linux|windows)/)?file_system\.') &&
    ! grep -nE 'filesystem::file_size' src/platform/file_system.* src/platform/windows/file_system.cpp
}

no_switched_off_tests() { ! grep -nE 'DISABLED_|GTEST_SKIP' $(sources 'tests/*' | grep -E '\.(cpp|h)$'); }

check "clang-format" formatting
check "clang-tidy" tidy
check "no system #ifdef" no_system_ifdefs
check "each library links what it includes" scripts/check-layers.py
check "virtual boards know only the report protocol" boards_know_only_reports
check "only the file system's own files use std::filesystem" paths_go_through_file_system
check "no test is switched off" no_switched_off_tests
echo "check: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
