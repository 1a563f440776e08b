#!/usr/bin/env bash
# Checks that the Windows executable needs nothing from its user's machine.
#   check-windows-executable.sh [EXECUTABLE]   build/windows/VantrelBridgeHID.exe by default
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"

# Each is in the system folder of every Windows 10 and 11.
allowed_dlls=(hid.dll kernel32.dll msvcrt.dll setupapi.dll shell32.dll user32.dll ws2_32.dll)
size_limit=$((4 * 1024 * 1024))

executable=build/windows/VantrelBridgeHID.exe
[ $# -eq 0 ] || executable=$(callers_path "$1")
[ -s "$executable" ] || die "$executable: no such file"

headers=$(x86_64-w64-mingw32-objdump -p "$executable")
sections=$(x86_64-w64-mingw32-objdump -h "$executable")
in_headers() { grep -qE "$1" <<<"$headers"; }
in_sections() { grep -qE "$1" <<<"$sections"; }

check "is for x86-64" in_headers 'file format pei-x86-64$'
check "is of the windowed subsystem, so that no console window opens" in_headers '^Subsystem\s+00000002\s'
check "may be loaded anywhere (DYNAMIC_BASE)" in_headers '^\s+DYNAMIC_BASE$'
check "may be loaded anywhere in 64 bits (HIGH_ENTROPY_VA)" in_headers '^\s+HIGH_ENTROPY_VA$'
check "has what moving it takes (.reloc)" in_sections '\s\.reloc\s'
check "runs no data as code (NX_COMPAT)" in_headers '^\s+NX_COMPAT$'
check "has resources (.rsrc)" in_sections '\s\.rsrc\s'

is_allowed() { printf '%s\n' "${allowed_dlls[@]}" | grep -qxF -- "$1"; }
mapfile -t imports < <(sed -nE 's/^\s*DLL Name: (.*)$/\L\1/p' <<<"$headers")
check "imports something" test "${#imports[@]}" -gt 0
for dll in "${imports[@]}"; do
  check "$dll is a system DLL" is_allowed "$dll"
done

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
x86_64-w64-mingw32-strip -o "$stripped" "$executable"
size=$(stat -c %s "$stripped")
echo "stripped: $size bytes; imports: ${imports[*]}"
check "is smaller than $size_limit bytes stripped" test "$size" -lt "$size_limit"

report_checks
