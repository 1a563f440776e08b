#!/usr/bin/env bash
# Makes the Wine prefix for tests with HID boards, unless it is there: make-wine-prefix.sh FOLDER
set -euo pipefail

export WINEPREFIX=$1 WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml='
[ -e "$WINEPREFIX/ready" ] && exit
echo "wine: making $WINEPREFIX"
wineboot --init >/dev/null 2>&1
# With SDL, Wine's bus driver takes game controllers only; without it, it lists all hidraw devices by udev.
wine reg add 'HKLM\System\CurrentControlSet\Services\winebus' /v 'Enable SDL' /t REG_DWORD /d 0 /f
wineserver -w
touch "$WINEPREFIX/ready"
