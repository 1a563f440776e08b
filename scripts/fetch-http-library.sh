#!/usr/bin/env bash
# Fetches the HTTP library's single header, which both systems' builds use, to build/third-party/cpp-httplib, once. It is
# in the distribution's source package alone; the binary package is a library for this machine. Takes no arguments.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 0 "$@"

target=build/third-party/cpp-httplib
[ ! -e "$target/httplib.h" ] || exit 0
mkdir -p "$target"
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

say "fetching the source package cpp-httplib"
# A source without source packages fails alone; what counts is that the package comes. It is unpacked with its patches.
apt update >"$log" 2>&1 || true
if ! (cd "$work" && apt source cpp-httplib) >>"$log" 2>&1; then
  tail -n 20 "$log" >&2
  die "the source package cpp-httplib can't be had"
fi
mv "$work"/cpp-httplib-*/httplib.h "$target/httplib.h"
