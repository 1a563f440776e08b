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
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

check() { # what is true, then the command that says so
  local what=$1
  shift
  count "$@" >"$work/output" 2>&1 || { echo "FAILED: $what"; head -n 40 "$work/output"; }
}

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

is_clean_for_lintian() {
  lintian --allow-root --fail-on error,warning --display-info "$dist/vantrelbridge_${version}_amd64.deb"
}

check_manifests
check "SHA256SUMS names every file" sums_are_complete
check "SHA256SUMS is right" sums_are_right
check "THIRD-PARTY-NOTICES.txt is what third_party.py prints" notices_are_current
check "the list of parts is valid" python3 packaging/check_sbom.py "$dist/VantrelBridge-$version.spdx.json" "$dist"
check "lintian finds nothing" is_clean_for_lintian
report_checks
