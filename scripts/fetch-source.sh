#!/usr/bin/env bash
# Downloads and unpacks the sources of Debian packages into build/third-party/PACKAGE, once: libraries of which the
# distribution has no binary package that both systems' builds can use.
#   fetch-source.sh PACKAGE...
set -euo pipefail
. "$(dirname "$0")/lib.sh"
no_other_options "$@"
[ "$#" -ge 1 ] || usage_error "no package named"

missing=()
for package in "$@"; do
  [ -e "build/third-party/$package" ] || missing+=("$package")
done
[ "${#missing[@]}" -gt 0 ] || exit 0
mkdir -p build/third-party
work=$(mktemp -d "$PWD/build/third-party/fetch.XXXXXX")
trap 'rm -rf "$work"' EXIT
log=$work/log

# The machine's own package sources, asked for source packages. Lists of our own, so that the machine's stay as they are.
mkdir -p "$work/sources" "$work/lists/partial"
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources; do
  [ ! -s "$file" ] ||
    sed -E 's/^deb([[:space:]])/deb-src\1/; s/^Types:.*/Types: deb-src/' "$file" >"$work/sources/${file##*/}"
done
apt() {
  apt-get -q -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$work/sources" -o Dir::State::Lists="$work/lists" \
    -o Dir::Cache::PkgCache= -o Dir::Cache::SrcPkgCache= -o APT::Sandbox::User="$(id -un)" "$@"
}

say "fetching the sources of ${missing[*]}"
# A source without source packages fails alone; what counts is that the packages come. They are unpacked with their patches.
apt update >"$log" 2>&1 || true
if ! (cd "$work" && apt source "${missing[@]}") >>"$log" 2>&1; then
  tail -n 20 "$log" >&2
  die "can't fetch the sources of ${missing[*]}; check the network and the package sources in /etc/apt"
fi
for package in "${missing[@]}"; do
  mv "$work/$package"-[0-9]*/ "build/third-party/$package"
done
