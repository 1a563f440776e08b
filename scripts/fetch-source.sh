#!/usr/bin/env bash
# Downloads and unpacks the source of one of Debian's packages into build/sources/PACKAGE, once: for libraries that the
# distribution has no cross-compiled package of.
#   fetch-source.sh PACKAGE
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"
[ "$#" -eq 1 ] || usage_error "no package named"

target=build/sources/$1
[ -e "$target" ] && exit 0
mkdir -p build/sources
work=$(mktemp -d "$PWD/build/sources/fetch.XXXXXX")
trap 'rm -rf "$work"' EXIT

# The places that this machine installs packages from, asked for their sources.
mkdir -p "$work/parts" "$work/lists/partial"
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
  [ ! -e "$list" ] || sed -n 's/^deb /deb-src /p' "$list" >"$work/parts/$(basename "$list" .list).list"
done
for list in /etc/apt/sources.list.d/*.sources; do
  [ ! -e "$list" ] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/parts/$(basename "$list")"
done
options=(-q -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$work/parts" -o Dir::State::Lists="$work/lists"
  -o Dir::Cache="$work" -o APT::Sandbox::User=)

say "fetching the source of $1"
cd "$work"
if ! { apt-get "${options[@]}" update && apt-get "${options[@]}" source --download-only "$1" &&
  dpkg-source -x "$1"_*.dsc unpacked; } >log 2>&1; then
  tail -n 20 log >&2
  die "fetching the source of $1 failed"
fi
cd "$OLDPWD"
mv "$work/unpacked" "$target"
