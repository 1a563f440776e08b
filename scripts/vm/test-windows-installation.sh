#!/usr/bin/env bash
# The part of scripts/test-windows-packages.sh that runs in the test machine: the installed bridge on Wine's HID stack.
#   test-windows-installation.sh PREFIX INSTALLER
set -uo pipefail
. "$(dirname "$0")/../lib.sh"
at_most 2 "$@"
[ $# -eq 2 ] || usage_error "needs a prefix and an installer"

export WINEPREFIX=$1 WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
setup=$2
work=$(mktemp -d)
. scripts/windows-package-checks.sh
installed=$WINEPREFIX/drive_c/users/$(id -un)/AppData/Local/Programs/VantrelBridge
log=$WINEPREFIX/drive_c/ProgramData/VantrelBridge/logs/VantrelBridgeHID.log

mkdir -p /run/udev
/lib/systemd/systemd-udevd --daemon --resolve-names=never
wineserver -p
trap 'wineserver -k' EXIT
build/linux/tests/system/plug-in-board 1234 abcd &
board=$!

check "installs" wine "$setup" /S /NOREGISTER
wine "$installed/VantrelBridgeHID.exe" --hid-trace >/dev/null 2>&1 &
bridge=$!
check "the installed bridge opens the board" eventually grep -q 'HID device connected' "$log"
kill -USR1 "$board"
check "and receives a press" eventually grep -q 'HID IN device=.*data=01' "$log"
wine "$installed/uninstall.exe" /S
check "uninstalls while the bridge runs with a board" eventually test ! -e "$installed/uninstall.exe"
check "the bridge has ended" eventually has_ended "$bridge"
[ "$failed" -eq 0 ] || tail -n 20 "$log"
kill "$board"
report_checks
