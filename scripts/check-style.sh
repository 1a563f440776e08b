#!/usr/bin/env bash
# Checks formatting, clang-tidy, shellcheck, and the rules of the code that a script can check. Takes no arguments.
set -uo pipefail
. "$(dirname "$0")/lib.sh"
at_most 0 "$@"

prints_nothing() { # command, which must succeed as well
  local printed
  printed=$("$@" 2>&1) && [ -z "$printed" ] && return
  head -n 40 <<<"$printed"
  return 1
}

sources() { git ls-files -co --exclude-standard -- "$@"; }

search() { # pattern; the files' names come on standard input
  xargs grep -HnE -- "$1" || true
}

formatting() { sources '*.cpp' '*.h' | xargs clang-format --dry-run -Werror; }

# Most of clang-tidy's time goes into the headers of libraries, once for each file that it is given. So it is given all
# sources of src/, of simulation/ and of companion/ as one, and fewer where their names clash. Two checks are left out: such
# a file's includes are suspicious to one, and on the headers of the companion's libraries another takes as long as all the
# others together.
tidy_files() {
  local without=-bugprone-suspicious-include
  [[ $1 != companion/* ]] || without+=,-performance-unnecessary-value-param
  local flags=(-std=c++20 -Isrc -Isrc/wire/linux -I. -isystem build/third-party '-DVANTREL_VERSION="0"'
    '-DBRIDGE_VERSION="0"' -DWRITES_CRASH_LINE=true)
  local whole=build/tidy/${1//\//-} output status=0
  if [ $# -eq 1 ]; then
    clang-tidy --quiet "$1" -- "${flags[@]}"
    return
  fi
  printf '#include "%s"\n' "$@" >"$whole"
  output=$(clang-tidy --quiet --checks="$without" "$whole" -- "${flags[@]}" 2>&1) || status=$?
  if [[ $output == *'[clang-diagnostic-error]'* ]]; then
    tidy_files "${@:1:$# / 2}" && tidy_files "${@:$# / 2 + 1}"
    return
  fi
  printf '%s\n' "$output"
  return "$status"
}

# The Windows sources are the cross compiler's alone.
tidy() {
  local lines
  mkdir -p build/tidy
  lines=$(sources 'src/*.cpp' 'simulation/*.cpp' 'companion/*.cpp' | grep -v '/windows/' |
    awk -F/ '{ group = $1 == "simulation" && $NF == "main.cpp" ? $0 : $1; files[group] = files[group] " " $0 }
      END { for (group in files) print files[group] }')
  export -f tidy_files
  # shellcheck disable=SC2016
  xargs -P2 -I{} bash -c 'tidy_files {}' <<<"$lines" 2>&1 | grep -E 'warning:|error:'
  [ "${PIPESTATUS[0]}" -eq 0 ]
}

shell_scripts() { sources '*.sh' '.ci/run' 'scripts/vm/guest-init' cmake/lld/collect2 | xargs shellcheck; }

no_system_ifdefs() {
  sources 'src/*' 'simulation/*' 'companion/*' |
    grep -vE '^(src/(platform|wire)|simulation/simulator|companion/(cli|page))/(linux|windows)/' |
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

check "clang-format" prints_nothing formatting
check "clang-tidy" prints_nothing tidy
check "shellcheck" prints_nothing shell_scripts
check "no system #ifdef" prints_nothing no_system_ifdefs
check "each library links what it includes" prints_nothing scripts/check-layers.py
check "virtual boards know only the report protocol" prints_nothing boards_know_only_reports
check "only the file system's own files use std::filesystem" prints_nothing paths_go_through_file_system
check "no test is switched off" prints_nothing no_switched_off_tests
report_checks
