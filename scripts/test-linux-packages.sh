#!/usr/bin/env bash
# Installs the packages for Linux into the small test machine, uses them as an ordinary user, and removes them.
#   test-linux-packages.sh [DIST]   the folder that scripts/package.sh has filled, dist by default
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"
dist=dist
[ $# -eq 0 ] || dist=$(callers_path "$1")

version=$(sed -nE 's/^project\(VantrelBridgeHID VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
package=$dist/vantrelbridge_${version}_amd64.deb
archive=$dist/VantrelBridge-$version-linux-x86_64.tar.gz
for file in "$package" "$archive"; do
  [ -e "$file" ] || die "no $file; scripts/package.sh makes it"
done

build_preset linux plug-in-board

# An older package, to be upgraded: with a file that the new one lacks.
older=$(mktemp -d "$PWD/build/older.XXXXXX")
trap 'rm -rf "$older"' EXIT
dpkg-deb -R "$package" "$older/tree"
sed -i "s/^Version: .*/Version: 0.0.1/" "$older/tree/DEBIAN/control"
touch "$older/tree/usr/share/VantrelBridge/dropped-later"
dpkg-deb --root-owner-group -Znone --build "$older/tree" "$older/older.deb" >/dev/null

scripts/vm/run-in-vm.sh --time 1500 --cpus 1 scripts/vm/test-linux-packages.sh "$older/older.deb" "$package" "$archive"
