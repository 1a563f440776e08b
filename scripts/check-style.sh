#!/usr/bin/env bash
# Checks formatting, clang-tidy, shellcheck, and the rules of the code that a script can check. Takes no arguments.
# Configures the preset "quick", whose compile commands and precompiled headers clang-tidy reads.
set -uo pipefail
. "$(dirname "$0")/lib.sh"
at_most 0 "$@"

prints_nothing() { output=$("$@" 2>&1) && [ -z "$output" ]; }

check() { # title, command that prints nothing and succeeds when all is well
  local title=$1 output
  shift
  if count prints_nothing "$@"; then
    echo "ok: $title"
  else
    echo "FAILED: $title"
    printf '%s\n' "$output" | head -n 60
  fi
}

sources() { git ls-files -co --exclude-standard -- "$@"; }

search() { # pattern; the files' names come on standard input
  xargs grep -HnE -- "$1" || true
}

formatting() { sources '*.cpp' '*.h' | xargs clang-format --dry-run -Werror; }

tidy() {
  # Only what this machine's compile commands cover: the Windows sources are the cross compiler's.
  sources 'src/*.cpp' 'simulation/*.cpp' | grep -vE '/windows/' |
    xargs -P2 -n4 clang-tidy -p build/quick --quiet 2>&1 | grep -E 'warning:|error:'
  [ "${PIPESTATUS[2]}" -ne 123 ]
}

prepare_tidy() {
  cmake --preset quick >/dev/null && ninja -C build/quick CMakeFiles/bridge-wire.dir/cmake_pch.hxx.pch >/dev/null
}

shell_scripts() { sources '*.sh' '.ci/run' 'scripts/vm/guest-init' | xargs shellcheck; }

no_system_ifdefs() {
  sources 'src/*' 'simulation/*' | grep -vE '^(src/(platform|wire)|simulation/simulator)/(linux|windows)/' |
    search '#\s*(el)?if.*(_WIN32|__linux__|WIN32|__unix__)'
}

# Virtual boards take the place of real ones: all they know of the bridge is the report protocol.
boards_know_only_reports() {
  sources 'simulation/boards/*' 'simulation/simulator/*' | search '#include "hid/' |
    grep -vE '#include "hid/(hid_protocol|hex_text)\.h"'
  true
}

# On Windows a path's bytes must be converted first, and std::filesystem gives an open file's old size.
paths_go_through_file_system() {
  sources 'src/*' | grep -vE '^src/platform/((linux|windows)/)?file_system\.' |
    search 'std::filesystem|<filesystem>|FileSystem::(fromBytes|toBytes)'
  sources 'src/platform/file_system.*' src/platform/windows/file_system.cpp | search 'filesystem::file_size'
}

no_switched_off_tests() { sources 'tests/*.cpp' 'tests/*.h' | search 'DISABLED_|GTEST_SKIP'; }

check "clang-format" formatting
prepare_tidy || die "the preset \"quick\" can't be configured"
check "clang-tidy" tidy
check "shellcheck" shell_scripts
check "no system #ifdef" no_system_ifdefs
check "each library links what it includes" scripts/check-layers.py
check "virtual boards know only the report protocol" boards_know_only_reports
check "only the file system's own files use std::filesystem" paths_go_through_file_system
check "no test is switched off" no_switched_off_tests
report_checks
