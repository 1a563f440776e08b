#!/usr/bin/env bash
# Makes what Windows users download from an installed tree: the installer, the portable zip, and the manifests for winget
# and Scoop.
#   build-packages.sh STAGE DIST VERSION
# SOURCE_DATE_EPOCH is the time that the files in the zip bear. RELEASE_URL is the folder on the web from which users will
# download the packages. With SIGN_CERTIFICATE, programs, uninstaller and installer are signed; sign.sh has the details.
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"
no_other_options "$@"
[ $# -eq 3 ] || usage_error "needs STAGE, DIST and VERSION"
given_stage=$(callers_path "$1") dist=$(callers_path "$2") version=$3
export LC_ALL=C TZ=UTC SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --pretty=%ct)}
umask 022

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/stage
cp -r "$given_stage" "$stage"

sign() { # file
  [ -z "${SIGN_CERTIFICATE:-}" ] || packaging/windows/sign.sh "$1"
}

# The folders and files of a tree, as installer.nsi includes them: "" or "\docs", and names.
installer_list() { # tree
  local folders name
  mapfile -t folders < <(cd "$1" && find . -type d | sed 's/^\.//' | sort)
  for folder in "${folders[@]}"; do
    echo "!insertmacro enterFolder \"${folder//\//\\}\""
    (cd "$1/$folder" && find . -maxdepth 1 -type f -printf '%f\n' | sort) | while read -r name; do
      echo "!insertmacro packedFile \"${folder//\//\\}\" \"$name\""
    done
  done
  printf '%s\n' "${folders[@]//\//\\}" | sort -r | sed 's/.*/!insertmacro leaveFolder "&"/'
}

kibibytes() { find "$1" -type f -printf '%s\n' | awk '{ sum += $1 } END { print int(sum / 1024) + 1 }'; } # tree

make_installer() { # output
  local tree=$work/installed options=()
  cp -r "$stage" "$tree"
  mv "$tree/config" "$tree/sample" # so that it arrives beside the user's configuration
  installer_list "$tree" >"$work/files.nsh"
  PYTHONDONTWRITEBYTECODE=1 packaging/windows/draw_wizard_picture.py "$work/wizard.bmp"
  [ -z "${SIGN_CERTIFICATE:-}" ] || options+=("-DSIGN=$PWD/packaging/windows/sign.sh")
  makensis -V2 -WX -INPUTCHARSET UTF8 "-DVERSION=$version" "-DVERSION_NUMBERS=${version%%[-+]*}.0" "-DSTAGE=$tree" \
    "-DKIBIBYTES=$(kibibytes "$tree")" "-DFILE_LIST=$work/files.nsh" "-DPICTURE=$work/wizard.bmp" "-DOUTPUT=$1" \
    "${options[@]}" packaging/windows/installer.nsi
  sign "$1"
}

make_zip() { # output
  local root=$work/zip/VantrelBridge-$version
  mkdir -p "$root"
  cp -r "$stage/." "$root"
  find "$work/zip" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
  rm -f "$1"
  (cd "$work/zip" && find . -type f -printf '%P\n' | sort | zip -X -D -q "$1" -@)
}

mkdir -p "$dist"
for program in "$stage"/*.exe; do sign "$program"; done
make_installer "$dist/VantrelBridge-$version-setup.exe"
make_zip "$dist/VantrelBridge-$version-windows-x64.zip"
release_url=${RELEASE_URL:-https://vantrelbridge.invalid/$version}
packaging/windows/write_manifests.py "$dist" "$version" "$release_url"
[ -n "${RELEASE_URL:-}" ] || say "the manifests for winget and Scoop lack the download address (RELEASE_URL)"
[ -n "${SIGN_CERTIFICATE:-}" ] || say "unsigned: no certificate is given (SIGN_CERTIFICATE, SIGN_KEY)"
(cd "$dist" && ls -l "VantrelBridge-$version-setup.exe" "VantrelBridge-$version-windows-x64.zip")
