#!/usr/bin/env bash
# Makes the Wine prefix for tests with HID boards, unless it exists.
#   make-wine-prefix.sh FOLDER
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
at_most 1 "$@"
[ $# -eq 1 ] || usage_error "no folder named"
cd "$OLDPWD"

WINEPREFIX=$(realpath -m "$1")
export WINEPREFIX WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml='
[ -e "$WINEPREFIX/ready" ] && exit
say "making $WINEPREFIX"
wineboot --init >/dev/null 2>&1
# With SDL, Wine's bus driver takes game controllers only; without it, it lists all hidraw devices by udev.
wine reg add 'HKLM\System\CurrentControlSet\Services\winebus' /v 'Enable SDL' /t REG_DWORD /d 0 /f
wineserver -w
touch "$WINEPREFIX/ready"
