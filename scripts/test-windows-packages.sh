#!/usr/bin/env bash
# Installs, updates and removes the Windows packages under Wine, as their users do, and plugs a board into the installed
# bridge.
#   test-windows-packages.sh [DIST]   the folder with installer and zip, dist by default
set -uo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"
# Otherwise root may write to write-protected files, in Wine too.
if [ "$(id -u)" -eq 0 ] && [ -z "${WITHOUT_OVERRIDE:-}" ]; then
  cd "$OLDPWD" && WITHOUT_OVERRIDE=1 exec setpriv --bounding-set=-dac_override,-dac_read_search \
    --inh-caps=-dac_override,-dac_read_search "$script" "$@"
fi
dist=dist
[ $# -eq 0 ] || dist=$(callers_path "$1")
dist=$(realpath "$dist")
setup=$(echo "$dist"/VantrelBridge-*-setup.exe)
version=${setup##*/VantrelBridge-}
version=${version%-setup.exe}
[ -f "$setup" ] || die "no installer in $dist"

work=$(mktemp -d)
export WINEPREFIX=$work/pc WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d' LOCPATH=$work/locales LANGUAGE=C
machine=""
trap '[ -z "$machine" ] || kill "$machine" 2>/dev/null; wineserver -k; wineserver -w; end_screen; rm -rf "$work"' EXIT
. scripts/windows-package-checks.sh
. scripts/windows-package-pages.sh

# --- What the stories below do

# Only the test machine has a HID stack for boards.
start_test_machine() {
  build_preset linux plug-in-board
  scripts/vm/make-wine-prefix.sh build/wine-hid
  scripts/vm/run-in-vm.sh --time 1500 --memory 3072 --cpus 1 scripts/vm/test-windows-installation.sh "$PWD/build/wine-hid" "$setup" \
    >"$work/machine" 2>&1 &
  machine=$!
}

make_older_packages() {
  unzip -q "$dist/VantrelBridge-$version-windows-x64.zip" -d "$work/zip"
  cp -r "$work/zip/VantrelBridge-$version" "$work/older"
  echo "gone in the next version" >"$work/older/docs/old.md"
  packaging/windows/build-packages.sh "$work/older" "$work/older-dist" 0.0.1 >/dev/null
  older=$work/older-dist/VantrelBridge-0.0.1-setup.exe
}

# Whose bridge Windows doesn't start, as if a virus scanner held it back.
make_blocked_packages() {
  cp -r "$work/zip/VantrelBridge-$version" "$work/blocked"
  echo 'no program' >"$work/blocked/VantrelBridgeHID.exe"
  packaging/windows/build-packages.sh "$work/blocked" "$work/blocked-dist" "$version" >/dev/null
  blocked=$work/blocked-dist/VantrelBridge-$version-setup.exe
}

# A prefix of its own for a user of that name, with the code page of that locale.
start_pc() { # locale, user name
  local user_folders='HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders'
  local roaming="C:\\users\\$2\\AppData\\Roaming"
  [ -d "$LOCPATH/$1" ] || { mkdir -p "$LOCPATH"; localedef -i "${1%.*}" -f UTF-8 "$LOCPATH/$1"; }
  wineserver -k 2>/dev/null
  export LC_ALL=$1
  rm -rf "$WINEPREFIX"
  scripts/vm/make-wine-prefix.sh "$WINEPREFIX" || die "no Wine prefix can be made"
  wine reg add "$user_folders" /v 'Local AppData' /t REG_EXPAND_SZ /d "C:\\users\\$2\\AppData\\Local" /f
  wine reg add "$user_folders" /v 'AppData' /t REG_EXPAND_SZ /d "$roaming" /f
  wine reg add "$user_folders" /v 'Programs' /t REG_EXPAND_SZ /d "$roaming\\Microsoft\\Windows\\Start Menu\\Programs" /f
  wineserver -k -w
  wineserver -p
  home=$WINEPREFIX/drive_c/users/$2
  data=$WINEPREFIX/drive_c/ProgramData/VantrelBridge
  installed=$home/AppData/Local/Programs/VantrelBridge
  menu="$home/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/VantrelBridge"
  mkdir -p "$home/AppData/Local/Programs" "${menu%/*}"
  store=$home/AppData/Local/Packages/Microsoft.FlightSimulator_8wekyb3d8bbwe/LocalCache
  shop="$home/AppData/Roaming/Microsoft Flight Simulator 2024"
  make_simulator "$store" "$(user_path "$2" 'Local\Packages\Microsoft.FlightSimulator_8wekyb3d8bbwe\LocalCache')"
  make_simulator "$shop" "$(user_path "$2" 'Roaming\Microsoft Flight Simulator 2024')"
} >/dev/null

user_path() { printf 'C:\\users\\%s\\AppData\\%s' "$1" "$2"; }

# A simulator's folder with the module and an EXE.xml that lists another program.
make_simulator() { # folder, its Windows name
  local module=$1/Packages/Community/mobiflight-event-module
  mkdir -p "$module/modules"
  printf 'InstalledPackagesPath "%s\\Packages"\r\n' "$2" >"$1/UserCfg.opt"
  printf '{"dependencies": [], "title": "Event Module", "package_version": "1.0.1"}' >"$module/manifest.json"
  printf 'module' >"$module/modules/MobiFlightWasmModule.wasm"
  printf '{"content": [{"path": "modules/MobiFlightWasmModule.wasm", "size": 6, "date": 132402817714110148}]}' \
    >"$module/layout.json"
  printf '%s\r\n' '<?xml version="1.0" encoding="windows-1252"?>' '<SimBase.Document Type="Launch" version="1,0">' \
    '  <Launch.Addon>' '    <Name>Other</Name>' '    <Path>C:\windows\notepad.exe</Path>' '  </Launch.Addon>' \
    '</SimBase.Document>' >"$1/EXE.xml"
}

# All that a user can see, apart from the backups that the bridge leaves beside EXE.xml.
picture() { # file
  (cd "$WINEPREFIX/drive_c" && find users ProgramData \( -name Temp -prune \) -o ! -name 'EXE.xml.bak' -print |
    sort | while IFS= read -r name; do
    if [ -f "$name" ]; then sha256sum "$name"; else echo "$name"; fi
  done) >"$1"
}

# Starts the installed bridge, whose process id is then in bridge_pid, and waits until it runs.
start_bridge() {
  wine "$installed/VantrelBridgeHID.exe" >/dev/null 2>&1 &
  bridge_pid=$!
  eventually grep -qs 'Application run loop started' "$data/logs/VantrelBridgeHID.log"
}

# Keeps a file open in a program until `release_file`.
hold_file() {
  (cd "${1%/*}" && wine cmd /c "ping -n 600 127.0.0.1 <${1##*/}" >/dev/null 2>&1) &
  eventually is_open "$1"
}

is_open() { [ -n "$(find /proc/[0-9]*/fd -lname "$1" -print -quit 2>/dev/null)" ]; }

release_file() { wine taskkill /F /IM ping.exe >/dev/null; }

uninstall() { # switches...
  wine "$installed/uninstall.exe" /S "$@"
  eventually test ! -e "$installed/uninstall.exe"
}

# --- Stories

installs_and_removes() { # locale, user name
  echo "== $2, $1"
  start_pc "$1" "$2"
  picture "$work/before"
  check "installs silently" wine "$setup" /S
  check_installed_files
  check_shortcuts
  check "both simulators start the bridge" each_exe_xml has_entry
  check "vantrel doctor finds nothing but the missing board" doctor_is_content
  check "the bridge runs from the installed place" start_bridge
  check "uninstalls while it runs" uninstall /REMOVEDATA
  check "the bridge has ended" eventually has_ended "$bridge_pid"
  picture "$work/after"
  check "all files and both EXE.xml are as before" diff "$work/before" "$work/after"
  wineserver -k -w
  check "nothing is left in the registry" not grep -qi vantrel "$WINEPREFIX/user.reg" "$WINEPREFIX/system.reg"
}

updates() {
  echo "== update"
  start_pc de_DE.UTF-8 'Jürgen Weiß'
  check "the older version installs" wine "$older" /S
  check "an older file is there" test -f "$installed/docs/old.md"
  hold_file "$installed/docs/README.md"
  check "a file in use fails the update" exits_with 2 wine "$setup" /S
  check "and leaves the older version" test -f "$installed/docs/old.md" -a ! -e "$installed/unpacked.tmp"
  release_file
  echo '{"mine": 1}' >"$installed/config/buttons.json"
  rm "$installed/config/hid_event_map.json"
  sed -i 's/config.json"</mine.json"</' "$store/EXE.xml"
  cp -r "$installed/config" "$work/config"
  cp "$store/EXE.xml" "$work/EXE.xml"
  check "the bridge of the older version runs" start_bridge
  check "a full disk fails the update" not with_a_full_disk wine "$setup" /S
  check "and leaves the older version" test -f "$installed/docs/old.md" -a ! -e "$installed/unpacked.tmp"
  check "and the bridge running" not has_ended "$bridge_pid"
  check "the new version installs over it" wine "$setup" /S
  check "the bridge has ended" eventually has_ended "$bridge_pid"
  check "the configuration is as it was" diff -r "$work/config" "$installed/config"
  check "the entry's changes are kept" cmp "$work/EXE.xml" "$store/EXE.xml"
  check "the older version's file is gone" test ! -e "$installed/docs/old.md"
  check "the new sample set is beside the configuration" test -f "$installed/sample/hid_event_map.json"
  check "Windows lists the new version" registry_value_is DisplayVersion "$version"
  check "uninstalls" uninstall
  check "the configuration stays" diff -r "$work/config" "$installed/config"
  check "the log stays" test -s "$data/logs/VantrelBridgeHID.log"
}

refuses_what_it_cannot_edit() {
  echo "== EXE.xml"
  start_pc de_DE.UTF-8 'Zoë Lindgren'
  head -n 6 "$shop/EXE.xml" >"$work/damaged"
  cp "$work/damaged" "$shop/EXE.xml"
  cp "$store/EXE.xml" "$work/good"
  check "a damaged file gives exit code 3" exits_with 3 wine "$setup" /S
  check "and stays as it is" cmp "$work/damaged" "$shop/EXE.xml"
  check "and so does the other simulator's" cmp "$work/good" "$store/EXE.xml"
  check "uninstalls" uninstall /REMOVEDATA
  cp "$work/good" "$shop/EXE.xml"
  chmod a-w "$shop/EXE.xml"
  check "a write-protected file gives exit code 3" exits_with 3 wine "$setup" /S
  check "and stays as it is" cmp "$work/good" "$shop/EXE.xml"
  check "and so does the other simulator's" cmp "$work/good" "$store/EXE.xml"
  chmod u+w "$shop/EXE.xml"
  check "an update registers on demand" wine "$setup" /S /REGISTER
  chmod a-w "$shop/EXE.xml"
  check "a write-protected entry stops the uninstaller" \
    exits_with 2 wine "$installed/uninstall.exe" /S '_?=C:\users\Zoë' 'Lindgren\AppData\Local\Programs\VantrelBridge'
  check "and both entries stay" each_exe_xml has_entry
  check "and so does the program" test -f "$installed/VantrelBridgeHID.exe"
}

leaves_nothing_half_done() {
  echo "== refused installations"
  start_pc en_US.UTF-8 'plain'
  picture "$work/before"
  check "a full disk fails the installation" exits_with 2 with_a_full_disk wine "$setup" /S
  picture "$work/after"
  check "and leaves nothing" diff "$work/before" "$work/after"
  check "a bridge that doesn't start gives exit code 3" exits_with 3 wine "$blocked" /S
  check "and can be uninstalled" uninstall /REMOVEDATA
  picture "$work/after"
  check "and leaves nothing" diff "$work/before" "$work/after"
  wine winecfg -v win7
  check "an old Windows fails the installation" exits_with 2 wine "$setup" /S
  picture "$work/after"
  check "and leaves nothing" diff "$work/before" "$work/after"
  wine winecfg -v win10
}

follows_its_switches() {
  local name
  echo "== switches"
  start_pc de_DE.UTF-8 'plain'
  mkdir -p "$data"
  cp "$work/zip/VantrelBridge-$version/config/"*.json "$data/"
  cp "$store/EXE.xml" "$work/good"
  # With the longest of our files below it, not far from what Windows allows.
  name=$(printf 'long%.0s' {1..40})
  installed="$WINEPREFIX/drive_c/My add-ons/$name"
  mkdir -p "$installed"
  echo 'mine' >"$installed/mine.txt"
  echo 'mine, too' >"$installed/README.md"
  # NSIS takes the folder without quotes, which Wine adds around an argument with a blank.
  check "a folder with another README.md fails the installation" \
    exits_with 2 wine "$setup" /S '/D=C:\My' "add-ons\\$name"
  check "and leaves it" grep -q 'mine, too' "$installed/README.md"
  rm "$installed/README.md"
  check "installs elsewhere, unregistered" wine "$setup" /S /NOREGISTER '/D=C:\My' "add-ons\\$name"
  check "there" test -f "$installed/VantrelBridgeHID.exe"
  check "the bridge runs there" start_bridge
  check "EXE.xml is as it was" cmp "$work/good" "$store/EXE.xml"
  check "nothing hides the configuration in the data folder" test ! -e "$installed/config"
  check "an update finds the place" wine "$setup" /S
  check "and installs nothing elsewhere" test ! -e "$home/AppData/Local/Programs/VantrelBridge"
  check "and does not register" cmp "$work/good" "$store/EXE.xml"
  check "uninstalls" uninstall
  check "what isn't ours stays in the folder" test "$(ls "$installed")" = mine.txt
  check "the data folder's configuration stays" test -f "$data/config.json"
}

test_machine_succeeds() {
  wait "$machine" || { cat "$work/machine"; return 1; }
}

start_test_machine || die "the test machine can't be prepared"
check "the manifests for winget and Scoop are right" tests/packages/check_manifests.py "$dist"
build_preset windows window-texts || die "the reader of the installer's pages can't be built"
make_older_packages || die "the older packages can't be built"
make_blocked_packages || die "the blocked packages can't be built"
installs_and_removes de_DE.UTF-8 'Jürgen Weiß'
installs_and_removes fr_FR.UTF-8 'André'
installs_and_removes ru_RU.UTF-8 'Иван Петров'
installs_and_removes ja_JP.UTF-8 '山田 太郎'
updates
refuses_what_it_cannot_edit
follows_its_switches
# The following stories share one PC, with a screen.
start_screen
leaves_nothing_half_done
changes_nothing_when_cancelled
installs_by_keyboard
keeps_all_when_not_uninstalled
check "in the test machine, the installed bridge serves a board" test_machine_succeeds
report_checks
