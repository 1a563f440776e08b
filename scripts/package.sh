#!/usr/bin/env bash
# Builds the packages of a release into dist/: programs for Linux and Windows, their packages, the symbols, the list of
# parts and SHA256SUMS. The same commit gives the same bytes.
#   package.sh           on a fresh machine: installs what it needs, and builds from the beginning
#   package.sh --quick   into build/test-packages, from the programs of the presets linux and windows and without set-up:
#                        for testing the packages, not for publishing
# docs/release.md says what to do with the result.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

quick=""
if [ "${1:-}" = --quick ]; then
  quick=yes
  shift
fi
at_most 0 "$@"

umask 022
export LC_ALL=C TZ=UTC
SOURCE_DATE_EPOCH=$(git log -1 --pretty=%ct)
export SOURCE_DATE_EPOCH
started=$SECONDS
stages=$PWD/build/packages
dist=$PWD/dist
[ -z "$quick" ] || dist=$PWD/build/test-packages
size_limit=$((3 * 1024 * 1024))

# The version is the project's, and the newest one that the changelog describes.
version=$(sed -nE 's/^project\(VantrelBridgeHID VERSION ([0-9.]+) .*/\1/p' CMakeLists.txt)
described=$(sed -nE '/^## /{s/^## ([^ ]+).*/\1/p;q}' CHANGELOG.md)
[ -n "$version" ] || die "CMakeLists.txt names no version"
[ "$version" = "$described" ] || die "CMakeLists.txt has version $version, but CHANGELOG.md begins with $described"

build() { # system, prefix
  local preset=$1
  say "building for $1"
  if [ -z "$quick" ]; then
    preset=release-$1
    rm -rf "build/$preset"
  fi
  build_preset "$preset" VantrelBridgeHID vantrel
  DESTDIR=$stages/$1 cmake --install "build/$preset" --prefix "$2" >/dev/null
}

# Puts a program's symbols into a file of their own, to which the stripped program points.
separate_symbols() { # program, prefix of the tools' names
  local symbols
  symbols=$stages/symbols/VantrelBridge-$version-symbols/$(basename "$1").debug
  mkdir -p "$(dirname "$symbols")"
  "$2objcopy" --only-keep-debug "$1" "$symbols"
  "$2strip" --strip-all --remove-section=.comment "$1"
  # The name and a check sum of the symbols, without their folder.
  (cd "$(dirname "$symbols")" && "$2objcopy" --add-gnu-debuglink="$(basename "$symbols")" "$1")
}

pack_symbols() {
  tar -C "$stages/symbols" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner --format=gnu \
    -c "VantrelBridge-$version-symbols" | xz -T1 >"$dist/VantrelBridge-$version-symbols.tar.xz"
}

summary() {
  local program size too_large=""
  echo
  for program in "${programs[@]}"; do
    size=$(stat -c %s "$program")
    printf '%10d  %s\n' "$size" "${program#"$stages/"}"
    [ "$size" -le "$size_limit" ] || too_large+=" ${program#"$stages/"}"
  done
  (cd "$dist" && find . -type f -printf '%10s  %P\n' | sort -k2)
  say "version $version, commit $(git rev-parse --short HEAD), in ${dist#"$PWD/"}/, after $((SECONDS - started)) s"
  [ -z "$too_large" ] || die "larger than $size_limit bytes:$too_large"
}

[ -z "$(git status --porcelain)" ] || say "there are changes that no commit holds; don't publish these packages"
if [ -z "$quick" ]; then
  # What the caller's shell sets for compilers would change the bytes.
  unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER CFLAGS CXXFLAGS CPPFLAGS LDFLAGS
  scripts/setup.sh --packages
fi
rm -rf "$stages" "$dist"
mkdir -p "$stages" "$dist"
build linux /usr
build windows /

programs=("$stages"/linux/usr/bin/{VantrelBridgeHID,vantrel} "$stages"/windows/{VantrelBridgeHID,vantrel}.exe)
for program in "${programs[@]:0:2}"; do separate_symbols "$program" ""; done
for program in "${programs[@]:2}"; do separate_symbols "$program" x86_64-w64-mingw32-; done

say "packing"
pack_symbols
for system in linux windows; do
  "packaging/$system/build-packages.sh" "$stages/$system" "$dist" "$version"
done

packages=()
for file in "$dist"/*.deb "$dist"/*-linux-x86_64.tar.gz "$dist"/*-setup.exe "$dist"/*-windows-x64.zip; do
  [ ! -e "$file" ] || packages+=("$file")
done
python3 packaging/third_party.py sbom "$version" "${packages[@]}" >"$dist/VantrelBridge-$version.spdx.json"
(cd "$dist" && find . -type f -printf '%P\n' | sort | xargs sha256sum >"$stages/SHA256SUMS")
mv "$stages/SHA256SUMS" "$dist/"
summary
