#!/usr/bin/env bash
# Signs a Windows program in place.
#   sign.sh FILE
# SIGN_CERTIFICATE     PEM file with the certificate and those between it and its root
# SIGN_KEY             PEM file with its private key, or a key's PKCS#11 URI together with SIGN_PKCS11_MODULE
# SIGN_PKCS11_MODULE   library of the device that keeps the key; public certificates have their keys only there
# SIGN_PASSWORD_FILE   file with the key's password, if it has one
# SIGN_TIMESTAMP_URL   RFC 3161 time stamp server; without it, the signature ends with the certificate
# SOURCE_DATE_EPOCH    the signature's time if there is no server, so that the same build has the same bytes
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"
at_most 1 "$@"
[ $# -eq 1 ] || usage_error "no file named"
cd "$OLDPWD"

[ -n "${SIGN_CERTIFICATE:-}" ] || usage_error "SIGN_CERTIFICATE names no certificate"
[ -n "${SIGN_KEY:-}" ] || usage_error "SIGN_KEY names no key"

options=(-certs "$SIGN_CERTIFICATE" -key "$SIGN_KEY" -h sha256 -n VantrelBridgeHID)
[ -z "${SIGN_PKCS11_MODULE:-}" ] || options+=(-pkcs11module "$SIGN_PKCS11_MODULE")
[ -z "${SIGN_PASSWORD_FILE:-}" ] || options+=(-readpass "$SIGN_PASSWORD_FILE")
if [ -n "${SIGN_TIMESTAMP_URL:-}" ]; then
  options+=(-ts "$SIGN_TIMESTAMP_URL")
else
  options+=(-time "${SOURCE_DATE_EPOCH:-$(date +%s)}")
fi

signed=$(mktemp -u "$1.XXXXXX")
trap 'rm -f "$signed"' EXIT
osslsigncode sign "${options[@]}" -in "$1" -out "$signed" >/dev/null
chmod --reference="$1" "$signed"
mv "$signed" "$1"
