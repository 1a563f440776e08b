#!/usr/bin/env bash
# Makes a Wine prefix for tests, unless it exists: Windows 10, which takes all HID boards.
#   make-wine-prefix.sh FOLDER
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
at_most 1 "$@"
[ $# -eq 1 ] || usage_error "no folder named"
fresh=$PWD/build/wine-fresh
mkdir -p build
cd "$OLDPWD"
folder=$(realpath -m "$1")
[ ! -e "$folder" ] || exit 0

export WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'

make_fresh() {
  export WINEPREFIX=$fresh.part
  # With SDL, Wine's bus driver takes game controllers only; without it, it lists all hidraw devices by udev.
  rm -rf "$WINEPREFIX" && wineboot --init && wine winecfg -v win10 &&
    wine reg add 'HKLM\System\CurrentControlSet\Services\winebus' /v 'Enable SDL' /t REG_DWORD /d 0 /f &&
    wineserver -w && mv "$WINEPREFIX" "$fresh"
} >/dev/null 2>&1

# Making one takes seconds, so that is done once. A copy takes over the code page of whoever starts Wine in it.
(
  flock 9
  [ -e "$fresh" ] || make_fresh 9>&- || die "no Wine prefix can be made"
) 9>"$fresh.lock"
mkdir -p "$(dirname "$folder")"
rm -rf "$folder.part"
cp -a "$fresh" "$folder.part"
mv "$folder.part" "$folder"
