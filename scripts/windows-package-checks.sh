# shellcheck shell=bash disable=SC2154
# What test-windows-packages.sh looks at in an installation. Sourced, not run; the places are its variables.

exits_with() { # exit code, command...
  local expected=$1 code=0
  shift
  "$@" || code=$?
  [ "$code" -eq "$expected" ] || { echo "exit code $code"; return 1; }
}

has_ended() { ! kill -0 "$1" 2>/dev/null; }

# No file may grow beyond 1 MiB, which is less than each program.
with_a_full_disk() { (trap '' XFSZ; ulimit -f 1024; "$@"); }

has_entry() { grep -q '<Name>VantrelBridgeHID</Name>' "$1/EXE.xml"; }

each_exe_xml() { "$@" "$store" && "$@" "$shop"; }

doctor_is_content() {
  wine "$installed/vantrel.exe" doctor | tr -d '\r' | tee /dev/stderr >"$work/doctor"
  grep -q '^\[ok\] MSFS 2020 (Store), EXE.xml' "$work/doctor" &&
    test "$(grep -cE '^\[(x|!)\]' "$work/doctor")" -eq 1 && grep -q '^\[x\]  Boards: no board' "$work/doctor"
}

registry_value_is() { # value's name, text
  wine reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\VantrelBridge' /v "$1" |
    tr -d '\r' | grep -qE " $1 +REG_SZ +$2\$"
}

# The zip's files, with the sample set in `sample` and a copy of it as the configuration.
check_installed_files() {
  (cd "$work/zip/VantrelBridge-$version" && find . -type f | sed -E 's|^./config/|./sample/|'
    find ./config -type f; echo ./uninstall.exe) | sort >"$work/expected"
  (cd "$installed" && find . -type f | sort) >"$work/found"
  check "the files are those of the zip" diff "$work/expected" "$work/found"
}

wide() { printf '%s' "$1" | iconv -t UTF-16LE | od -An -v -tx1 | tr -d ' \n'; }

shortcut_has() { # name, text in UTF-16
  od -An -v -tx1 "$menu/$1.lnk" | tr -d ' \n' | grep -q "$(wide "$2")"
}

check_shortcuts() {
  check "the start menu has three entries" test "$(find "$menu" -type f | wc -l)" -eq 3
  check "the setup page's entry" shortcut_has "VantrelBridge setup" setup
  check "the demo's entry" shortcut_has "Try it without hardware" demo
  check "the log's entry" shortcut_has Log logs
}
