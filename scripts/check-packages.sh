#!/usr/bin/env bash
# Checks packages: each holds exactly the files of its list in packaging/manifests, and what the release
# claims is true: check sums, notices, the list of parts, lintian.
#   check-packages.sh [DIST]           compares
#   check-packages.sh --update [DIST]  writes the lists anew from the packages
# DIST is the folder that scripts/package.sh has filled, dist by default.
# In a list, VERSION is the version, and pages and pictures of the manual count as their folder.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
update=""
if [ "${1:-}" = --update ]; then
  update=yes
  shift
fi
at_most 1 "$@"
dist=$PWD/dist
[ $# -eq 0 ] || dist=$(callers_path "$1")
export LC_ALL=C

version=$(sed -nE 's/^project\(VantrelBridgeHID VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
deb=$dist/vantrelbridge_${version}_amd64.deb
parts=$dist/VantrelBridge-$version.spdx.json
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

files_in() { # package
  case "$1" in
    *.deb) dpkg-deb --fsys-tarfile "$1" | tar -t | grep -v '/$' ;;
    *.tar.gz | *.tar.xz) tar -tf "$1" | grep -v '/$' ;;
    *.zip) python3 -c 'import sys, zipfile; print("\n".join(zipfile.ZipFile(sys.argv[1]).namelist()))' "$1" | grep -v '/$' ;;
  esac
}

listed() { files_in "$1" | sed -E "s/${version//./\\.}/VERSION/g; s#(/docs)/.*\.(md|png)\$#\1/...#; s#^\./##" | sort -u; }

matches_manifest() { # package, list
  if [ -n "$update" ]; then
    listed "$1" >"$2"
  fi
  diff "$2" <(listed "$1")
}

check_manifests() {
  local list package
  for list in packaging/manifests/*.txt; do
    package=$(basename "$list" .txt)
    check "${package//VERSION/$version} has the files of $list" matches_manifest "$dist/${package//VERSION/$version}" "$list"
  done
}

sums_are_complete() {
  diff <(cut -c67- "$dist/SHA256SUMS") <(cd "$dist" && find . -type f ! -name SHA256SUMS -printf '%P\n' | sort)
}

sums_are_right() { (cd "$dist" && sha256sum --check --quiet SHA256SUMS); }

notices_are_current() { python3 packaging/third_party.py notices | diff THIRD-PARTY-NOTICES.txt -; }

# Whose versions the programs need, the package's dependencies name, and the list of parts has them.
list_has_dependencies() {
  local dependency
  for dependency in $(dpkg-deb -f "$deb" Depends | sed -E 's/ *\([^)]*\),?//g'); do
    grep -F "pkg:deb/debian/$dependency@" "$parts" || return 1
  done
}

# The same wherever it is built: of the files' sizes in KiB, with one for each folder.
size_is_of_files() {
  [ "$(dpkg-deb -f "$deb" Installed-Size)" -eq "$(dpkg-deb --fsys-tarfile "$deb" | tar -tv |
    awk '$6 != "./" { size += /^-/ ? int(($3 + 1023) / 1024) : 1 } END { print size }')" ]
}

# Groff complains about what it can't set, and a document's markup doesn't show.
pages_are_readable() {
  local page
  dpkg-deb -x "$deb" "$work/deb"
  for page in "$work"/deb/usr/share/man/man*/*; do
    LC_ALL=C.UTF-8 man --warnings -P cat -l "$page" >"$work/page" 2>"$work/complaints" || return 1
    cat "$work/complaints"
    ! [ -s "$work/complaints" ] && ! grep -E '\]\(|\*\*|`|What it does|[ (]how\)| [,.]  ' "$work/page" || return 1
  done
}

is_clean_for_lintian() { lintian --allow-root --fail-on error,warning --display-info "$deb"; }

check_manifests
check "SHA256SUMS names every file" sums_are_complete
check "SHA256SUMS is right" sums_are_right
check "THIRD-PARTY-NOTICES.txt is what third_party.py prints" notices_are_current
check "the list of parts is valid" python3 packaging/check_sbom.py "$parts" "$dist"
check "the list of parts has the libraries that the package depends on" list_has_dependencies
check "Installed-Size is the sum of the files" size_is_of_files
check "the manual pages are readable" pages_are_readable
check "lintian finds nothing" is_clean_for_lintian
report_checks
