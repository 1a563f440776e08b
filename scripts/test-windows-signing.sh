#!/usr/bin/env bash
# Signs the Windows packages with a certificate made for it, and checks every signature.
#   test-windows-signing.sh [DIST]   the folder with installer and zip, dist by default
set -uo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"
dist=$PWD/dist
[ $# -eq 0 ] || dist=$(callers_path "$1")
archive=$(echo "$dist"/VantrelBridge-*-windows-x64.zip)
[ -f "$archive" ] || die "no zip in $dist"
version=${archive##*/VantrelBridge-}
version=${version%-windows-x64.zip}

work=$(mktemp -d)
export WINEPREFIX=$work/pc WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
trap 'wineserver -k; wineserver -w; rm -rf "$work"' EXIT
. scripts/windows-package-checks.sh

make_certificate() {
  openssl req -x509 -newkey rsa:2048 -nodes -days 30 -subj '/CN=Test of VantrelBridge' \
    -addext extendedKeyUsage=codeSigning -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
}

build() { # output folder, then settings
  local folder=$1
  shift
  env SOURCE_DATE_EPOCH=1767225600 "$@" packaging/windows/build-packages.sh "$work/zip/VantrelBridge-$version" \
    "$folder" "$version" >"$folder.txt" 2>&1
}

build_signed() {
  build "$1" "SIGN_CERTIFICATE=$work/certificate.pem" "SIGN_KEY=$work/key.pem"
}

# As with a key's device that is pulled out after the programs are signed: the uninstaller comes next, and its name is a
# temporary one.
build_signing_programs_only() { # output folder
  mkdir -p "$work/bin"
  printf '#!/bin/sh\ncase "$*" in *.exe*) exec %s "$@" ;; esac\nexit 1\n' "$(command -v osslsigncode)" \
    >"$work/bin/osslsigncode"
  chmod +x "$work/bin/osslsigncode"
  PATH=$work/bin:$PATH build_signed "$1"
}

is_signed() { osslsigncode verify -CAfile "$work/certificate.pem" -TSA-CAfile "$work/certificate.pem" -in "$1"; }

installs_uninstaller() {
  scripts/vm/make-wine-prefix.sh "$WINEPREFIX"
  wine "$work/signed/${setup##*/}" /S /NOREGISTER '/D=C:\Bridge'
}

setup=VantrelBridge-$version-setup.exe
unzip -q "$archive" -d "$work/zip"
make_certificate || die "no certificate can be made"
check "a build without a certificate" build "$work/unsigned"
check "says that it is unsigned" grep -q 'unsigned' "$work/unsigned.txt"
check "its installer is unsigned" not is_signed "$work/unsigned/$setup"
check "a build with a certificate" build_signed "$work/signed"
check "does not say so" not grep -q 'unsigned' "$work/signed.txt"
check "its installer is signed" is_signed "$work/signed/$setup"
unzip -q "$work/signed/VantrelBridge-$version-windows-x64.zip" -d "$work/signed"
for program in VantrelBridgeHID vantrel; do
  check "$program.exe is signed" is_signed "$work/signed/VantrelBridge-$version/$program.exe"
done
check "the signed installer installs" installs_uninstaller
check "the uninstaller is signed" is_signed "$WINEPREFIX/drive_c/Bridge/uninstall.exe"
check "the manifests have the signed files' check sums" tests/packages/check_manifests.py "$work/signed"
check "a build whose uninstaller can't be signed fails" not build_signing_programs_only "$work/half"
check "a second signed build" build_signed "$work/again"
check "has the same installer" cmp "$work/signed/$setup" "$work/again/$setup"
check "has the same zip" cmp "$work/signed/VantrelBridge-$version-windows-x64.zip" \
  "$work/again/VantrelBridge-$version-windows-x64.zip"
report_checks
